// The host's noise: its statistics, and what it is zero at.

#include "sdk/noise.h"

#include <cmath>

#include <gtest/gtest.h>

#include "host/statistics.h"

namespace {

using test::Statistics;

// Steps without a common measure fill the cells evenly.
float Step(int i, double ratio) {
    const double v = i * ratio;
    return float(v - 256.0 * std::floor(v / 256.0));
}

TEST(Noise, OneDimension) {
    Statistics s;
    for (int i = 0; i < 1000000; ++i) s.Add(noise1(Step(i, 0.6180339887)));
    EXPECT_GE(s.low, -1.0);
    EXPECT_LE(s.high, 1.0);
    EXPECT_LT(s.low, -0.85);
    EXPECT_GT(s.high, 0.85);
    EXPECT_NEAR(s.Mean(), 0, 0.02);
    EXPECT_NEAR(s.Variance(), 0.084, 0.002);
}

TEST(Noise, ThreeDimensions) {
    Statistics s;
    for (int i = 0; i < 1000000; ++i)
        s.Add(noise3(Step(i, 0.8191725134), Step(i, 0.6710436067), Step(i, 0.5497004779)));
    EXPECT_GE(s.low, -1.04);
    EXPECT_LE(s.high, 1.04);
    EXPECT_LT(s.low, -0.8);
    EXPECT_GT(s.high, 0.8);
    EXPECT_NEAR(s.Mean(), 0, 0.002);
    EXPECT_NEAR(s.Variance(), 0.077, 0.002);
}

TEST(Noise, FourDimensions) {
    Statistics s;
    for (int i = 0; i < 1000000; ++i)
        s.Add(noise4(Step(i, 0.8566748838), Step(i, 0.7338918566), Step(i, 0.6287067210), Step(i, 0.5385972572)));
    EXPECT_GE(s.low, -1.5);
    EXPECT_LE(s.high, 1.5);
    EXPECT_LT(s.low, -0.8);
    EXPECT_GT(s.high, 0.8);
    EXPECT_NEAR(s.Mean(), 0, 0.002);
    EXPECT_NEAR(s.Variance(), 0.087, 0.002);
}

TEST(Noise, IsZeroOnTheLatticeAndRepeats) {
    for (const float i : {-3.0f, 0.0f, 7.0f, 255.0f}) {
        EXPECT_EQ(noise1(i), 0.0f);
        EXPECT_EQ(noise3(i, 2, -i), 0.0f);
        EXPECT_EQ(noise4(i, 2, -i, 5), 0.0f);
        const float f = i + 0.375f; // exact with 256 added
        EXPECT_EQ(noise1(f), noise1(f + 256));
        EXPECT_EQ(noise3(f, 0.25f, 0.5f), noise3(f, 0.25f + 256, 0.5f));
        EXPECT_EQ(noise4(f, 0.25f, 0.5f, 0.75f), noise4(f, 0.25f, 0.5f, 0.75f - 256));
        EXPECT_NE(noise1(f), 0.0f);
    }
}

// Steep nowhere: steps of 1/1000 change little, also across cells.
TEST(Noise, IsSmooth) {
    for (int i = 0; i < 20000; ++i) {
        const float x = float(i) * 0.001f;
        EXPECT_LT(std::fabs(noise1(x + 0.001f) - noise1(x)), 0.006f) << x;
        EXPECT_LT(std::fabs(noise3(x + 0.001f, 0.3f, 0.6f) - noise3(x, 0.3f, 0.6f)), 0.006f) << x;
        EXPECT_LT(std::fabs(noise4(0.1f, 0.3f, 0.6f, x + 0.001f) - noise4(0.1f, 0.3f, 0.6f, x)), 0.006f) << x;
    }
}

TEST(Noise, WildCoordinatesAreHarmless) {
    for (const float x : {1e10f, -1e30f, INFINITY, NAN}) {
        EXPECT_EQ(noise1(x), 0.0f);
        EXPECT_LE(std::fabs(noise3(x, 0.5f, 0.5f)), 1.04f);
        EXPECT_LE(std::fabs(noise4(0.5f, 0.5f, x, 0.5f)), 1.5f);
    }
}

} // namespace
