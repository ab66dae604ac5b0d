// [[fur]], [[hair]] and [render.hair].

#include <algorithm>

#include "scene/load_context.h"
#include "sdk/properties.h"

namespace host {

namespace {

// Sets properties and runs operations of an object's part; failures name the part and stand at a line.
class PartScript {
public:
    PartScript(const LoadContext& context, ReferenceTarget* part, std::string name, int line)
        : context_(context), script_(GetScriptProperties(part)), name_(std::move(name)), line_(line) {
        if (!script_) FailAt(context.scene.file, line, Quoted(name_) + " cannot be set here");
    }
    void Set(const char* property, const ScriptValue& value) const {
        TSTR error;
        if (!script_->SetProperty(property, value, error)) Fail(property, error);
    }
    void Call(const char* operation, const std::vector<ScriptValue>& args) const {
        TSTR error;
        ScriptValue result;
        if (!script_->Call(operation, args, result, error)) Fail(operation, error);
    }

private:
    [[noreturn]] void Fail(const char* what, const TSTR& error) const {
        FailAt(context_.scene.file, line_, Quoted(name_) + ": " + what + ": " + error);
    }
    const LoadContext& context_;
    IScriptProperties* script_;
    std::string name_;
    int line_;
};

constexpr const char* kKnotTypes[] = {"smooth", "corner", "step"};

int KnotType(const SectionReader& reader, const TomlValue& knot, bool end) {
    if (knot.items.size() < 3) return end ? 1 : 0;
    for (int i = 0; i < 3; ++i)
        if (knot.items[2].text == kKnotTypes[i]) return i;
    FailAt(reader.File(), knot.line, "knot type " + Quoted(knot.items[2].text) + ", expected smooth, corner or step");
}

void SetKnots(const SectionReader& reader, const PartScript& curve) {
    const TomlValue* const knots = reader.Raw("knots");
    if (!knots || knots->items.empty()) return;
    const size_t count = knots->items.size();
    if (count < 2 || count > 100) reader.FailAtKey("knots", std::to_string(count) + " knots, expected 2 to 100");
    std::vector<ScriptValue> args;
    for (size_t i = 0; i < count; ++i) {
        const TomlValue& knot = knots->items[i];
        const double x = knot.items[0].number;
        if (i > 0 && !(x > knots->items[i - 1].items[0].number))
            FailAt(reader.File(), knot.line,
                   "knot " + std::to_string(i + 1) + " stands left of the one before, expected ascending x");
        args.push_back(ScriptValue::Float(float(x)));
        args.push_back(ScriptValue::Float(float(knot.items[1].number)));
        args.push_back(ScriptValue::Int(KnotType(reader, knot, i == 0 || i + 1 == count)));
    }
    curve.Call("SetKnots", args);
}

void SetCurve(LoadContext&, const SectionReader& reader, const PartScript& curve) {
    SetKnots(reader, curve);
    if (reader.Has("noise_size")) curve.Set("noiseSize", ScriptValue::Float(reader.Number("noise_size")));
    if (reader.Has("noise_density")) curve.Set("noiseDensity", ScriptValue::Float(reader.Number("noise_density")));
    if (reader.Has("noise_phase")) curve.Set("noisePhase", ScriptValue::Float(reader.Number("noise_phase")));
    if (reader.Has("noise")) curve.Set("useNoise", ScriptValue::Bool(reader.Flag("noise")));
    curve.Set("enabled", ScriptValue::Bool(reader.Flag("enabled")));
}

void SetSurface(LoadContext& context, const SectionReader& reader, const PartScript& surface) {
    surface.Set("type", ScriptValue::Int(reader.Choice("source")));
    surface.Set("channelType", ScriptValue::Int(reader.Choice("channel_type")));
    surface.Set("component", ScriptValue::Int(reader.Choice("component")));
    if (reader.Has("channel")) surface.Set("channelID", ScriptValue::Int(reader.Integer("channel")));
    if (reader.Has("submaterial")) surface.Set("submatID", ScriptValue::Int(reader.Integer("submaterial")));
    if (reader.Has("final_shading")) surface.Set("useFinalShading", ScriptValue::Bool(reader.Flag("final_shading")));
    const std::string map = reader.Text("map");
    if (!map.empty())
        surface.Set("map",
                    ScriptValue::Object(context.At(reader.LineOf("map"), [&] { return context.MapNamed(map); })));
    surface.Set("enabled", ScriptValue::Bool(reader.Flag("enabled")));
}

/// One fur or hair object on its way in.
class HairLoader {
public:
    HairLoader(LoadContext& context, const SectionReader& reader, bool isFur)
        : context_(context), reader_(reader), isFur_(isFur), name_(reader.Required("name")) {}

    void Load() {
        if (reader_.Has("params"))
            reader_.FailAtKey("params", "parameter files are not there yet, expected parameters in 'set'");
        Create();
        context_.SetParams(reader_.Raw("set"), object_, name_);
        AddEmitters();
        SetMaterial();
        SetMapping();
        using Setter = void (*)(LoadContext&, const SectionReader&, const PartScript&);
        const std::tuple<const char*, const char*, const char*, Setter> parts[] = {
            {"curve", "curve", "pid_curve_", SetCurve},
            {"surface", "surface", "pid_surfDist_", SetSurface},
            {"random", "curve", "pid_randDist_", SetCurve}};
        for (const auto& [key, section, prefix, setter] : parts)
            if (const TomlValue* const tables = reader_.Raw(key))
                for (const auto& [name, table] : tables->entries) {
                    const SectionReader part(context_.scene.file, *FindSceneSection(section), table);
                    setter(context_, part, PartScript(context_, PartOf(prefix, name, table.line), name, table.line));
                }
        object_->SetDisabled(!reader_.Flag("enabled"));
    }

private:
    void Create() {
        ReferenceTarget* const made =
            context_.core.CreateInstance(ATMOSPHERIC_CLASS_ID, isFur_ ? kFurClass : kHairClass);
        object_ = dynamic_cast<Atmospheric*>(made);
        if (!object_)
            reader_.Fail(std::string(isFur_ ? "fur" : "hair") +
                         " objects cannot be made, expected a plug-in library with them");
        object_->SetName(name_);
        context_.core.AddAtmosphere(object_);
        context_.AddObject(reader_, name_, object_);
        context_.scene.hair.push_back({name_, object_, isFur_});
    }

    void AddEmitters() {
        const TomlValue* const emitters = reader_.Raw("emitters");
        if (!emitters || emitters->items.empty()) return;
        TomlValue table;
        table.entries.emplace_back("pid_emitters", *emitters);
        context_.SetParams(&table, object_, name_);
    }

    void SetMaterial() {
        const std::string name = reader_.Text("material");
        if (name.empty()) return;
        const int line = reader_.LineOf("material");
        Mtl* const mtl = context_.At(line, [&] { return context_.MaterialNamed(name); });
        PartScript(context_, object_, name_, line).Set("material", ScriptValue::Object(mtl));
    }

    void SetMapping() {
        const std::vector<int> types = reader_.Integers("map_channels");
        if (types.empty()) return;
        const int line = reader_.LineOf("map_channels");
        if (types.size() > 100) reader_.FailAtKey("map_channels", "more than 100 channels, expected fewer");
        const PartScript script(context_, object_, name_, line);
        for (size_t i = 0; i < types.size(); ++i) {
            if (types[i] < -3 || types[i] > 99)
                reader_.FailAtKey("map_channels", "channel type " + std::to_string(types[i]) + ", expected -3 .. 99");
            script.Call("SetMapping", {ScriptValue::Int(int(i)), ScriptValue::Int(types[i])});
        }
    }

    // The curve or distribution of a parameter, by its whole name or without the prefix.
    ReferenceTarget* PartOf(const std::string& prefix, const std::string& name, int line) {
        return context_.At(line, [&] {
            const ParamPlace place = FindPart(prefix, name);
            ReferenceTarget* part = place.block->GetReferenceTarget(place.def->id);
            if (!part) {
                // A new object makes its parts when it is first brought to a time.
                Interval valid = FOREVER;
                object_->Update(context_.core.GetTime(), valid);
                part = place.block->GetReferenceTarget(place.def->id);
            }
            if (!part) throw Error(Quoted(name_) + " has nothing to set for " + Quoted(name));
            return part;
        });
    }

    ParamPlace FindPart(const std::string& prefix, const std::string& name) {
        std::vector<std::string> known, same;
        ParamPlace found;
        for (const ParamPlace& p : ListParams(object_)) {
            const std::string& own = p.def->intName;
            if (p.def->type != TYPE_REFTARG || own.compare(0, prefix.size(), prefix) != 0) continue;
            if (SameParamName(own, prefix + name) || SameParamName(own, name)) return p;
            known.push_back(own.substr(prefix.size()));
            if (!SameParamName(p.def->name, name)) continue;
            same.push_back(own);
            found = p;
        }
        if (same.size() > 1)
            throw Error(Quoted(name) + " is the name of several parameters, expected " + JoinChoices(same));
        if (found.def) return found;
        throw Error("unknown name " + Quoted(name) + ", expected " + JoinChoices(known));
    }

    LoadContext& context_;
    const SectionReader& reader_;
    bool isFur_;
    std::string name_;
    Atmospheric* object_ = nullptr;
};

// The renderer among the scene's effects; null when there is none.
Atmospheric* RendererInScene(Core& core) {
    for (int i = 0; i < core.NumAtmospheric(); ++i)
        if (core.GetAtmospheric(i)->ClassID() == kHairRendererClass) return core.GetAtmospheric(i);
    return nullptr;
}

} // namespace

void LoadHairObjects(LoadContext& context) {
    for (const bool isFur : {true, false})
        context.ForEach(isFur ? "fur" : "hair", "hair",
                        [&](const SectionReader& reader) { HairLoader(context, reader, isFur).Load(); });
}

void LoadHairRenderer(LoadContext& context) {
    const TomlValue* const render = context.root.Find("render");
    const TomlValue* const settings = render ? render->Find("hair") : nullptr;
    Atmospheric* renderer = RendererInScene(context.core);
    if (!renderer && settings) {
        renderer = dynamic_cast<Atmospheric*>(context.core.CreateInstance(ATMOSPHERIC_CLASS_ID, kHairRendererClass));
        if (!renderer)
            FailAt(context.scene.file, settings->line,
                   "there is no hair renderer, expected a plug-in library with one");
        context.core.AddAtmosphere(renderer);
    }
    if (!renderer) return;
    if (!context.scene.objects.emplace("render", renderer).second)
        FailAt(context.scene.file, 0, "an object is named 'render', expected other names");
    context.SetParams(settings, renderer, "render");
}

} // namespace host
