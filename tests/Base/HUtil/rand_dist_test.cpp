// Random distributions shaped by a curve.

#include "Base/HUtil/RandDist.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <map>

namespace {

CurveShape Line(float y0, float y1) {
    CurveShape s;
    s.knots.resize(2);
    s.knots[0].y = y0;
    s.knots[1].y = y1;
    s.Fit();
    return s;
}

/// Counts over one output value of each kind: what every r in 0..32767 answers.
std::map<float, int> AllSamples(const RandDist& dist) {
    // Each r is reached through the state that steps onto it.
    uint32_t inverse = 1;
    for (int i = 0; i < 31; ++i) inverse *= 2u - HairRandom::kMultiplier * inverse;
    std::map<float, int> counts;
    for (int r = 0; r <= 32767; ++r) {
        HairRandom random;
        random.state = ((uint32_t(r) << 16) - HairRandom::kIncrement) * inverse;
        ++counts[dist.Sample(random)];
    }
    return counts;
}

TEST(RandDist, InactiveAnswersOneAndStillDraws) {
    RandDist dist;
    HairRandom r, one;
    one.Draw();
    EXPECT_EQ(dist.Sample(r), 1.0f);
    EXPECT_EQ(r.state, one.state);
    RandDist::Skip(r);
    one.Draw();
    EXPECT_EQ(r.state, one.state);
}

TEST(RandDist, NoCurveNoKnotsNoEntriesOrNoWeightIsInactive) {
    RandDist dist;
    const CurveShape one = Line(1, 1), zero = Line(0, 0), empty;
    dist.Build(&one);
    EXPECT_TRUE(dist.Active());
    EXPECT_EQ(dist.Count(), 256);
    dist.Build(nullptr);
    EXPECT_FALSE(dist.Active());
    for (const auto& [curve, n] :
         {std::pair(&one, 0), std::pair(&one, -3), std::pair(&empty, 16), std::pair(&zero, 16)}) {
        dist.Build(&one);
        dist.Build(curve, n);
        EXPECT_FALSE(dist.Active());
    }
}

// n = 4, all weights 1: table 8192, 16384, 24575, 32767 (32767 / 4 = 8191.75, 16383.5, 24575.25, each + 0.5, floored).
TEST(RandDist, ConstantCurveByHand) {
    RandDist dist;
    const CurveShape one = Line(1, 1);
    dist.Build(&one, 4);
    EXPECT_EQ(dist.Table(), (std::vector<int32_t>{8192, 16384, 24575, 32767}));
    const auto counts = AllSamples(dist);
    ASSERT_EQ(counts.size(), 4u);
    EXPECT_EQ(counts.at(0.0f), 8193);     // r <= table[0]
    EXPECT_EQ(counts.at(1 / 3.0f), 8192); // up to table[1]
    EXPECT_EQ(counts.at(2 / 3.0f), 8191); // up to table[2]
    EXPECT_EQ(counts.at(1.0f), 8192);     // the rest
}

TEST(RandDist, ConstantCurveIsUniformInEqualSteps) {
    RandDist dist;
    const CurveShape one = Line(0.3f, 0.3f);
    dist.Build(&one);
    const auto counts = AllSamples(dist);
    ASSERT_EQ(counts.size(), 256u);
    int i = 0;
    for (const auto& [value, count] : counts) {
        EXPECT_EQ(value, float(i++) / 255.0f);
        EXPECT_NEAR(count, 128, 2);
    }
}

TEST(RandDist, WeightNearOneAnswersNearOne) {
    CurveShape s = Line(0, 1);
    CurveShapeKnot k;
    k.x = 0.9f, k.y = 0.0f;
    s.knots.insert(s.knots.begin() + 1, k);
    s.Fit();
    RandDist dist;
    dist.Build(&s);
    HairRandom r;
    int low = 0;
    for (int i = 0; i < 5000; ++i) low += dist.Sample(r) < 0.9f;
    // Output 0 lies at or below the first entry, so it answers 0 whatever the curve.
    EXPECT_LE(low, 2);
}

TEST(RandDist, OneEntryNeverDivides) {
    RandDist dist;
    const CurveShape one = Line(1, 1);
    dist.Build(&one, 1);
    ASSERT_EQ(dist.Count(), 1);
    const auto counts = AllSamples(dist);
    EXPECT_EQ(counts.at(0.0f), 32767);
    EXPECT_EQ(counts.at(1.0f), 1);
}

RC_GTEST_PROP(RandDistProperty, TheTableRisesToFullAndSamplesFollowTheCurve, ()) {
    const float y0 = float(*rc::gen::inRange(0, 101)) / 100.0f, y1 = float(*rc::gen::inRange(1, 101)) / 100.0f;
    const int n = *rc::gen::inRange(2, 300);
    const CurveShape line = Line(y0, y1);
    RandDist dist;
    dist.Build(&line, n);
    RC_ASSERT(dist.Count() == n);
    for (int i = 1; i < n; ++i) RC_ASSERT(dist.Table()[size_t(i)] >= dist.Table()[size_t(i - 1)]);
    RC_ASSERT(dist.Table().back() == 32767);
    // The mean over all outputs is the curve's centre of weight.
    double sum = 0, weight = 0, mean = 0;
    for (int i = 0; i < n; ++i) {
        const double x = double(i) / (n - 1), w = line.Eval(float(x));
        sum += w * x;
        weight += w;
    }
    for (const auto& [value, count] : AllSamples(dist)) mean += double(value) * count / 32768.0;
    RC_ASSERT(std::fabs(mean - sum / weight) < 2e-3);
}

} // namespace

// Sampling is one look-up; it must answer what halving the table finds, for every output of the generator.
TEST(RandDist, LookupEqualsSearch) {
    for (const auto& ys : {std::array{1.0f, 1.0f, 1.0f}, std::array{0.0f, 0.0f, 1.0f}, std::array{1.0f, 0.0f, 0.0f},
                           std::array{0.2f, 0.0f, 0.7f}}) {
        CurveShape curve;
        curve.knots = {{0.0f, ys[0], CURVE_CORNER}, {0.5f, ys[1], CURVE_CORNER}, {1.0f, ys[2], CURVE_CORNER}};
        curve.Fit();
        RandDist dist;
        dist.Build(&curve);
        ASSERT_TRUE(dist.Active());
        for (uint32_t high = 0; high <= 32767; ++high) {
            // A state whose next output is `high`: the step undone (the multiplier's inverse mod 2^32 is 3115528533).
            HairRandom random;
            random.Seed(((high << 16) - HairRandom::kIncrement) * 3115528533u);
            ASSERT_EQ(HairRandom(random).Draw(), int(high));
            ASSERT_EQ(dist.Sample(random), dist.Search(int(high))) << high;
        }
    }
}
