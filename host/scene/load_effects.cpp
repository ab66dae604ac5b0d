// [[effect]] and [[image_filter]].

#include "scene/class_choice.h"

namespace host {

namespace {

void LoadEffect(LoadContext& context, const SectionReader& reader) {
    const std::string className = reader.Required("class"), name = reader.Text("name");
    ClassDesc& desc = ClassNamed(context, reader, "class", RENDER_EFFECT_CLASS_ID, "effect");
    auto* const effect = static_cast<Effect*>(context.core.CreateInstance(RENDER_EFFECT_CLASS_ID, desc.ClassID()));
    if (!effect) FailNotMade(reader, "class", "effect");
    effect->SetName(name);
    context.core.AddEffect(effect);
    if (!name.empty()) context.AddObject(reader, name, effect);
    effect->SetDisabled(!reader.Flag("active"));
    SetParameters(context, effect, name.empty() ? className : name, reader.Raw("set"));
}

void LoadFilter(LoadContext& context, const SectionReader& reader) {
    const std::string name = reader.Required("class");
    ClassDesc& desc = ClassNamed(context, reader, "class", FLT_CLASS_ID, "image filter");
    FilterQueue::Entry* const entry = context.core.Filters().Add(desc.ClassID());
    if (!entry) FailNotMade(reader, "class", "image filter");
    entry->active = reader.Flag("active");
    if (!reader.Has("config")) return;
    const std::vector<int> config = reader.Integers("config");
    const int size = entry->filter->EvaluateConfigure();
    if (config.size() * sizeof(int32_t) != size_t(size))
        reader.FailAtKey("config", "a configuration of " + std::to_string(config.size() * sizeof(int32_t)) +
                                       " bytes, expected one of " + std::to_string(size) + " for " + Quoted(name));
    if (!entry->filter->LoadConfigure(config.data()))
        reader.FailAtKey("config", "image filter " + Quoted(name) + " refuses its configuration, expected another one");
}

} // namespace

void LoadEffects(LoadContext& context) {
    context.ForEach("effect", "effect", [&](const SectionReader& reader) { LoadEffect(context, reader); });
    context.ForEach("image_filter", "image_filter", [&](const SectionReader& reader) { LoadFilter(context, reader); });
}

} // namespace host
