#include "scene/class_choice.h"

namespace host {

ClassDesc& ClassNamed(const LoadContext& context, const SectionReader& reader, const char* key, SClass_ID sid,
                      const char* what) {
    const std::string name = reader.Text(key);
    std::vector<std::string> known;
    for (ClassDesc* const desc : context.core.Classes().All()) {
        if (desc->SuperClassID() != sid) continue;
        known.emplace_back(desc->InternalName() ? desc->InternalName() : desc->ClassName());
        if (SameParamName(known.back(), name) || SameParamName(desc->ClassName(), name)) return *desc;
    }
    reader.FailAtKey(key, std::string("unknown ") + what + " " + Quoted(name) + ", expected " + JoinChoices(known));
}

void FailNotMade(const SectionReader& reader, const char* key, const char* what) {
    reader.FailAtKey(key,
                     std::string(what) + " " + Quoted(reader.Text(key)) + " cannot be made here, expected another one");
}

void SetParameters(LoadContext& context, Animatable* object, const std::string& name, const TomlValue* table) {
    if (!table) return;
    for (const auto& [key, value] : table->entries)
        context.At(value.line, [&, &key = key, &value = value] {
            SetParam(FindParam(object, name, key), value, 0, context.core.GetTicksPerFrame(), context);
        });
}

} // namespace host
