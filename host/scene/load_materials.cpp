// [[map]] and [[material]].

#include "materials/bitmap_map.h"
#include "scene/block_setter.h"
#include "scene/load_context.h"

namespace host {

namespace {

template <class T>
T* NewObject(LoadContext& context, const SectionReader& reader, SClass_ID sid, Class_ID id) {
    const std::string name = reader.Required("name");
    ReferenceTarget* const made = context.core.CreateInstance(sid, id);
    if (!made) reader.Fail("objects of this kind cannot be made here");
    static_cast<MtlBase*>(made)->SetName(name);
    context.AddObject(reader, name, made);
    return static_cast<T*>(made);
}

void LoadBitmap(LoadContext& context, const SectionReader& reader, Texmap* map) {
    const BlockSetter set(map);
    set("raw", reader.Flag("raw") ? 1 : 0);
    set("repeat", reader.Flag("repeat") ? 1 : 0);
    const std::string file = context.FindFile(reader.Required("file"), reader.LineOf("file"));
    set("file", file);
    const auto* const bitmap = dynamic_cast<BitmapMap*>(map);
    if (bitmap && !bitmap->LoadError().empty()) reader.FailAtKey("file", bitmap->LoadError());
}

void LoadMap(LoadContext& context, const SectionReader& reader) {
    const bool checker = reader.Choice("type") == 1;
    auto* const map = NewObject<Texmap>(context, reader, TEXMAP_CLASS_ID, checker ? CHECKER_CLASS_ID : BMTEX_CLASS_ID);
    const BlockSetter set(map);
    set("channel", reader.Integer("channel"));
    set("source", reader.Choice("projection"));
    const auto tile = reader.Pair("tile"), offset = reader.Pair("offset");
    set("tileU", tile[0]);
    set("tileV", tile[1]);
    set("offsetU", offset[0]);
    set("offsetV", offset[1]);
    if (checker) {
        set("color1", reader.Point("color1"));
        set("color2", reader.Point("color2"));
    } else {
        LoadBitmap(context, reader, map);
    }
    context.maps[map->GetName()] = map;
}

struct ChannelName {
    const char* key;
    StdMatChannel channel;
};
constexpr ChannelName kChannels[] = {{"diffuse", ID_DI},        {"specular", ID_SP},          {"glossiness", ID_SH},
                                     {"specular_level", ID_SS}, {"self_illumination", ID_SI}, {"opacity", ID_OP}};

void SetMaterialMaps(LoadContext& context, const SectionReader& reader, Mtl* mtl) {
    const TomlValue* const maps = reader.Raw("maps");
    if (!maps) return;
    for (const auto& [key, value] : maps->entries) {
        const ChannelName* found = nullptr;
        std::vector<std::string> known;
        for (const ChannelName& c : kChannels) {
            known.emplace_back(c.key);
            if (key == c.key) found = &c;
        }
        if (!found)
            FailAt(reader.File(), value.line, "no map can replace " + Quoted(key) + ", expected " + JoinChoices(known));
        mtl->SetSubTexmap(found->channel, context.At(value.line, [&, &value = value] { return context.MapNamed(value.text); }));
    }
}

void LoadStandard(LoadContext& context, const SectionReader& reader, Mtl* mtl) {
    const BlockSetter set(mtl);
    set("lockAmbient", reader.Has("ambient") ? 0 : 1);
    for (const char* const key : {"ambient", "diffuse", "specular"})
        if (reader.Has(key)) set(key, reader.Point(key));
    const std::pair<const char*, const char*> numbers[] = {{"glossiness", "glossiness"},
                                                           {"specular_level", "specularLevel"},
                                                           {"self_illumination", "selfIllumination"},
                                                           {"opacity", "opacity"}};
    for (const auto& [key, name] : numbers)
        if (reader.Has(key)) set(name, reader.Number(key));
    SetMaterialMaps(context, reader, mtl);
}

void LoadMaterial(LoadContext& context, const SectionReader& reader) {
    const bool multi = reader.Choice("type") == 1;
    Mtl* const mtl = NewObject<Mtl>(context, reader, MATERIAL_CLASS_ID, multi ? MULTI_CLASS_ID : DMTL_CLASS_ID);
    if (!multi) LoadStandard(context, reader, mtl);
    context.materials[mtl->GetName()] = mtl;
}

// After all materials are there: a multi material may name later ones, but not itself in a circle.
void LinkMulti(LoadContext& context, const SectionReader& reader) {
    if (reader.Choice("type") != 1) return;
    Mtl* const multi = context.materials[reader.Required("name")];
    const std::vector<std::string> names = reader.Names("materials");
    for (size_t i = 0; i < names.size(); ++i) {
        if (names[i].empty()) continue;
        Mtl* const sub = context.At(reader.LineOf("materials"), [&] { return context.MaterialNamed(names[i]); });
        multi->SetSubMtl(int(i), sub);
        if (multi->GetSubMtl(int(i)) != sub)
            reader.FailAtKey("materials", "material " + Quoted(names[i]) + " contains this one, expected others");
    }
}

} // namespace

void LoadMaps(LoadContext& context) {
    context.ForEach("map", "map", [&](const SectionReader& reader) { LoadMap(context, reader); });
    const TomlValue* const table = context.root.Find("scene");
    const TomlValue* const environment = table ? table->Find("environment") : nullptr;
    if (environment && !environment->text.empty())
        context.core.SetEnvironmentMap(
            context.At(environment->line, [&] { return context.MapNamed(environment->text); }));
}

void LoadMaterials(LoadContext& context) {
    context.ForEach("material", "material", [&](const SectionReader& reader) { LoadMaterial(context, reader); });
    context.ForEach("material", "material", [&](const SectionReader& reader) { LinkMulti(context, reader); });
}

} // namespace host
