// Prints the parameter reference (docs/parameters.md) from the parameter tables.

#include <cstdio>

#include "Base/ParamDefs.h"

int main() {
    std::puts(ParameterPage().c_str());
    return 0;
}
