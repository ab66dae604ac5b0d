#pragma once
// The classes that can be created: the host's own and those of loaded plug-ins.

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "sdk/plugapi.h"

namespace host {

/// Class descriptors by super class and class id. Descriptors stay their makers' property.
class ClassDirectory {
public:
    /// A directory with the classes of the host core: triangle meshes, cameras, lights, controllers.
    ClassDirectory();
    /// False, and the former class stays, when the pair of super class and class id is taken.
    bool Register(ClassDesc* desc);
    void Unregister(ClassDesc* desc);
    /// Null when unknown.
    ClassDesc* Find(SClass_ID sid, Class_ID id) const;
    /// By the class name that the descriptor shows, or its internal name; null when unknown.
    ClassDesc* FindByName(SClass_ID sid, const std::string& name) const;
    /// In order of registration.
    const std::vector<ClassDesc*>& All() const { return all_; }

private:
    std::map<std::pair<SClass_ID, Class_ID>, ClassDesc*> byId_;
    std::vector<ClassDesc*> all_;
};

} // namespace host
