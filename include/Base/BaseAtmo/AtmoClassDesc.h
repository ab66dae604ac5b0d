#pragma once
// The descriptor that the hair and the fur object's classes share.

#include "Base/BaseAtmo.h"
#include "sdk/plugapi.h"

/// What tells the two classes apart.
struct AtmoClass {
    bool fur;
    int name; ///< string id
    Class_ID id;
    const char* internalName;
    BaseAtmo* (*make)();
};

/// A public class with parameter blocks. Create(true) makes an object without curves and distributions, for a scene
/// that brings its own.
class AtmoClassDesc : public ClassDesc2 {
public:
    explicit AtmoClassDesc(const AtmoClass& c);
    int IsPublic() override { return 1; }
    void* Create(bool loading) override;
    const char* ClassName() override;
    SClass_ID SuperClassID() override { return ATMOSPHERIC_CLASS_ID; }
    Class_ID ClassID() override { return class_.id; }
    const char* Category() override { return ""; }
    const char* InternalName() override { return class_.internalName; }
    void* HInstance() override;

private:
    AtmoClass class_;
};
