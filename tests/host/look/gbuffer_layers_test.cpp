// The layers of an .exr file with every G-buffer channel, against the golden file. Whole numbers are equal in every
// pixel. Other layers are within 1/1000 of the golden values (relative to those above one) in every pixel, but
// velocities within 1/50 pixel: they are differences of places on the picture.

#include <cmath>
#include <filesystem>
#include <map>

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>
#include <gtest/gtest.h>

#include "image/write_picture.h"
#include "render/frame.h"
#include "scene/loader.h"

namespace host {
namespace {

/// A file's channels by name: values (exact, whole numbers too) and types.
struct Layers {
    explicit Layers(const std::string& path) {
        Imf::InputFile in(path.c_str());
        const Imath::Box2i box = in.header().dataWindow();
        width = box.max.x + 1, height = box.max.y + 1;
        const size_t pixels = size_t(width) * size_t(height);
        Imf::FrameBuffer buffer;
        std::map<std::string, std::vector<uint32_t>> whole;
        const auto slice = [&](Imf::PixelType type, void* data) {
            return Imf::Slice(type, static_cast<char*>(data), 4, 4 * size_t(width));
        };
        for (auto c = in.header().channels().begin(); c != in.header().channels().end(); ++c) {
            types[c.name()] = c.channel().type;
            if (c.channel().type == Imf::UINT)
                buffer.insert(c.name(), slice(Imf::UINT, (whole[c.name()] = std::vector<uint32_t>(pixels)).data()));
            else
                buffer.insert(c.name(), slice(Imf::FLOAT, (values[c.name()] = std::vector<float>(pixels)).data()));
        }
        in.setFrameBuffer(buffer);
        in.readPixels(box.min.y, box.max.y);
        for (const auto& [name, numbers] : whole) values[name].assign(numbers.begin(), numbers.end());
    }
    float At(const char* name, int x, int y) const { return values.at(name)[size_t(y) * size_t(width) + size_t(x)]; }

    int width = 0, height = 0;
    std::map<std::string, Imf::PixelType> types;
    std::map<std::string, std::vector<float>> values;
};

/// Number of pixels of a layer that are farther from the golden ones than they may be.
int Beyond(const Layers& made, const Layers& golden, const std::string& name) {
    const std::vector<float>&a = made.values.at(name), &b = golden.values.at(name);
    const bool whole = golden.types.at(name) == Imf::UINT, velocity = name.rfind("forward.", 0) == 0;
    int beyond = 0;
    for (size_t i = 0; i < b.size(); ++i) {
        const float most = whole ? 0.0f : velocity ? 0.02f : 1e-3f * std::max(1.0f, std::fabs(b[i]));
        beyond += !(std::fabs(a[i] - b[i]) <= most);
    }
    return beyond;
}

class GBufferLayers : public testing::Test {
protected:
    GBufferLayers() {
        std::string pattern = (std::filesystem::temp_directory_path() / "velmar_layers_XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    ~GBufferLayers() override { std::filesystem::remove_all(folder_); }
    Layers Made(const std::vector<std::string>& sets = {}) const {
        Core core;
        core.SetQuietMode(true);
        RegisterRenderClasses(core);
        LoadedScene scene = LoadScene(core, VELMAR_TEST_DATA "/golden/gbuffer.toml");
        for (const std::string& s : sets) SetByText(core, scene, s);
        Picture picture;
        FrameStats stats;
        scene.render.threads = 2;
        EXPECT_EQ(RenderFrame(core, scene.render, nullptr, picture, stats), FrameResult::kDone);
        WritePicture(picture, folder_ + "/made.exr", 2);
        return Layers(folder_ + "/made.exr");
    }
    const Layers golden_{VELMAR_TEST_DATA "/golden/gbuffer.exr"};
    std::string folder_;
};

TEST_F(GBufferLayers, HaveTheNamesAndTypesThatOthersRead) {
    std::map<std::string, Imf::PixelType> expected{{"Z", Imf::FLOAT},
                                                   {"materialid", Imf::UINT},
                                                   {"objectid", Imf::UINT},
                                                   {"instanceid", Imf::UINT},
                                                   {"coverage", Imf::HALF}};
    for (const char* const c : {"R", "G", "B"}) {
        for (const char* const layer : {"", "background.", "color.", "transparency."})
            expected[std::string(layer) + c] = Imf::HALF;
        expected[std::string("realpixel.") + c] = Imf::FLOAT;
    }
    expected["A"] = Imf::HALF;
    for (const char* const c : {"N.X", "N.Y", "N.Z", "uv.u", "uv.v", "forward.u", "forward.v"})
        expected[c] = Imf::FLOAT;
    EXPECT_EQ(Made().types, expected);
    EXPECT_EQ(golden_.types, expected);
}

TEST_F(GBufferLayers, AreAsTheyWere) {
    const Layers made = Made();
    ASSERT_EQ(made.width, golden_.width);
    ASSERT_EQ(made.height, golden_.height);
    for (const auto& [name, type] : golden_.types) EXPECT_EQ(Beyond(made, golden_, name), 0) << name;
}

TEST_F(GBufferLayers, AreNotTheSameWhenTheSceneChanges) {
    const Layers turned = Made({"two.object.segments=3", "glass.opacity=0.65"});
    EXPECT_GT(Beyond(turned, golden_, "transparency.G"), 100);
    EXPECT_GT(Beyond(turned, golden_, "coverage"), 100);
    EXPECT_EQ(Beyond(turned, golden_, "objectid"), 0);
}

// What the golden file says about three places that are known: the ball, the box, and nothing.
TEST_F(GBufferLayers, TellWhatIsSeen) {
    const int ball[] = {19, 20}, box[] = {46, 24}, nothing[] = {2, 2};
    const auto at = [&](const char* name, const int* p) { return golden_.At(name, p[0], p[1]); };
    EXPECT_EQ(at("objectid", ball), 300);
    EXPECT_EQ(at("objectid", box), 65535);
    EXPECT_EQ(at("objectid", nothing), 0);
    EXPECT_NE(at("instanceid", ball), at("instanceid", box));
    EXPECT_NEAR(at("transparency.R", ball), 0.4f, 1.5f / 255);
    EXPECT_EQ(at("transparency.R", box), 0);
    EXPECT_NEAR(at("coverage", ball), 0.84f, 1.5f / 255) << "the background is seen through two walls";
    EXPECT_EQ(at("coverage", nothing), 0);
    EXPECT_EQ(at("Z", nothing), 1e30f);
    EXPECT_NEAR(at("Z", ball), 5.3f, 0.1f);
    EXPECT_GT(at("forward.u", ball), 0.5f) << "to the right";
    EXPECT_LT(at("forward.v", ball), -0.2f) << "and up";
    EXPECT_EQ(at("forward.u", box), 0);
    EXPECT_GT(at("realpixel.R", box), at("color.R", box)) << "brighter than white, which bytes cannot say";
    EXPECT_NEAR(std::hypot(at("N.X", ball), at("N.Y", ball), at("N.Z", ball)), 1, 2e-3f);
    EXPECT_GT(at("N.Z", ball), 0.7f) << "toward the camera";
}

} // namespace
} // namespace host
