// The body of the glTF library, built here with the flags of everything else.

#include <fstream>

#define TINYGLTF_IMPLEMENTATION
#include "import/tinygltf.h"
