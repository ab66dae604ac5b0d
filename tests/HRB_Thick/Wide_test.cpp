#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>

#include "HRB_Thick/Sinks.h"

namespace {

constexpr PixelRect kAll{0, 0, 120, 120};

KeepSink Draw(const std::vector<StrandVertex>& strand, const LineFilter* filter, const PixelRect& rect = kAll,
              float boxSize = 1.0f, PixelOperation op = PixelOperation::Image) {
    KeepSink sink;
    KeepThick thick(0, sink);
    thick.SetTarget(Target(rect, filter, boxSize));
    DrawStrand(thick, strand, op);
    return sink;
}

/// Sum of coverage in the columns 50 .. 69 of a strand that crosses the picture at an angle, for each unit of length.
double CoveragePerLength(const LineFilter* filter, float boxSize, double angle, float width) {
    const float dx = float(std::cos(angle)), dy = float(std::sin(angle));
    const auto strand = {Vertex(60 - 300 * dx, 60.3f - 300 * dy, -5, width),
                         Vertex(60 + 300 * dx, 60.3f + 300 * dy, -5, width)};
    const bool xMajor = std::fabs(dx) > std::fabs(dy);
    double sum = 0;
    for (const Drawn& d : Draw(strand, filter, kAll, boxSize).image)
        if ((xMajor ? d.x : d.y) >= 50 && (xMajor ? d.x : d.y) < 70) sum += d.coverage;
    return sum / (20.0 / std::max(std::fabs(dx), std::fabs(dy)));
}

} // namespace

TEST(Wide, InfiniteStrandCoversItsWidthPerUnitLength) {
    const LineFilterCone cone(1.5f), small(1.0f);
    for (int degree = 0; degree < 180; degree += 7)
        for (float width : {0.2f, 0.7f, 2.0f, 9.5f}) {
            const double angle = degree * 3.14159265358979 / 180;
            EXPECT_NEAR(CoveragePerLength(nullptr, 1.0f, angle, width), width, 0.01 * width) << degree << " " << width;
            EXPECT_NEAR(CoveragePerLength(nullptr, 0.5f, angle, width), width, 0.01 * width) << degree << " " << width;
            // The tabulated cone interpolates, and a cone on a pixel grid does not sum to one everywhere: 4 per cent.
            EXPECT_NEAR(CoveragePerLength(&cone, 0, angle, width), width, 0.04 * width) << degree << " " << width;
            EXPECT_NEAR(CoveragePerLength(&small, 0, angle, width), width, 0.13 * width) << degree << " " << width;
        }
}

TEST(Wide, SegmentsDoNotDependOnEarlierOnes) {
    // The same strand drawn first, and after one in another direction and of another width.
    const std::vector<StrandVertex> strand = {Vertex(20, 30, -5, 3), Vertex(60, 50, -6, 2), Vertex(80, 90, -7, 1)};
    KeepSink sink;
    KeepThick thick(0, sink);
    thick.SetTarget(Target(kAll, nullptr, 1.5f));
    DrawStrand(thick, strand);
    const auto first = sink.image;
    DrawStrand(thick, std::vector<StrandVertex>{Vertex(10, 10, -5, 0.1f), Vertex(12, 40, -5, 0.1f)});
    sink.image.clear();
    DrawStrand(thick, strand);
    EXPECT_EQ(sink.image, first);
}

TEST(Wide, HardFilterCoversPixelCentres) {
    const LineFilterNone none(1.5f);
    const KeepSink sink = Draw({Vertex(20.2f, 30.5f, -5, 3), Vertex(29.7f, 30.5f, -6, 3)}, &none);
    EXPECT_EQ(sink.image.size(), 10u * 3u); // centres 20.5 .. 29.5 in the rows 29 .. 31
}

TEST(Wide, MiddleIsFullAndEdgesAreSoft) {
    const LineFilterCone cone(1.5f);
    const auto pixels = Draw({Vertex(20, 60.5f, -5, 11), Vertex(100, 60.5f, -5, 11)}, &cone).ByPixel();
    for (int y = 57; y <= 64; ++y) EXPECT_EQ(pixels.at({60, y}), 1.0f) << y;
    EXPECT_NEAR(pixels.at({60, 60 - 5}), cone.Eval(0.5f), 1e-4f);
    EXPECT_NEAR(pixels.at({60, 60 - 6}), cone.Eval(-0.5f), 1e-4f);
    EXPECT_FALSE(pixels.contains({60, 60 - 7})); // exactly the radius away
}

TEST(Wide, RootAndTipFade) {
    const LineFilterCone cone(1.5f);
    const auto pixels = Draw({Vertex(20.5f, 60.5f, -5, 5), Vertex(40.5f, 60.5f, -5, 5)}, &cone).ByPixel();
    EXPECT_NEAR(pixels.at({20, 60}), 0.5f, 0.01f);
    EXPECT_NEAR(pixels.at({40, 60}), 0.5f, 0.01f);
    EXPECT_NEAR(pixels.at({19, 60}), cone.Eval(-1.0f), 1e-5f);
    EXPECT_NEAR(pixels.at({41, 60}), cone.Eval(-1.0f), 1e-5f);
    EXPECT_EQ(pixels.at({22, 60}), 1.0f);
    EXPECT_EQ(pixels.at({38, 60}), 1.0f);
    EXPECT_FALSE(pixels.contains({18, 60}));
    EXPECT_FALSE(pixels.contains({42, 60}));
}

TEST(Wide, OneEndFactorAPixel) {
    // A segment shorter than the filter: the root's factor alone applies near both ends.
    const LineFilterCone cone(1.5f);
    const auto pixels = Draw({Vertex(60.5f, 60.5f, -5, 9), Vertex(61.5f, 60.5f, -5, 9)}, &cone).ByPixel();
    EXPECT_NEAR(pixels.at({60, 60}), cone.Eval(0.0f), 1e-4f);
    EXPECT_NEAR(pixels.at({61, 60}), cone.Eval(1.0f), 1e-4f);
}

TEST(Wide, JointsOnAStraightStrandCannotBeSeen) {
    const LineFilterCone cone(1.5f);
    for (const LineFilter* filter : {static_cast<const LineFilter*>(&cone), static_cast<const LineFilter*>(nullptr)}) {
        const auto whole = Draw({Vertex(10.5f, 20.5f, -5, 4), Vertex(90.5f, 60.5f, -5, 4)}, filter).ByPixel();
        std::vector<StrandVertex> parts;
        for (int i = 0; i <= 16; ++i) parts.push_back(Vertex(10.5f + 5 * float(i), 20.5f + 2.5f * float(i), -5, 4));
        const KeepSink drawn = Draw(parts, filter);
        const auto pixels = drawn.ByPixel();
        EXPECT_EQ(pixels.size(), drawn.image.size()); // every pixel once, also those exactly on a joint
        ASSERT_EQ(pixels.size(), whole.size());
        for (const auto& [pixel, coverage] : whole) EXPECT_NEAR(pixels.at(pixel), coverage, 2e-4f);
    }
}

TEST(Wide, BentStrandMatchesASupersampledReference) {
    // A circle arc of 40 segments, half-width 3, against a count of points within 3 of the arc, blurred by the box of
    // the filter (a pixel wide). Tolerance 0.06 a pixel: the chords of the arc, and the one end factor.
    constexpr float kRadius = 40, kHalf = 3;
    std::vector<StrandVertex> strand;
    for (int i = 0; i <= 40; ++i) {
        const float a = 0.3f + 2.5f * float(i) / 40;
        strand.push_back(Vertex(60 + kRadius * std::cos(a), 10 + kRadius * std::sin(a), -5, 2 * kHalf));
    }
    const auto pixels = Draw(strand, nullptr, kAll, 0.5f).ByPixel();
    double total = 0, reference = 0;
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 120; ++x) {
            int inside = 0;
            for (int i = 0; i < 64; ++i) {
                const float px = float(x) + (float(i % 8) + 0.5f) / 8, py = float(y) + (float(i / 8) + 0.5f) / 8;
                const float angle = std::atan2(py - 10, px - 60), r = std::hypot(px - 60, py - 10);
                inside += angle > 0.3f && angle < 2.8f && std::fabs(r - kRadius) < kHalf;
            }
            const auto it = pixels.find({x, y});
            const float coverage = it == pixels.end() ? 0.0f : it->second;
            EXPECT_NEAR(coverage, inside / 64.0f, 0.13f) << x << " " << y;
            total += coverage;
            reference += inside / 64.0;
        }
    EXPECT_NEAR(total, reference, 0.01 * reference);
}

TEST(Wide, SharpTurnsDrawBothArms) {
    // A strand that turns back by more than a right angle keeps both of its arms, and grows no spike.
    const auto pixels = Draw({Vertex(20, 60, -5, 3), Vertex(60, 60, -5, 3), Vertex(10, 66, -5, 3)}, nullptr).ByPixel();
    EXPECT_GT(pixels.at({30, 59}), 0.9f);
    EXPECT_GT(pixels.at({30, 63}), 0.9f);
    for (const auto& [pixel, coverage] : pixels) EXPECT_LT(pixel.first, 66);
    const auto shorter = Draw({Vertex(10, 60, -5, 3), Vertex(60, 60, -5, 3), Vertex(30, 68, -5, 3)}, nullptr).ByPixel();
    EXPECT_GT(shorter.at({20, 59}), 0.9f);
    EXPECT_GT(shorter.at({40, 65}), 0.9f);
    // Exactly back: each half of the width is drawn once.
    const auto fold = Draw({Vertex(20, 60.5f, -5, 5), Vertex(60, 60.5f, -5, 5), Vertex(20, 60.5f, -5, 5)}, nullptr);
    for (const auto& [pixel, coverage] : fold.ByPixel()) EXPECT_LE(coverage, 1.0f);
    EXPECT_EQ(fold.ByPixel().at({40, 60}), 1.0f);
}

TEST(Wide, VeryThinStrandsTakeTheSmallCone) {
    const LineFilterCone cone(2.0f);
    const auto rows = [&](float width) {
        int low = 1000, high = 0;
        for (const Drawn& d : Draw({Vertex(20, 60.5f, -5, width), Vertex(90, 60.5f, -5, width)}, &cone).image)
            low = std::min(low, d.y), high = std::max(high, d.y);
        return high - low + 1;
    };
    EXPECT_EQ(rows(0.14f), 3);
    EXPECT_EQ(rows(0.16f), 5);
}

TEST(Wide, TinySegmentsAreSkipped) {
    const LineFilterCone cone(1.5f);
    EXPECT_TRUE(Draw({Vertex(20.2f, 20.2f, -5, 0.5f), Vertex(20.21f, 20.2f, -5, 0.5f)}, &cone).image.empty());
    EXPECT_FALSE(Draw({Vertex(20.2f, 20.2f, -5, 0.5f), Vertex(20.25f, 20.2f, -5, 0.5f)}, &cone).image.empty());
    EXPECT_FALSE(Draw({Vertex(20.2f, 20.2f, -5, 1.0f), Vertex(20.205f, 20.2f, -5, 1.0f)}, &cone).image.empty());
    EXPECT_TRUE(Draw({Vertex(20.2f, 20.2f, -5, 9.0f), Vertex(20.2f, 20.2f, -5, 9.0f)}, &cone).image.empty());
    EXPECT_TRUE(Draw({Vertex(20.2f, 20.2f, -5, 9.0f)}, &cone).image.empty()); // a single vertex
}

TEST(Wide, UnusableValuesDrawNothing) {
    const LineFilterCone cone(1.5f);
    for (float v : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 1e20f}) {
        EXPECT_TRUE(Draw({Vertex(v, 20, -5, 3), Vertex(50, 20, -5, 3)}, &cone).image.empty());
        EXPECT_TRUE(Draw({Vertex(20, 20, -5, 3), Vertex(50, 20, -5, v)}, &cone).image.empty());
    }
    EXPECT_TRUE(
        Draw({Vertex(20, 20, std::numeric_limits<float>::quiet_NaN(), 3), Vertex(50, 20, -5, 3)}, &cone).image.empty());
    // A broken vertex spoils its own two segments only.
    const auto rest =
        Draw({Vertex(20, 20, -5, 3), Vertex(40, 20, -5, 3), Vertex(std::numeric_limits<float>::quiet_NaN(), 0, 0, 0),
              Vertex(60, 50, -5, 3), Vertex(90, 50, -5, 3)},
             &cone)
            .ByPixel();
    EXPECT_TRUE(rest.contains({30, 20}));
    EXPECT_TRUE(rest.contains({75, 50}));
}

TEST(Wide, OutsideTheBucketNothingIsDrawnAndNothingChanges) {
    const LineFilterCone cone(1.5f);
    KeepSink sink;
    KeepThick thick(0, sink);
    thick.SetTarget(Target({0, 0, 40, 40}, &cone));
    thick.Begin(Vertex(100, 100, -5, 3));
    EXPECT_FALSE(thick.Pending());
    EXPECT_TRUE(thick.Add(Vertex(90, 90, -5, 3), PixelOperation::Image));
    EXPECT_TRUE(thick.Pending());
    EXPECT_TRUE(thick.Add(Vertex(80, 90, -5, 3), PixelOperation::Image));
    EXPECT_TRUE(thick.Pending());
    EXPECT_TRUE(sink.image.empty());
    thick.Add(Vertex(20, 20, -5, 3), PixelOperation::Image);
    EXPECT_TRUE(sink.image.empty());
    thick.End(PixelOperation::Image);
    EXPECT_FALSE(thick.Pending());
    EXPECT_FALSE(sink.image.empty());
}

TEST(Wide, BeginFinishesAPendingSegmentInTheImagePass) {
    const LineFilterCone cone(1.5f);
    KeepSink sink;
    KeepThick thick(0, sink);
    thick.SetTarget(Target(kAll, &cone));
    thick.Begin(Vertex(20, 20, -5, 3));
    thick.Add(Vertex(40, 20, -5, 3), PixelOperation::Shadow);
    thick.Begin(Vertex(60, 60, -5, 3));
    EXPECT_TRUE(sink.shadow.empty());
    EXPECT_FALSE(sink.image.empty());
    EXPECT_FALSE(thick.Pending());
}

TEST(Wide, ShadowPassHasTheSameCoverage) {
    const LineFilterCone cone(1.5f);
    const std::vector<StrandVertex> strand = {Vertex(20, 30, -5, 3, 0.5f), Vertex(60, 50, -6, 2, 0.25f)};
    const KeepSink image = Draw(strand, &cone), shadow = Draw(strand, &cone, kAll, 1, PixelOperation::Shadow);
    EXPECT_TRUE(shadow.image.empty());
    ASSERT_EQ(shadow.shadow.size(), image.image.size());
    for (size_t i = 0; i < image.image.size(); ++i) {
        EXPECT_EQ(shadow.shadow[i].coverage, image.image[i].coverage);
        EXPECT_EQ(shadow.shadow[i].opacity, image.image[i].opacity);
        EXPECT_EQ(shadow.shadow[i].z, image.image[i].z);
    }
}

TEST(Wide, DepthWidthColourAndVelocityRunAlong) {
    const LineFilterNone none(1);
    StrandVertex a = Vertex(20.5f, 60.5f, -4, 3, 0.0f, {1, 0, 0}), b = Vertex(40.5f, 60.5f, -8, 9, 1.0f, {0, 1, 0});
    b.velocity = {10, 20};
    for (const Drawn& d : Draw({a, b}, &none).image) {
        const float t = float(d.x - 20) / 20;
        EXPECT_NEAR(d.z, -4 - 4 * t, 1e-4f);
        EXPECT_NEAR(d.opacity, t, 1e-4f);
        EXPECT_NEAR(d.color.y, t, 1e-4f);
        EXPECT_NEAR(d.velocity.y, 20 * t, 1e-3f);
        EXPECT_LT(std::fabs(float(d.y) - 60), 1.5f + 3 * t);
    }
}
