// Frames, rotations, boxes and number texts.

#include "Base/HUtil/Frames.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "Base/HUtil/BoxUtil.h"
#include "Base/HUtil/NumberText.h"

namespace {

bool Near(const Point3& a, const Point3& b, float tolerance = 1e-5f) {
    return Length(a - b) <= tolerance;
}

Point3 RandomDirection() {
    const auto part = [] { return float(*rc::gen::inRange(-100, 101)); };
    const Point3 p(part(), part(), part());
    return p == Point3() ? Point3(0, 0, 1) : Normalize(p);
}

/// A unit square in the XY plane of two faces, mapped with u = 2x, v = y.
Mesh MappedSquare() {
    Mesh m;
    m.verts = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    m.faces.resize(2);
    const int corners[2][3] = {{0, 1, 2}, {0, 2, 3}};
    for (int f = 0; f < 2; ++f)
        for (int c = 0; c < 3; ++c) m.faces[size_t(f)].v[c] = corners[f][c];
    MeshMap map;
    map.tv = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}};
    map.tf.resize(2);
    for (int f = 0; f < 2; ++f)
        for (int c = 0; c < 3; ++c) map.tf[size_t(f)].t[c] = corners[f][c];
    m.maps[1] = map;
    return m;
}

TEST(Frames, AxisByIndex) {
    EXPECT_EQ(AxisByIndex(0), Point3(1, 0, 0));
    EXPECT_EQ(AxisByIndex(1), Point3(0, 1, 0));
    EXPECT_EQ(AxisByIndex(2), Point3(0, 0, 1));
}

TEST(Frames, FromDirectionByHand) {
    const Matrix3 up = FrameFromDirection(Point3(0, 0, 1));
    EXPECT_EQ(up, Matrix3());
    const Matrix3 side = FrameFromDirection(Point3(1, 0, 0));
    EXPECT_EQ(side.GetRow(0), Point3(0, 1, 0));
    EXPECT_EQ(side.GetRow(1), Point3(0, 0, 1));
    EXPECT_EQ(side.GetRow(2), Point3(1, 0, 0));
    const Matrix3 ref = FrameFromDirection(Point3(0, 0, 1), Normalize(Point3(0, 1, 1)));
    EXPECT_TRUE(Near(ref.GetRow(0), Point3(0, 1, 0)));
    EXPECT_TRUE(Near(ref.GetRow(1), Point3(-1, 0, 0)));
    EXPECT_EQ(FrameFromDirection(Point3(0, 0, 1), Point3(0, 0, 1)).GetRow(0), Point3(0, 0, 0));
}

RC_GTEST_PROP(FramesProperty, AreRightHandedAndOrthonormal, ()) {
    const Point3 n = RandomDirection(), r = RandomDirection();
    for (const Matrix3& m : {FrameFromDirection(n), FrameFromDirection(n, r)}) {
        if (m.GetRow(0) == Point3()) continue; // the reference along the direction
        RC_PRE(Length(r - n * DotProd(n, r)) > 1e-2f);
        RC_ASSERT(m.GetRow(2) == n);
        RC_ASSERT(std::fabs(m.Determinant() - 1.0f) < 1e-4f);
        for (int i = 0; i < 3; ++i) RC_ASSERT(std::fabs(DotProd(m.GetRow(i), m.GetRow((i + 1) % 3))) < 1e-4f);
        RC_ASSERT(m.GetTrans() == Point3());
    }
}

TEST(Frames, FromMappingHasUnitTangentsAndTheNormal) {
    const Mesh m = MappedSquare();
    const Matrix3 frame = FrameFromMapping(m, 2, 1);
    EXPECT_TRUE(Near(frame.GetRow(0), Point3(1, 0, 0)));
    EXPECT_TRUE(Near(frame.GetRow(1), Point3(0, 1, 0)));
    EXPECT_TRUE(Near(frame.GetRow(2), Point3(0, 0, 1)));
    const Point3 slanted = Normalize(Point3(0, 1, 1));
    EXPECT_EQ(FrameFromMapping(m, 2, 1, &slanted).GetRow(2), slanted);
    EXPECT_TRUE(Near(FrameFromMapping(m, 2, 1, &slanted).GetRow(1), Point3(0, 1, 0))); // stays unorthogonalised
    EXPECT_EQ(FrameFromMapping(m, -1, 1, nullptr, 1, 2), FrameFromMapping(m, 3, 1, nullptr, 1));
}

TEST(Frames, FromMappingTakesTheLowestFace) {
    Mesh m = MappedSquare();
    m.maps[1].tv = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}, {0, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
    m.maps[1].tf[1] = {{4, 5, 6}}; // the second face is mapped turned round
    EXPECT_TRUE(Near(FrameFromMapping(m, 0, 1).GetRow(0), Point3(1, 0, 0)));
    EXPECT_FALSE(Near(FrameFromMapping(m, 0, 1, nullptr, 1).GetRow(0), Point3(1, 0, 0)));
    EXPECT_EQ(FrameFromMapping(m, 3, 1), FrameFromMapping(m, 3, 1, nullptr, 1));
}

TEST(Frames, FromMappingFallsBackToTheNormal) {
    Mesh m = MappedSquare();
    EXPECT_EQ(FrameFromMapping(m, 0, 5), FrameFromDirection(Point3(0, 0, 1))); // no such channel
    m.maps[1].tv.assign(4, Point3(0.5f, 0.5f, 0));                             // degenerate
    EXPECT_EQ(FrameFromMapping(m, 0, 1), FrameFromDirection(Point3(0, 0, 1)));
    m.verts.push_back({5, 5, 5}); // a vertex without faces
    m.InvalidateGeomCache();
    const Point3 n(1, 0, 0);
    EXPECT_EQ(FrameFromMapping(m, 4, 1, &n), FrameFromDirection(n));
    EXPECT_EQ(FrameFromMapping(m, 99, 1, &n), FrameFromDirection(n));
}

TEST(Frames, RotationAboutAnAxis) {
    EXPECT_TRUE(Near(RotateAboutAxis(Point3(1, 0, 0), Point3(0, 0, 1), 1.0f, 0.0f), Point3(0, 1, 0)));
    EXPECT_TRUE(Near(RotateAboutAxis(Point3(2, 0, 3), Point3(0, 0, 1), 0.0f, -1.0f), Point3(-2, 0, 3)));
}

TEST(Frames, QuaternionsTurnInTheHostsSense) {
    const float h = 0.70710677f;
    const Point3 n(1, 0, 0), r(0, 1, 0);
    EXPECT_TRUE(Near(r * Quat(CrossProd(n, r) * h, h).ToMatrix(), n));
    const Quat a(Normalize(Point3(1, 2, 3)) * 0.6f, 0.8f), b(Normalize(Point3(-1, 0, 1)) * 0.28f, 0.96f);
    const Matrix3 left = (a * b).ToMatrix(), right = a.ToMatrix() * b.ToMatrix();
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(Near(left.GetRow(i), right.GetRow(i)));
}

TEST(LeanToward, ByHand) {
    const Point3 n(0, 0, 1), v(1, 0, 0);
    EXPECT_TRUE(Near(LeanToward(n, v, 1.0f, 10.0f), v));
    EXPECT_TRUE(Near(LeanToward(n, v, -1.0f, 10.0f), -v));
    EXPECT_EQ(LeanToward(n, v, 0.0f, 10.0f), n);
    EXPECT_EQ(LeanToward(n, v, 0.0001f, 10.0f), n);
    // Half of 90 degrees: f = (1 - cos 45) / 1 = 0.29289; normalise(0.70711 z + 0.29289 x).
    const Point3 half = LeanToward(n, v, 0.5f, 10.0f);
    EXPECT_TRUE(Near(half, Normalize(Point3(0.29289323f, 0, 0.70710677f))));
    // The angle limit acts like a smaller amount.
    EXPECT_TRUE(Near(LeanToward(n, v, 1.0f, HairMath::kPi / 4), half, 1e-6f));
    EXPECT_EQ(LeanToward(n, v, NAN, 10.0f), n);
}

RC_GTEST_PROP(LeanTowardProperty, IsUnitAndReachesItsTarget, ()) {
    const Point3 n = RandomDirection(), v = RandomDirection();
    const float amount = float(*rc::gen::inRange(-100, 101)) / 100.0f;
    RC_PRE(std::fabs(DotProd(n, v)) < 0.998f);
    RC_ASSERT(std::fabs(Length(LeanToward(n, v, amount, 100.0f)) - 1.0f) < 1e-5f);
    RC_ASSERT(Near(LeanToward(n, v, 1.0f, 100.0f), v, 1e-4f));
}

TEST(BoxUtil, PointsMarginAndUnion) {
    const Point3 p[3] = {{1, 2, 3}, {-1, 5, 0}, {0, 0, 0}};
    const Box3 box = BoxOfPoints(3, p);
    EXPECT_EQ(box.Min(), Point3(-1, 0, 0));
    EXPECT_EQ(box.Max(), Point3(1, 5, 3));
    EXPECT_TRUE(BoxOfPoints(0, p).IsEmpty());
    EXPECT_EQ(Enlarged(box, 2).Min(), Point3(-3, -2, -2));
    EXPECT_TRUE(Enlarged(Box3(), 2).IsEmpty());
    EXPECT_EQ(Union(box, Box3({9, 9, 9}, {10, 10, 10})).Max(), Point3(10, 10, 10));
    EXPECT_EQ(Union(Box3(), box).Max(), box.Max());
    EXPECT_EQ(Union(box, Box3()).Max(), box.Max());
}

TEST(BoxUtil, RayTouchesOnlyWhatLiesAhead) {
    const Box3 box({0, 0, 0}, {1, 1, 1});
    EXPECT_TRUE(RayTouchesBox({{-1, 0.5f, 0.5f}, {2, 0, 0}}, box));
    EXPECT_FALSE(RayTouchesBox({{-1, 0.5f, 0.5f}, {-2, 0, 0}}, box));
    EXPECT_FALSE(RayTouchesBox({{-1, 1.5f, 0.5f}, {2, 0, 0}}, box));
    EXPECT_TRUE(RayTouchesBox({{0.5f, 0.5f, 0.5f}, {0, 0, 1}}, box)); // from inside
    EXPECT_FALSE(RayTouchesBox({{0, 0, 0}, {1, 0, 0}}, Box3()));
    EXPECT_TRUE(RayTouchesBox({{-1, -1, -1}, {1, 1, 1}}, box));
}

TEST(NumberText, WritesSixDecimalsAndReadsBack) {
    EXPECT_EQ(FormatFloat(0.5f), "0.500000");
    EXPECT_EQ(FormatFloat(-1e6f), "-1000000.000000");
    EXPECT_EQ(FormatFloat(0.0000004f), "0.000000");
    int i = 7;
    float f = 7, g = 7;
    NumberReader r("  +3\t-0.25 1e3 x");
    EXPECT_TRUE(r.Read(i) && r.Read(f) && r.Read(g));
    EXPECT_EQ(i, 3);
    EXPECT_EQ(f, -0.25f);
    EXPECT_EQ(g, 1000.0f);
    EXPECT_FALSE(r.Read(i));
    EXPECT_EQ(i, 3);
    EXPECT_FALSE(NumberReader("").Read(i));
    EXPECT_FALSE(NumberReader("+-3").Read(i));
    EXPECT_TRUE(NumberReader("1e-60").Read(f));
    EXPECT_EQ(f, 0.0f);
    NumberReader broken("a 5");
    EXPECT_FALSE(broken.Read(i));
    EXPECT_FALSE(broken.Read(i)); // a mismatch ends the reading
}

} // namespace
