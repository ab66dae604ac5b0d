// Hair in pictures of two fields: each field's lines are those of a picture of the field's time.

#include <gtest/gtest.h>

#include "render/frame.h"
#include "scene/loader.h"

namespace {

using namespace host;

/// The golden ball, in motion.
class FieldHair : public testing::Test {
protected:
    FieldHair() {
        core_.SetQuietMode(true);
        RegisterRenderClasses(core_);
        std::string error;
        EXPECT_TRUE(core_.Plugins().Load(VELMAR_BIN_DIR "/velmar.dlu", error)) << error;
        scene_ = LoadScene(core_, VELMAR_TEST_DATA "/golden/field_hair.toml");
        scene_.render.threads = 2;
    }
    Picture At(TimeValue t, FieldMode fields) {
        scene_.render.time = t;
        scene_.render.fields = fields;
        Picture picture;
        FrameStats stats;
        EXPECT_EQ(RenderFrame(core_, scene_.render, nullptr, picture, stats), FrameResult::kDone);
        return picture;
    }
    static bool SameLine(const Picture& a, const Picture& b, int y) {
        for (int x = 0; x < a.Width(); ++x)
            if (a.GetPixel(x, y) != b.GetPixel(x, y) || a.GetBackground(x, y) != b.GetBackground(x, y) ||
                a.Z()[size_t(y) * size_t(a.Width()) + size_t(x)] != b.Z()[size_t(y) * size_t(a.Width()) + size_t(x)])
                return false;
        return true;
    }

    Core core_;
    Core::Scope current_{core_};
    LoadedScene scene_;
};

TEST_F(FieldHair, EveryLineIsItsTimes) {
    const TimeValue start = 2 * core_.GetTicksPerFrame(), half = core_.GetTicksPerFrame() / 2;
    const Picture first = At(start, FieldMode::kNone), second = At(start + half, FieldMode::kNone);
    int differ = 0, hairy = 0;
    for (int y = 0; y < first.Height(); ++y) {
        differ += !SameLine(first, second, y);
        for (int x = 0; x < first.Width(); ++x)
            hairy +=
                first.GetPixel(x, y).a > 0 && first.Z()[size_t(y) * size_t(first.Width()) + size_t(x)] == kEmptyDepth;
    }
    EXPECT_GT(differ, first.Height() / 2) << "half a frame must show";
    EXPECT_GT(hairy, 200) << "hair before the background";
    for (const FieldMode mode : {FieldMode::kEvenFirst, FieldMode::kOddFirst}) {
        const Picture both = At(start, mode);
        for (int y = 0; y < both.Height(); ++y) {
            const bool later = (y & 1) == (mode == FieldMode::kEvenFirst ? 1 : 0);
            EXPECT_TRUE(SameLine(both, later ? second : first, y)) << "line " << y << (later ? ", later" : "");
        }
    }
}

} // namespace
