// A plug-in library for the loader's tests; a macro chooses what is wrong with it.

#include "sdk/plugapi.h"

#ifdef _WIN32
#define EXPORT extern "C" __declspec(dllexport)
#else
#define EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

class Widget : public ReferenceTarget {
public:
    Class_ID ClassID() override { return {0x1234, 0x5678}; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
};

class WidgetDesc : public ClassDesc {
public:
    WidgetDesc(SClass_ID sid, Class_ID id) : sid_(sid), id_(id) {}
    int IsPublic() override { return 1; }
    void* Create(bool) override { return new Widget; }
    const char* ClassName() override { return "Widget"; }
    SClass_ID SuperClassID() override { return sid_; }
    Class_ID ClassID() override { return id_; }
    const char* Category() override { return ""; }

private:
    SClass_ID sid_;
    Class_ID id_;
};

} // namespace

EXPORT const char* LibDescription() {
    return "test plug-in";
}

EXPORT int LibNumberClasses() {
    return 2;
}

EXPORT ClassDesc* LibClassDesc(int i) {
#ifdef VELMAR_TAKEN_CLASS
    static WidgetDesc first(CAMERA_CLASS_ID, LOOKAT_CAM_CLASS_ID);
#else
    static WidgetDesc first(REF_TARGET_CLASS_ID, {0x1234, 0x5678});
#endif
#ifdef VELMAR_SAME_CLASS_TWICE
    static WidgetDesc second(REF_TARGET_CLASS_ID, {0x1234, 0x5678});
#else
    static WidgetDesc second(HELPER_CLASS_ID, {0x1234, 0x5678}); // the same class id under another super class
#endif
#ifdef VELMAR_MISSING_DESCRIPTOR
    if (i == 1) return nullptr;
#endif
    return i == 0 ? &first : i == 1 ? &second : nullptr;
}

#ifndef VELMAR_NO_VERSION
EXPORT uint32_t LibVersion() {
#ifdef VELMAR_OLD_RELEASE
    return (13800u << 16) | 0x2500;
#else
    return SDK_VERSION_WORD + 1; // another revision of the same release fits
#endif
}
#endif

EXPORT uint32_t CanAutoDefer() {
    return 0;
}
