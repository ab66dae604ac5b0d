// The library's exported entry points.

#include "Attach.h"
#include "DebugTools/Platform.h"
#include "HairDLL/ClassRegistry.h"
#include "sdk/plugapi.h"

#ifdef _WIN32
#define VELMAR_EXPORT extern "C" __declspec(dllexport)
#else
#define VELMAR_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

// Lives as long as the library is loaded. Attaching uses the log first, so the log outlives this object and its end
// line is written while the file is open.
struct Attachment {
    Attachment() { AttachLibrary(this, diag::ModulePath(this)); }
    ~Attachment() { DetachLibrary(); }
};

Attachment attachment;

} // namespace

VELMAR_EXPORT const char* LibDescription() {
    return LibraryDescription();
}

VELMAR_EXPORT int LibNumberClasses() {
    return kNumLibraryClasses;
}

VELMAR_EXPORT ClassDesc* LibClassDesc(int i) {
    return GetLibraryClass(i);
}

VELMAR_EXPORT uint32_t LibVersion() {
    return SDK_VERSION_WORD;
}

// The host loads the library at start-up and never defers it.
VELMAR_EXPORT uint32_t CanAutoDefer() {
    return 0;
}
