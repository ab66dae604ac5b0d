#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "HRB_Thick/Sinks.h"

namespace {

constexpr PixelRect kAll{0, 0, 200, 200};

KeepSink Draw(const std::vector<ThinVertex>& strand, const PixelRect& rect = kAll,
              PixelOperation op = PixelOperation::Image) {
    KeepSink sink;
    KeepThick thick(0, sink);
    thick.SetTarget(Target(rect, nullptr));
    DrawStrand(thick, strand, op);
    return sink;
}

} // namespace

TEST(Thin, HorizontalSegmentInOneRow) {
    const KeepSink sink = Draw({Thin(10.25f, 20.5f, -5, 0.5f), Thin(13.25f, 20.5f, -8, 0.5f)});
    ASSERT_EQ(sink.image.size(), 4u);
    const float expected[] = {0.375f, 0.5f, 0.5f, 0.125f};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(sink.image[size_t(i)].x, 10 + i);
        EXPECT_EQ(sink.image[size_t(i)].y, 20);
        EXPECT_NEAR(sink.image[size_t(i)].coverage, expected[i], 1e-6f);
    }
    // Depth at the middle of each cell's part: 0.375 of 3 pixels into the first.
    EXPECT_NEAR(sink.image[0].z, -5.375f, 1e-5f);
}

TEST(Thin, SegmentInsideOnePixel) {
    const KeepSink sink = Draw({Thin(10.25f, 20.25f, -5, 0.5f, 0.2f), Thin(10.55f, 20.65f, -7, 0.5f, 0.4f)});
    ASSERT_EQ(sink.image.size(), 1u);
    EXPECT_NEAR(sink.image[0].coverage, 0.25f, 1e-6f);
    EXPECT_EQ(sink.image[0].z, -6.0f);
    EXPECT_NEAR(sink.image[0].opacity, 0.3f, 1e-6f);
    const KeepSink wide = Draw({Thin(10.1f, 20.1f, -5, 7.0f), Thin(10.9f, 20.1f, -5, 7.0f)});
    EXPECT_NEAR(wide.image[0].coverage, 0.8f, 1e-6f); // a width counts up to 1 pixel
}

TEST(Thin, ColourAndVelocityAreInterpolated) {
    ThinVertex a = Thin(10.0f, 20.5f, -5, 0.5f, 1, {1, 0, 0}), b = Thin(12.0f, 20.5f, -5, 0.5f, 1, {0, 1, 0});
    a.x = 10.5f, b.x = 11.5f;
    a.velocity = {0, 4};
    b.velocity = {8, 4};
    const KeepSink sink = Draw({a, b});
    ASSERT_EQ(sink.image.size(), 2u);
    EXPECT_EQ(sink.image[0].color, Point3(0.75f, 0.25f, 0));
    EXPECT_EQ(sink.image[1].color, Point3(0.25f, 0.75f, 0));
    EXPECT_EQ(sink.image[1].velocity, Point2(6, 4));
}

TEST(Thin, ShadowPassHasNoColour) {
    const KeepSink sink =
        Draw({Thin(10.5f, 20.5f, -5, 0.5f, 0.7f), Thin(11.5f, 20.5f, -5, 0.5f, 0.7f)}, kAll, PixelOperation::Shadow);
    EXPECT_TRUE(sink.image.empty());
    ASSERT_EQ(sink.shadow.size(), 2u);
    EXPECT_NEAR(sink.shadow[0].opacity, 0.7f, 1e-6f);
    EXPECT_NEAR(sink.shadow[0].coverage, 0.25f, 1e-6f);
}

TEST(Thin, StartOnAGridLine) {
    // Going right it belongs to the pixel on its right, going left to the one on its left.
    EXPECT_EQ(Draw({Thin(10, 20.5f, -5, 1), Thin(11.5f, 20.5f, -5, 1)}).image[0].x, 10);
    EXPECT_EQ(Draw({Thin(10, 20.5f, -5, 1), Thin(8.5f, 20.5f, -5, 1)}).image[0].x, 9);
    // Standing still in x counts as going left.
    EXPECT_EQ(Draw({Thin(10, 20.5f, -5, 1), Thin(10, 21.5f, -5, 1)}).image[0].x, 9);
}

TEST(Thin, NothingOutsideAndNothingUnusable) {
    EXPECT_TRUE(Draw({Thin(-50, -50, -5, 1), Thin(-10, -70, -5, 1)}).image.empty());
    EXPECT_TRUE(Draw({Thin(-50, 100, -5, 1), Thin(100, -60, -5, 1)}, {0, 0, 10, 10}).image.empty());
    const float bad[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 1e20f};
    for (float v : bad) {
        EXPECT_TRUE(Draw({Thin(v, 5, -5, 1), Thin(10, 10, -5, 1)}).image.empty());
        EXPECT_TRUE(Draw({Thin(5, 5, -5, 1), Thin(10, v, -5, 1)}).image.empty());
    }
    EXPECT_TRUE(Draw({Thin(5, 5, bad[0], 1), Thin(10, 10, -5, 1)}).image.empty());
    EXPECT_TRUE(Draw({Thin(5, 5, -5, 1)}).image.empty()); // a single vertex
}

TEST(Thin, TotalCoverageIsLengthTimesWidth) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    for (int round = 0; round < 200; ++round) {
        std::vector<ThinVertex> strand;
        float x = 100, y = 100, length = 0;
        const float width = 0.05f + 0.5f * u(random);
        strand.push_back(Thin(x, y, -5, width));
        for (int i = 0; i < 30; ++i) {
            const float dx = 8 * u(random) - 4, dy = 8 * u(random) - 4;
            if (x + dx < 1 || x + dx > 199 || y + dy < 1 || y + dy > 199) continue;
            x += dx, y += dy;
            length += std::sqrt(dx * dx + dy * dy);
            strand.push_back(Thin(x, y, -5, width));
        }
        EXPECT_NEAR(Draw(strand).TotalCoverage(), length * width, 1e-3f * length * width);
    }
}

TEST(Thin, CellsAreConnected) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> u(1.0f, 199.0f);
    for (int round = 0; round < 500; ++round) {
        // Every other start on the grid, and some ends too: exact corner crossings.
        const auto at = [&](bool grid) { return grid ? std::floor(u(random)) : u(random); };
        const KeepSink sink =
            Draw({Thin(at(round & 1), at(round & 2), -5, 1), Thin(at(round & 4), at(round & 8), -5, 1)});
        for (size_t i = 1; i < sink.image.size(); ++i) {
            const int dx = std::abs(sink.image[i].x - sink.image[i - 1].x);
            const int dy = std::abs(sink.image[i].y - sink.image[i - 1].y);
            EXPECT_EQ(dx + dy, 1);
        }
    }
}

TEST(Thin, FarAwayEndsCostNothingAndChangeNothing) {
    // From far outside to far outside, through a small bucket: at most a few cells are visited.
    for (float far : {1e3f, 1e5f, 1e7f, 5e8f}) {
        const KeepSink sink = Draw({Thin(-far, 104.5f - far, -5, 1), Thin(far + 200, 304.5f + far, -5, 1)});
        for (const Drawn& d : sink.image) EXPECT_TRUE(kAll.Contains(d.x, d.y));
        EXPECT_GT(sink.image.size(), far < 1e4f ? 100u : 0u);
    }
}
