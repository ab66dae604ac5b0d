#pragma once
// A host with the plug-in and a scene.

#include <string>
#include <vector>

#include "core/core.h"
#include "interrupt.h"
#include "scene/loader.h"

namespace velmar {

/// What commands that open a scene have in common.
struct SceneOptions {
    std::string scene;
    std::string plugin; ///< empty: velmar.dlu beside this program
    std::vector<std::string> set;
};

/// Loads the plug-in, then the scene, then sets parameters. The core is current while the session lives. Throws
/// host::Error or Failure.
class Session {
public:
    explicit Session(const SceneOptions& options);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    host::Core core;
    host::LoadedScene scene;

    /// The hair renderer, or null when the scene has none.
    Animatable* Renderer() const;
    /// One of the renderer's numbers by its internal name; 0 when there is none.
    int RendererNumber(const char* name) const;

private:
    void LoadPlugin(const std::string& plugin);

    CoreWatch watch_{&core};
};

} // namespace velmar
