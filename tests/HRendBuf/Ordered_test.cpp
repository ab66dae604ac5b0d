// The picture does not depend on threads, buckets or batches: lists are compared fragment by fragment.

#include <gtest/gtest.h>

#include "Base/HairMath.h"
#include "HRendBuf/TestHair.h"

namespace {

constexpr int kWidth = 150, kHeight = 110;

/// Inserts into linked lists one sample after the other: what everything else has to equal.
struct ListSink {
    static constexpr bool kWantsVelocity = false;
    explicit ListSink(float tolerance) : store{&pool, 0, tolerance, true} {}
    FragmentPool pool{sizeof(HairFragment), 4096};
    FragmentStore store;
    std::vector<HairFragment*> image = std::vector<HairFragment*>(kWidth * kHeight);
    std::vector<ShadowFragment*> shadow = std::vector<ShadowFragment*>(kWidth * kHeight);
    void InsertImage(int x, int y, float z, const Point3& color, float coverage, float opacity, Point2) {
        InsertPoint(image[size_t(y * kWidth + x)], ImagePoint{z, opacity, coverage, Color(color)}, store);
    }
    void InsertShadow(int x, int y, float z, float opacity, float coverage) {
        InsertPoint(shadow[size_t(y * kWidth + x)], ShadowPoint{z, opacity, coverage}, store);
    }
};

using Lists = std::vector<std::vector<Plain>>;

Lists Reference(const std::vector<TestSource*>& sources, HRendMode mode, float tolerance, const LineFilter& filter) {
    ListSink sink(tolerance);
    static const LineFilterCone fallback(1.0f);
    BasicThick<ListSink> thick(0, sink);
    thick.SetTarget({{0, 0, kWidth, kHeight}, &filter, 1.5f, &fallback});
    const auto op = mode == HRM_SHADOW ? PixelOperation::Shadow : PixelOperation::Image;
    for (const TestSource* source : sources)
        for (int i = 0; i < int(source->strands.strands.size()); ++i) source->strands.Draw(i, thick, op);
    Lists lists;
    for (size_t i = 0; i < sink.image.size(); ++i)
        lists.push_back(mode == HRM_SHADOW ? PlainList(sink.shadow[i]) : PlainList(sink.image[i]));
    return lists;
}

Lists Rendered(TestOwner& owner, HRendMode mode) {
    const TestView view(kWidth, kHeight);
    HRendBuf buffer(owner);
    owner.tight = true; // shadow lists stay lists
    view.RenderAll(buffer, mode);
    Lists lists;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            lists.push_back(mode == HRM_SHADOW ? PlainList(buffer.ReadShadow(x, y))
                                               : PlainList(buffer.ReadImage(x, y)));
    return lists;
}

size_t Fragments(const Lists& lists) {
    size_t n = 0;
    for (const auto& list : lists) n += list.size();
    return n;
}

/// Inserts through the buffer's public operation.
struct Inserter {
    static constexpr bool kWantsVelocity = false;
    HRendBuf& buffer;
    void InsertImage(int x, int y, float z, const Point3& c, float coverage, float opacity, Point2 v) {
        buffer.InsertImageSample(0, x, y, z, Color(c), coverage, opacity, v);
    }
    void InsertShadow(int, int, float, float, float) {}
};

} // namespace

TEST(Ordered, SameListsForAnyThreadsBucketsAndBatches) {
    TestSource first(TestStrands(3000, kWidth, kHeight, 1)), second(TestStrands(1000, kWidth, kHeight, 2));
    TestOwner owner;
    owner.sources = {&first, &second};
    owner.settings.quality = 4; // 0.01 of 100
    const Lists expected = Reference({&first, &second}, HRM_IMAGE, HairMath::Pow(10.0f, -4.0f) * 100, owner.cone);
    ASSERT_GT(Fragments(expected), 50000u);
    for (int threads : {1, 2, 3, 16})
        for (auto [type, size] : {std::pair{0, 256}, {1, 10}, {1, 33}, {2, 10}, {2, 64}}) {
            for (size_t batch : {size_t(20000), size_t(4) << 20}) {
                if (size == 10 && (threads > 2 || batch == 20000)) continue; // hundreds of buckets: once is enough
                owner.settings.threadCount = threads;
                owner.settings.bucketType = type;
                owner.settings.bucketSize = size;
                owner.settings.batchBytes = batch;
                EXPECT_TRUE(Rendered(owner, HRM_IMAGE) == expected)
                    << threads << " threads, type " << type << ", size " << size << ", batch " << batch;
            }
        }
    EXPECT_TRUE(owner.asserts.empty());
}

TEST(Ordered, ShadowListsToo) {
    TestSource source(TestStrands(3000, kWidth, kHeight, 3));
    TestOwner owner;
    owner.sources = {&source};
    const Lists expected = Reference({&source}, HRM_SHADOW, HairMath::Pow(10.0f, -5.0f) * 100, owner.cone);
    ASSERT_GT(Fragments(expected), 30000u);
    for (int threads : {1, 2, 3, 16}) {
        owner.settings.threadCount = threads;
        owner.settings.batchBytes = 30000;
        EXPECT_TRUE(Rendered(owner, HRM_SHADOW) == expected) << threads;
    }
}

TEST(Ordered, OpaqueHairInFrontKeepsMemorySmall) {
    // Opaque strands, each in front of the ones before: memory does not grow with their number.
    TestStrands wall(0, kWidth, kHeight, 1);
    for (int i = 0; i < 2000; ++i) {
        StrandVertex a, b;
        a.x = -20, b.x = 170;
        a.y = b.y = 0.5f + float(i % kHeight);
        a.z = b.z = -90 + float(i) * 0.04f;
        a.width = b.width = 12;
        a.opacity[0] = b.opacity[0] = 1;
        wall.strands.push_back({a, b});
    }
    TestSource source(wall);
    TestOwner owner;
    owner.sources = {&source};
    owner.settings.batchBytes = 100000;
    owner.settings.threadCount = 2;
    const Lists lists = Rendered(owner, HRM_IMAGE);
    EXPECT_LT(Fragments(lists), 40u * kWidth * kHeight / 10);
    EXPECT_TRUE(lists == Reference({&source}, HRM_IMAGE, HairMath::Pow(10.0f, -5.0f) * 100, owner.cone));
}

TEST(Ordered, UnmergedSamplesBelongToTheirSource) {
    // A source that draws and does not merge: the buffer does it, with that source's tolerance.
    TestSource source(TestStrands(200, kWidth, kHeight, 4));
    TestOwner owner;
    owner.sources = {&source};
    owner.settings.bucketType = 0;
    source.onRender = [&](HRendBuf& buffer) {
        buffer.BeginUnit(0, 0);
        for (int i = 0; i < source.StrandCount(); ++i)
            source.strands.Draw(i, buffer.Rasteriser(0), PixelOperation::Image);
    };
    EXPECT_TRUE(Rendered(owner, HRM_IMAGE) ==
                Reference({&source}, HRM_IMAGE, HairMath::Pow(10.0f, -5.0f) * 100, owner.cone));
}

TEST(Ordered, DirectInsertionBeforeAndAfterIsKeptInOrder) {
    TestSource source(TestStrands(1500, kWidth, kHeight, 5)), direct(TestStrands(500, kWidth, kHeight, 6)),
        last(TestStrands(500, kWidth, kHeight, 7));
    TestOwner owner;
    owner.sources = {&source, &direct, &last};
    owner.settings.bucketType = 0;
    owner.settings.threadCount = 3;
    direct.onRender = [&](HRendBuf& buffer) {
        Inserter inserter{buffer};
        BasicThick<Inserter> thick(0, inserter);
        thick.SetTarget(buffer.Rasteriser(0).Target());
        for (int i = 0; i < direct.StrandCount(); ++i) direct.strands.Draw(i, thick, PixelOperation::Image);
    };
    EXPECT_TRUE(Rendered(owner, HRM_IMAGE) ==
                Reference({&source, &direct, &last}, HRM_IMAGE, HairMath::Pow(10.0f, -5.0f) * 100, owner.cone));
}

TEST(Ordered, BatchEndsWhenFullOrUnitsRunOut) {
    constexpr int kChunk = TileRuns<ImagePoint>::kChunkRecords;
    OrderedInserter ordered;
    ordered.Setup({0, 0, 64, 64}, 2, sizeof(TileRuns<ImagePoint>::Chunk) + 100);
    const auto insert = [&](int thread, int samples) {
        for (int i = 0; i < samples; ++i)
            ordered.Writer(thread).InsertImage(5, 5, -float(i), {1, 1, 1}, 0.1f, 0.1f, {});
    };
    EXPECT_FALSE(ordered.Full(0, 1));
    ordered.BeginUnit(0, 0);
    ordered.BeginUnit(1, 1);
    insert(0, kChunk);
    // Asking again counts nothing twice.
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(ordered.Full(0, 2));
    insert(1, kChunk);
    EXPECT_FALSE(ordered.Full(1, 2));
    // The threads share the bound: it is reached by whoever draws on.
    insert(0, 1);
    EXPECT_TRUE(ordered.Full(0, 2));
    EXPECT_TRUE(ordered.Full(1, 2));
    ordered.EndBatch(2);
    EXPECT_FALSE(ordered.Full(1, 3));
    EXPECT_TRUE(ordered.Full(1, 2 + kMaxBatchUnits - 1));
    ordered.EndBatch(kMaxBatchUnits - 1);
    EXPECT_FALSE(ordered.Full(1, kMaxBatchUnits));
    EXPECT_EQ(ordered.SampleBytes(), 0u);
}

TEST(Ordered, LargeBucketsGetLargerTiles) {
    EXPECT_EQ(TileGrid({0, 0, 1280, 720}).shift, 5);
    EXPECT_EQ(TileGrid({0, 0, 1280, 720}).Count(), 40 * 23);
    EXPECT_EQ(TileGrid({0, 0, 4096, 4096}).shift, 6);
    const TileGrid grid({100, 50, 180, 90});
    EXPECT_EQ(grid.Count(), 3 * 2);
    EXPECT_EQ(grid.TileOf(79, 39), 5);
    EXPECT_EQ(grid.PixelOf(79, 39), 7u * 32 + 15);
}
