#include "scene/named_classes.h"

#include <algorithm>

#include "scene/key_check.h"

namespace host {

namespace {

const char* NameOf(ClassDesc* desc) {
    return desc->InternalName() ? desc->InternalName() : desc->ClassName();
}

} // namespace

NamedClasses::NamedClasses(Core& core, std::initializer_list<SClass_ID> kinds, const std::vector<ClassDesc*>& without) {
    for (ClassDesc* const desc : core.Classes().All())
        if (std::find(kinds.begin(), kinds.end(), desc->SuperClassID()) != kinds.end() &&
            std::find(without.begin(), without.end(), desc) == without.end())
            classes_.push_back(desc);
}

ClassDesc* NamedClasses::Find(const std::string& name) const {
    const auto at = std::find_if(classes_.rbegin(), classes_.rend(), [&](ClassDesc* desc) {
        return SameParamName(NameOf(desc), name) || SameParamName(desc->ClassName(), name);
    });
    return at == classes_.rend() ? nullptr : *at;
}

std::vector<std::string> NamedClasses::Names() const {
    std::vector<std::string> names;
    for (ClassDesc* const desc : classes_) names.emplace_back(NameOf(desc));
    return names;
}

ClassDesc& RequireClass(const SectionReader& reader, const NamedClasses& classes, const char* key,
                        const std::string& what) {
    const std::string name = reader.Text(key);
    if (ClassDesc* const desc = classes.Find(name)) return *desc;
    const std::vector<std::string> known = classes.Names();
    reader.FailAtKey(key, "unknown " + what + " " + Quoted(name) + ", expected " +
                              (known.empty() ? "one of a plug-in, but none is loaded" : JoinChoices(known)));
}

void FailNotMade(const SectionReader& reader, const char* key, const std::string& what) {
    reader.FailAtKey(key, what + " " + Quoted(reader.Text(key)) + " cannot be made here, expected another one");
}

ReferenceTarget* MakeNamedObject(LoadContext& context, const SectionReader& reader, const NamedClasses& classes,
                                 const char* key, const std::string& what) {
    ClassDesc& desc = RequireClass(reader, classes, key, what);
    ReferenceTarget* const object = context.core.CreateInstance(desc.SuperClassID(), desc.ClassID());
    if (!object) FailNotMade(reader, key, what);
    return object;
}

} // namespace host
