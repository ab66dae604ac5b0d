#pragma once
// Scenes in a folder of their own.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "host/error_of.h"
#include "render/frame.h"
#include "scene/loader.h"
#include "temp_folder.h"

namespace scene_test {

using test::ErrorOf;

class SceneTest : public testing::Test {
protected:
    SceneTest() {
        core.SetQuietMode(true);
        host::RegisterRenderClasses(core);
        Write("quad.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\nf 1 1 2\n");
        Write("two.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\no left\nf 1 2 3\no right\nf 3 2 1\n");
    }
    std::string Write(const std::string& name, const std::string& content) const { return temp_.Write(name, content); }
    /// The library with the fur and hair classes.
    void LoadPlugin() {
        std::string error;
        ASSERT_TRUE(core.Plugins().Load(VELMAR_BIN_DIR "/velmar.dlu", error)) << error;
    }
    host::LoadedScene Load(const std::string& text) { return host::LoadScene(core, Write("s.toml", text)); }
    /// The error's line without the folder.
    std::string Problem(const std::string& text) {
        core.ResetScene();
        std::string line = ErrorOf([&] { Load(text); });
        for (size_t at; (at = line.find(folder_ + "/")) != std::string::npos;) line.erase(at, folder_.size() + 1);
        return line;
    }
    host::Node* NodeOf(const char* name) { return static_cast<host::Node*>(core.GetINodeByName(name)); }
    static float FloatOf(Animatable* object, const std::string& name, TimeValue t = 0) {
        const host::ParamPlace p = host::FindParam(object, "it", name);
        return p.block->GetFloat(p.def->id, t);
    }
    static Color ColorOf(Animatable* object, const std::string& name, TimeValue t = 0) {
        const host::ParamPlace p = host::FindParam(object, "it", name);
        return p.block->GetColor(p.def->id, t);
    }

    const test::TempFolder temp_;
    const std::string folder_ = temp_.Path();
    host::Core core;
    host::Core::Scope current{core};
};

} // namespace scene_test
