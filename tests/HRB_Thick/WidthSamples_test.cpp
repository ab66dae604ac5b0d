#include <gtest/gtest.h>

#include "HRB_Thick/Sinks.h"

using RasterDetail::WidthFootprint;
using RasterDetail::WidthSampler;

namespace {

/// Value of the row 0, 10, 20 ... at `u` across a strand of width 4.
float Ramp(float u, int samples, bool filtered, float width = 4) {
    return WidthFootprint(u, width, samples, filtered).Evaluate<float>([](int i) { return 10.0f * float(i); });
}

} // namespace

TEST(WidthSamples, UnfilteredInterpolatesAndClamps) {
    EXPECT_FLOAT_EQ(Ramp(0, 5, false), 20);
    EXPECT_FLOAT_EQ(Ramp(-2, 5, false), 0);
    EXPECT_FLOAT_EQ(Ramp(0.5f, 5, false), 25);
    EXPECT_FLOAT_EQ(Ramp(-7, 5, false), 0);
    EXPECT_NEAR(Ramp(7, 5, false), 39.9f, 1e-4f); // the last place is W - 1.01
    EXPECT_FLOAT_EQ(Ramp(0, 2, false), 5);
    EXPECT_FLOAT_EQ(Ramp(0, 5, false, 0), 20); // a strand without width: its middle
}

TEST(WidthSamples, FilteredIsTheMeanOverAPixel) {
    // On a ramp the mean over a symmetric footprint is the value in its middle.
    EXPECT_NEAR(Ramp(0, 5, true), 20, 1e-4f);
    EXPECT_NEAR(Ramp(0.3f, 5, true), 23, 1e-4f);
    EXPECT_NEAR(Ramp(0, 5, true, 40), 20, 1e-4f); // both ends in one interval
    EXPECT_NEAR(Ramp(10, 5, true, 40), 30, 1e-4f);
    // Clamped at one side: from 1.5 .. 2.5 of -2 .. 2 only up to the end.
    EXPECT_NEAR(Ramp(2, 5, true), (35 + 39.9f) / 2, 1e-3f);
    // Wholly beyond an edge: the edge's sample.
    EXPECT_FLOAT_EQ(Ramp(-9, 5, true), 0);
    EXPECT_FLOAT_EQ(Ramp(9, 5, true), 40);
}

TEST(WidthSamples, FilteredByHand) {
    // Samples 0, 1, 0, 0 across 3 pixels, footprint from 0.5 to 1.5 sample places: 0.375 + 0.375.
    const auto value = WidthFootprint(-0.5f, 3, 4, true).Evaluate<float>([](int i) { return i == 1 ? 1.0f : 0.0f; });
    EXPECT_NEAR(value, 0.75f, 1e-5f);
}

TEST(WidthSamples, OneSampleIsEverywhere) {
    for (bool filtered : {false, true}) {
        KeepSink sink;
        KeepThick thick(0, sink);
        const LineFilterCone cone(1.5f);
        thick.SetTarget(Target({0, 0, 100, 100}, &cone));
        thick.SetWidthSamples(1, filtered);
        DrawStrand(thick, std::vector<StrandVertex>{Vertex(20, 50, -5, 9, 0.25f, {1, 2, 3}),
                                                    Vertex(70, 60, -5, 9, 0.25f, {1, 2, 3})});
        ASSERT_GT(sink.image.size(), 400u);
        for (const Drawn& d : sink.image) {
            EXPECT_NEAR(d.opacity, 0.25f, 1e-6f);
            EXPECT_NEAR(d.color.z, 3.0f, 1e-5f);
        }
    }
}

TEST(WidthSamples, RowsRunAcrossTheStrand) {
    // d = (dx (py - Ay) - dy (px - Ax)) / L is positive below a strand that runs to the right: the last samples.
    KeepSink sink;
    KeepThick thick(0, sink);
    const LineFilterNone none(1);
    thick.SetTarget(Target({0, 0, 100, 100}, &none));
    thick.SetWidthSamples(3, false);
    StrandVertex a = Vertex(20, 50.5f, -5, 8), b = Vertex(60, 50.5f, -5, 8);
    for (StrandVertex* v : {&a, &b}) {
        v->opacity[0] = 0.1f, v->opacity[1] = 0.5f, v->opacity[2] = 0.9f;
        v->color[0] = {1, 0, 0}, v->color[1] = {0, 1, 0}, v->color[2] = {0, 0, 1};
    }
    DrawStrand(thick, std::vector<StrandVertex>{a, b});
    for (const Drawn& d : sink.image) {
        const float u = float(d.y - 50);
        EXPECT_NEAR(d.opacity, 0.5f + u * 0.1f, 2e-3f);
        EXPECT_NEAR(d.color.z, std::max(0.0f, u / 4), 0.02f);
        EXPECT_NEAR(d.color.x, std::max(0.0f, -u / 4), 0.02f);
    }
}

TEST(WidthSamples, RowsAreHeldBeyondTheEnds) {
    KeepSink sink;
    KeepThick thick(0, sink);
    const LineFilterCone cone(1.5f);
    thick.SetTarget(Target({0, 0, 100, 100}, &cone));
    DrawStrand(thick, std::vector<StrandVertex>{Vertex(20.5f, 50.5f, -5, 4, 0.2f), Vertex(40.5f, 50.5f, -5, 4, 0.8f)});
    for (const Drawn& d : sink.image) {
        const float t = std::clamp(float(d.x - 20) / 20, 0.0f, 1.0f);
        EXPECT_NEAR(d.opacity, 0.2f + 0.6f * t, 1e-5f);
    }
}
