// [scene] and [render], and the files that scenes name.

#include <cstdlib>
#include <filesystem>

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
    for (const std::string& place : PlacesOf(name))
        if (std::filesystem::exists(place, ignored)) return place;
    FailNoFile(name, line);
}

} // namespace host
