// Noise, gradients, vertex colours, adjustments, coordinates.

#include <cmath>

#include <gtest/gtest.h>

#include "core/controllers.h"
#include "flat_context.h"
#include "host/statistics.h"
#include "materials/checker_map.h"
#include "materials/gradient_map.h"
#include "materials/multiply_map.h"
#include "materials/noise_map.h"
#include "materials/vertex_color_map.h"

namespace host {
namespace {

using test::Statistics;

Statistics NoiseStatistics(int type) {
    NoiseMap map;
    map.Params()->SetValue(kNoiseType, 0, type);
    map.Params()->SetValue(kNoiseLevels, 0, 4.0f);
    Statistics s;
    for (int i = 0; i < 200000; ++i) {
        const float k = float(i);
        s.Add(map.ValueAt(
            {std::fmod(k * 0.754877f, 200.0f), std::fmod(k * 0.569840f, 200.0f), std::fmod(k * 0.318309f, 200.0f)}));
    }
    return s;
}

TEST(NoiseMap, TypesHaveTheirRangesAndMeans) {
    const Statistics regular = NoiseStatistics(kNoiseRegular), fractal = NoiseStatistics(kNoiseFractal),
                     turbulence = NoiseStatistics(kNoiseTurbulence);
    EXPECT_NEAR(regular.Mean(), 0.5, 0.01);
    EXPECT_NEAR(fractal.Mean(), 0.5, 0.01);
    EXPECT_GT(regular.low, -0.1);
    EXPECT_LT(regular.high, 1.1);
    EXPECT_GT(regular.Variance(), 1.5 * fractal.Variance()); // octaves even one another out
    EXPECT_GE(turbulence.low, 0.0);
    EXPECT_LT(turbulence.high, 1.0);
    EXPECT_GT(turbulence.Mean(), 0.1);
    EXPECT_LT(turbulence.Mean(), 0.3);
}

TEST(NoiseMap, SizeScalesAndPhaseChanges) {
    NoiseMap map;
    map.Params()->SetValue(kNoiseSize, 0, 2.0f);
    const float at = map.ValueAt({0.7f, 1.1f, 3.3f});
    map.Params()->SetValue(kNoiseSize, 0, 4.0f);
    EXPECT_FLOAT_EQ(map.ValueAt({1.4f, 2.2f, 6.6f}), at);
    map.Params()->SetValue(kNoisePhase, 0, 0.5f);
    EXPECT_GT(std::fabs(map.ValueAt({1.4f, 2.2f, 6.6f}) - at), 1e-3f);
    map.Params()->SetValue(kNoisePhase, 0, 256.0f); // the noise repeats
    EXPECT_NEAR(map.ValueAt({1.4f, 2.2f, 6.6f}), at, 1e-5f);
}

TEST(NoiseMap, LevelsMayBeFractions) {
    NoiseMap map;
    map.Params()->SetValue(kNoiseType, 0, int(kNoiseFractal));
    const auto at = [&](float levels) {
        map.Params()->SetValue(kNoiseLevels, 0, levels);
        return map.ValueAt({0.31f, 0.77f, 0.53f});
    };
    EXPECT_NEAR(at(2.999f), at(3), 1e-3f);
    EXPECT_GT(std::fabs(at(2) - at(3)), 1e-3f);
    const float low = std::min(at(2), at(3)), high = std::max(at(2), at(3));
    EXPECT_GT(at(2.5f), low);
    EXPECT_LT(at(2.5f), high);
}

TEST(NoiseMap, ThresholdsCutAndMixColours) {
    NoiseMap map;
    map.Params()->SetValue(kNoiseColor1, 0, Color(1, 0, 0));
    map.Params()->SetValue(kNoiseColor2, 0, Color(0, 0, 1));
    FlatContext sc;
    sc.uvw = {0.31f, 0.77f, 0.53f};
    const float value = map.ValueAt(sc.uvw);
    ExpectColor(Color(map.EvalColor(sc)), {1 - value, 0, value});
    map.Params()->SetValue(kNoiseLow, 0, value - 0.05f);
    map.Params()->SetValue(kNoiseHigh, 0, value + 0.15f);
    ExpectColor(Color(map.EvalColor(sc)), {0.75f, 0, 0.25f}, 1e-5f);
    map.Params()->SetValue(kNoiseHigh, 0, value - 0.05f); // both the same: an edge
    ExpectColor(Color(map.EvalColor(sc)), {0, 0, 1});
    map.Params()->SetValue(kNoiseLow, 0, value + 0.05f);
    map.Params()->SetValue(kNoiseHigh, 0, value + 0.05f);
    ExpectColor(Color(map.EvalColor(sc)), {1, 0, 0});
}

class GradientTest : public testing::Test {
protected:
    GradientTest() {
        SetKey(0, 0.2f, {1, 0, 0});
        SetKey(1, 0.8f, {0, 0, 1}); // the keys need not be in order
        SetKey(2, 0.4f, {0, 1, 0});
        map.Params()->SetValue(kGradientCount, 0, 3);
    }
    void SetKey(int i, float position, const Color& color) {
        map.Params()->SetValue(ParamID(kGradientPosition + i), 0, position);
        map.Params()->SetValue(ParamID(kGradientColor + i), 0, color);
    }
    Color At(float u, float v = 0) {
        sc.uvw = {u, v, 0};
        return Color(map.EvalColor(sc));
    }
    GradientMap map;
    FlatContext sc;
};

TEST_F(GradientTest, LinearBetweenKeysAndFlatOutside) {
    ExpectColor(At(0.1f), {1, 0, 0});
    ExpectColor(At(0.2f), {1, 0, 0});
    ExpectColor(At(0.3f), {0.5f, 0.5f, 0}, 1e-5f);
    ExpectColor(At(0.5f), {0, 0.75f, 0.25f}, 1e-5f);
    ExpectColor(At(0.95f), {0, 0, 1});
    ExpectColor(At(1.3f), {0.5f, 0.5f, 0}, 1e-5f); // repeats
    map.Params()->SetValue(kGradientWrap, 0, 2);
    ExpectColor(At(1.3f), {0, 0, 1});
    map.Params()->SetValue(kGradientWrap, 0, 1);
    ExpectColor(At(1.7f), {0.5f, 0.5f, 0}, 1e-5f);
}

TEST_F(GradientTest, SmoothAndSteps) {
    map.Params()->SetValue(kGradientInterpolation, 0, int(kGradientSmooth));
    ExpectColor(At(0.25f), {0.84375f, 0.15625f, 0}, 1e-5f); // 3/16 - 2/64
    map.Params()->SetValue(kGradientInterpolation, 0, int(kGradientSteps));
    ExpectColor(At(0.39f), {1, 0, 0});
    ExpectColor(At(0.4f), {0, 1, 0});
}

TEST_F(GradientTest, RadialGoesOutwards) {
    map.Params()->SetValue(kGradientType, 0, int(kGradientRadial));
    ExpectColor(At(0.5f, 0.5f), {1, 0, 0});
    ExpectColor(At(0.65f, 0.5f), {0.5f, 0.5f, 0}, 1e-5f);
    ExpectColor(At(0.5f, 0.35f), {0.5f, 0.5f, 0}, 1e-5f);
    ExpectColor(At(0, 0), {0, 0, 1});
}

TEST_F(GradientTest, KeysOfOnePlaceMakeAnEdge) {
    SetKey(2, 0.8f, {0, 1, 0});
    ExpectColor(At(0.79f), {1 - 0.59f / 0.6f, 0, 0.59f / 0.6f}, 1e-4f);
    ExpectColor(At(0.81f), {0, 1, 0});
}

TEST(VertexColorMap, TellsTheChannelOrOnePart) {
    VertexColorMap map;
    FlatContext sc;
    sc.uvw = {0.1f, 0.5f, 0.9f};
    ExpectColor(Color(map.EvalColor(sc)), {0.9f, 0.9f, 0}); // channel 0 of this context
    map.Params()->SetValue(kVertexColorChannel, 0, 1);
    ExpectColor(Color(map.EvalColor(sc)), {0.1f, 0.5f, 0.9f});
    const float parts[] = {0.1f, 0.5f, 0.9f};
    for (int i = 0; i < 3; ++i) {
        map.Params()->SetValue(kVertexColorPart, 0, kVertexRed + i);
        ExpectColor(Color(map.EvalColor(sc)), {parts[i], parts[i], parts[i]});
    }
}

TEST(MapOutput, AdjustsInItsOrder) {
    MapOutput out;
    EXPECT_EQ(out.Apply({0.2f, 1.5f, -1, 0.5f}), AColor(0.2f, 1.5f, -1, 0.5f));
    out.invert = true;
    out.level = 2;
    out.offset = -0.5f;
    out.amount = 0.5f;
    const AColor c = out.Apply({0.25f, 1.0f, -1.0f, 0.8f});
    ExpectColor(Color(c), {0.5f, -0.25f, 1.75f});
    EXPECT_FLOAT_EQ(c.a, 0.4f);
    out.clamp = true;
    ExpectColor(Color(out.Apply({0.25f, 1.0f, -1.0f, 0.8f})), {0.5f, 0, 1});
}

TEST(MapOutput, EveryMapHasIt) {
    CheckerMap map;
    FlatContext sc;
    sc.uvw = {0.1f, 0.1f, 0};
    map.Params()->SetValue(kOutInvert, 0, 1);
    map.Params()->SetValue(kOutAmount, 0, 0.25f);
    ExpectColor(Color(map.EvalColor(sc)), {0.25f, 0.25f, 0.25f});
}

TEST(MapCoords, TurnsAboutTheMiddleCounterClockwise) {
    CheckerMap map;
    MapCoords coords;
    map.Params()->SetValue(kMapRotation, 0, 90.0f);
    coords.Read(*map.Params(), 0);
    FlatContext sc;
    sc.uvw = {0.5f, 0.9f, 0.3f}; // above the middle lies what was to its right
    const Point3 c = coords.At(sc);
    EXPECT_NEAR(c.x, 0.9f, 1e-6f);
    EXPECT_NEAR(c.y, 0.5f, 1e-6f);
    EXPECT_EQ(c.z, 0.3f);
}

TEST(MapCoords, TheCylinderSpans45DegreesUpAndDown) {
    MapCoords coords;
    coords.source = kMapCylinder;
    FlatContext sc;
    const auto at = [&](const Point3& d) {
        sc.view = Normalize(d);
        return coords.At(sc);
    };
    EXPECT_NEAR(at({0, 1, 0}).x, 0.5f, 1e-6f);
    EXPECT_NEAR(at({0, 1, 0}).y, 0.5f, 1e-6f);
    EXPECT_NEAR(at({1, 0, 1}).x, 0.75f, 1e-6f);
    EXPECT_NEAR(at({1, 0, 1}).y, 1, 1e-6f);
    EXPECT_NEAR(at({0, -1, -0.5f}).y, 0.25f, 1e-6f);
    EXPECT_GT(at({0, 0, 1}).y, 1e4f);
    EXPECT_LT(at({0, 0, -1}).y, -1e4f);
}

TEST(MapCoords, PlacesInTheObject) {
    MapCoords coords;
    coords.source = kMapObject;
    coords.tileU = 2;
    FlatContext sc;
    sc.place = {0.3f, 0.4f, 0.5f};
    const Point3 c = coords.At(sc);
    EXPECT_FLOAT_EQ(c.x, 0.6f);
    EXPECT_FLOAT_EQ(c.y, 0.4f);
    EXPECT_FLOAT_EQ(c.z, 0.5f);
}

TEST(Checker, RegionsGetShares) {
    CheckerMap map;
    FlatContext sc;
    const auto at = [&](float u, float v, float du, float dv) {
        sc.uvw = {u, v, 0};
        sc.duvw = {du, dv, 0};
        return map.EvalMono(sc);
    };
    EXPECT_NEAR(at(0.3f, 0.2f, 1, 1), 0.5f, 1e-6f);
    EXPECT_NEAR(at(0.5f, 0.2f, 0.2f, 0.1f), 0.5f, 1e-6f); // half over the edge
    EXPECT_NEAR(at(0.45f, 0.2f, 0.2f, 0.1f), 0.25f, 1e-5f);
    EXPECT_NEAR(at(1.0f, 0.2f, 0.2f, 0.1f), 0.5f, 1e-5f);
    EXPECT_NEAR(at(0.25f, 0.25f, 0.4f, 0.4f), 0, 1e-6f);
    EXPECT_NEAR(at(0.3f, 0.2f, 1e9f, 1e9f), 0.5f, 1e-6f);
}

// A ramp of height 1 over a map as wide as 4 units: slope 1/4, wherever and however it is turned.
TEST(Bump, TheTiltIsTheSlope) {
    GradientMap map;
    FlatContext sc;
    sc.uvw = {0.4f, 0.6f, 0};
    sc.alongU = {4, 0, 0};
    sc.alongV = {1, 2, 0}; // askew
    Point3 tilt = map.EvalNormalPerturb(sc);
    // u does not change along (1, 2, 0): its gradient is (1/4, -1/8, 0).
    EXPECT_NEAR(tilt.x, -0.25f, 1e-3f);
    EXPECT_NEAR(tilt.y, 0.125f, 1e-3f);
    EXPECT_NEAR(tilt.z, 0, 1e-6f);
    map.Params()->SetValue(kMapTileU, 0, 2.0f);
    sc.uvw = {0.2f, 0.6f, 0};
    EXPECT_NEAR(map.EvalNormalPerturb(sc).x, -0.5f, 2e-3f);
    sc.alongU = sc.alongV; // no surface
    EXPECT_EQ(map.EvalNormalPerturb(sc), Point3());
}

/// A slope along x of a colour and a number of its own.
class PlainMap : public Texmap {
public:
    PlainMap(const AColor& c, float mono, float slope) : color(c), mono_(mono), slope_(slope) {}
    ~PlainMap() override { DeleteAllRefs(); }
    AColor EvalColor(ShadeContext&) override { return ++asked, color; }
    float EvalMono(ShadeContext&) override { return mono_; }
    Point3 EvalNormalPerturb(ShadeContext&) override { return {-slope_, 0, 0}; }
    void Update(TimeValue t, Interval&) override { updated = t; }
    AColor color;
    TimeValue updated = -1;
    int asked = 0;

private:
    float mono_, slope_;
};

TEST(SubMaps, TakeThePlacesOfTheCheckersColours) {
    CheckerMap checker;
    PlainMap red({1, 0, 0, 0.5f}, 0.3f, 0), green({0, 1, 0}, 0.6f, 0);
    EXPECT_EQ(checker.NumSubTexmaps(), 2);
    checker.SetSubTexmap(1, &red);
    checker.SetSubTexmap(2, &green); // there is no such input
    EXPECT_EQ(checker.GetSubTexmap(0), nullptr);
    EXPECT_EQ(checker.GetSubTexmap(1), &red);
    EXPECT_EQ(checker.GetSubTexmap(2), nullptr);
    EXPECT_FALSE(green.HasDependents());
    FlatContext sc;
    sc.uvw = {0.1f, 0.1f, 0};
    EXPECT_EQ(checker.EvalColor(sc), AColor(0, 0, 0, 1));
    EXPECT_EQ(red.asked, 0) << "a map that does not show is not asked";
    sc.uvw = {0.6f, 0.1f, 0};
    EXPECT_EQ(checker.EvalColor(sc), AColor(1, 0, 0, 0.5f));
    sc.duvw = {8, 0, 0}; // over many squares
    checker.SetSubTexmap(0, &green);
    EXPECT_EQ(checker.EvalColor(sc), AColor(0.5f, 0.5f, 0, 0.75f));
    Interval valid = FOREVER;
    checker.Update(320, valid);
    EXPECT_EQ(red.updated, 320);
    EXPECT_EQ(green.updated, 320);
}

TEST(SubMaps, OfNoiseAndGradients) {
    NoiseMap noise;
    PlainMap red({1, 0, 0}, 0, 0), green({0, 1, 0}, 0, 0);
    noise.SetSubTexmap(0, &red);
    noise.SetSubTexmap(1, &green);
    FlatContext sc;
    sc.uvw = {0.31f, 0.77f, 0.53f};
    const float value = noise.ValueAt(sc.uvw);
    ExpectColor(Color(noise.EvalColor(sc)), {1 - value, value, 0});
    GradientMap gradient;
    EXPECT_EQ(gradient.NumSubTexmaps(), GradientMap::kMostKeys);
    // Keys keep their maps wherever they stand.
    gradient.Params()->SetValue(kGradientPosition, 0, 1.0f);
    gradient.Params()->SetValue(ParamID(kGradientPosition + 1), 0, 0.0f);
    gradient.Params()->SetValue(kGradientColor, 0, Color(0, 0, 1));
    gradient.SetSubTexmap(1, &red);
    sc.uvw = {0.25f, 0.5f, 0};
    ExpectColor(Color(gradient.EvalColor(sc)), {0.75f, 0, 0.25f});
    gradient.SetSubTexmap(0, &green);
    ExpectColor(Color(gradient.EvalColor(sc)), {0.75f, 0.25f, 0});
    ExpectColor(gradient.ColorAt(0), {1, 1, 1});
}

TEST(SubMaps, MixTheirReliefs) {
    GradientMap gradient;
    PlainMap flat({0, 0, 0}, 0, 0.5f), steep({1, 1, 1}, 1, 2);
    gradient.SetSubTexmap(0, &flat);
    gradient.SetSubTexmap(1, &steep);
    FlatContext sc;
    sc.uvw = {0.25f, 0.5f, 0};
    // The ramp from height 0 to 1 rises by 1 along u, and the maps' slopes count by their shares.
    EXPECT_NEAR(gradient.EvalNormalPerturb(sc).x, -(1 + 0.75f * 0.5f + 0.25f * 2), 1e-3f);
    gradient.Params()->SetValue(kOutInvert, 0, 1);
    gradient.Params()->SetValue(kOutLevel, 0, 2.0f);
    EXPECT_NEAR(gradient.EvalNormalPerturb(sc).x, 2 * (1 + 0.75f * 0.5f + 0.25f * 2), 1e-3f);
}

TEST(SubMaps, MayGoAndMayNotContainTheirOwners) {
    CheckerMap outer, inner;
    outer.SetSubTexmap(0, &inner);
    inner.SetSubTexmap(0, &outer);
    EXPECT_EQ(inner.GetSubTexmap(0), nullptr);
    inner.SetSubTexmap(1, &inner);
    EXPECT_EQ(inner.GetSubTexmap(1), nullptr);
    FlatContext sc;
    sc.uvw = {0.1f, 0.1f, 0};
    {
        PlainMap red({1, 0, 0}, 0, 0);
        inner.SetSubTexmap(0, &red);
        EXPECT_EQ(outer.EvalColor(sc), AColor(1, 0, 0, 1));
    }
    EXPECT_EQ(inner.GetSubTexmap(0), nullptr);
    EXPECT_EQ(outer.EvalColor(sc), AColor(0, 0, 0, 1));
}

TEST(MapOutput, CopiesAreOfTheTimeThatTheMapIsAt) {
    CheckerMap map;
    auto* const amount = new FloatControl;
    amount->SetKey(0, 0.0f);
    amount->SetKey(320, 1.0f);
    ASSERT_TRUE(map.Params()->SetController(kOutAmount, amount));
    Interval valid = FOREVER;
    map.Update(320, valid);
    RemapDir remap;
    auto* const copy = static_cast<CheckerMap*>(map.Clone(remap));
    FlatContext sc;
    sc.uvw = {0.6f, 0.1f, 0};
    EXPECT_EQ(map.EvalColor(sc), AColor(1, 1, 1, 1));
    EXPECT_EQ(copy->EvalColor(sc), AColor(1, 1, 1, 1));
    copy->DeleteThis();
}

TEST(SubMaps, CopiesShareWhatCannotBeCopied) {
    CheckerMap checker;
    PlainMap red({1, 0, 0}, 0, 0);
    checker.SetSubTexmap(0, &red);
    RemapDir remap;
    auto* const copy = static_cast<CheckerMap*>(checker.Clone(remap));
    EXPECT_EQ(copy->GetSubTexmap(0), &red);
    FlatContext sc;
    sc.uvw = {0.1f, 0.1f, 0};
    EXPECT_EQ(copy->EvalColor(sc), AColor(1, 0, 0, 1));
    copy->DeleteThis();
}

TEST(MultiplyMap, MultipliesColoursNumbersAndSlopes) {
    MultiplyMap product;
    FlatContext sc;
    EXPECT_EQ(product.EvalColor(sc), AColor(1, 1, 1, 1));
    PlainMap a({0.5f, 1, 0.25f, 0.5f}, 0.4f, 2), b({0.5f, 0.5f, 1, 0.5f}, 0.5f, 4);
    product.SetSubTexmap(0, &a);
    EXPECT_EQ(product.EvalColor(sc), a.color);
    product.Params()->SetValue(kMultiplyColor2, 0, Color(1, 0.5f, 0));
    EXPECT_EQ(product.EvalColor(sc), AColor(0.5f, 0.5f, 0, 0.5f));
    EXPECT_FLOAT_EQ(product.EvalMono(sc), 0.4f * 0.5f);
    product.SetSubTexmap(1, &b);
    EXPECT_EQ(product.EvalColor(sc), AColor(0.25f, 0.5f, 0.25f, 0.25f));
    EXPECT_FLOAT_EQ(product.EvalMono(sc), 0.2f);
    EXPECT_FLOAT_EQ(product.EvalNormalPerturb(sc).x, -(2 * 0.5f + 4 * 0.4f));
    product.Params()->SetValue(kOutInvert, 0, 1);
    EXPECT_FLOAT_EQ(product.EvalMono(sc), 0.8f);
    EXPECT_EQ(product.EvalColor(sc), AColor(0.75f, 0.5f, 0.75f, 0.25f));
    EXPECT_FLOAT_EQ(product.EvalNormalPerturb(sc).x, 2 * 0.5f + 4 * 0.4f);
    RemapDir remap;
    auto* const copy = static_cast<MultiplyMap*>(product.Clone(remap));
    EXPECT_EQ(copy->EvalColor(sc), product.EvalColor(sc));
    copy->DeleteThis();
}

} // namespace
} // namespace host
