// [[map]] and [[material]].

#include "materials/bitmap_map.h"
#include "materials/gradient_map.h"
#include "materials/std_mtl.h"
#include "scene/block_setter.h"
#include "scene/class_choice.h"
#include "scene/key_check.h"
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

void LoadBitmap(LoadContext& context, const SectionReader& reader, Texmap* map, const BlockSetter& set) {
    set("raw", reader.Flag("raw") ? 1 : 0);
    set("wrapU", reader.Choice("wrap_u"));
    set("wrapV", reader.Choice("wrap_v"));
    set("filter", reader.Choice("filter"));
    const std::string file = context.FindFile(reader.Required("file"), reader.LineOf("file"));
    set("file", file);
    const auto* const bitmap = dynamic_cast<BitmapMap*>(map);
    if (bitmap && !bitmap->LoadError().empty()) reader.FailAtKey("file", bitmap->LoadError());
}

void LoadNoise(const SectionReader& reader, const BlockSetter& set) {
    set("noiseType", reader.Choice("noise"));
    for (const char* const key : {"size", "levels", "low", "high", "phase"}) set(key, reader.Number(key));
}

void LoadGradient(const SectionReader& reader, const BlockSetter& set) {
    set("gradientType", reader.Choice("gradient"));
    set("interpolation", reader.Choice("interpolation"));
    set("wrap", reader.Choice("wrap_u"));
    const std::vector<std::vector<float>> keys = reader.Rows("keys");
    if (keys.empty() || keys.size() > size_t(GradientMap::kMostKeys))
        reader.FailAtKey("keys", "a gradient has " + std::to_string(keys.size()) + " keys, expected 1 to " +
                                     std::to_string(GradientMap::kMostKeys));
    set("keys", int(keys.size()));
    for (size_t i = 0; i < keys.size(); ++i) {
        const std::vector<float>& key = keys[i];
        if (key.size() != 4 || key[0] < 0 || key[0] > 1)
            reader.FailAtKey("keys", "key " + std::to_string(i + 1) +
                                         " of a gradient is no place from 0 to 1 with a colour, expected [place, red, "
                                         "green, blue]");
        set(("position" + std::to_string(i + 1)).c_str(), key[0]);
        set(("color" + std::to_string(i + 1)).c_str(), Point3(key[1], key[2], key[3]));
    }
}

void SetCoords(const SectionReader& reader, const BlockSetter& set) {
    set("source", reader.Choice("projection"));
    set("rotation", reader.Number("rotation"));
    const auto tile = reader.Pair("tile"), offset = reader.Pair("offset");
    set("tileU", tile[0]);
    set("tileV", tile[1]);
    set("offsetU", offset[0]);
    set("offsetV", offset[1]);
}

void SetOutput(const SectionReader& map, const BlockSetter& set) {
    const TomlValue* const table = map.Raw("output");
    if (!table) return;
    const SectionReader reader(map.File(), *FindSceneSection("output"), *table);
    set("invert", reader.Flag("invert") ? 1 : 0);
    set("clamp", reader.Flag("clamp") ? 1 : 0);
    for (const char* const key : {"level", "offset", "amount"}) set(key, reader.Number(key));
}

enum MapKind { kBitmap, kChecker, kNoise, kGradient, kVertexColor }; // as the key's choices

void LoadMap(LoadContext& context, const SectionReader& reader) {
    constexpr Class_ID kClasses[] = {BMTEX_CLASS_ID, CHECKER_CLASS_ID, NOISE_CLASS_ID, GRADIENT_RAMP_CLASS_ID,
                                     VERTEX_COLOR_CLASS_ID};
    const int kind = reader.Choice("type");
    auto* const map = NewObject<Texmap>(context, reader, TEXMAP_CLASS_ID, kClasses[kind]);
    const BlockSetter set(map);
    if (reader.Has("channel")) set("channel", reader.Integer("channel"));
    SetOutput(reader, set);
    if (kind == kVertexColor)
        set("part", reader.Choice("component"));
    else
        SetCoords(reader, set);
    if (kind == kBitmap) LoadBitmap(context, reader, map, set);
    if (kind == kNoise) LoadNoise(reader, set);
    if (kind == kGradient) LoadGradient(reader, set);
    if (kind == kChecker || kind == kNoise)
        for (const char* const key : {"color1", "color2"}) set(key, reader.Point(key));
    context.maps[map->GetName()] = map;
}

struct ChannelName {
    const char* key;
    StdMatChannel channel;
};
constexpr ChannelName kChannels[] = {
    {"ambient", ID_AM},        {"diffuse", ID_DI},           {"specular", ID_SP}, {"glossiness", ID_SH},
    {"specular_level", ID_SS}, {"self_illumination", ID_SI}, {"opacity", ID_OP},  {"bump", ID_BU}};

StdMatChannel ChannelNamed(const SectionReader& reader, int line, const std::string& key) {
    std::vector<std::string> known;
    for (const ChannelName& c : kChannels) {
        if (key == c.key) return c.channel;
        known.emplace_back(c.key);
    }
    FailAt(reader.File(), line, "no map can replace " + Quoted(key) + ", expected " + JoinChoices(known));
}

void SetMaterialMaps(LoadContext& context, const SectionReader& reader, Mtl* mtl) {
    IParamBlock2* const block = mtl->GetParamBlock(0);
    if (const TomlValue* const maps = reader.Raw("maps"))
        for (const auto& [key, value] : maps->entries) {
            const StdMatChannel channel = ChannelNamed(reader, value.line, key);
            mtl->SetSubTexmap(channel,
                              context.At(value.line, [&, &value = value] { return context.MapNamed(value.text); }));
        }
    if (const TomlValue* const amounts = reader.Raw("map_amounts"))
        for (const auto& [key, value] : amounts->entries) {
            const StdMatChannel channel = ChannelNamed(reader, value.line, key);
            const bool fits = value.IsNumber() && (channel == ID_BU || (value.number >= 0 && value.number <= 1));
            if (!fits)
                FailAt(reader.File(), value.line,
                       "the amount of " + Quoted(key) + " is " + DescribeToml(value) + ", expected a number" +
                           (channel == ID_BU ? "" : " from 0 to 1"));
            block->SetValue(ParamID(kStdMapAmount + int(channel)), 0, float(value.number));
        }
    for (const std::string& key : reader.Names("maps_off"))
        block->SetValue(ParamID(kStdMapOn + int(ChannelNamed(reader, reader.LineOf("maps_off"), key))), 0, 0);
}

// Puts the shader of that class name into the material's slot and sets its own parameters.
void SetShader(LoadContext& context, const SectionReader& reader, StdMtl* mtl) {
    ClassDesc& desc = ClassNamed(context, reader, "shader", SHADER_CLASS_ID, "shader");
    auto* const shader = static_cast<Shader*>(context.core.CreateInstance(SHADER_CLASS_ID, desc.ClassID()));
    if (!shader) FailNotMade(reader, "shader", "shader");
    mtl->SwitchShader(shader);
    SetParameters(context, shader, reader.Text("shader"), reader.Raw("shader_set"));
}

void LoadStandard(LoadContext& context, const SectionReader& reader, Mtl* mtl) {
    const BlockSetter set(mtl);
    set("lockAmbient", reader.Has("ambient") ? 0 : 1);
    set("twoSided", reader.Flag("two_sided") ? 1 : 0);
    for (const char* const key : {"ambient", "diffuse", "specular"})
        if (reader.Has(key)) set(key, reader.Point(key));
    const std::pair<const char*, const char*> numbers[] = {{"glossiness", "glossiness"},
                                                           {"specular_level", "specularLevel"},
                                                           {"self_illumination", "selfIllumination"},
                                                           {"opacity", "opacity"}};
    for (const auto& [key, name] : numbers)
        if (reader.Has(key)) set(name, reader.Number(key));
    if (reader.Has("self_illumination_color")) {
        set("useSelfIllumColor", 1);
        set("selfIllumColor", reader.Point("self_illumination_color"));
    }
    SetMaterialMaps(context, reader, mtl);
    auto* const standard = dynamic_cast<StdMtl*>(mtl);
    if (standard && (reader.Has("shader") || reader.Has("shader_set"))) SetShader(context, reader, standard);
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
