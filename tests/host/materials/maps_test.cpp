#include <cmath>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "core/core.h"
#include "flat_context.h"
#include "image/write_picture.h"
#include "materials/bitmap_map.h"
#include "materials/checker_map.h"
#include "materials/map_wrap.h"
#include "render/frame.h"

namespace host {
namespace {

namespace fs = std::filesystem;

TEST(CheckerMap, ColoursAtKnownPlaces) {
    CheckerMap map;
    map.Params()->SetValue(kCheckerColor1, 0, Color(1, 0, 0));
    map.Params()->SetValue(kCheckerColor2, 0, Color(0, 0, 1));
    const struct {
        float u, v;
        bool second;
    } cases[] = {{0.1f, 0.1f, false}, {0.6f, 0.1f, true},  {0.1f, 0.6f, true},    {0.6f, 0.6f, false},
                 {1.1f, 0.1f, false}, {-0.1f, 0.1f, true}, {-0.1f, -0.1f, false}, {0.5f, 0.4999f, true}};
    FlatContext sc;
    for (const auto& c : cases) {
        sc.uvw = {c.u, c.v, 0};
        EXPECT_EQ(Color(map.EvalColor(sc)), c.second ? Color(0, 0, 1) : Color(1, 0, 0)) << c.u << " " << c.v;
    }
}

TEST(CheckerMap, TilingOffsetAndChannel) {
    CheckerMap map;
    FlatContext sc;
    sc.uvw = {0.1f, 0.1f, 0};
    EXPECT_EQ(map.EvalMono(sc), 0.0f);
    map.Params()->SetValue(kMapTileU, 0, 5.0f); // 0.5: upper half
    EXPECT_EQ(map.EvalMono(sc), 1.0f);
    map.Params()->SetValue(kMapOffsetU, 0, 0.5f);
    EXPECT_EQ(map.EvalMono(sc), 0.0f);
    map.Params()->SetValue(kMapOffsetU, 0, 0.0f);
    map.Params()->SetValue(kMapTileU, 0, 1.0f);
    map.Params()->SetValue(kMapOffsetV, 0, 0.7f);
    EXPECT_EQ(map.EvalMono(sc), 0.0f); // -0.6: lower half
    map.Params()->SetValue(kMapOffsetV, 0, 0.3f);
    EXPECT_EQ(map.EvalMono(sc), 1.0f); // -0.2: upper half
    map.Params()->SetValue(kMapOffsetV, 0, 0.0f);
    map.Params()->SetValue(kMapChannel, 0, 2);
    EXPECT_EQ(map.EvalMono(sc), 0.0f); // (0.9, 0.9) in that channel
    map.Params()->SetValue(kMapSource, 0, int(kMapScreen));
    sc.screen = {0.7f, 0.2f};
    EXPECT_EQ(map.EvalMono(sc), 1.0f);
}

TEST(MapCoords, TheSphereHasYInTheMiddleAndZOnTop) {
    MapCoords coords;
    coords.source = kMapSphere;
    FlatContext sc;
    const auto at = [&](const Point3& direction) {
        sc.view = direction;
        return coords.At(sc);
    };
    EXPECT_NEAR(at({0, 1, 0}).x, 0.5f, 1e-6f);
    EXPECT_NEAR(at({0, 1, 0}).y, 0.5f, 1e-6f);
    EXPECT_NEAR(at({1, 0, 0}).x, 0.75f, 1e-6f);
    EXPECT_NEAR(at({-1, 0, 0}).x, 0.25f, 1e-6f);
    EXPECT_NEAR(at({0, 0, 1}).y, 1, 1e-6f);
    EXPECT_NEAR(at({0, 0, -3}).y, 0, 1e-6f);
}

class BitmapMapTest : public testing::Test {
protected:
    BitmapMapTest()
        : path_((fs::temp_directory_path() / ("velmar_map_" + std::to_string(getpid()) + ".exr")).string()) {
        // Upper line red, green; lower line blue, white.
        Picture p(2, 2);
        p.PutPixel(0, 0, {1, 0, 0, 1});
        p.PutPixel(1, 0, {0, 1, 0, 1});
        p.PutPixel(0, 1, {0, 0, 1, 0.5f});
        p.PutPixel(1, 1, {1, 1, 1, 1});
        WritePicture(p, path_);
        map_.Params()->SetValue(kBitmapFile, 0, TSTR(path_));
    }
    ~BitmapMapTest() override { fs::remove(path_); }
    AColor At(float u, float v) {
        sc_.uvw = {u, v, 0};
        return map_.EvalColor(sc_);
    }
    void SetWrap(int wrap) {
        map_.Params()->SetValue(kBitmapWrapU, 0, wrap);
        map_.Params()->SetValue(kBitmapWrapV, 0, wrap);
    }
    std::string path_;
    BitmapMap map_;
    FlatContext sc_;
};

TEST_F(BitmapMapTest, PixelCentresGiveThePixels) {
    EXPECT_EQ(map_.LoadError(), "");
    EXPECT_EQ(At(0.25f, 0.75f), AColor(1, 0, 0, 1));
    EXPECT_EQ(At(0.75f, 0.75f), AColor(0, 1, 0, 1));
    EXPECT_EQ(At(0.25f, 0.25f), AColor(0, 0, 1, 0.5f));
    EXPECT_EQ(At(0.75f, 0.25f), AColor(1, 1, 1, 1));
}

TEST_F(BitmapMapTest, ItsAlphaMayCountAsItsNumber) {
    const auto mono = [&](float u, float v) {
        sc_.uvw = {u, v, 0};
        return map_.EvalMono(sc_);
    };
    EXPECT_FLOAT_EQ(mono(0.25f, 0.25f), 1 / 3.0f);
    map_.Params()->SetValue(kBitmapMono, 0, int(kMonoAlpha));
    EXPECT_EQ(mono(0.25f, 0.25f), 0.5f);
    EXPECT_EQ(mono(0.75f, 0.25f), 1.0f);
    EXPECT_EQ(mono(0.25f, 0.5f), 0.75f);
    map_.Params()->SetValue(kOutAmount, 0, 0.5f);
    EXPECT_EQ(mono(0.25f, 0.25f), 0.25f);
}

TEST_F(BitmapMapTest, BetweenCentresItIsBilinear) {
    EXPECT_EQ(At(0.5f, 0.75f), AColor(0.5f, 0.5f, 0, 1));
    EXPECT_EQ(At(0.25f, 0.5f), AColor(0.5f, 0, 0.5f, 0.75f));
    EXPECT_EQ(At(0.5f, 0.5f), AColor(0.5f, 0.5f, 0.5f, 0.875f));
}

TEST_F(BitmapMapTest, RepeatsOrGoesOnAtItsBorder) {
    EXPECT_EQ(At(1.25f, -0.25f), At(0.25f, 0.75f));
    EXPECT_EQ(At(0, 0.75f), AColor(0.5f, 0.5f, 0, 1)); // half its neighbour across the seam
    SetWrap(kWrapClamp);
    EXPECT_EQ(At(0, 0.75f), AColor(1, 0, 0, 1));
    EXPECT_EQ(At(7, -3), AColor(1, 1, 1, 1));
    SetWrap(kWrapRepeat);
    map_.Params()->SetValue(kMapTileU, 0, 2.0f);
    EXPECT_EQ(At(0.125f, 0.75f), AColor(1, 0, 0, 1));
    EXPECT_EQ(At(0.375f, 0.75f), AColor(0, 1, 0, 1));
}

TEST_F(BitmapMapTest, WildCoordinatesAreHarmless) {
    for (const float u : {1e9f, -1e9f, 1e30f, INFINITY, NAN}) {
        for (const int wrap : {kWrapRepeat, kWrapMirror, kWrapClamp})
            for (const int filter : {kFilterNone, kFilterPyramid, kFilterSummedArea})
                for (const float across : {0.0f, 0.3f, 1e30f, INFINITY, NAN}) {
                    SetWrap(wrap);
                    map_.Params()->SetValue(kBitmapFilter, 0, filter);
                    sc_.duvw = {across, across, 0};
                    EXPECT_GE(At(u, u).a, 0.499f) << u << " " << wrap << " " << filter << " " << across;
                }
    }
}

TEST_F(BitmapMapTest, MirrorImagesAlternate) {
    SetWrap(kWrapMirror);
    for (const float u : {0.1f, 0.25f, 0.4f, 0.6f, 0.97f})
        for (const float v : {0.2f, 0.75f}) {
            for (const float mirrored : {-u, 2 - u}) {
                const AColor a = At(mirrored, v), b = At(u, v);
                EXPECT_NEAR(a.r, b.r, 1e-5f);
                EXPECT_NEAR(a.g, b.g, 1e-5f);
                EXPECT_NEAR(a.b, b.b, 1e-5f);
            }
        }
    EXPECT_EQ(At(1.25f, 0.75f), AColor(0, 1, 0, 1)); // green lies next to green
    EXPECT_EQ(At(0, 0.75f), AColor(1, 0, 0, 1));     // no blend across the seam
}

TEST_F(BitmapMapTest, FiltersGiveMeansOfRegions) {
    for (const int filter : {kFilterPyramid, kFilterSummedArea}) {
        map_.Params()->SetValue(kBitmapFilter, 0, filter);
        sc_.duvw = {1, 1, 0};
        const AColor whole = At(0.3f, 0.7f); // one repetition, wherever it lies
        EXPECT_NEAR(whole.r, 0.5f, 1e-5f);
        EXPECT_NEAR(whole.g, 0.5f, 1e-5f);
        EXPECT_NEAR(whole.b, 0.5f, 1e-5f);
        EXPECT_NEAR(whole.a, 0.875f, 1e-5f);
        sc_.duvw = {0.5f, 0.5f, 0}; // a pixel of the picture: as without filter
        EXPECT_NEAR(At(0.25f, 0.75f).r, 1, 1e-5f);
        EXPECT_NEAR(At(0.25f, 0.75f).g, 0, 1e-5f);
        sc_.filterMaps = 0;
        sc_.duvw = {1, 1, 0};
        EXPECT_EQ(At(0.25f, 0.75f), AColor(1, 0, 0, 1));
        sc_.filterMaps = 1;
    }
    // A flat region: the summed area knows that it is wide and low, the pyramid does not.
    sc_.duvw = {1, 0.5f, 0};
    EXPECT_NEAR(At(0.5f, 0.75f).r, 0.5f, 1e-5f);
    EXPECT_NEAR(At(0.5f, 0.75f).b, 0, 1e-5f);
    map_.Params()->SetValue(kBitmapFilter, 0, int(kFilterPyramid));
    EXPECT_NEAR(At(0.5f, 0.75f).b, 0.5f, 1e-5f);
}

// The mean over a rectangle against a fine sum of the picture's pixels.
TEST_F(BitmapMapTest, SummedAreaIsTheExactMeanForEveryWrap) {
    const Image image = LoadImage(path_, false);
    const SummedArea sums(image);
    for (const int wrap : {kWrapRepeat, kWrapMirror, kWrapClamp})
        for (const float u : {-1.3f, 0.1f, 0.5f, 1.9f})
            for (const Point2& across : {Point2(0.6f, 0.9f), Point2(2.4f, 0.7f)}) {
                const float v = 0.35f;
                double sum = 0;
                const int n = 400;
                for (int j = 0; j < n; ++j)
                    for (int i = 0; i < n; ++i) {
                        const float x = Wrapped(u + across.x * ((float(i) + 0.5f) / n - 0.5f), wrap);
                        const float y = 1 - Wrapped(v + across.y * ((float(j) + 0.5f) / n - 0.5f), wrap);
                        sum += double(image.At(std::min(int(x * 2), 1), std::min(int(y * 2), 1)).r);
                    }
                EXPECT_NEAR(double(sums.At(u, v, across, {wrap, wrap}).r), sum / (n * n), 5e-3)
                    << wrap << " " << u << " " << across.x;
            }
}

TEST_F(BitmapMapTest, AMissingFileSaysSoAndIsBlack) {
    map_.Params()->SetValue(kBitmapFile, 0, TSTR("/no/such.png"));
    EXPECT_EQ(map_.LoadError(), "/no/such.png: cannot read: there is no such file");
    EXPECT_EQ(At(0.5f, 0.5f), AColor(0, 0, 0, 1));
    map_.Params()->SetValue(kBitmapFile, 0, TSTR(path_));
    EXPECT_EQ(map_.LoadError(), "");
    EXPECT_EQ(At(0.25f, 0.75f), AColor(1, 0, 0, 1));
}

TEST_F(BitmapMapTest, ClonesLookTheSame) {
    RemapDir remap;
    auto* const copy = static_cast<BitmapMap*>(map_.Clone(remap));
    sc_.uvw = {0.25f, 0.25f, 0};
    EXPECT_EQ(copy->EvalColor(sc_), AColor(0, 0, 1, 0.5f));
    copy->DeleteThis();
}

TEST_F(BitmapMapTest, SeveralThreadsMayAsk) {
    std::vector<std::thread> threads;
    std::vector<float> sums(4, 0.0f);
    for (size_t i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            FlatContext sc;
            for (int k = 0; k < 2000; ++k) {
                sc.uvw = {float(k) * 0.013f, float(k) * 0.029f, 0};
                sums[i] += map_.EvalMono(sc);
            }
        });
    for (std::thread& t : threads) t.join();
    for (const float s : sums) EXPECT_EQ(s, sums[0]);
    EXPECT_GT(sums[0], 100.0f);
}

TEST(RenderClasses, AreMadeByTheirClassIds) {
    Core core;
    RegisterRenderClasses(core);
    RegisterRenderClasses(core);
    const std::pair<SClass_ID, Class_ID> ids[] = {{MATERIAL_CLASS_ID, DMTL_CLASS_ID},
                                                  {MATERIAL_CLASS_ID, MULTI_CLASS_ID},
                                                  {TEXMAP_CLASS_ID, BMTEX_CLASS_ID},
                                                  {TEXMAP_CLASS_ID, CHECKER_CLASS_ID},
                                                  {RENDERER_CLASS_ID, SREND_CLASS_ID}};
    for (const auto& [sid, id] : ids) {
        ReferenceTarget* const made = core.CreateInstance(sid, id);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->SuperClassID(), sid);
        EXPECT_EQ(made->ClassID(), id);
    }
}

} // namespace
} // namespace host
