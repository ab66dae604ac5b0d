#include <gtest/gtest.h>

#include <bit>
#include <random>
#include <string>

#include "HRB_Thick/Sinks.h"

using namespace RasterDetail;

namespace {

/// A sink for kernels, which keeps the flagged samples.
struct LaneSink : KeepSink {
    static constexpr bool kWantsVelocity = false;
    template <bool InColumn>
    void InsertLanes(int x, int y, unsigned flags, const SampleLane* lanes) {
        for (; flags; flags &= flags - 1) {
            const int i = std::countr_zero(flags);
            const ImagePoint p = lanes[i].Point();
            InsertImage(InColumn ? x : x + i, InColumn ? y + i : y, p.z, Point3(p.color), p.coverage, p.opacity, {});
        }
    }
};

template <class Sink>
std::vector<Drawn> Draw(const StrandVertex& a, const StrandVertex& b, bool first, bool last, const RasterTarget& target,
                        WideKernel kernel) {
    Sink sink;
    const Point2 way{b.x - a.x, b.y - a.y};
    WideSegment segment{a,     b,   EdgeLine::Through({a.x, a.y}, way), EdgeLine::Through({b.x, b.y}, {-way.x, -way.y}),
                        first, last};
    WidthSampler sampler;
    sampler.kernel = kernel;
    DrawWide<PixelOperation::Image>(segment, target, sampler, sink);
    const auto place = [](const Drawn& d) { return std::pair(d.y, d.x); };
    std::sort(sink.image.begin(), sink.image.end(),
              [&](const Drawn& l, const Drawn& r) { return place(l) < place(r); });
    return sink.image;
}

/// The kernels that this processor has, by how many lanes they have.
class WideKernels : public testing::TestWithParam<int> {
public:
    static std::vector<int> Lanes() {
        std::vector<int> lanes = {4};
        if (WideKernel8()) lanes.push_back(8);
        if (WideKernel16()) lanes.push_back(16);
        return lanes;
    }

protected:
    static WideKernel Kernel() {
        return GetParam() == 4 ? WideKernel4() : GetParam() == 8 ? WideKernel8() : WideKernel16();
    }
};

} // namespace

TEST_P(WideKernels, GiveTheSamplesOfPixelsOneByOne) {
    std::mt19937 random(5);
    const auto between = [&](float lo, float hi) { return std::uniform_real_distribution<float>(lo, hi)(random); };
    const LineFilterCone cone(1.5f), small(0.7f);
    size_t samples = 0;
    for (int round = 0; round < 20000; ++round) {
        // Short ones as in strands, long ones, straight up and across, wide ones of many quads a row.
        const float reach = round % 7 == 0 ? 300.0f : 4.0f, width = round % 11 == 0 ? 90.0f : 3.0f;
        const auto vertex = [&](float x, float y) {
            return Vertex(x, y, between(-20, -1), between(0, width), between(0, 1),
                          {between(0, 2), between(0, 1), between(-1, 1)});
        };
        const StrandVertex a = vertex(between(0, 128), between(0, 128));
        const StrandVertex b = vertex(a.x + (round % 13 == 0 ? 0.0f : between(-reach, reach)),
                                      a.y + (round % 17 == 0 ? 0.0f : between(-reach, reach)));
        const PixelRect bucket = round % 3 == 0 ? PixelRect{31, 17, 97, 64} : PixelRect{0, 0, 128, 128};
        const RasterTarget target = Target(bucket, round % 2 ? &cone : &small);
        const bool first = random() % 2, last = random() % 2;
        const auto expected = Draw<KeepSink>(a, b, first, last, target, nullptr);
        samples += expected.size();
        ASSERT_EQ(Draw<LaneSink>(a, b, first, last, target, Kernel()), expected) << round;
    }
    EXPECT_GT(samples, 500000u);
}

INSTANTIATE_TEST_SUITE_P(Lanes, WideKernels, testing::ValuesIn(WideKernels::Lanes()),
                         testing::PrintToStringParamName());
