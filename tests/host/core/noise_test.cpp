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

// Never beyond `bound`, beyond `reach` on either side, the mean within `middle` of 0, and the variance.
void ExpectStatistics(const Statistics& s, double bound, double reach, double middle, double variance) {
    EXPECT_GE(s.low, -bound);
    EXPECT_LE(s.high, bound);
    EXPECT_LT(s.low, -reach);
    EXPECT_GT(s.high, reach);
    EXPECT_NEAR(s.Mean(), 0, middle);
    EXPECT_NEAR(s.Variance(), variance, 0.002);
}

TEST(Noise, OneDimension) {
    Statistics s;
    for (int i = 0; i < 1000000; ++i) s.Add(noise1(Step(i, 0.6180339887)));
    ExpectStatistics(s, 1, 0.85, 0.02, 0.084);
}

TEST(Noise, ThreeDimensions) {
    Statistics s;
    for (int i = 0; i < 1000000; ++i)
        s.Add(noise3(Step(i, 0.8191725134), Step(i, 0.6710436067), Step(i, 0.5497004779)));
    ExpectStatistics(s, 1.04, 0.8, 0.002, 0.077);
}

TEST(Noise, FourDimensions) {
    Statistics s;
    for (int i = 0; i < 1000000; ++i)
        s.Add(noise4(Step(i, 0.8566748838), Step(i, 0.7338918566), Step(i, 0.6287067210), Step(i, 0.5385972572)));
    ExpectStatistics(s, 1.5, 0.8, 0.002, 0.087);
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
