#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "HRendBuf/FragmentReader.h"
#include "HRendBuf/OpenTile.h"

namespace {

/// A pixel's linked list with its pool.
struct List {
    FragmentAllocator pool{sizeof(HairFragment), 256};
    HairFragment* head = nullptr;
    float tolerance = 0.1f;
    bool recycle = true;
    void Add(float z, float coverage = 0.5f, float opacity = 0.5f, Color color = {0.5f, 0.5f, 0.5f}) {
        InsertPoint(head, ImagePoint{z, opacity, coverage, color}, FragmentStore{&pool, 0, tolerance, recycle});
    }
    std::vector<HairFragment> All() const {
        std::vector<HairFragment> all;
        for (const HairFragment* f = head; f; f = f->next) all.push_back(*f);
        return all;
    }
};

} // namespace

TEST(RealPixel, PacksByTheLargestComponent) {
    // 0.75 = 0.75 x 2^0: bytes are component x 256.
    EXPECT_EQ(PackRealPixel({0.75f, 0.5f, 0.25f}), (RealPixel{192, 128, 64, 128}));
    // 1 = 0.5 x 2^1: bytes are component x 128.
    EXPECT_EQ(PackRealPixel({1.0f, 0.5f, 0.0f}), (RealPixel{128, 64, 0, 129}));
    // The rest is cut off: 0.999 x 256 = 255.7.
    EXPECT_EQ(PackRealPixel({0.999f, 0.0f, 0.0f}), (RealPixel{255, 0, 0, 128}));
    EXPECT_EQ(PackRealPixel({3.0f, 1.0f, 0.1f}), (RealPixel{192, 64, 6, 130}));
}

TEST(RealPixel, DarkNegativeAndUnusableColours) {
    EXPECT_EQ(PackRealPixel({1e-32f, 0, 0}), (RealPixel{0, 0, 0, 0}));
    EXPECT_NE(PackRealPixel({1.1e-32f, 0, 0}).e, 0);
    EXPECT_EQ(PackRealPixel({-1.0f, 0.75f, 0}), (RealPixel{0, 192, 0, 128}));
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(PackRealPixel({nan, nan, nan}), (RealPixel{0, 0, 0, 0}));
    EXPECT_EQ(PackRealPixel({0.75f, nan, 0}), (RealPixel{192, 0, 0, 128}));
    EXPECT_EQ(PackRealPixel({inf, 0, 0}), (RealPixel{255, 0, 0, 255}));
}

TEST(RealPixel, ReadingGivesByteTimesPowerOfTwo) {
    const Color c = UnpackRealPixel({192, 128, 64, 128});
    EXPECT_EQ(c, Color(0.75f, 0.5f, 0.25f));
    for (int e = 0; e < 256; ++e)
        for (int b : {0, 1, 127, 128, 255}) {
            const RealPixel p{uint8_t(b), uint8_t(255 - b), 77, uint8_t(e)};
            EXPECT_EQ(UnpackRealPixel(p), ExpandRealPixel(p)) << e;
        }
}

TEST(RealPixel, WhatIsReadPacksToTheSameBytes) {
    for (int e = 30; e < 250; ++e)
        for (int b = 128; b < 256; ++b) {
            const RealPixel p{uint8_t(b), uint8_t(b - 128), 100, uint8_t(e)};
            EXPECT_EQ(PackRealPixel(UnpackRealPixel(p)), p);
        }
}

TEST(Fraction, CutsOffAndClamps) {
    EXPECT_EQ(PackFraction(0.5f), 32767);
    EXPECT_EQ(PackFraction(1.0f), 65535);
    EXPECT_EQ(PackFraction(7.0f), 65535);
    EXPECT_EQ(PackFraction(-1.0f), 0);
    EXPECT_EQ(PackFraction(std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(FragmentList, FragmentIsSmall) {
    EXPECT_EQ(sizeof(HairFragment), 24u);
    EXPECT_EQ(sizeof(PackedFragment<HairFragment>), 12u);
}

TEST(FragmentList, TwoCloseSamplesMergeByHand) {
    List list;
    list.Add(-5.0f, 0.5f, 0.5f, {0.75f, 0.5f, 0.25f});
    list.Add(-5.05f, 0.25f, 1.0f, {0.25f, 0.5f, 0.75f});
    const auto all = list.All();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].zMax, -5.0f);
    EXPECT_EQ(all[0].zMin, -5.05f);
    // Colour: 0.75 + (0.25 - 0.75) x 1 x 0.25 = 0.625; 0.5; 0.25 + 0.5 x 0.25 = 0.375. Largest 0.625 x 256 = 160.
    EXPECT_EQ(all[0].color, (RealPixel{160, 128, 96, 128}));
    // With the stored half being 32767 / 65535: opacity (0.5 x 0.5 + 0.25) / 0.75 = 2/3, coverage 0.5 x 0.75 + 0.25.
    EXPECT_NEAR(all[0].opacity, 65535 * 2 / 3.0, 2);
    EXPECT_NEAR(all[0].coverage, 65535 * 0.625, 2);
}

TEST(FragmentList, HalfTheToleranceApartIsOneFragmentFromEitherSide) {
    for (float second : {-4.95f, -5.05f}) {
        List list;
        list.Add(-5.0f);
        list.Add(second);
        ASSERT_EQ(list.All().size(), 1u);
        EXPECT_EQ(list.head->zMax, std::max(-5.0f, second));
        EXPECT_EQ(list.head->zMin, std::min(-5.0f, second));
    }
}

TEST(FragmentList, FartherThanTheToleranceApartStaysSorted) {
    List list;
    for (float z : {-5.0f, -7.0f, -6.0f, -4.0f, -8.0f}) list.Add(z);
    const auto all = list.All();
    ASSERT_EQ(all.size(), 5u);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(all[size_t(i)].zMax, -4.0f - float(i));
}

TEST(FragmentList, LimitsAreInclusiveAtTheHeadOnly) {
    List list;
    list.tolerance = 0.5f;
    list.Add(-5.0f);
    list.Add(-4.5f); // in front by exactly the tolerance: merges
    ASSERT_EQ(list.All().size(), 1u);
    list.Add(-5.5f); // behind by exactly the tolerance: does not
    ASSERT_EQ(list.All().size(), 2u);
    list.Add(-5.25f); // within of the first
    EXPECT_EQ(list.All()[0].zMin, -5.25f);
}

TEST(FragmentList, JoinsTheNextWhenThePreviousIsTooFar) {
    List list;
    list.tolerance = 0.5f;
    list.Add(-5.0f);
    list.Add(-6.0f);
    list.Add(-5.75f);
    const auto all = list.All();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[1].zMax, -5.75f);
    EXPECT_EQ(all[1].zMin, -6.0f);
}

TEST(FragmentList, DepthOfTenStopsMerging) {
    // A head of exactly 10 units takes a sample in front of it, and no other.
    List list;
    list.tolerance = 20.0f;
    list.Add(-10.0f);
    list.Add(0.0f);
    ASSERT_EQ(list.All().size(), 1u);
    list.Add(-5.0f); // inside: not taken
    EXPECT_EQ(list.All().size(), 2u);
    list.Add(1.0f); // in front: taken
    ASSERT_EQ(list.All().size(), 2u);
    EXPECT_EQ(list.head->zMax, 1.0f);
    list.Add(2.0f); // now deeper than 10: nothing more
    EXPECT_EQ(list.All().size(), 3u);
}

TEST(FragmentList, ExactlyTenBehindTheHeadTakesNothing) {
    List list;
    list.tolerance = 20.0f;
    list.Add(-30.0f);
    list.Add(-20.0f); // the head, 10 deep
    list.tolerance = 0.001f;
    list.Add(-15.0f); // another one in front
    list.tolerance = 20.0f;
    list.Add(-25.0f); // joins neither the deep one ... but the one in front
    const auto all = list.All();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[1].zMax - all[1].zMin, 10.0f);
    EXPECT_EQ(all[2].zMax, -25.0f);
}

TEST(FragmentList, TwoCoveragesOfZeroMergeToOpacityZero) {
    List list;
    list.Add(-5.0f, 0.0f, 1.0f);
    list.Add(-5.0f, 0.0f, 1.0f);
    ASSERT_EQ(list.All().size(), 1u);
    EXPECT_EQ(list.head->opacity, 0);
    EXPECT_EQ(list.head->coverage, 0);
}

TEST(FragmentList, OpaqueSampleDropsWhatIsBehind) {
    for (bool recycle : {true, false}) {
        List list;
        list.recycle = recycle;
        for (int i = 0; i < 256; ++i) list.Add(-10.0f - float(i)); // the pool's first chunk is full
        list.Add(-5.0f, 1.0f, 1.0f);
        ASSERT_EQ(list.All().size(), 1u);
        EXPECT_EQ(list.pool.GetSize(), 2 * 256 * sizeof(HairFragment));
        for (int i = 0; i < 255 + 256; ++i) list.Add(-4.0f + float(i)); // all the rest is in front
        // Recycled fragments fill the list again; cut ones are lost until the pool is freed.
        EXPECT_EQ(list.pool.GetSize(), (recycle ? 2u : 3u) * 256 * sizeof(HairFragment));
    }
}

TEST(FragmentList, MergingToOpaqueDropsWhatIsBehind) {
    List list;
    list.Add(-5.0f, 0.5f, 1.0f);
    list.Add(-9.0f);
    list.Add(-5.0f, 1.0f, 1.0f);
    EXPECT_EQ(list.All().size(), 1u);
    // Just below the threshold nothing is dropped.
    List other;
    other.Add(-9.0f);
    other.Add(-5.0f, float(0xFFBE) / 65535.0f, 1.0f);
    EXPECT_EQ(other.All().size(), 2u);
}

namespace {

/// Lets the tracker give out no more than so many bytes, for a scope. What it logs meanwhile goes nowhere.
class MemoryLimit {
public:
    explicit MemoryLimit(uint64_t bytes) {
        LogSetFileName(nullptr, "/dev/null");
        TrackerSettings().maximumTotal = bytes;
    }
    ~MemoryLimit() {
        TrackerSettings().maximumTotal = 0;
        LogSetFileName(nullptr, nullptr);
    }
};

} // namespace

TEST(FragmentList, ExhaustedPoolKeepsTheList) {
    FragmentAllocator pool(sizeof(HairFragment), 256);
    for (int slot : {0, 1}) // two blocks are left in slot 0, many in slot 1
        for (int used = 0; used < (slot == 0 ? 254 : 1); ++used) ASSERT_NE(pool.Alloc(slot), nullptr);
    const MemoryLimit noMore(TrackerAmounts().allocated);
    HairFragment* head = nullptr;
    const FragmentStore store{&pool, 0, 0.1f, true};
    for (float z : {-2.0f, -4.0f, -3.0f, -1.0f}) InsertPoint(head, ImagePoint{z, 0.5f, 0.5f, {}}, store);
    ASSERT_NE(head, nullptr);
    EXPECT_EQ(head->zMax, -2.0f);
    ASSERT_NE(head->next, nullptr);
    EXPECT_EQ(head->next->zMax, -4.0f);
    EXPECT_EQ(head->next->next, nullptr);
    // Merging needs no fragment.
    InsertPoint(head, ImagePoint{-2.05f, 0.5f, 0.5f, {}}, store);
    EXPECT_EQ(head->zMin, -2.05f);
    // Another slot has memory of its own.
    InsertPoint(head, ImagePoint{-3.0f, 0.5f, 0.5f, {}}, FragmentStore{&pool, 1, 0.1f, true});
    EXPECT_EQ(head->next->zMax, -3.0f);
}

namespace {

/// Random samples of one pixel: depths in clusters, some fully opaque, some without any coverage.
std::vector<ImagePoint> RandomPoints(std::mt19937& random, int count, float spread) {
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    std::vector<ImagePoint> points;
    for (int i = 0; i < count; ++i) {
        const float full = u(random) < 0.01f ? 1.0f : 0.0f;
        points.push_back({-50.0f - std::floor(u(random) * 20) - spread * u(random),
                          std::max(full, u(random)),
                          std::max(full, u(random) < 0.1f ? 0.0f : u(random)),
                          {u(random), u(random), 2 * u(random)}});
    }
    return points;
}

} // namespace

TEST(OpenTile, HoldsWhatTheLinkedListHolds) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        const float tolerance = round % 3 == 0 ? 1e-4f : round % 3 == 1 ? 0.05f : 3.0f;
        const auto points = RandomPoints(random, round, 0.5f);
        // Three pixels of four are used, and the tile is closed now and then.
        List lists[3];
        for (List& list : lists) list.tolerance = tolerance;
        PackedTile<HairFragment> tile;
        OpenTile<HairFragment> open;
        open.Open(tile, 4, tolerance);
        for (size_t i = 0; i < points.size(); ++i) {
            const ImagePoint& p = points[i];
            const uint32_t pixel = uint32_t(random() % 7 / 3); // 0, 1, now and then 2
            lists[pixel].Add(p.z, p.coverage, p.opacity, p.color);
            open.Insert(pixel, p);
            if (i % 50 != 49) continue;
            ASSERT_TRUE(open.Close(tile));
            open.Open(tile, 4, tolerance);
        }
        ASSERT_TRUE(open.Close(tile));
        for (uint32_t pixel = 0; pixel < 3; ++pixel) {
            const auto all = lists[pixel].All();
            ASSERT_EQ(tile.PixelEnd(pixel) - tile.PixelBegin(pixel), all.size());
            FragmentReader<HairFragment> reader(tile, tile.PixelBegin(pixel), tile.PixelEnd(pixel));
            for (size_t i = 0; i < all.size(); ++i, reader.Next()) {
                ASSERT_FALSE(reader.Done());
                EXPECT_EQ(reader.Get().zMax, all[i].zMax);
                EXPECT_EQ(reader.Get().zMin, all[i].zMin);
                EXPECT_EQ(reader.Get().opacity, all[i].opacity);
                EXPECT_EQ(reader.Get().coverage, all[i].coverage);
                EXPECT_EQ(reader.Get().color, all[i].color);
                EXPECT_LE(all[i].zMax, all[i ? i - 1 : 0].zMax);
            }
            EXPECT_TRUE(reader.Done());
        }
        EXPECT_EQ(tile.PixelEnd(3), tile.Count());
    }
}

/// The kernels that this processor has, by how many lanes they have.
class MergeKernels : public testing::TestWithParam<int> {
public:
    static std::vector<int> Lanes() {
        std::vector<int> lanes = {4};
        if (MergeKernel8()) lanes.push_back(8);
        if (MergeKernel16()) lanes.push_back(16);
        return lanes;
    }

protected:
    static MergeKernel Kernel() {
        return GetParam() == 4 ? MergeKernel4() : GetParam() == 8 ? MergeKernel8() : MergeKernel16();
    }
};

TEST_P(MergeKernels, MergeColoursAndWeightsAsALinkDoes) {
    // Any colour, also negative, huge and not a number, and weights beyond 0..1.
    std::mt19937 random(11);
    std::uniform_real_distribution<float> u(-0.2f, 1.2f);
    const float odd[] = {
        0.0f, -0.0f, 1e-33f, 1e30f, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(),
        1.0f, 255.0f};
    const auto value = [&] { return random() % 8 == 0 ? odd[random() % 8] : u(random); };
    for (int round = 0; round < 12500; ++round) {
        HairFragment links[kMergeSamples];
        PackedFragment<HairFragment> packed[3 * kMergeSamples] = {};
        ImagePoint points[kMergeSamples];
        const ImagePoint* sources[kMergeSamples];
        uint32_t at[kMergeSamples];
        unsigned opaque = 0;
        for (int i = 0; i < kMergeSamples; ++i) {
            HairFragment& link = links[i];
            link.zMin = link.zMax = float(i);
            link.opacity = uint16_t(random()), link.coverage = random() % 16 ? uint16_t(random()) : uint16_t(0);
            link.color = PackRealPixel({value(), value(), value()});
            points[i] = {0, value(), value(), {value(), value(), value()}};
            at[i] = uint32_t(3 * i + round % 3);
            packed[at[i]] = Pack(link);
            sources[i] = &points[i];
            MergeInto(link, points[i]);
            opaque |= unsigned(IsOpaque(link)) << i;
        }
        ASSERT_EQ(Kernel()(packed, at, sources), opaque) << round;
        for (int i = 0; i < kMergeSamples; ++i) {
            ASSERT_EQ(packed[at[i]].zMin, float(i)) << round;
            ASSERT_EQ(packed[at[i]].opacity, links[i].opacity) << round;
            ASSERT_EQ(packed[at[i]].coverage, links[i].coverage) << round;
            ASSERT_EQ(packed[at[i]].color, links[i].color) << round;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Lanes, MergeKernels, testing::ValuesIn(MergeKernels::Lanes()),
                         testing::PrintToStringParamName());
