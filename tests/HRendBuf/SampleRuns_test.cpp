#include <gtest/gtest.h>

#include <random>
#include <tuple>

#include "HRendBuf/SampleRuns.h"

namespace {

using Row = std::tuple<uint32_t, float, float, float, float, float, float>;

/// What a writer's runs hold, tile after tile.
std::vector<std::vector<Row>> Rows(const SampleWriter& writer, const TileGrid& grid) {
    std::vector<std::vector<Row>> tiles(size_t(grid.Count()));
    constexpr const HairFragment* kKind = nullptr;
    for (int tile = 0; tile < grid.Count(); ++tile)
        for (TileRuns<ImagePoint>::Reader r(writer.Runs(kKind), tile); !r.Done(); r.Next()) {
            const ImagePoint& p = r.Get().point;
            tiles[size_t(tile)].push_back({r.Get().tag, p.z, p.opacity, p.coverage, p.color.r, p.color.g, p.color.b});
        }
    return tiles;
}

template <bool InColumn>
void InsertBothWays(std::mt19937& random, const PixelRect& bucket, SampleWriter& lanes, SampleWriter& single) {
    const auto between = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    // Up to three of the four pixels lie beside the bucket.
    const int x = between(bucket.x0 - (InColumn ? 0 : 3), bucket.x1 - 1);
    const int y = between(bucket.y0 - (InColumn ? 3 : 0), bucket.y1 - 1);
    SampleLane samples[4];
    unsigned flags = 0;
    for (int i = 0; i < 4; ++i) {
        const int px = InColumn ? x : x + i, py = InColumn ? y + i : y;
        for (float& v : samples[i].values) v = float(between(1, 1000000));
        const bool inside = px >= bucket.x0 && px < bucket.x1 && py >= bucket.y0 && py < bucket.y1;
        if (!inside || between(0, 2) == 0) continue;
        flags |= 1u << i;
        const ImagePoint p = samples[i].Point();
        single.InsertImage(px, py, p.z, Point3(p.color), p.coverage, p.opacity, {});
    }
    lanes.InsertLanes<InColumn>(x, y, flags, samples);
}

} // namespace

TEST(SampleRuns, FourPixelsAtOnceAreTheSameAsOneByOne) {
    std::mt19937 random(3);
    for (const PixelRect& bucket :
         {PixelRect{0, 0, 64, 64}, PixelRect{5, 11, 140, 100}, PixelRect{7, 7, 8, 8}, PixelRect{0, 0, 2000, 1500}}) {
        const TileGrid grid(bucket);
        SampleWriter lanes, single;
        lanes.Setup(grid);
        single.Setup(grid);
        for (int batch = 0; batch < 3; ++batch) {
            for (uint32_t unit = 0; unit < 30; ++unit) {
                lanes.SetUnit(unit);
                single.SetUnit(unit);
                for (int i = 0; i < 500; ++i) {
                    InsertBothWays<false>(random, bucket, lanes, single);
                    InsertBothWays<true>(random, bucket, lanes, single);
                }
            }
            ASSERT_EQ(Rows(lanes, grid), Rows(single, grid)) << bucket.x1 << " batch " << batch;
            EXPECT_EQ(lanes.BytesInUse(), single.BytesInUse());
            EXPECT_EQ(lanes.NewBytes(), lanes.BytesInUse());
            EXPECT_EQ(lanes.NewBytes(), 0u);
            lanes.Reset();
            single.Reset();
        }
    }
}
