// The fuzz target of scene files.

#include "scene_target.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
    static const fuzz::SceneFolder folder(VELMAR_FUZZ_CORPUS);
    folder.Run(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
