// The fuzz target of one importer, chosen when it is compiled.

#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
    VELMAR_FUZZ_RUN(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
