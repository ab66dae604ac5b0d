#include "core/class_directory.h"

#include <algorithm>

#include "core/host_classes.h"
#include "modifiers/modifier_classes.h"
#include "shapes/primitive_object.h"

namespace host {

ClassDirectory::ClassDirectory() {
    for (const auto* const classes : {&HostClasses(), &PrimitiveClasses(), &ModifierClasses()})
        for (ClassDesc* const desc : *classes) Register(desc);
}

bool ClassDirectory::Register(ClassDesc* desc) {
    if (!desc || !byId_.try_emplace({desc->SuperClassID(), desc->ClassID()}, desc).second) return false;
    all_.push_back(desc);
    return true;
}

void ClassDirectory::Unregister(ClassDesc* desc) {
    std::erase(all_, desc);
    std::erase_if(byId_, [desc](const auto& entry) { return entry.second == desc; });
}

ClassDesc* ClassDirectory::Find(SClass_ID sid, Class_ID id) const {
    const auto it = byId_.find({sid, id});
    return it == byId_.end() ? nullptr : it->second;
}

ClassDesc* ClassDirectory::FindByName(SClass_ID sid, const std::string& name) const {
    for (ClassDesc* const desc : all_) {
        const char *const shown = desc->ClassName(), *const internal = desc->InternalName();
        if (desc->SuperClassID() == sid && ((shown && name == shown) || (internal && name == internal))) return desc;
    }
    return nullptr;
}

} // namespace host
