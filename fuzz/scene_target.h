#pragma once
// Scene files for fuzzing: one is loaded as if it stood beside a few small meshes.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "render/frame.h"
#include "scene/loader.h"
#include "targets.h"

namespace fuzz {

/// A folder with what the seeds import (without pictures, which take long to open); it is deleted with this.
class SceneFolder {
public:
    /// `corpus`: the folder with the seeds of the importers.
    explicit SceneFolder(const std::string& corpus) {
        namespace fs = std::filesystem;
        // In memory where there is such a place.
        const fs::path memory = "/dev/shm";
        std::error_code ignored;
        const fs::path base = fs::is_directory(memory, ignored) ? memory : fs::temp_directory_path();
        std::string pattern = (base / "velmar_fuzz_XXXXXX").string();
        path_ = mkdtemp(pattern.data());
        std::ofstream(path_ + "/quad.obj") << "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\nf 1 1 2\nl 1 2 3\n";
        fs::copy_file(corpus + "/ply/ascii.ply", path_ + "/quad.ply", ignored);
        fs::copy_file(corpus + "/gltf/plain.glb", path_ + "/skinned.glb", ignored);
    }
    ~SceneFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    SceneFolder(const SceneFolder&) = delete;
    SceneFolder& operator=(const SceneFolder&) = delete;

    void Run(const std::string& content) const {
        const std::string file = path_ + "/scene.toml";
        host::Core core;
        core.MakeCurrent();
        core.SetQuietMode(true);
        host::RegisterRenderClasses(core);
        try {
            host::LoadSceneText(core, file, content);
        } catch (const host::Error& e) {
            const std::string text = e.what();
            Require(text.starts_with(path_) && text.find('\n') == std::string::npos,
                    "an error is one line with the file");
        }
    }

private:
    std::string path_;
};

} // namespace fuzz
