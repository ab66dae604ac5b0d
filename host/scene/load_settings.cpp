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
    const auto [first, last] = reader.Pair("range");
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

std::string LoadContext::FindFile(const std::string& name, int line) const {
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::path path(name), folder = fs::path(scene.file).parent_path();
    std::vector<fs::path> places{path.is_absolute() ? path : folder / path};
    if (!path.is_absolute()) {
        for (const std::string& s : search) places.push_back(folder / s / path);
        const char* const more = std::getenv("VELMAR_PATH");
        std::string_view rest(more ? more : "");
        while (!rest.empty()) {
            const size_t end = std::min(rest.find(':'), rest.size());
            if (end > 0) places.push_back(fs::path(rest.substr(0, end)) / path);
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    for (const fs::path& place : places)
        if (fs::exists(place, ignored)) return place.string();
    FailAt(scene.file, line,
           "no such file " + Quoted(name) + ", expected it at " + places[0].string() +
               (places.size() > 1 ? " or in a folder of 'search' or VELMAR_PATH" : ""));
}

} // namespace host
