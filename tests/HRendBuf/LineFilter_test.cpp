#include "HRendBuf/LineFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

/// The part of the square of half-size s on the inner side of an edge, by counting cells.
double CountedArea(double nx, double ny, double s, double e) {
    constexpr int kCells = 800;
    int inside = 0;
    for (int i = 0; i < kCells; ++i)
        for (int j = 0; j < kCells; ++j) {
            const double u = ((i + 0.5) / kCells * 2 - 1) * s, v = ((j + 0.5) / kCells * 2 - 1) * s;
            inside += nx * u + ny * v <= e;
        }
    return double(inside) / kCells / kCells;
}

} // namespace

TEST(LineFilter, NoneIsAHardEdge) {
    const LineFilterNone none(1.0f);
    EXPECT_EQ(none.GetType(), 0);
    EXPECT_EQ(none.Eval(-0.0001f), 0.0f);
    EXPECT_EQ(none.Eval(0.0f), 1.0f);
}

TEST(LineFilter, ConeTable) {
    const LineFilterCone cone(1.5f);
    EXPECT_EQ(cone.GetType(), 2);
    EXPECT_EQ(cone.Entry(0), 0.0f);
    EXPECT_EQ(cone.Entry(32), 1.0f);
    EXPECT_NEAR(cone.Entry(16), 0.5f, 0.01f);
    for (int i = 0; i < 32; ++i) EXPECT_LE(cone.Entry(i), cone.Entry(i + 1)) << i;
    EXPECT_EQ(cone.Eval(-1.5f), 0.0f);
    EXPECT_NEAR(cone.Eval(0.0f), 0.5f, 0.01f);
    // The largest argument below the radius may not read beyond the table's end.
    EXPECT_NEAR(cone.Eval(std::nextafter(1.5f, 0.0f)), 1.0f, 1e-4f);
}

TEST(LineFilter, ConeVolumeIsOne) {
    for (float size : {0.5f, 1.0f, 1.5f}) {
        const LineFilterCone cone(size);
        double sum = 0;
        for (double u = -size; u < size; u += 0.01)
            for (double v = -size; v < size; v += 0.01) sum += cone.Kernel(u, v) * 0.0001;
        EXPECT_NEAR(sum, 1.0, 0.005) << size;
        EXPECT_EQ(cone.Kernel(size, 0.0), 0.0);
    }
}

TEST(LineFilter, BoxHalfSizeFollowsTheWidth) {
    LineFilterBox box(1.0f);
    EXPECT_EQ(box.GetType(), 1);
    box.Setup(0.8f, 0.6f, 0.1f);
    EXPECT_EQ(box.HalfSize(), 0.5f);
    const float thin = box.Eval(0.3f);
    box.Setup(0.8f, 0.6f, 0.2f);
    EXPECT_EQ(box.HalfSize(), 1.0f);
    const float first = box.Eval(0.3f);
    EXPECT_NE(first, thin);
    // Same half-size, other direction: the terms stay those of the segment before.
    box.Setup(1.0f, 1e-6f, 0.2f);
    EXPECT_EQ(box.Eval(0.3f), first);
    LineFilterBox fresh(1.0f);
    fresh.Setup(1.0f, 1e-6f, 0.2f);
    EXPECT_NE(fresh.Eval(0.3f), first);
    // Small filters keep their size for thin strands.
    LineFilterBox small(0.5f);
    small.Setup(0.8f, 0.6f, 0.1f);
    EXPECT_EQ(small.HalfSize(), 0.5f);
}

TEST(LineFilter, BoxIsTheSquaresAreaForEveryAngle) {
    for (float size : {0.5f, 1.0f, 1.5f})
        for (int degree = 0; degree <= 90; degree += 9) {
            const double angle = degree * 3.14159265358979 / 180;
            const float x = float(std::cos(angle)), y = float(std::sin(angle));
            LineFilterBox box(size);
            box.Setup(std::max(x, y), std::max(std::min(x, y), 1e-6f), 1.0f);
            EXPECT_NEAR(box.Eval(0.0f), 0.5f, 1e-5f);
            for (float e = -1.4f * size; e < 1.4f * size; e += 0.17f * size)
                EXPECT_NEAR(box.Eval(e), CountedArea(x, y, size, e), 0.004) << size << " " << degree << " " << e;
            for (float e : {-size, -0.5f * size, 0.5f * size, size}) {
                EXPECT_GE(box.Eval(e), 0.0f);
                EXPECT_LE(box.Eval(e), 1.0f);
            }
        }
}

TEST(LineFilter, WideStrandCoversItsMiddle) {
    const LineFilterNone none(1.5f);
    const LineFilterCone cone(1.5f);
    LineFilterBox box(1.5f);
    box.Setup(0.8f, 0.6f, 10.0f);
    EXPECT_EQ(none.Eval(10.0f) - none.Eval(-10.0f), 1.0f);
    EXPECT_EQ(box.Eval(10.0f) - box.Eval(-10.0f), 1.0f);
    // The table is asked below its radius only.
    EXPECT_NEAR(cone.Eval(1.4999f) - cone.Eval(-1.4999f), 1.0f, 1e-3f);
}
