// A pixel gets the same samples, bit for bit, whatever bucket it is drawn in.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "HRB_Thick/Sinks.h"

namespace {

constexpr int kWidth = 90, kHeight = 70;

/// Samples of every pixel in the order they were drawn.
using Pixels = std::map<std::pair<int, int>, std::vector<Drawn>>;

void Collect(const KeepSink& sink, const PixelRect& rect, Pixels& pixels) {
    for (const Drawn& d : sink.image) {
        ASSERT_TRUE(rect.Contains(d.x, d.y));
        pixels[{d.x, d.y}].push_back(d);
    }
}

/// Cuts the picture into random rectangles.
void Cut(std::mt19937& random, const PixelRect& r, int depth, std::vector<PixelRect>& out) {
    const bool wide = r.Width() >= r.Height();
    const int extent = wide ? r.Width() : r.Height();
    if (depth == 0 || extent < 2) {
        out.push_back(r);
        return;
    }
    const int at = 1 + int(random() % unsigned(extent - 1));
    PixelRect a = r, b = r;
    (wide ? a.x1 : a.y1) = (wide ? r.x0 : r.y0) + at;
    (wide ? b.x0 : b.y0) = (wide ? r.x0 : r.y0) + at;
    Cut(random, a, depth - 1, out);
    Cut(random, b, depth - 1, out);
}

/// Random strands, smooth and wild, inside and across the border, some on the grid, some far too long.
template <class V, class Make>
std::vector<std::vector<V>> Strands(std::mt19937& random, int count, const Make& make) {
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    std::vector<std::vector<V>> strands;
    for (int i = 0; i < count; ++i) {
        const float step = std::pow(10.0f, -1.0f + 3.0f * u(random)), width = std::pow(10.0f, -1.5f + 2.5f * u(random));
        float x = u(random) * 130 - 20, y = u(random) * 110 - 20, angle = 6.28f * u(random);
        const float wild = u(random) * (i % 3 ? 0.5f : 3.0f);
        std::vector<V> strand;
        for (int k = 0; k < 12; ++k) {
            const bool grid = i % 7 == 0, centre = i % 7 == 1;
            const float vx = grid ? std::floor(x) : centre ? std::floor(x) + 0.5f : x;
            const float vy = grid ? std::floor(y) : centre ? std::floor(y) + 0.5f : y;
            strand.push_back(make(vx, vy, -5 - u(random), width * (0.2f + u(random)), u(random),
                                  Point3(u(random), u(random), u(random))));
            angle += wild * (u(random) - 0.5f);
            const float length = i % 50 == 9 && k == 5 ? 1e5f : step;
            x += length * std::cos(angle), y += length * std::sin(angle);
        }
        strands.push_back(strand);
    }
    return strands;
}

template <class V>
void ExpectSplitsEqual(const std::vector<std::vector<V>>& strands, const LineFilter* filter, std::mt19937& random) {
    const auto draw = [&](const PixelRect& rect, Pixels& pixels) {
        KeepSink sink;
        KeepThick thick(0, sink);
        thick.SetTarget(Target(rect, filter, 1.5f));
        for (const auto& strand : strands) DrawStrand(thick, strand);
        Collect(sink, rect, pixels);
    };
    const PixelRect all{0, 0, kWidth, kHeight};
    Pixels whole;
    draw(all, whole);
    ASSERT_GT(whole.size(), size_t(kWidth * kHeight) * 2 / 3);
    for (int depth : {1, 3, 6, 9}) {
        std::vector<PixelRect> rects;
        Cut(random, all, depth, rects);
        Pixels split;
        for (const PixelRect& rect : rects) draw(rect, split);
        EXPECT_TRUE(split == whole) << depth;
    }
}

} // namespace

TEST(Split, Thin) {
    std::mt19937 random(11);
    ExpectSplitsEqual<ThinVertex>(Strands<ThinVertex>(random, 3000, Thin), nullptr, random);
}

TEST(Split, WideCone) {
    std::mt19937 random(12);
    const LineFilterCone cone(1.5f);
    ExpectSplitsEqual<StrandVertex>(Strands<StrandVertex>(random, 700, Vertex), &cone, random);
}

TEST(Split, WideBoxAndNone) {
    std::mt19937 random(13);
    const auto strands = Strands<StrandVertex>(random, 400, Vertex);
    ExpectSplitsEqual<StrandVertex>(strands, nullptr, random);
    const LineFilterNone none(1.5f);
    ExpectSplitsEqual<StrandVertex>(strands, &none, random);
}

TEST(Split, NothingIsDrawnBeyondTheReach) {
    std::mt19937 random(14);
    const LineFilterCone cone(1.5f);
    const RasterTarget target = Target({-500, -500, 600, 600}, &cone);
    for (const auto& strand : Strands<StrandVertex>(random, 300, Vertex)) {
        KeepSink sink;
        KeepThick thick(0, sink);
        thick.SetTarget(target);
        DrawStrand(thick, strand);
        float x0 = 1e9f, y0 = 1e9f, x1 = -1e9f, y1 = -1e9f, width = 0;
        for (const StrandVertex& v : strand) {
            x0 = std::min(x0, v.x), x1 = std::max(x1, v.x), y0 = std::min(y0, v.y), y1 = std::max(y1, v.y);
            width = std::max(width, v.width);
        }
        const float reach = RasterReach(width, MaxFilterRadius(target));
        for (const Drawn& d : sink.image) {
            EXPECT_GE(float(d.x) + 0.5f, x0 - reach - 1e-3f);
            EXPECT_LE(float(d.x) + 0.5f, x1 + reach + 1e-3f);
            EXPECT_GE(float(d.y) + 0.5f, y0 - reach - 1e-3f);
            EXPECT_LE(float(d.y) + 0.5f, y1 + reach + 1e-3f);
        }
    }
}
