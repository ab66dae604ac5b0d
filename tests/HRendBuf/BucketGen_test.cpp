#include "HRendBuf/BucketGen.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

namespace {

std::array<int, 4> Rect(const IBucketGenerator& gen, int x, int y) {
    std::array<int, 4> r;
    gen.GetBucketRect(x, y, r[0], r[1], r[2], r[3]);
    return r;
}
using R = std::array<int, 4>;

} // namespace

TEST(BucketGen, BeforeSetupThereIsOneBucketOfOnePixel) {
    const BucketGen gen(64);
    EXPECT_EQ(gen.GetBucketSize(), 64);
    EXPECT_EQ(gen.GetBucketCount(), 1);
    EXPECT_EQ(Rect(gen, 0, 0), (R{0, 0, 1, 1}));
}

TEST(BucketGen, WholeImage) {
    BucketGen gen(100);
    gen.Setup(1000, 600);
    EXPECT_EQ(gen.GetBucketCount(), 1);
    EXPECT_EQ(gen.GetBucketIndex(999, 599), 0);
    EXPECT_EQ(Rect(gen, 500, 500), (R{0, 0, 1000, 600}));
}

TEST(BucketGen, SmallImageOfLargeBuckets) {
    BucketGenStripeHoriz stripes(256);
    stripes.Setup(640, 480);
    EXPECT_EQ(stripes.GetColumns(), 1);
    EXPECT_EQ(stripes.GetRows(), 1);
    EXPECT_EQ(Rect(stripes, 5, 400), (R{0, 0, 640, 480}));
    BucketGenSquare squares(256);
    squares.Setup(640, 480);
    EXPECT_EQ(squares.GetColumns(), 2);
    EXPECT_EQ(squares.GetRows(), 1);
    EXPECT_EQ(Rect(squares, 0, 0), (R{0, 0, 256, 480}));
    EXPECT_EQ(Rect(squares, 256, 479), (R{256, 0, 384, 480}));
}

TEST(BucketGen, TenByTen) {
    BucketGenSquare gen(100);
    gen.Setup(1000, 1000);
    EXPECT_EQ(gen.GetBucketCount(), 100);
    EXPECT_EQ(gen.GetBucketIndex(999, 999), 99);
    EXPECT_EQ(Rect(gen, 999, 999), (R{900, 900, 100, 100}));
}

TEST(BucketGen, LastStripeTakesTheRest) {
    BucketGenStripeHoriz gen(10);
    gen.Setup(40, 25);
    EXPECT_EQ(gen.GetRows(), 2);
    EXPECT_EQ(Rect(gen, 0, 24), (R{0, 10, 40, 15}));
    EXPECT_EQ(gen.GetBucketIndex(0, 20), 1);
}

TEST(BucketGen, LastColumnTakesTheRest) {
    BucketGenSquare gen(256);
    gen.Setup(1000, 300);
    EXPECT_EQ(gen.GetColumns(), 3);
    EXPECT_EQ(gen.ColumnOf(768), 2);
    EXPECT_EQ(gen.ColumnOf(999), 2);
    EXPECT_EQ(Rect(gen, 999, 0), (R{512, 0, 488, 300}));
}

TEST(BucketGen, EveryPixelIsInExactlyTheRectangleOfItsBucket) {
    for (int kind = 0; kind < 3; ++kind)
        for (int size : {7, 10, 33, 200}) {
            std::unique_ptr<BucketGen> gen;
            if (kind == 0) gen = std::make_unique<BucketGen>(size);
            if (kind == 1) gen = std::make_unique<BucketGenStripeHoriz>(size);
            if (kind == 2) gen = std::make_unique<BucketGenSquare>(size);
            gen->Setup(101, 67);
            std::vector<R> rects(size_t(gen->GetBucketCount()), R{-1, -1, -1, -1});
            int area = 0;
            for (int y = 0; y < 67; ++y)
                for (int x = 0; x < 101; ++x) {
                    const int index = gen->GetBucketIndex(x, y);
                    ASSERT_GE(index, 0);
                    ASSERT_LT(index, gen->GetBucketCount());
                    const R r = Rect(*gen, x, y);
                    EXPECT_TRUE(x >= r[0] && x < r[0] + r[2] && y >= r[1] && y < r[1] + r[3]);
                    R& known = rects[size_t(index)];
                    if (known[0] < 0) known = r, area += r[2] * r[3];
                    EXPECT_EQ(known, r);
                }
            EXPECT_EQ(area, 101 * 67);
        }
}
