// [scene] and [render], and the files that scenes name.

#include <cstdlib>
#include <filesystem>
#include <map>

#include "import/imported_scene.h"
#include "render/scan_renderer.h"
#include "scene/load_context.h"

namespace host {

namespace {

const TomlValue& TableOf(const LoadContext& context, const char* key) {
    static const TomlValue empty;
    const TomlValue* const table = context.root.Find(key);
    return table ? *table : empty;
}

void SetRange(LoadContext& context, const SectionReader& reader) {
    const std::array<float, 2> range = reader.Pair("range");
    const float first = range[0], last = range[1];
    if (last < first) reader.FailAtKey("range", "'range' ends before it begins, expected [first, last]");
    context.At(reader.LineOf("range"),
               [&] { context.core.SetAnimRange(Interval(context.Ticks(double(first)), context.Ticks(double(last)))); });
    context.scene.firstFrame = int(first);
    context.scene.lastFrame = int(last);
}

PictureRegion ReadCrop(const SectionReader& reader) {
    const std::vector<int> n = reader.Integers("crop");
    if (n.empty()) return {};
    const PictureRegion crop = n.size() == 4 ? PictureRegion{n[0], n[1], n[2], n[3]} : PictureRegion();
    if (crop.Empty()) reader.FailAtKey("crop", "wrong 'crop', expected [x0, y0, x1, y1] with x0 < x1 and y0 < y1");
    return crop;
}

uint32_t ReadChannels(const SectionReader& reader) {
    static const std::map<std::string, uint32_t> kChannels = {
        {"material_id", BMM_CHAN_MTL_ID}, {"node_id", BMM_CHAN_NODE_ID}, {"render_id", BMM_CHAN_NODE_RENDER_ID},
        {"coverage", BMM_CHAN_COVERAGE},  {"color", BMM_CHAN_COLOR},     {"transparency", BMM_CHAN_TRANSP},
        {"real_pixel", BMM_CHAN_REALPIX}, {"velocity", BMM_CHAN_VELOC},  {"uv", BMM_CHAN_UV},
        {"normal", BMM_CHAN_NORMAL}};
    std::vector<std::string> known;
    for (const auto& [name, bit] : kChannels) known.push_back(name);
    uint32_t bits = 0;
    for (const std::string& name : reader.Names("channels")) {
        const auto at = kChannels.find(name);
        if (at == kChannels.end())
            reader.FailAtKey("channels", "unknown channel " + Quoted(name) + ", expected " + JoinChoices(known));
        bits |= at->second;
    }
    return bits;
}

void SetRenderer(LoadContext& context, const SectionReader& reader) {
    const std::vector<int> id = reader.Integers("renderer_class");
    if (id.empty()) return;
    if (id.size() != 2) reader.FailAtKey("renderer_class", "wrong 'renderer_class', expected two whole numbers");
    Core& core = context.core;
    core.SetCurrentRenderer(core.Adopt(new ScanRenderer(Class_ID(uint32_t(id[0]), uint32_t(id[1])))));
}

} // namespace

void LoadSettings(LoadContext& context) {
    const SectionReader scene(context.scene.file, *FindSceneSection("scene"), TableOf(context, "scene"));
    context.search = scene.Names("search");
    context.unit = scene.Number("unit");
    context.core.SetFrameRate(scene.Integer("fps"));
    SetRange(context, scene);
    context.core.SetBackGround(scene.ColorOf("background"));
    context.core.SetAmbient(scene.ColorOf("ambient"));

    const SectionReader render(context.scene.file, *FindSceneSection("render"), TableOf(context, "render"));
    FrameSettings& settings = context.scene.render;
    settings.width = render.Integer("width");
    settings.height = render.Integer("height");
    settings.camera = render.Text("camera");
    settings.pixelAspect = render.Number("aspect");
    settings.threads = render.Integer("threads");
    settings.samples = render.Integer("samples");
    settings.filter = FilterKind(render.Choice("filter"));
    settings.filterWidth = render.Number("filter_width");
    settings.crop = ReadCrop(render);
    settings.fields = FieldMode(render.Choice("fields"));
    context.core.RenderParams().gbufChannels = ReadChannels(render);
    SetRenderer(context, render);
}

std::vector<std::string> LoadContext::PlacesOf(const std::string& name) const {
    namespace fs = std::filesystem;
    const fs::path path(name), folder = fs::path(scene.file).parent_path();
    if (path.is_absolute()) return {name};
    std::vector<std::string> places{(folder / path).string()};
    for (const std::string& s : search) places.push_back((folder / s / path).string());
    const char* const more = std::getenv("VELMAR_PATH");
    std::string_view rest(more ? more : "");
    while (!rest.empty()) {
        const size_t end = std::min(rest.find(':'), rest.size());
        if (end > 0) places.push_back((fs::path(rest.substr(0, end)) / path).string());
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return places;
}

void LoadContext::FailNoFile(const std::string& name, int line) const {
    const std::vector<std::string> places = PlacesOf(name);
    FailAt(scene.file, line,
           "no such file " + Quoted(name) + ", expected it at " + places[0] +
               (places.size() > 1 ? " or in a folder of 'search' or VELMAR_PATH" : ""));
}

std::string LoadContext::FindFile(const std::string& name, int line) const {
    std::error_code ignored;
    bool other = false;
    for (const std::string& place : PlacesOf(name)) {
        if (std::filesystem::is_regular_file(place, ignored)) return place;
        other |= std::filesystem::exists(place, ignored);
    }
    if (other) FailAt(scene.file, line, Quoted(name) + " is a folder or the like, expected a file");
    FailNoFile(name, line);
}

std::string LoadContext::FindMeshFile(const std::string& name, int line, bool scenes) const {
    std::string path = FindFile(name, line);
    if (!IsMeshFile(path) && !(scenes && IsSceneFile(path)))
        FailAt(scene.file, line,
               "unknown form of file " + Quoted(name) + ", expected " +
                   (scenes ? ".obj, .ply, .3ds, .gltf, .glb or .fbx" : ".obj, .ply or .3ds"));
    return path;
}

} // namespace host
