// node.modifiers.

#include "scene/load_modifiers.h"

#include <algorithm>
#include <cmath>

#include "core/controllers.h"
#include "import/mesh_series.h"
#include "modifiers/mesh_cache.h"
#include "modifiers/mesh_select.h"
#include "modifiers/morph.h"
#include "modifiers/skin.h"
#include "scene/block_setter.h"
#include "scene/key_check.h"
#include "scene/named_classes.h"

namespace host {

namespace {

// One modifier of a node.
class ModifierLoader {
public:
    ModifierLoader(LoadContext& context, Node* node, const SectionReader& reader, const std::string& type)
        : context_(context), node_(node), reader_(reader), type_(type) {}

    void Load() {
        Put(Make());
        if (type_ == "mesh_select") SetSelection(*node_->GetModContext(0));
    }
    void LoadOfPlugin(const NamedClasses& classes) {
        auto* const m = static_cast<Modifier*>(MakeNamedObject(context_, reader_, classes, "type", "modifier"));
        context_.SetParams(reader_.Raw("set"), m, type_);
        Put(m);
    }

private:
    // Names a modifier and puts it on top of the stack.
    void Put(Modifier* m) {
        context_.core.Adopt(m);
        m->SetName(FreeName());
        context_.scene.objects.emplace(std::string(node_->GetName()) + "." + m->GetName(), m);
        if (!reader_.Flag("enabled")) m->DisableMod();
        m->EnableModInRender(reader_.Flag("in_render"));
        m->EnableModInViews(reader_.Flag("in_views"));
        if (!node_->AddModifier(m))
            reader_.Fail("the modifier depends on node " + Quoted(node_->GetName()) + " itself, expected other nodes");
    }
    Modifier* Make() {
        if (type_ == "mesh_select") return MakeSelect();
        if (type_ == "smooth") return WithValues(SMOOTH_CLASS_ID, {"angle"}, {}, {"mode"});
        if (type_ == "normal_flip") return Instance(NORMAL_FLIP_CLASS_ID);
        if (type_ == "xform") return WithValues(XFORM_CLASS_ID, {}, {"position", "rotation", "scale", "center"}, {});
        if (type_ == "bend") return WithValues(BEND_CLASS_ID, {"angle", "direction"}, {}, {});
        if (type_ == "noise") return MakeNoise();
        if (type_ == "skin") return MakeSkin();
        if (type_ == "morph") return MakeMorph();
        return MakeCache();
    }
    Modifier* Instance(Class_ID id) {
        auto* const m = static_cast<Modifier*>(context_.core.CreateInstance(OSM_CLASS_ID, id));
        if (!m) reader_.Fail("modifiers of this kind cannot be made here");
        return m;
    }
    // A class whose parameters have the names of the keys.
    Modifier* WithValues(Class_ID id, std::initializer_list<const char*> numbers,
                         std::initializer_list<const char*> points, std::initializer_list<const char*> choices) {
        Modifier* const m = Instance(id);
        const BlockSetter set(m);
        for (const char* const key : numbers) set(key, reader_.Number(key));
        for (const char* const key : points) set(key, reader_.Point(key));
        for (const char* const key : choices) set(key, reader_.Choice(key));
        return m;
    }
    Modifier* MakeSelect() {
        Modifier* const m = WithValues(MESHSELECT_CLASS_ID, {"falloff", "pinch", "bubble"}, {}, {"level"});
        const BlockSetter set(m);
        set("soft", reader_.Flag("soft") ? 1 : 0);
        return m;
    }
    Modifier* MakeNoise() {
        Modifier* const m = WithValues(NOISE_CLASS_ID, {"scale", "phase"}, {"strength"}, {});
        const BlockSetter set(m);
        set("seed", reader_.Integer("seed"));
        return m;
    }

    void SetSelection(ModContext& mc) {
        MeshSelectData& data = MeshSelect::DataIn(mc);
        if (const TomlValue* const select = reader_.Raw("select")) data.SetRule(ReadSelection(reader_.File(), *select));
        const TomlValue* const sets = reader_.Raw("sets");
        if (!sets) return;
        for (const auto& [name, table] : sets->entries) data.AddSetRule(name, ReadSelection(reader_.File(), table));
    }

    // The mesh that comes out of the stack so far.
    const Mesh& InputMesh(const char* key) {
        Interval valid = FOREVER;
        bool needDelete = false;
        TriObject* const tri = GetTriObjectFromNode(node_, 0, valid, needDelete);
        if (!tri) reader_.FailAtKey(key, "node " + Quoted(node_->GetName()) + " has no mesh, expected one");
        input_ = tri->mesh;
        if (needDelete) tri->DeleteThis();
        return input_;
    }
    // A whole number of a row, from 0 below `count`.
    int IndexIn(const char* key, float value, int count, const char* what) {
        if (value >= 0 && value < float(count) && value == std::floor(value)) return int(value);
        reader_.FailAtKey(key, std::string(what) + " " + NumberText(double(value)) + " in " + Quoted(key) +
                                   ", expected 0 .. " + std::to_string(count - 1));
    }

    Modifier* MakeSkin() {
        SkinData data;
        const int vertices = InputMesh("bones").getNumVerts();
        const Matrix3 place = node_->GetObjectTM(0);
        for (const std::string& name : reader_.Names("bones")) {
            INode* const bone = context_.At(reader_.LineOf("bones"), [&] { return context_.NodeNamed(name); });
            data.bones.push_back({bone, InverseBind(place, bone->GetNodeTM(0))});
        }
        if (data.bones.empty()) reader_.FailAtKey("bones", "no 'bones', expected the names of nodes");
        std::vector<SkinInfluence> influences;
        for (const std::vector<float>& row : reader_.Rows("weights")) {
            if (row.size() != 3) reader_.FailAtKey("weights", "a row of 'weights', expected [vertex, bone, weight]");
            influences.push_back({IndexIn("weights", row[0], vertices, "vertex"),
                                  IndexIn("weights", row[1], int(data.bones.size()), "bone"), row[2]});
        }
        data.weights = SkinWeights(vertices, int(data.bones.size()), influences);
        return new SkinModifier(std::move(data));
    }

    Modifier* MakeMorph() {
        std::vector<MorphTarget> targets;
        std::vector<FloatControl*> controls;
        const TomlValue* const list = reader_.Raw("targets");
        if (!list || list->items.empty()) reader_.FailAtKey("targets", "no 'targets', expected at least one");
        const Mesh& mesh = InputMesh("targets");
        for (const TomlValue& table : list->items) {
            const SectionReader reader(reader_.File(), *FindSceneSection("morph_target"), table);
            targets.push_back(ReadTarget(reader, mesh));
            controls.push_back(ReadWeightKeys(reader));
        }
        auto* const m = new MorphModifier(std::move(targets));
        for (size_t i = 0; i < controls.size(); ++i)
            if (controls[i]) m->SetWeightController(int(i), controls[i]);
        return m;
    }
    MorphTarget ReadTarget(const SectionReader& reader, const Mesh& mesh) {
        MorphTarget target;
        const std::string file = reader.Text("file");
        if (file.empty() == !reader.Has("moves")) reader.Fail("expected either 'file' or 'moves' in a morph target");
        if (!file.empty()) {
            const std::string path = context_.FindMeshFile(file, reader.LineOf("file"));
            target = MorphBetween("", mesh.verts, ReadMeshFrame(path, Options(), mesh, node_->GetName()));
        }
        for (const std::vector<float>& row : reader.Rows("moves")) {
            if (row.size() != 4) reader.FailAtKey("moves", "a row of 'moves', expected [vertex, x, y, z]");
            if (!(row[0] >= 0 && row[0] < float(mesh.getNumVerts()) && row[0] == std::floor(row[0])))
                reader.FailAtKey("moves", "vertex " + NumberText(double(row[0])) + " in 'moves', expected 0 .. " +
                                              std::to_string(mesh.getNumVerts() - 1));
            target.vertices.push_back(int(row[0]));
            target.deltas.push_back({row[1], row[2], row[3]});
        }
        target.name = reader.Text("name");
        target.weight = reader.Number("weight");
        return target;
    }
    FloatControl* ReadWeightKeys(const SectionReader& reader) {
        const std::vector<std::vector<float>> rows = reader.Rows("keys");
        if (rows.empty()) return nullptr;
        auto* const control = context_.core.Adopt(new FloatControl);
        for (const std::vector<float>& row : rows) {
            if (row.size() != 2) reader.FailAtKey("keys", "a row of 'keys', expected [frame, weight]");
            control->SetKey(TicksOf(reader, "keys", double(row[0])), row[1]);
        }
        return control;
    }

    TimeValue TicksOf(const SectionReader& reader, const char* key, double frame) {
        return context_.At(reader.LineOf(key), [&] { return context_.Ticks(frame); });
    }
    // How the node's own file was read.
    ImportOptions Options() const {
        for (const LoadedMesh& m : context_.scene.meshes)
            if (m.node == node_) return m.options;
        return {};
    }

    std::vector<SeriesFile> SeriesFiles(const std::string& name) {
        const int line = reader_.LineOf("frames");
        if (!IsSeriesName(name))
            FailAt(reader_.File(), line,
                   "'frames' is " + Quoted(name) + ", expected a file name with one run of # or a list of names");
        for (const std::string& place : context_.PlacesOf(name)) {
            std::vector<SeriesFile> files = ListSeries(place);
            if (!files.empty()) return files;
        }
        context_.FailNoFile(name, line);
    }
    Modifier* MakeCache() {
        const TomlValue* const frames = reader_.Raw("frames");
        if (!frames) reader_.Fail("no 'frames', expected the files of a mesh cache");
        const double start = double(reader_.Number("start")), step = double(reader_.Number("step"));
        std::vector<std::string> files;
        std::vector<TimeValue> times;
        if (frames->kind == TomlValue::kText) {
            for (const SeriesFile& f : SeriesFiles(frames->text)) {
                files.push_back(f.path);
                times.push_back(TicksOf(reader_, "frames", start + f.number));
            }
        } else {
            for (const TomlValue& item : frames->items) {
                times.push_back(TicksOf(reader_, "frames", start + step * double(files.size())));
                files.push_back(context_.FindMeshFile(item.text, item.line));
            }
        }
        if (files.empty()) reader_.FailAtKey("frames", "'frames' is empty, expected at least one file");
        return ReadFrames(files, times);
    }
    // All files are read once, so that a wrong one is known now and not at its frame.
    Modifier* ReadFrames(const std::vector<std::string>& files, const std::vector<TimeValue>& times) {
        const auto like = std::make_shared<const Mesh>(InputMesh("frames"));
        const std::string name = node_->GetName();
        const auto read = [files, like, name, options = Options()](int i) {
            return ReadMeshFrame(files[size_t(i)], options, *like, name);
        };
        const auto series = std::make_shared<MeshFrames>(times, read);
        for (int i = 0; i < series->Count(); ++i) series->Put(i, read(i));
        return new MeshCacheModifier(series, reader_.Flag("interpolate"));
    }

    // The name for the stack: the given one, else the type, with a number when that is taken.
    std::string FreeName() {
        const std::string given = reader_.Text("name"), node = node_->GetName();
        const auto taken = [&](const std::string& name) { return context_.scene.objects.contains(node + "." + name); };
        if (!given.empty()) {
            if (taken(given))
                reader_.FailAtKey("name", "second modifier " + Quoted(given) + ", expected a name of its own");
            return given;
        }
        std::string name = type_;
        for (int i = 2; taken(name); ++i) name = type_ + std::to_string(i);
        return name;
    }

    LoadContext& context_;
    Node* node_;
    const SectionReader& reader_;
    std::string type_;
    Mesh input_;
};

constexpr const char* kPluginSection = "modifier.plugin";

[[noreturn]] void FailUnknown(LoadContext& context, const TomlValue& type, const NamedClasses& classes) {
    std::vector<std::string> known = SplitChoices(FindSceneSection("modifier.normal_flip")->Find("type")->choices);
    for (const std::string& name : classes.Names()) known.push_back(name);
    FailAt(context.scene.file, type.line, "'type' is " + Quoted(type.text) + ", expected " + JoinChoices(known));
}

// Each type has keys of its own; which one it is must be known before they are checked.
void LoadModifier(LoadContext& context, Node* node, const TomlValue& table) {
    const TomlValue* const type = table.Find("type");
    if (!type) FailAt(context.scene.file, table.line, "no 'type' in [[node.modifiers]], expected one");
    CheckKeyValue(context.scene.file, *FindSceneSection(kPluginSection)->Find("type"), *type);
    const std::string own = "modifier." + type->text;
    if (const SceneSection* const section = FindSceneSection(own); section && own != kPluginSection) {
        const SectionReader reader(context.scene.file, *section, table);
        return ModifierLoader(context, node, reader, type->text).Load();
    }
    const NamedClasses classes(context.core, {OSM_CLASS_ID, WSM_CLASS_ID}, ModifierClasses());
    if (!classes.Find(type->text)) FailUnknown(context, *type, classes);
    const SectionReader reader(context.scene.file, *FindSceneSection(kPluginSection), table);
    ModifierLoader(context, node, reader, type->text).LoadOfPlugin(classes);
}

} // namespace

SelectionRule ReadSelection(const std::string& file, const TomlValue& table) {
    const SectionReader reader(file, *FindSceneSection("selection"), table);
    SelectionRule rule;
    rule.all = reader.Flag("all");
    rule.invert = reader.Flag("invert");
    rule.ids = reader.Integers("ids");
    rule.sets = reader.Names("sets");
    for (const std::vector<float>& row : reader.Rows("ranges")) {
        if (row.size() != 2) reader.FailAtKey("ranges", "a row of 'ranges', expected [first, last]");
        rule.ranges.push_back({int(std::clamp(row[0], -1.0f, 2e9f)), int(std::clamp(row[1], -1.0f, 2e9f))});
    }
    for (const int id : reader.Integers("materials")) {
        if (id < 1 || id > 65536)
            reader.FailAtKey("materials", "material id " + std::to_string(id) + ", expected 1 .. 65536");
        rule.materials.push_back(id - 1);
    }
    for (const int group : reader.Integers("smoothing")) {
        if (group < 1 || group > 32)
            reader.FailAtKey("smoothing", "smoothing group " + std::to_string(group) + ", expected 1 .. 32");
        rule.smoothing |= 1u << (group - 1);
    }
    return rule;
}

void LoadModifiers(LoadContext& context) {
    context.ForEach("node", "node", [&](const SectionReader& reader) {
        const TomlValue* const list = reader.Raw("modifiers");
        if (!list) return;
        const std::string name = reader.Required("name");
        auto* const node =
            static_cast<Node*>(context.At(reader.LineOf("name"), [&] { return context.NodeNamed(name); }));
        for (const TomlValue& table : list->items) LoadModifier(context, node, table);
    });
}

} // namespace host
