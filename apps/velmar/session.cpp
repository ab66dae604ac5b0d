#include "session.h"

#include <filesystem>

#include "failure.h"
#include "render/frame.h"

namespace velmar {

namespace {

std::string PluginBesideProgram() {
    std::error_code ignored;
    return (std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path() / "velmar.dlu").string();
}

} // namespace

Session::Session(const SceneOptions& options) {
    core.MakeCurrent();
    core.SetQuietMode(true);
    host::RegisterRenderClasses(core);
    LoadPlugin(options.plugin);
    scene = host::LoadScene(core, options.scene);
    for (const std::string& assignment : options.set) host::SetByText(core, scene, assignment);
}

void Session::LoadPlugin(const std::string& plugin) {
    std::string error;
    const bool own = plugin.empty();
    if (core.Plugins().Load(own ? PluginBesideProgram() : plugin, error)) return;
    throw Failure(own ? kFailedWork : kBadInput, error);
}

Animatable* Session::Renderer() const {
    const auto at = scene.objects.find("render");
    return at == scene.objects.end() ? nullptr : at->second;
}

int Session::RendererNumber(const char* name) const {
    for (const host::ParamPlace& p : host::ListParams(Renderer()))
        if (p.def->intName == name) return p.block->GetInt(p.def->id);
    return 0;
}

} // namespace velmar
