#pragma once
// Descriptors of the host core's own classes.

#include <vector>

#include "sdk/plugapi.h"

namespace host {

/// The descriptor of a class that `new T` makes; `Base` is ClassDesc, or ClassDesc2 for classes with parameter blocks.
template <class T, class Base = ClassDesc>
class SimpleClassDesc : public Base {
public:
    SimpleClassDesc(const char* name, SClass_ID sid, Class_ID id) : name_(name), sid_(sid), id_(id) {}
    int IsPublic() override { return 1; }
    void* Create(bool) override { return new T; }
    const char* ClassName() override { return name_; }
    SClass_ID SuperClassID() override { return sid_; }
    Class_ID ClassID() override { return id_; }
    const char* Category() override { return "Host"; }

private:
    const char* name_;
    SClass_ID sid_;
    Class_ID id_;
};

/// Meshes, cameras, lights, controllers.
const std::vector<ClassDesc*>& HostClasses();

} // namespace host
