// Rotations by angles.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "core/euler.h"

using namespace host;

TEST(Euler, TurnsCounterClockwiseAboutXThenYThenZ) {
    const Point3 y = VectorTransform(Point3(0, 1, 0), EulerMatrix({90, 0, 0}));
    EXPECT_LT(Length(y - Point3(0, 0, 1)), 1e-6f);
    const Point3 both = VectorTransform(Point3(0, 1, 0), EulerMatrix({90, 0, 90}));
    EXPECT_LT(Length(both - Point3(0, 0, 1)), 1e-6f) << "Z turns what X has turned";
    const Point3 x = VectorTransform(Point3(1, 0, 0), EulerMatrix({0, 90, 0}));
    EXPECT_LT(Length(x - Point3(0, 0, -1)), 1e-6f);
}

TEST(Euler, AnglesComeBack) {
    for (const Point3& angles : {Point3(), Point3(10, -20, 30), Point3(170, 89, -179), Point3(-90, 0, 45)})
        EXPECT_LT(Length(EulerDegrees(EulerMatrix(angles)) - angles), 1e-3f) << angles.x;
    // Straight up and down all of the turn counts for Z.
    const Point3 up = EulerDegrees(EulerMatrix({20, 90, 50})), down = EulerDegrees(EulerMatrix({20, -90, 50}));
    EXPECT_EQ(up.x, 0.0f);
    EXPECT_NEAR(up.y, 90, 1e-3f);
    EXPECT_NEAR(up.z, 30, 1e-3f);
    EXPECT_NEAR(down.z, 70, 1e-3f);
}

RC_GTEST_PROP(Euler, AnyAnglesGiveTheirMatrixAgain, ()) {
    const auto degrees = [] { return float(*rc::gen::inRange(-3600, 3600)) / 10; };
    const Matrix3 m = EulerMatrix({degrees(), degrees(), degrees()}), again = EulerMatrix(EulerDegrees(m));
    for (int i = 0; i < 3; ++i) RC_ASSERT(Length(m.GetRow(i) - again.GetRow(i)) < 1e-5f);
}
