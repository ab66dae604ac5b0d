// How samples make pixels: reconstruction filters, regions, fields.

#include "render/pixel_filter.h"

#include <cmath>
#include <numeric>

#include "core/controllers.h"
#include "render/scan_renderer.h"
#include "scene_fixture.h"

namespace host {
namespace {

float Sum(const std::vector<float>& w) {
    return std::accumulate(w.begin(), w.end(), 0.0f);
}

TEST(PixelFilter, AWidthOfOneBoxIsPlain) {
    EXPECT_TRUE(PixelFilter(FilterKind::kBox, 1, 3).Plain());
    EXPECT_FALSE(PixelFilter(FilterKind::kBox, 2, 3).Plain());
    EXPECT_FALSE(PixelFilter(FilterKind::kGaussian, 1, 3).Plain());
}

TEST(PixelFilter, ABoxOfThreePixelsIsTheirMean) {
    const PixelFilter f(FilterKind::kBox, 3, 2);
    EXPECT_EQ(f.Margin(), 1);
    const auto taps = f.TapsOf(5, 20);
    EXPECT_EQ(taps.first, 8);
    EXPECT_EQ(taps.weights, std::vector<float>(6, 1.0f / 6));
}

TEST(PixelFilter, WeightsFollowTheFormulas) {
    // One sample a pixel, four pixels wide: distances 0 and 1/2 of the radius (1 of the cubic's units).
    const auto mitchell = PixelFilter(FilterKind::kMitchell, 4, 1).TapsOf(10, 20).weights;
    ASSERT_EQ(mitchell.size(), 5u);
    EXPECT_NEAR(mitchell[2], 8.0 / 9, 1e-6); // 16/18, neighbours 1/18 each: they add up to one already
    EXPECT_NEAR(mitchell[1], 1.0 / 18, 1e-6);
    EXPECT_EQ(mitchell[0], 0);
    const auto gauss = PixelFilter(FilterKind::kGaussian, 4, 1).TapsOf(10, 20).weights;
    EXPECT_NEAR(gauss[1] / gauss[2], (std::exp(-0.5) - std::exp(-2.0)) / (1 - std::exp(-2.0)), 1e-6);
}

TEST(PixelFilter, WeightsAddUpToOneAlsoAtBorders) {
    for (const FilterKind kind : {FilterKind::kBox, FilterKind::kGaussian, FilterKind::kMitchell})
        for (const float width : {1.5f, 2.0f, 4.0f, 16.0f})
            for (const int at : {0, 1, 9}) {
                const auto taps = PixelFilter(kind, width, 3).TapsOf(at, 10);
                EXPECT_NEAR(Sum(taps.weights), 1, 1e-5);
                EXPECT_GE(taps.first, 0);
                EXPECT_LE(taps.first + int(taps.weights.size()), 30);
            }
}

struct Sampling : SceneTest {
    Node* box = nullptr;
    Sampling() {
        AddCamera({0, 0, 10}, {0, 0, 0});
        AddLight(DIRECT_LGT, {3, 2, 10}, {0, 0, 0});
        box = AddMesh("box", BoxMesh({-1, -1, -1}, {1.2f, 1.1f, 1}), AddMaterial({0.9f, 0.5f, 0.2f}));
        core.SetBackGround({0.1f, 0.2f, 0.4f});
    }
    Picture Made() {
        EXPECT_EQ(Render(), FrameResult::kDone);
        return picture;
    }
    static bool SamePixel(const Picture& a, const Picture& b, int x, int y) {
        const AColor p = a.GetPixel(x, y), q = b.GetPixel(x, y);
        return p.r == q.r && p.g == q.g && p.b == q.b && p.a == q.a && a.Shown(x, y) == b.Shown(x, y);
    }
    static int Differences(const Picture& a, const Picture& b) {
        int n = 0;
        for (int y = 0; y < a.Height(); ++y)
            for (int x = 0; x < a.Width(); ++x) n += !SamePixel(a, b, x, y);
        return n;
    }
};

TEST_F(Sampling, FiltersKeepFlatAreasAndSoftenEdges) {
    const Picture plain = Made();
    settings.filter = FilterKind::kGaussian;
    settings.filterWidth = 3;
    const Picture soft = Made();
    ExpectColor(soft.Shown(0, 0), plain.Shown(0, 0), 1e-5f);
    ExpectColor(soft.Shown(20, 15), plain.Shown(20, 15), 1e-5f);
    EXPECT_GT(Differences(plain, soft), 20);
    // Alpha of a line through the box: as much of it, over more pixels.
    float area[2] = {0, 0};
    int between[2] = {0, 0};
    for (int i = 0; i < 2; ++i)
        for (int x = 0; x < 40; ++x) {
            const float a = (i ? soft : plain).GetPixel(x, 15).a;
            area[i] += a;
            between[i] += a > 0.01f && a < 0.99f;
        }
    EXPECT_NEAR(area[0], area[1], 0.05f);
    EXPECT_GT(between[1], between[0]);
}

TEST_F(Sampling, AMitchellFilterSharpensBesideEdges) {
    core.SetBackGround({0.5f, 0.5f, 0.5f});
    AddMesh("other", BoxMesh({-3.05f, -2.08f, -1}, {-2.31f, -1.13f, 1}), nullptr); // edges elsewhere in their pixels
    settings.filter = FilterKind::kMitchell;
    settings.filterWidth = 4;
    const Picture p = Made();
    float least = 1, most = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            least = std::min(least, p.GetBackground(x, y).r);
            most = std::max(most, p.GetBackground(x, y).r);
        }
    EXPECT_EQ(least, 0.0f) << "light stays above zero";
    EXPECT_GT(most, 0.503f) << "the background overshoots";
}

TEST_F(Sampling, FilteredPicturesDoNotDependOnThreads) {
    settings.filter = FilterKind::kMitchell;
    settings.filterWidth = 5;
    settings.threads = 1;
    const Picture one = Made();
    for (const int threads : {2, 3, 16}) {
        settings.threads = threads;
        EXPECT_EQ(Differences(one, Made()), 0) << threads;
    }
}

TEST_F(Sampling, ARegionIsPartOfTheWholePicture) {
    for (const FilterKind kind : {FilterKind::kBox, FilterKind::kGaussian}) {
        settings.crop = {};
        settings.filter = kind;
        settings.filterWidth = kind == FilterKind::kBox ? 1 : 3;
        const Picture whole = Made();
        settings.crop = {12, 5, 25, 24};
        const Picture part = Made();
        ASSERT_EQ(part.Width(), 40);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x)
                if (x >= 12 && x < 25 && y >= 5 && y < 24)
                    ASSERT_TRUE(SamePixel(whole, part, x, y)) << x << ", " << y;
                else
                    ASSERT_EQ(part.Shown(x, y), Color()) << x << ", " << y;
    }
}

TEST_F(Sampling, RegionsOutsideThePictureAreRefused) {
    settings.crop = {0, 0, 41, 30};
    try {
        Render();
        FAIL();
    } catch (const Error& e) {
        EXPECT_STREQ(e.what(), "the region 0,0,41,30 leaves the picture of 40 x 30 pixels, expected a part of it");
    }
    settings.crop = {};
    settings.filterWidth = 0.5f;
    EXPECT_THROW(Render(), Error);
    settings.filterWidth = 17;
    EXPECT_THROW(Render(), Error);
}

TEST_F(Sampling, FieldsAreHalfAFrameApart) {
    auto* const prs = new PrsControl;
    box->SetTMController(prs);
    auto* const position = static_cast<PositionControl*>(prs->Position());
    position->SetKey(0, {0, 0, 0});
    position->SetKey(core.GetTicksPerFrame(), {2, 0, 0});
    Picture at[2];
    for (int i = 0; i < 2; ++i) {
        settings.time = i * core.GetTicksPerFrame() / 2;
        at[i] = Made();
    }
    EXPECT_GT(Differences(at[0], at[1]), 20);
    settings.time = 0;
    for (const FieldMode mode : {FieldMode::kEvenFirst, FieldMode::kOddFirst}) {
        settings.fields = mode;
        const Picture both = Made();
        for (int y = 0; y < 30; ++y) {
            const bool second = (y & 1) == (mode == FieldMode::kEvenFirst ? 1 : 0);
            for (int x = 0; x < 40; ++x) ASSERT_TRUE(SamePixel(both, at[second], x, y)) << x << ", " << y;
        }
        EXPECT_TRUE(both.GetRenderInfo()->fieldRender);
    }
}

/// Notes what a render says to it.
struct FieldFog : Atmospheric {
    struct Told {
        TimeValue time;
        bool fields, contextFields;
        int order, current;
        float yscale;
    };
    std::vector<Told> told;
    std::vector<TimeValue> updates;
    int begun = 0, ended = 0;
    std::mutex mutex;
    ~FieldFog() override { DeleteAllRefs(); }
    int RenderBegin(TimeValue) override { return ++begun; }
    int RenderEnd(TimeValue) override { return ++ended; }
    int Update(TimeValue t, Interval&) override {
        updates.push_back(t);
        return 1;
    }
    void Shade(ShadeContext& sc, const Point3&, const Point3&, Color&, Color&, bool) override {
        const std::lock_guard<std::mutex> lock(mutex);
        if (told.size() == updates.size()) return;
        const RendParams& p = GetCOREInterface()->GetRendParams();
        told.push_back({updates.back(), p.fieldRender, sc.globContext->fieldRender, p.fieldOrder, p.currentField,
                        sc.globContext->yscale});
    }
};

TEST_F(Sampling, EffectsHearOfFields) {
    auto* const fog = core.Adopt(new FieldFog);
    core.AddAtmosphere(fog);
    Made();
    settings.fields = FieldMode::kOddFirst;
    Made();
    settings.fields = FieldMode::kNone;
    Made();
    ASSERT_EQ(fog->told.size(), 4u);
    const TimeValue half = core.GetTicksPerFrame() / 2;
    EXPECT_EQ(fog->updates, (std::vector<TimeValue>{0, 0, half, 0}));
    EXPECT_EQ(fog->begun, 3);
    EXPECT_EQ(fog->ended, 3);
    EXPECT_FALSE(fog->told[0].fields || fog->told[3].fields || fog->told[3].contextFields);
    for (const int i : {1, 2}) {
        EXPECT_TRUE(fog->told[i].fields && fog->told[i].contextFields);
        EXPECT_EQ(fog->told[i].order, 1);
        EXPECT_EQ(fog->told[i].current, i == 1 ? 1 : 0);
        EXPECT_EQ(fog->told[i].yscale, fog->told[0].yscale * 0.5f);
    }
}

TEST_F(Sampling, ARendererCanShowAnotherClass) {
    const Picture before = Made();
    const Class_ID id(0x58f67d6c, 0x4fcf3bc3);
    core.SetCurrentRenderer(core.Adopt(new ScanRenderer(id)));
    EXPECT_EQ(core.GetCurrentRenderer()->ClassID(), id);
    EXPECT_EQ(Differences(before, Made()), 0);
}

} // namespace
} // namespace host
