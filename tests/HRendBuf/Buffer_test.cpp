#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "HRendBuf/TestHair.h"
#include "sdk/atmos.h"

namespace {

/// Hair that inserts given samples into pixels.
TestSource Hand(std::function<void(HRendBuf&)> insert) {
    TestSource source(TestStrands(0, 1, 1, 1));
    source.onRender = std::move(insert);
    return source;
}

/// A buffer of 40 x 30 pixels in one bucket, drawn by hand.
struct HandBuffer {
    TestOwner owner;
    TestSource source;
    TestView view{40, 30};
    HRendBuf buffer{owner};
    explicit HandBuffer(std::function<void(HRendBuf&)> insert) : source(Hand(std::move(insert))) {
        owner.sources = {&source};
        owner.settings.bucketType = 0;
        view.Render(buffer, 0, 0);
    }
};

void Put(HRendBuf& b, int x, int y, float z, float coverage = 0.5f, float opacity = 0.5f) {
    if (!b.Bucket().Contains(x, y)) return;
    b.InsertImageSample(0, x, y, z, {0.75f, 0.5f, 0.25f}, coverage, opacity, {});
}

class Titles : public IProgressIndicator {
public:
    std::vector<std::string> titles;
    std::vector<std::pair<int, int>> steps;
    void SetTask(const std::string&, int) override {}
    void SetTaskProgress(int) override {}
    void SetObject(const std::string& name, int total) override {
        StoreObject(name, total);
        titles.push_back(name);
    }
    void SetObjectProgress(int done) override {
        step_ = done;
        steps.push_back({done, stepTotal_});
    }
    bool IsCancelled() override { return step_ >= 2; }
};

} // namespace

TEST(Buffer, ABucketIsDrawnOnce) {
    TestSource source(TestStrands(100, 80, 60, 1));
    TestOwner owner;
    owner.sources = {&source};
    owner.settings.bucketType = 2;
    owner.settings.bucketSize = 20;
    const TestView view(80, 60);
    HRendBuf buffer(owner);
    EXPECT_FALSE(buffer.HasBucket(30, 30));
    DrawnBucket drawn;
    // No time has passed: 1.
    EXPECT_EQ(view.Render(buffer, 30, 30, HRM_IMAGE, nullptr, nullptr, &drawn), 1);
    EXPECT_EQ(drawn.strands, 100);
    EXPECT_GT(drawn.fragments, 100);
    EXPECT_TRUE(buffer.HasBucket(30, 30));
    EXPECT_TRUE(buffer.HasBucket(39, 20));
    EXPECT_FALSE(buffer.HasBucket(40, 20));
    EXPECT_EQ(source.renders, 1);
    EXPECT_EQ(view.Render(buffer, 21, 39), 0);
    EXPECT_EQ(source.renders, 1);
    // A pixel outside every live bucket draws exactly one new bucket.
    EXPECT_NE(view.Render(buffer, 40, 20), 0);
    EXPECT_EQ(source.renders, 2);
    EXPECT_FALSE(buffer.HasBucket(60, 20));
    EXPECT_FALSE(buffer.HasBucket(-1, 5));
    EXPECT_FALSE(buffer.HasBucket(1000, 5));
}

TEST(Buffer, ToleranceFromQuality) {
    TestSource source(TestStrands(1, 10, 10, 1));
    TestOwner owner;
    owner.sources = {&source};
    const TestView view(10, 10);
    const auto tolerance = [&](float quality, float own, HRendMode mode) {
        owner.settings.quality = quality;
        source.minHairDist = own;
        HRendBuf buffer(owner);
        buffer.SetShadowQuality(3);
        view.Render(buffer, 0, 0, mode);
        return source.tolerance;
    };
    EXPECT_EQ(tolerance(0, 0, HRM_IMAGE), 100.0f);
    EXPECT_FLOAT_EQ(tolerance(10, 0, HRM_IMAGE), 1e-8f);
    EXPECT_FLOAT_EQ(tolerance(99, 0, HRM_IMAGE), 1e-8f);
    EXPECT_FLOAT_EQ(tolerance(5, 2, HRM_IMAGE), 1.0f);
    EXPECT_FLOAT_EQ(tolerance(5, 0.001f, HRM_IMAGE), 1e-3f);
    EXPECT_FLOAT_EQ(tolerance(5, 0, HRM_SHADOW), 0.1f);
    EXPECT_FLOAT_EQ(tolerance(5, 4, HRM_SHADOW), 0.01f);
}

TEST(Buffer, QualityZeroMergesAllOfAPixel) {
    HandBuffer hand([](HRendBuf& b) {});
    hand.source.onRender = [](HRendBuf& b) {
        for (int i = 0; i < 9; ++i) Put(b, 3, 3, -20 - float(i));
    };
    hand.owner.settings.quality = 0;
    HRendBuf buffer(hand.owner);
    hand.view.Render(buffer, 0, 0);
    EXPECT_EQ(PlainList(buffer.ReadImage(3, 3)).size(), 1u);
}

TEST(Buffer, DirectInsertionOfSeveralThreadsIsComplete) {
    constexpr int kThreads = 4, kSamples = 2000;
    TestOwner owner;
    owner.settings.threadCount = kThreads;
    owner.settings.bucketType = 0;
    TestSource source = Hand([](HRendBuf& b) {
        std::vector<std::jthread> threads;
        for (int t = 0; t < kThreads; ++t)
            threads.emplace_back([&b, t] {
                for (int i = 0; i < kSamples; ++i)
                    b.InsertImageSample(t, i % 3, 1, -1 - float(i * kThreads + t) * 0.01f, {1, 1, 1}, 0.1f, 0.1f, {});
            });
    });
    owner.sources = {&source};
    const TestView view(40, 30);
    HRendBuf buffer(owner);
    view.Render(buffer, 0, 0);
    size_t total = 0;
    for (int x = 0; x < 3; ++x) {
        const auto list = PlainList(buffer.ReadImage(x, 1));
        total += list.size();
        for (size_t i = 1; i < list.size(); ++i) EXPECT_LT(list[i].zMax, list[i - 1].zMax);
    }
    EXPECT_EQ(total, size_t(kThreads * kSamples));
}

TEST(Buffer, SourcesThatDoNotRenderAreNotCounted) {
    TestSource on(TestStrands(7, 10, 10, 1)), off(TestStrands(9, 10, 10, 1));
    off.renderable = false;
    TestOwner owner;
    owner.sources = {&on, &off};
    const TestView view(10, 10);
    HRendBuf buffer(owner);
    Titles progress;
    view.Render(buffer, 0, 0, HRM_IMAGE, &progress);
    EXPECT_EQ(off.updates, 1);
    EXPECT_EQ(off.renders, 0);
    EXPECT_EQ(progress.titles, std::vector<std::string>{"Camera View"});
    ASSERT_GE(progress.steps.size(), 2u);
    EXPECT_EQ(progress.steps.front(), std::pair(0, 7));
    EXPECT_EQ(progress.steps.back(), std::pair(7, 7));
    HRendBuf other(owner);
    view.Render(other, 0, 0, HRM_IMAGE, &progress, "Shadow Buffer for key");
    EXPECT_EQ(progress.titles.back(), "Shadow Buffer for key");
}

TEST(Buffer, CancellingIsPassedOn) {
    Titles progress;
    bool first = false, second = true;
    TestSource source = Hand([&](HRendBuf& b) {
        first = b.Advance(1);
        second = b.Advance(1);
    });
    TestOwner owner;
    owner.sources = {&source};
    const TestView view(10, 10);
    HRendBuf buffer(owner);
    view.Render(buffer, 0, 0, HRM_IMAGE, &progress);
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
}

TEST(Buffer, NothingIsDrawnWhen) {
    TestSource source(TestStrands(7, 10, 10, 1));
    TestOwner owner;
    owner.sources = {&source};
    const TestView view(10, 10);
    { // the render is aborted
        HRendBuf buffer(owner);
        owner.aborted = true;
        EXPECT_EQ(view.Render(buffer, 0, 0), 0);
        owner.aborted = false;
    }
    { // hair casts no shadows
        HRendBuf buffer(owner);
        owner.settings.hairShadows = false;
        EXPECT_EQ(view.Render(buffer, 0, 0, HRM_SHADOW), 0);
        EXPECT_NE(view.Render(buffer, 0, 0, HRM_IMAGE), 0);
    }
    EXPECT_TRUE(owner.asserts.empty());
    { // the kind of bucket is unknown
        HRendBuf buffer(owner);
        owner.settings.bucketType = 3;
        EXPECT_EQ(view.Render(buffer, 0, 0), 0);
        EXPECT_EQ(owner.asserts.size(), 1u);
    }
    { // channels of a finished picture
        HRendBuf buffer(owner);
        EXPECT_EQ(view.Render(buffer, 0, 0, HRM_GBUFFER), 0);
        EXPECT_EQ(owner.asserts.size(), 2u);
    }
    EXPECT_EQ(source.renders, 1);
}

TEST(Buffer, IdleBucketsAreFreedAndDrawnAgain) {
    TestSource source(TestStrands(300, 40, 40, 1));
    TestOwner owner;
    owner.sources = {&source};
    owner.settings.bucketType = 1;
    owner.settings.bucketSize = 10;
    const TestView view(40, 40);
    HRendBuf buffer(owner);
    view.Render(buffer, 0, 0);
    const auto before = PlainList(buffer.ReadImage(9, 9)); // a use at 1000
    TestOwner::now = 4000;
    buffer.ReleaseIdleBuckets();
    EXPECT_TRUE(buffer.HasBucket(0, 0)); // exactly the timeout
    TestOwner::now = 4001;
    buffer.ReleaseIdleBuckets();
    EXPECT_FALSE(buffer.HasBucket(0, 0));
    EXPECT_TRUE(buffer.ReadImage(9, 9).Done());
    EXPECT_NE(view.Render(buffer, 0, 0), 0);
    EXPECT_EQ(PlainList(buffer.ReadImage(9, 9)), before);
    EXPECT_EQ(source.renders, 2);
    // The number of live buckets was 1 before: the timeout grows.
    EXPECT_EQ(owner.settings.idleTimeout, 4000u);
}

TEST(Buffer, BucketsThatWereNeverReadStay) {
    TestSource source(TestStrands(30, 40, 40, 1));
    TestOwner owner;
    owner.sources = {&source};
    const TestView view(40, 40);
    HRendBuf buffer(owner);
    view.Render(buffer, 0, 0);
    TestOwner::now += 100000;
    buffer.ReleaseIdleBuckets();
    EXPECT_TRUE(buffer.HasBucket(0, 0));
    // Asking RenderBucket for it is a use.
    EXPECT_EQ(view.Render(buffer, 0, 0), 0);
    TestOwner::now += 2000;
    EXPECT_EQ(view.Render(buffer, 0, 0), 0);
    buffer.ReleaseIdleBuckets();
    EXPECT_EQ(buffer.PeakIdle(), 2000u);
    EXPECT_EQ(buffer.PeakIdleBucket(), 0);
    TestOwner::now += 3001;
    buffer.ReleaseIdleBuckets();
    EXPECT_FALSE(buffer.HasBucket(0, 0));
}

TEST(Buffer, EachNewCountOfLiveBucketsIsFree) {
    TestSource source(TestStrands(30, 40, 40, 1));
    TestOwner owner;
    owner.sources = {&source};
    owner.settings.bucketSize = 10;
    const TestView view(40, 40);
    HRendBuf buffer(owner);
    for (int y : {0, 10, 20, 30}) view.Render(buffer, 0, y); // counts 1 .. 4, the table's last entry
    EXPECT_EQ(owner.settings.idleTimeout, 3000u);
}

TEST(Buffer, ElapsedTimeCrossesTheClocksEnd) {
    TestSource source = Hand([](HRendBuf&) { TestOwner::now += 50; });
    TestOwner owner;
    owner.sources = {&source};
    const TestView view(10, 10);
    HRendBuf buffer(owner);
    TestOwner::now = 0xFFFFFFF0;
    // 15 up to the last tick and 34 from tick 0 on.
    EXPECT_EQ(view.Render(buffer, 0, 0), 34 + 15);
}

TEST(Buffer, MemoryOfLiveBuckets) {
    HandBuffer hand([](HRendBuf& b) { Put(b, 1, 1, -5); });
    EXPECT_EQ(hand.buffer.MemoryInUse(), 16384 * sizeof(HairFragment) + 8 * 40 * 30);
    HandBuffer empty([](HRendBuf&) {});
    EXPECT_EQ(empty.buffer.MemoryInUse(), 8u * 40 * 30);
}

TEST(Buffer, ShadowMapCompacts) {
    const auto insert = [](HRendBuf& b) {
        b.InsertShadowSample(0, 0, 0, -5, 0.5f, 1.0f);
        b.InsertShadowSample(0, 39, 29, -6, 1.0f, 0.5f);
        b.InsertShadowSample(0, 39, 29, -5, 0.25f, 0.5f);
    };
    TestSource source = Hand(insert);
    TestOwner owner;
    owner.sources = {&source};
    const TestView view(40, 30);
    HRendBuf buffer(owner);
    view.Render(buffer, 7, 7, HRM_SHADOW);
    const CompactShadowMap& map = buffer.ShadowMap();
    ASSERT_TRUE(map.IsBuilt());
    EXPECT_TRUE(buffer.ReadShadow(0, 0).Done());
    EXPECT_EQ(buffer.MemoryInUse(), 4u * (40 * 30 + 1) + 12u * 3);
    ASSERT_EQ(map.End(0) - map.Begin(0), 1);
    EXPECT_EQ(map.End(1) - map.Begin(1), 0);
    EXPECT_EQ(map.Begin(0)->zMax, -5.0f);
    EXPECT_NEAR(map.Begin(0)->density, 0.5f, 1e-4f);
    const ShadowSample* last = map.Begin(40 * 30 - 1);
    ASSERT_EQ(map.End(40 * 30 - 1) - last, 2);
    EXPECT_EQ(last[0].zMax, -5.0f);
    EXPECT_NEAR(last[0].density, 0.125f, 1e-4f);
    EXPECT_EQ(last[1].zMin, -6.0f);
    EXPECT_EQ(view.Render(buffer, 30, 20, HRM_SHADOW), 0); // one bucket covers the map
}

TEST(Buffer, TightMemoryKeepsShadowLists) {
    TestSource source = Hand([](HRendBuf& b) { b.InsertShadowSample(0, 3, 4, -5, 0.5f, 1.0f); });
    TestOwner owner;
    owner.sources = {&source};
    owner.tight = true;
    const TestView view(40, 30);
    HRendBuf buffer(owner);
    view.Render(buffer, 0, 0, HRM_SHADOW);
    EXPECT_FALSE(buffer.ShadowMap().IsBuilt());
    ASSERT_FALSE(buffer.ReadShadow(3, 4).Done());
    EXPECT_EQ(buffer.ReadShadow(3, 4).Get().zMax, -5.0f);
    EXPECT_EQ(buffer.MemoryInUse(), 16384 * sizeof(ShadowFragment) + 8 * 40 * 30);
}

TEST(Buffer, FieldSelection) {
    RendParams p;
    EXPECT_EQ(FieldSelect(p), 0);
    p.fieldRender = true;
    const int expected[2][2] = {{1, 2}, {2, 1}};
    for (int order : {0, 1})
        for (int field : {0, 1}) {
            p.fieldOrder = order, p.currentField = field;
            EXPECT_EQ(FieldSelect(p), expected[order][field]);
        }
}

namespace {

/// One pixel: a fragment from -5 to -7, one at -20, with known colours.
void TwoFragments(HRendBuf& b) {
    b.InsertImageSample(0, 2, 3, -5, {0.75f, 0.5f, 0.25f}, 1.0f, 0.5f, {});
    b.InsertImageSample(0, 2, 3, -20, {0.5f, 0.5f, 0.5f}, 0.5f, 0.5f, {});
}

struct SampleBuffer : HandBuffer {
    SampleBuffer() : HandBuffer(TwoFragments) {
        // Stretch the front one; colours and weights stay as they are.
        auto front = buffer.ReadImage(2, 3);
        static_cast<HairFragment*>(const_cast<void*>(front.Place()))->zMin = -7;
    }
};

} // namespace

TEST(Sample, VolumeWeightsByHand) {
    SampleBuffer s;
    SamplerRecord r;
    r.zNear = 0, r.zFar = -100, r.scale = 200;
    s.buffer.SampleVolume(2, 3, r);
    EXPECT_EQ(r.hit, 1);
    EXPECT_EQ(r.flags, 0x747u);
    EXPECT_EQ(r.color, Color(0.75f, 0.5f, 0.25f));
    EXPECT_NEAR(r.transparency.r, 0.5f, 1e-4f);
    EXPECT_EQ(r.transparency.g, r.transparency.b);
    EXPECT_FLOAT_EQ(r.distance, 5.0f * 200 / 100);
    EXPECT_EQ(r.remainingDepth, 5.0f);
    EXPECT_EQ(r.current, s.buffer.ReadImage(2, 3).Place());
}

TEST(Sample, VolumeCutByABound) {
    SampleBuffer s;
    SamplerRecord r;
    r.zNear = -4, r.zFar = -5.5f, r.scale = 1.5f; // the near quarter of the front fragment
    s.buffer.SampleVolume(2, 3, r);
    EXPECT_EQ(r.hit, 1);
    EXPECT_NEAR(r.color.r, 0.75f * 0.25f, 1e-6f);
    EXPECT_NEAR(r.transparency.r, 1 - 0.5f * 0.25f, 1e-4f);
    // Going on from the current fragment: the part behind. No remaining depth this time.
    r.zNear = -5.5f, r.zFar = -100;
    r.remainingDepth = 77;
    s.buffer.SampleVolume(2, 3, r);
    EXPECT_EQ(r.hit, 1);
    EXPECT_EQ(r.flags, 0u);
    EXPECT_NEAR(r.color.r, 0.75f * 0.75f, 1e-6f);
    EXPECT_EQ(r.distance, 0.0f);
    EXPECT_EQ(r.remainingDepth, 77.0f);
    // The next range starts behind it: the thin one at the back, whole although the bound touches it.
    r.zNear = -20, r.zFar = -100;
    s.buffer.SampleVolume(2, 3, r);
    EXPECT_EQ(r.hit, 1);
    EXPECT_NEAR(r.color.r, 0.25f, 1e-4f);
    EXPECT_NEAR(r.transparency.r, 0.75f, 1e-4f);
    r.zNear = -30;
    s.buffer.SampleVolume(2, 3, r);
    EXPECT_EQ(r.hit, 0);
}

TEST(Sample, RangesInFrontAndPixelsElsewhere) {
    SampleBuffer s;
    SamplerRecord r;
    r.zNear = 0, r.zFar = -5; // strictly in front is nothing
    s.buffer.SampleVolume(2, 3, r);
    EXPECT_EQ(r.hit, 0);
    EXPECT_EQ(r.current, nullptr);
    r.zFar = -100;
    s.buffer.SampleVolume(20, 3, r);
    EXPECT_EQ(r.hit, 0);
    r.hit = 5; // outside the picture nothing at all is reported
    s.buffer.SampleVolume(40, 3, r);
    s.buffer.SampleRay(-1, 3, r);
    EXPECT_EQ(r.hit, 5);
}

TEST(Sample, Ray) {
    SampleBuffer s;
    SamplerRecord r;
    r.zNear = -6, r.zFar = -26, r.scale = 40;
    r.color = {9, 9, 9};
    s.buffer.SampleRay(2, 3, r);
    EXPECT_EQ(r.hit, 1);
    EXPECT_EQ(r.distance, 0.0f); // it begins inside
    EXPECT_EQ(r.color, Color(9, 9, 9));
    r.zNear = -10;
    r.zFar = -30;
    s.buffer.SampleRay(2, 3, r);
    EXPECT_EQ(r.distance, 20.0f); // ten of twenty
    r.zNear = -25;
    s.buffer.SampleRay(2, 3, r);
    EXPECT_EQ(r.hit, 0);
}

TEST(Sample, CompositeByHand) {
    SampleBuffer s;
    Color color;
    float through = 1;
    s.buffer.Composite(2, 3, 0, -100, color, through);
    // Front: 0.75, lets half through; back: 0.5 x 0.5 coverage of that, lets three quarters through.
    EXPECT_NEAR(color.r, 0.75f + 0.5f * 0.25f, 2e-4f);
    EXPECT_NEAR(color.b, 0.25f + 0.5f * 0.25f, 2e-4f);
    EXPECT_NEAR(through, 0.5f * 0.75f, 2e-4f);
    // Split at any depth, both parts together give the front's coverage once.
    Color front, back;
    float throughFront = 1, throughBack = 1;
    s.buffer.Composite(2, 3, 0, -6.5f, front, throughFront);
    s.buffer.Composite(2, 3, -6.5f, -15, back, throughBack);
    EXPECT_NEAR(front.r + back.r, 0.75f, 1e-4f);
    EXPECT_NEAR((1 - throughFront) + (1 - throughBack), 0.5f, 1e-4f);
    Color none;
    float all = 1;
    s.buffer.Composite(20, 20, 0, -100, none, all);
    EXPECT_EQ(none, Color());
    EXPECT_EQ(all, 1.0f);
}
