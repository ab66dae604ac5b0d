// Strand splines, subdivision and interpolation.

#include "Base/HUtil/StrandSpline.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <vector>

#include "Base/HUtil/Subdivide.h"

namespace {

Point3 RandomPoint() {
    const auto part = [] { return float(*rc::gen::inRange(-1000, 1001)) / 100.0f; };
    const float x = part(), y = part(), z = part();
    return {x, y, z};
}

bool Near(const Point3& a, const Point3& b, float tolerance) {
    return Length(a - b) <= tolerance;
}

TEST(StrandSpline, OneKnotHasItsHandlesOnThePoint) {
    StrandSpline s;
    const Point3 p(1, 2, 3);
    s.SetPoints(1, &p);
    EXPECT_EQ(s.Knot(0).in, p);
    EXPECT_EQ(s.Knot(0).out, p);
    EXPECT_EQ(s.ControlPointCount(), 1);
    EXPECT_EQ(s.ControlPoint(1), p);
    EXPECT_EQ(s.Length(), 0.0f);
}

TEST(StrandSpline, TwoKnotsAreStraightWithHandlesAtThirds) {
    StrandSpline s;
    const Point3 p[2] = {{0, 0, 0}, {3, 6, -9}};
    s.SetPoints(2, p);
    EXPECT_EQ(s.Knot(0).in, p[0]);
    EXPECT_EQ(s.Knot(0).out, Point3(1, 2, -3));
    EXPECT_EQ(s.Knot(1).in, Point3(2, 4, -6));
    EXPECT_EQ(s.Knot(1).out, p[1]);
    EXPECT_EQ(s.Knot(0).step, 1.0f);
}

TEST(StrandSpline, EmptyAndBadIndicesAreHarmless) {
    StrandSpline s;
    s.SetPoints(-4, nullptr);
    EXPECT_EQ(s.Count(), 0);
    EXPECT_EQ(s.ControlPointCount(), 0);
    EXPECT_EQ(s.ControlPoint(1), Point3());
    EXPECT_EQ(s.Length(), 0.0f);
    s.SetPoint(0, Point3(1, 1, 1));
    const Point3 p[2] = {{0, 0, 0}, {1, 0, 0}};
    s.SetPoints(2, p);
    EXPECT_EQ(s.ControlPoint(0), Point3());
    EXPECT_EQ(s.ControlPoint(5), Point3());
}

// Knots (0,0,0), (1,0,0), (1,1,0): a = (1,0,0), b = (0,1,0). First: T L = (1.5 a - 0.5 b) / 3 = (0.5, -1/6, 0). Inner:
// out = P1 + (P2 - P0) / 6. Last: mirrored, the end's a is (0,-1,0), b is (-1,0,0): in = P2 + (1/6, -0.5, 0).
TEST(StrandSpline, HandlesByHand) {
    const Point3 p[3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};
    Point3 in[3], out[3];
    BuildStrandHandles(3, p, in, out);
    EXPECT_TRUE(Near(out[0], Point3(0.5f, -1 / 6.0f, 0), 1e-6f));
    EXPECT_TRUE(Near(in[1], Point3(1 - 1 / 6.0f, -1 / 6.0f, 0), 1e-6f));
    EXPECT_TRUE(Near(out[1], Point3(1 + 1 / 6.0f, 1 / 6.0f, 0), 1e-6f));
    EXPECT_TRUE(Near(in[2], Point3(1 + 1 / 6.0f, 0.5f, 0), 1e-6f));
    EXPECT_EQ(in[0], p[0]);
    EXPECT_EQ(out[2], p[2]);
}

TEST(StrandSpline, FlatIndexCountsFromOne) {
    StrandSpline s;
    const Point3 p[3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};
    s.SetPoints(3, p);
    ASSERT_EQ(s.ControlPointCount(), 7);
    EXPECT_EQ(s.ControlPoint(1), p[0]);
    EXPECT_EQ(s.ControlPoint(2), s.Knot(0).out);
    EXPECT_EQ(s.ControlPoint(3), s.Knot(1).in);
    EXPECT_EQ(s.ControlPoint(4), p[1]);
    EXPECT_EQ(s.ControlPoint(7), p[2]);
}

RC_GTEST_PROP(StrandSplineProperty, BackwardsIsTheMirrorImage, ()) {
    const int n = *rc::gen::inRange(2, 12);
    std::vector<Point3> p(size_t(n), Point3{}), q, in(p), out(p), qIn(p), qOut(p);
    for (Point3& v : p) v = RandomPoint();
    q.assign(p.rbegin(), p.rend());
    BuildStrandHandles(n, p.data(), in.data(), out.data());
    BuildStrandHandles(n, q.data(), qIn.data(), qOut.data());
    for (int i = 0; i < n; ++i) {
        RC_ASSERT(Near(in[size_t(i)], qOut[size_t(n - 1 - i)], 1e-4f));
        RC_ASSERT(Near(out[size_t(i)], qIn[size_t(n - 1 - i)], 1e-4f));
    }
}

RC_GTEST_PROP(StrandSplineProperty, AStraightEvenRowStaysStraight, ()) {
    const int n = *rc::gen::inRange(2, 15);
    const Point3 start = RandomPoint(), step = RandomPoint();
    std::vector<Point3> p(size_t(n), Point3{});
    for (int i = 0; i < n; ++i) p[size_t(i)] = start + step * float(i);
    StrandSpline s;
    s.SetPoints(n, p.data());
    const float tolerance = 1e-5f * (10.0f + Length(start) + Length(step) * float(n));
    for (int k = 1; k <= s.ControlPointCount(); ++k)
        RC_ASSERT(Near(s.ControlPoint(k), start + step * (float(k - 1) / 3.0f), tolerance));
    RC_ASSERT(std::fabs(s.Length() - Length(step) * float(n - 1)) < tolerance);
}

RC_GTEST_PROP(StrandSplineProperty, PassesThroughItsKnotsSmoothly, ()) {
    const int n = *rc::gen::inRange(3, 12);
    std::vector<Point3> p(size_t(n), Point3{});
    for (Point3& v : p) v = RandomPoint();
    StrandSpline s;
    s.SetPoints(n, p.data());
    for (int i = 0; i + 1 < n; ++i) {
        RC_ASSERT(s.EvalSegment(i, 0.0f) == p[size_t(i)]);
        RC_ASSERT(s.EvalSegment(i, 1.0f) == p[size_t(i) + 1]);
    }
    for (int i = 1; i + 1 < n; ++i) {
        Point3 before, after;
        s.EvalSegment(i - 1, 1.0f, &before);
        s.EvalSegment(i, 0.0f, &after);
        RC_ASSERT(Near(before, after, 1e-4f));
        // With equal steps the tangent is that of the neighbours: 3 * (P(i+1) - P(i-1)) / 6.
        RC_ASSERT(Near(after, (p[size_t(i) + 1] - p[size_t(i) - 1]) / 2.0f, 1e-4f));
    }
}

TEST(StrandSpline, EditingAPointRenewsHandlesAndLength) {
    StrandSpline s;
    const Point3 p[3] = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    s.SetPoints(3, p);
    EXPECT_FLOAT_EQ(s.Length(), 2.0f);
    const Point3 handle = s.Knot(1).out;
    s.SetPoint(2, Point3(2, 2, 0));
    EXPECT_NE(s.Knot(1).out, handle);
    EXPECT_GT(s.Length(), 2.5f);
    EXPECT_EQ(s.Point(2), Point3(2, 2, 0));
}

TEST(StrandSpline, FreeFunctionGivesTheSameHandles) {
    const Point3 p[5] = {{0, 0, 0}, {1, 3, 0}, {2, 0, 1}, {5, -1, 2}, {6, 6, 6}};
    Point3 in[5], out[5];
    BuildStrandHandles(5, p, in, out);
    StrandSpline s;
    s.SetPoints(5, p);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(s.Knot(i).in, in[i]);
        EXPECT_EQ(s.Knot(i).out, out[i]);
    }
}

TEST(BaryInterpolate, ByHand) {
    EXPECT_EQ(BaryInterpolate({0.25f, 0.25f, 0.5f}, {4, 0, 0}, {0, 8, 0}, {2, 2, 2}), Point3(2, 3, 1));
    EXPECT_EQ(BaryInterpolate({1, 0, 0}, {4, 1, 0}, {7, 8, 9}, {2, 2, 2}), Point3(4, 1, 0));
}

// Control points on a cubic y = x^3 over x = 0..1: (0,0), (1/3,0), (2/3,0), (1,1).
TEST(Subdivide, PointsAndTrueDerivatives) {
    const Point3 c[4] = {{0, 0, 0}, {1 / 3.0f, 0, 0}, {2 / 3.0f, 0, 0}, {1, 1, 0}};
    Point3 p[5], t[5];
    SubdivideSegment(4, c, p, t);
    EXPECT_EQ(p[0], c[0]);
    EXPECT_EQ(p[4], c[3]);
    EXPECT_EQ(t[0], c[1] - c[0]);
    EXPECT_EQ(t[4], c[3] - c[2]);
    for (int i = 1; i < 4; ++i) {
        const float u = float(i) / 4.0f;
        EXPECT_NEAR(p[i].x, u, 1e-6f);
        EXPECT_NEAR(p[i].y, u * u * u, 1e-6f);
        EXPECT_NEAR(t[i].x, 1.0f, 1e-6f);
        EXPECT_NEAR(t[i].y, 3.0f * u * u, 1e-6f);
    }
}

TEST(Subdivide, OneStepGivesTheEnds) {
    const Point3 c[4] = {{0, 0, 0}, {1, 1, 0}, {2, 1, 0}, {3, 0, 0}};
    Point3 p[2], t[2];
    SubdivideSegment(1, c, p, t);
    EXPECT_EQ(p[1], c[3]);
    EXPECT_EQ(t[1], c[3] - c[2]);
}

TEST(Subdivide, PartialSegmentEndsAtItsParameter) {
    const Point3 c[4] = {{0, 0, 0}, {1 / 3.0f, 0, 0}, {2 / 3.0f, 0, 0}, {1, 1, 0}};
    Point3 p[3], t[3];
    SubdivideSegmentPartial(2, 0.5f, c, p, t);
    EXPECT_EQ(p[0], c[0]);
    EXPECT_EQ(t[0], c[1] - c[0]);
    EXPECT_NEAR(p[1].x, 0.25f, 1e-6f);
    EXPECT_NEAR(p[2].x, 0.5f, 1e-6f);
    EXPECT_NEAR(p[2].y, 0.125f, 1e-6f);
    EXPECT_NEAR(t[2].x, 1.0f, 1e-6f);
    EXPECT_NEAR(t[2].y, 0.75f, 1e-6f);
}

RC_GTEST_PROP(SubdivideProperty, AWholePartialSegmentIsTheSegment, ()) {
    Point3 c[4];
    for (Point3& v : c) v = RandomPoint();
    const int m = *rc::gen::inRange(1, 20);
    std::vector<Point3> p(size_t(m) + 1), t(p), q(p), s(p);
    SubdivideSegment(m, c, p.data(), t.data());
    SubdivideSegmentPartial(m, 1.0f, c, q.data(), s.data());
    RC_ASSERT(p == q && t == s);
}

} // namespace
