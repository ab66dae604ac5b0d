#pragma once
// Loading of scene descriptions.

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/core.h"
#include "import/mesh_import.h"
#include "render/frame.h"
#include "scene/param_access.h"

namespace host {

// Classes of the plug-in that scenes name.
inline constexpr Class_ID kFurClass{0x790b49f8, 0x74687d62}, kHairClass{0x6d707903, 0x0614216f},
    kHairRendererClass{0x2b22403b, 0x168608d6};

/// A mesh that a scene imported.
struct LoadedMesh {
    std::string file;
    ImportOptions options;
    INode* node = nullptr;
    int degenerateFaces = 0;
};

/// A file with a whole scene that a scene imported, and what is to be said of it.
struct LoadedFile {
    std::string path;
    std::vector<std::string> notes;
};

/// A fur or hair object of a scene.
struct LoadedHair {
    std::string name;
    Atmospheric* object = nullptr;
    bool isFur = false;
};

/// What is known of a loaded scene. Everything in it belongs to the core's scene.
struct LoadedScene {
    std::string file;
    FrameSettings render;
    int firstFrame = 0, lastFrame = 100;
    std::vector<LoadedMesh> meshes;
    std::vector<LoadedFile> files;
    std::vector<LoadedHair> hair;
    /// Objects with parameters by the names that `keys` and command lines use.
    std::map<std::string, ReferenceTarget*> objects;
};

/// Loads a scene description into the core, which must be the current one and hold an empty scene, with the classes of
/// RegisterRenderClasses and of the plug-in. Throws Error with one line about the first mistake; the core's scene is
/// then incomplete.
LoadedScene LoadScene(Core& core, const std::string& file);
/// The same with the text that would stand in the file; what it names is looked for beside `file`.
LoadedScene LoadSceneText(Core& core, const std::string& file, std::string_view text);

/// Sets a parameter by "OBJECT.PARAM=VALUE" after loading. Throws Error, naming the text.
void SetByText(Core& core, LoadedScene& scene, const std::string& assignment);

/// The object of that name; throws Error with the nearest names.
ReferenceTarget* FindObject(const LoadedScene& scene, const std::string& name);

} // namespace host
