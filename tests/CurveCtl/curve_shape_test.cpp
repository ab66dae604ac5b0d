// Fit and evaluation of plain curves.

#include "CurveCtl/CurveShape.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>

#include "sdk/noise.h"

namespace {

CurveShape Make(std::initializer_list<CurveShapeKnot> knots) {
    CurveShape s;
    s.knots = knots;
    s.Fit();
    return s;
}
CurveShapeKnot K(float x, float y, int type) {
    CurveShapeKnot k;
    k.x = x, k.y = y, k.type = type;
    return k;
}

TEST(CurveShape, TwoCornersAreLinear) {
    const CurveShape s = Make({K(0, 0.25f, CURVE_CORNER), K(1, 0.75f, CURVE_CORNER)});
    EXPECT_EQ(s.Eval(0.0f), 0.25f);
    EXPECT_EQ(s.Eval(0.5f), 0.5f);
    EXPECT_EQ(s.Eval(0.25f), 0.375f);
    EXPECT_EQ(s.Eval(1.0f), 0.75f);
}

TEST(CurveShape, OutsideTheKnotsTheEndsHold) {
    const CurveShape s = Make({K(0, 0.25f, CURVE_CORNER), K(1, 0.75f, CURVE_CORNER)});
    EXPECT_EQ(s.Eval(-3.0f), 0.25f);
    EXPECT_EQ(s.Eval(7.0f), 0.75f);
}

TEST(CurveShape, NoKnotsGiveZeroAndOneKnotItsValue) {
    CurveShape s;
    EXPECT_EQ(s.Eval(0.5f), 0.0f);
    s = Make({K(0.5f, 0.4f, CURVE_CORNER)});
    EXPECT_EQ(s.knots[0].x, 0.0f);
    for (const float x : {-1.0f, 0.0f, 0.5f, 2.0f}) EXPECT_EQ(s.Eval(x), 0.4f);
}

TEST(CurveShape, AStepEndHoldsTheLeftValueOverTheSegment) {
    for (const auto& [left, right] : {std::pair(CURVE_STEP, CURVE_CORNER), std::pair(CURVE_CORNER, CURVE_STEP)}) {
        const CurveShape s = Make({K(0, 0.2f, left), K(1, 0.9f, right)});
        EXPECT_EQ(s.Eval(0.0f), 0.2f);
        EXPECT_EQ(s.Eval(0.999f), 0.2f);
        EXPECT_EQ(s.Eval(1.0f), 0.2f); // the last knot belongs to the segment that ends there
        EXPECT_EQ(s.Eval(1.001f), 0.9f);
    }
}

TEST(CurveShape, AnInnerKnotBelongsToTheSegmentThatEndsThere) {
    const CurveShape s = Make({K(0, 0.2f, CURVE_CORNER), K(0.5f, 0.8f, CURVE_STEP), K(1, 0.4f, CURVE_CORNER)});
    EXPECT_EQ(s.Eval(0.5f), 0.2f);
    EXPECT_EQ(s.Eval(std::nextafter(0.5f, 1.0f)), 0.8f);
}

TEST(CurveShape, NoiseIsAddedOnlyBetweenTheEndsAndTheSumIsClamped) {
    CurveShape s = Make({K(0, 0.5f, CURVE_CORNER), K(1, 0.5f, CURVE_CORNER)});
    s.useNoise = true;
    s.noiseSize = 0.25f;
    s.noisePhase = 0.3f;
    EXPECT_EQ(s.Eval(0.4f), 0.5f + 0.25f * noise1(0.3f + 0.4f * 10.0f));
    EXPECT_NE(s.Eval(0.4f), 0.5f);
    EXPECT_EQ(s.Eval(-0.1f), 0.5f);
    EXPECT_EQ(s.Eval(1.1f), 0.5f);
    s.noiseSize = 1000.0f;
    bool low = false, high = false;
    for (int i = 0; i <= 200; ++i) {
        const float v = s.Eval(float(i) / 200.0f);
        EXPECT_GE(v, 0.0f);
        EXPECT_LE(v, 1.0f);
        low = low || v == 0.0f;
        high = high || v == 1.0f;
    }
    EXPECT_TRUE(low && high);
}

TEST(CurveShape, EndsAreNeitherNoisyNorClampedOutside) {
    CurveShape s;
    s.knots = {K(0, 0.5f, CURVE_CORNER), K(1, 3.0f, CURVE_CORNER)}; // not fitted: y is beyond the range
    EXPECT_EQ(s.Eval(2.0f), 3.0f);
    EXPECT_EQ(s.Eval(1.0f), 1.0f);
}

// One Smooth knot (0.5, 1) between Corners (0, 0) and (1, 0): h0 = h1 = 0.5, the one equation reads
// M (h0 + h1) / 3 = (0 - 1) / 0.5 - (1 - 0) / 0.5 = -4, so M = -12. Segment 1: c1 = 2 - 0.5 * -12 / 6 = 3, c0 = 0.
// At x = 0.25: -12 * 0.015625 / 3 + 0.75 = 0.6875.
TEST(CurveShape, NaturalSplineByHand) {
    const CurveShape s = Make({K(0, 0, CURVE_CORNER), K(0.5f, 1, CURVE_SMOOTH), K(1, 0, CURVE_CORNER)});
    EXPECT_FLOAT_EQ(s.knots[1].m, -12.0f);
    EXPECT_EQ(s.knots[0].m, 0.0f);
    EXPECT_EQ(s.knots[2].m, 0.0f);
    EXPECT_FLOAT_EQ(s.knots[1].c1, 3.0f);
    EXPECT_NEAR(s.knots[1].c0, 0.0f, 1e-6f);
    EXPECT_FLOAT_EQ(s.Eval(0.25f), 0.6875f);
    EXPECT_FLOAT_EQ(s.Eval(0.75f), 0.6875f);
    EXPECT_FLOAT_EQ(s.Eval(0.5f), 1.0f);
}

TEST(CurveShape, ASmoothRunThatReachesTheEndGetsNoFit) {
    CurveShape s = Make({K(0, 0, CURVE_CORNER), K(0.5f, 1, CURVE_SMOOTH), K(1, 0.5f, CURVE_SMOOTH)});
    for (const CurveShapeKnot& k : s.knots) {
        EXPECT_EQ(k.m, 0.0f);
        EXPECT_EQ(k.c1, 0.0f);
        EXPECT_EQ(k.c0, 0.0f);
    }
    EXPECT_EQ(s.Eval(0.25f), 0.0f);
    // Coefficients that a former fit left stay.
    s.knots[1].c0 = 0.75f;
    s.Fit();
    EXPECT_EQ(s.Eval(0.25f), 0.75f);
}

TEST(CurveShape, AFirstRunIsFittedEvenWhenALaterOneReachesTheEnd) {
    const CurveShape s = Make({K(0, 0, CURVE_CORNER), K(0.25f, 1, CURVE_SMOOTH), K(0.5f, 0, CURVE_CORNER),
                               K(0.75f, 1, CURVE_SMOOTH), K(1, 0, CURVE_SMOOTH)});
    EXPECT_NE(s.knots[1].m, 0.0f);
    EXPECT_EQ(s.knots[3].m, 0.0f);
}

TEST(CurveShape, CorrectionGoesUpThenDown) {
    const CurveShape s = Make({K(-5, 2, CURVE_CORNER), K(-1, -1, CURVE_CORNER), K(-1, 0.5f, CURVE_CORNER),
                               K(9, 0.5f, CURVE_CORNER), K(9, 0.5f, CURVE_CORNER), K(-7, 0.5f, CURVE_CORNER)});
    EXPECT_EQ(s.knots[0].x, 0.0f);
    EXPECT_EQ(s.knots[0].y, 1.0f);
    EXPECT_EQ(s.knots[1].x, 0.001f);
    EXPECT_EQ(s.knots[1].y, 0.0f);
    EXPECT_EQ(s.knots[2].x, 0.001f + 0.001f);
    EXPECT_EQ(s.knots[3].x, 1.0f - 0.001f);
    EXPECT_EQ(s.knots[4].x, 1.0f - 0.001f); // no room: the upper limit wins
    EXPECT_EQ(s.knots[5].x, 1.0f);
}

TEST(CurveShape, CrowdedSmoothKnotsStayFinite) {
    CurveShape s = Make({K(0, 0.1f, CURVE_CORNER), K(4, 0.9f, CURVE_SMOOTH), K(5, 0.2f, CURVE_SMOOTH),
                         K(6, 0.7f, CURVE_SMOOTH), K(1, 0.5f, CURVE_CORNER)});
    for (int i = 0; i <= 2000; ++i) EXPECT_TRUE(std::isfinite(s.Eval(float(i) / 2000.0f)));
    s = Make({K(0, 0.1f, CURVE_CORNER), K(0, 0.5f, CURVE_SMOOTH), K(1, 0.5f, CURVE_CORNER)});
    s.xMin = s.xMax = 1.0f;
    s.Fit();
    EXPECT_TRUE(std::isfinite(s.Eval(1.0f)));
}

/// Sorted knots at least 0.05 apart, Corner at both ends.
CurveShape RandomSmoothCurve() {
    CurveShape s;
    const int inner = *rc::gen::inRange(1, 12);
    const auto y = [] { return float(*rc::gen::inRange(0, 1001)) / 1000.0f; };
    s.yMin = -100.0f, s.yMax = 100.0f; // wide, so that clamping hides no overshoot
    s.knots.push_back(K(0, y(), CURVE_CORNER));
    for (int i = 1; i <= inner; ++i) {
        const float jitter = float(*rc::gen::inRange(-300, 301)) / 1000.0f;
        const int type = *rc::gen::element(CURVE_SMOOTH, CURVE_SMOOTH, CURVE_SMOOTH, CURVE_CORNER);
        s.knots.push_back(K((float(i) + jitter) / float(inner + 1), y(), type));
    }
    s.knots.push_back(K(1, y(), CURVE_CORNER));
    s.Fit();
    return s;
}

RC_GTEST_PROP(CurveShapeProperty, PassesThroughItsKnots, ()) {
    const CurveShape s = RandomSmoothCurve();
    for (const CurveShapeKnot& k : s.knots) RC_ASSERT(std::fabs(s.Eval(k.x) - k.y) < 2e-4f);
}

// First and second derivative agree from both sides of every Smooth knot, from the coefficients of the two segments.
RC_GTEST_PROP(CurveShapeProperty, SlopeAndCurvatureAreContinuousAtSmoothKnots, ()) {
    const CurveShape s = RandomSmoothCurve();
    const auto slope = [&](size_t i, double x) {
        const CurveShapeKnot &a = s.knots[i], &b = s.knots[i + 1];
        const double h = double(b.x) - a.x, da = b.x - x, db = x - a.x;
        return (-a.m * da * da + b.m * db * db) / (2.0 * h) + b.c1;
    };
    for (size_t i = 1; i + 1 < s.knots.size(); ++i) {
        if (s.knots[i].type != CURVE_SMOOTH) continue;
        const double before = slope(i - 1, s.knots[i].x), after = slope(i, s.knots[i].x);
        RC_ASSERT(std::fabs(before - after) < 1e-2 + 1e-3 * std::fabs(before));
    }
    // Natural ends: no curvature where a run of Smooth knots begins and ends.
    for (const CurveShapeKnot& k : s.knots)
        if (k.type == CURVE_CORNER) RC_ASSERT(k.m == 0.0f);
}

RC_GTEST_PROP(CurveShapeProperty, KnotsAscendAndValuesStayInRange, (std::vector<float> raw, float x)) {
    CurveShape s;
    for (const float v : raw) s.knots.push_back(K(v, v * 0.5f, int(s.knots.size() % 3)));
    if (s.knots.size() > 100) s.knots.resize(100);
    if (s.knots.size() > 1) s.knots.back().type = CURVE_CORNER;
    s.Fit();
    for (size_t i = 1; i < s.knots.size(); ++i) RC_ASSERT(s.knots[i].x >= s.knots[i - 1].x);
    const float v = s.Eval(x);
    RC_ASSERT(v >= 0.0f && v <= 1.0f);
}

} // namespace
