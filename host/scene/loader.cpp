#include "scene/loader.h"

#include <cmath>

#include "core/nearest_name.h"
#include "core/notify_scope.h"
#include "scene/key_check.h"
#include "scene/load_context.h"

namespace host {

namespace {

std::string NearNames(const std::string& name, const std::vector<std::string>& names, const char* none) {
    const std::string near = NearestNames(name.substr(0, 100), names);
    return near.empty() ? std::string(none) : "one like " + near;
}

template <class Map>
std::vector<std::string> KeysOf(const Map& map) {
    std::vector<std::string> names;
    for (const auto& [name, value] : map) names.push_back(name);
    return names;
}

template <class Map>
auto FindNamed(const Map& map, const std::string& name, const char* what) {
    const auto at = map.find(name);
    if (at != map.end()) return at->second;
    throw Error(std::string("unknown ") + what + " " + Quoted(name) + ", expected " +
                NearNames(name, KeysOf(map), (std::string("a ") + what + ", but the scene has none").c_str()));
}

} // namespace

INode* LoadContext::NodeNamed(const std::string& name) {
    if (INode* const node = core.GetINodeByName(name.c_str())) return node;
    if (const auto at = aliases.find(name); at != aliases.end()) return at->second;
    std::vector<std::string> names;
    for (Node* const node : core.AllNodes()) names.emplace_back(node->GetName());
    for (const auto& [alias, node] : aliases)
        if (alias != node->GetName()) names.push_back(alias);
    throw Error("unknown node " + Quoted(name) + ", expected " +
                NearNames(name, names, "a node, but the scene has none"));
}

Texmap* LoadContext::MapNamed(const std::string& name) {
    return FindNamed(maps, name, "map");
}

Mtl* LoadContext::MaterialNamed(const std::string& name) const {
    return FindNamed(materials, name, "material");
}

void LoadContext::AddObject(const SectionReader& reader, const std::string& name, ReferenceTarget* object) {
    if (!scene.objects.emplace(name, object).second)
        reader.FailAtKey("name", "second object " + Quoted(name) + ", expected a name of its own");
}

void LoadContext::SetParams(const TomlValue* table, Animatable* object, const std::string& name) {
    if (!table) return;
    for (const auto& [key, value] : table->entries)
        At(value.line, [&, &key = key, &value = value] {
            SetParam(FindParam(object, name, key), value, 0, core.GetTicksPerFrame(), *this);
        });
}

TimeValue LoadContext::Ticks(double frame) const {
    const double ticks = frame * core.GetTicksPerFrame();
    if (!(std::abs(ticks) < 2e9))
        throw Error("frame " + NumberText(frame) + " is too far away, expected an earlier one");
    return TimeValue(std::lround(ticks));
}

namespace {

template <class Read>
LoadedScene Open(Core& core, const std::string& file, Read&& read) {
    NotifyScope opening(core, NOTIFY_FILE_PRE_OPEN, NOTIFY_FILE_OPEN_FAILED, const_cast<char*>(file.c_str()));
    LoadedScene scene;
    scene.file = file;
    const TomlValue root = ParseToml(file, read());
    const SectionReader whole(scene.file, *FindSceneSection("file"), root);
    LoadContext context(core, scene, root);
    LoadSettings(context);
    LoadMaps(context);
    LoadMaterials(context);
    LoadMeshes(context);
    LoadShapes(context);
    LoadNodes(context);
    LoadCameras(context);
    LoadLights(context);
    LoadModifiers(context);
    LoadHairObjects(context);
    LoadHairRenderer(context);
    LoadEffects(context);
    LoadKeys(context);
    opening.SetAfter(NOTIFY_FILE_POST_OPEN);
    return scene;
}

} // namespace

LoadedScene LoadScene(Core& core, const std::string& file) {
    return Open(core, file, [&] { return ReadWholeFile(file, size_t(64) << 20); });
}

LoadedScene LoadSceneText(Core& core, const std::string& file, std::string_view text) {
    return Open(core, file, [text] { return text; });
}

ReferenceTarget* FindObject(const LoadedScene& scene, const std::string& name) {
    return FindNamed(scene.objects, name, "object");
}

namespace {

// Names for values on a command line: of the scene as it stands.
class CoreNames : public SceneNames {
public:
    CoreNames(Core& core, LoadedScene& scene) : context_(core, scene, nothing_) {}
    INode* NodeNamed(const std::string& name) override { return context_.NodeNamed(name); }
    Texmap* MapNamed(const std::string& name) override {
        if (Texmap* const map = context_.core.FindTexmapByName(name.c_str())) return map;
        throw Error("unknown map " + Quoted(name) + ", expected one of the scene");
    }

private:
    TomlValue nothing_;
    LoadContext context_;
};

} // namespace

void SetByText(Core& core, LoadedScene& scene, const std::string& assignment) {
    const size_t equals = assignment.find('=');
    const size_t dot = assignment.rfind('.', equals);
    try {
        if (equals == std::string::npos || dot == std::string::npos || dot == 0 || dot + 1 == equals)
            throw Error("expected OBJECT.PARAM=VALUE");
        const std::string object = assignment.substr(0, dot), param = assignment.substr(dot + 1, equals - dot - 1);
        const ParamPlace place = FindParam(FindObject(scene, object), object, param);
        CoreNames names(core, scene);
        SetParam(place, ParseTomlValue(assignment.substr(equals + 1)), core.GetTime(), core.GetTicksPerFrame(), names);
    } catch (const Error& e) {
        throw Error("--set " + Quoted(assignment) + ": " + e.what());
    }
}

} // namespace host
