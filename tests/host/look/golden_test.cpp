// The small scenes of examples/host against their golden pictures: 99.9 % of the pixels within 2/255, every pixel
// within 8/255 of the ones that were looked at. After a wanted change, look at the new picture and put it there:
//   velmar render examples/host/NAME.toml -o tests/data/golden/host/NAME.png

#include <algorithm>
#include <filesystem>
#include <vector>

#include "image/write_picture.h"
#include "picture_compare.h"
#include "render/frame.h"
#include "scene/loader.h"

namespace host {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Names(const char* folder, const char* extension) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(std::string(VELMAR_SOURCE_DIR) + folder))
        if (entry.path().extension() == extension) names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

class HostLook : public testing::TestWithParam<std::string> {
protected:
    HostLook() {
        std::string pattern = (fs::temp_directory_path() / "velmar_look_XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    ~HostLook() override { fs::remove_all(folder_); }
    /// Renders an example after `--set`-like assignments and compares it with a golden picture.
    golden::Comparison Look(const std::string& name, const std::string& golden,
                            const std::vector<std::string>& sets = {}) const {
        Core core;
        core.SetQuietMode(true);
        RegisterRenderClasses(core);
        LoadedScene scene = LoadScene(core, VELMAR_SOURCE_DIR "/examples/host/" + name + ".toml");
        for (const std::string& s : sets) SetByText(core, scene, s);
        Picture picture;
        FrameStats stats;
        scene.render.threads = 2;
        EXPECT_EQ(RenderFrame(core, scene.render, nullptr, picture, stats), FrameResult::kDone);
        const std::string file = folder_ + "/picture.png";
        WritePicture(picture, file);
        return golden::Compare(file, VELMAR_TEST_DATA "/golden/host/" + golden + ".png");
    }
    std::string folder_;
};

TEST_P(HostLook, IsAsItWas) {
    const golden::Comparison c = Look(GetParam(), GetParam());
    EXPECT_TRUE(c.Close()) << c;
}

INSTANTIATE_TEST_SUITE_P(Examples, HostLook, testing::ValuesIn(Names("/examples/host", ".toml")),
                         [](const auto& info) { return info.param; });

TEST(HostLookFiles, EveryPictureHasItsScene) {
    EXPECT_EQ(Names("/examples/host", ".toml"), Names("/tests/data/golden/host", ".png"));
}

// What a channel, map or light does must show.
class HostLookDiffers : public HostLook {};

TEST_F(HostLookDiffers, WhenAValueChanges) {
    EXPECT_FALSE(Look("channel_diffuse", "channel_diffuse", {"right.diffuseMapAmount=0.6"}).Close());
    EXPECT_FALSE(Look("channel_bump", "channel_bump", {"left.bumpMapAmount=0.14"}).Close());
    EXPECT_FALSE(Look("map_noise_fractal", "map_noise_fractal", {"noise.phase=0.02"}).Close());
    EXPECT_FALSE(Look("light_far_attenuation", "light_far_attenuation", {"key.farEnd=4.1"}).Close());
    EXPECT_FALSE(Look("camera_roll", "camera_roll", {"cam.roll=0.36"}).Close());
    EXPECT_FALSE(Look("effect_blur", "effect_blur", {"soft.radius=2.7"}).Close());
    EXPECT_FALSE(Look("effect_depth_fog", "effect_depth_fog", {"mist.far=15"}).Close());
    EXPECT_FALSE(Look("effect_order", "effect_order_reversed").Close());
}

// Two ways to the same picture.
TEST_F(HostLookDiffers, NotWhereTwoSettingsMeanTheSame) {
    EXPECT_TRUE(Look("channel_off", "channel_off", {"right.bumpMapAmount=5"}).Close());
    EXPECT_TRUE(Look("light_direct", "light_direct", {"key.shape=0", "key.aspect=3"}).Close());
}

} // namespace
} // namespace host
