// A picture of fur while allocations fail, one after the other: it never crashes, loses hair at worst, leaks nothing,
// and the next picture is whole again.

#include <cmath>
#include <cstdlib>

#include "Base/BaseAtmo/atmo_fixture.h"
#include "DebugTools/Assert.h"
#include "DebugTools/MemTracker.h"
#include "counted_new.h"
#include "slowed.h"

namespace {

using faults::allocations;
using faults::Armed;

const RawAllocator kCounted = {[](size_t size) { return allocations.Refuse() ? nullptr : std::malloc(size); },
                               std::free};

int asserts = 0;

class RenderFaults : public AtmoTest {
protected:
    static constexpr int kWidth = 24, kHeight = 18;

    RenderFaults() {
        context.lights = {&light};
        fur = MakeFur();
        Set(*fur, pid_densPerArea, 0.1f);
        Set(*fur, pid_clumpAmount, 0.5f);
        Set(*fur, pid_dirRand, 0.3f);
        Set(*fur, pid_useCurliness, 1);
        // Several buckets, so that memory also runs out while others are there.
        IParamBlock2* const renderer = HairRender::Instance().GetParamBlock(0);
        renderer->SetValue(HRP_BUCKETS_FROM_RENDERER, 0, 0);
        renderer->SetValue(HRP_BUCKET_TYPE, 0, 2);
        renderer->SetValue(HRP_BUCKET_SIZE, 0, 10);
        core.SetQuietMode(true); // messages go to the host's log
        SetRawAllocator(&kCounted);
        LogSetFileName(nullptr, "/dev/null");
        asserts = 0;
        GetDiagSystem()->assertCallback = [](const char*) { return ++asserts > 0; };
        internalAsserts = LogInternalAssertCount();
        picture.color.resize(kWidth * kHeight);
        picture.trans.resize(kWidth * kHeight);
    }
    ~RenderFaults() override {
        GetDiagSystem()->assertCallback = nullptr;
        SetRawAllocator(nullptr);
        LogSetFileName(nullptr, nullptr);
    }

    /// A picture from the beginning, the control strands included. Allocations from number `failAt` on fail.
    const Picture& Render(int64_t failAt = INT64_MAX, int64_t failures = 1) {
        Set(*fur, pid_length, 5.0f); // what was kept is out of date
        allocations.count = allocations.refused = 0;
        allocations.failAt = failAt;
        allocations.failures = failures;
        SampleContext sample;
        sample.globContext = &context;
        const Armed armed;
        Interval valid = FOREVER;
        for (int i = 0; i < core.NumAtmospheric(); ++i) {
            core.GetAtmospheric(i)->RenderBegin(context.time);
            core.GetAtmospheric(i)->Update(context.time, valid);
        }
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                sample.pixel = {x, y};
                Color &c = picture.color[size_t(y * kWidth + x)], &t = picture.trans[size_t(y * kWidth + x)];
                c = Color(0, 0, 0), t = Color(1, 1, 1);
                ShadePixel(core, context, sample, c, t);
            }
        for (int i = 0; i < core.NumAtmospheric(); ++i) core.GetAtmospheric(i)->RenderEnd(context.time);
        return picture;
    }
    /// Every pixel holds what hair can be: no colour below 0, no transparency outside 0..1, nothing that is no number.
    bool Sensible() const {
        bool good = true;
        for (const Color& c : picture.color)
            good = good && std::isfinite(c.r + c.g + c.b) && c.r >= 0 && c.g >= 0 && c.b >= 0;
        for (const Color& t : picture.trans) good = good && t.r >= 0 && t.r <= 1;
        return good;
    }
    void ExpectNothingLeft(const MemAmounts& before) const {
        const MemAmounts after = TrackerAmounts();
        EXPECT_EQ(after.live, before.live);
        EXPECT_EQ(after.allocated, before.allocated);
        EXPECT_EQ(LogInternalAssertCount(), internalAsserts);
        EXPECT_EQ(asserts, 0);
    }
    /// Fails allocation after allocation: all of the first `dense`, then every `step`-th.
    void FailInTurn(int threads, int64_t dense, int64_t step, int64_t failures) {
        dense /= kSlowed, step *= kSlowed;
        SetThreads(core, threads);
        const Picture whole = Render();
        ASSERT_GT(whole.Covered(), 100);
        const int64_t total = allocations.count;
        const MemAmounts before = TrackerAmounts();
        int64_t lost = 0;
        for (int64_t n = 0; n < total; n += n < dense ? 1 : step) {
            Render(n, failures);
            EXPECT_TRUE(Sensible()) << n;
            lost += !(picture == whole);
            ExpectNothingLeft(before);
            if (HasFailure()) FAIL() << "allocation " << n << " of " << total;
            if (n % 16 != 0) continue;
            ASSERT_TRUE(Render() == whole) << "after the failure of allocation " << n;
        }
        EXPECT_GT(lost, 0);
        EXPECT_TRUE(Render() == whole);
        RecordProperty("allocations", std::to_string(total));
    }

    FakeContext context{kWidth, kHeight, 45};
    FrontLight light;
    BaseAtmo* fur = nullptr;
    Picture picture;
    int internalAsserts = 0;
};

TEST_F(RenderFaults, EveryAllocationFailsInTurnOnOneThread) {
    FailInTurn(1, 3000, 37, 1);
}

TEST_F(RenderFaults, EveryAllocationFailsInTurnOnThreeThreads) {
    FailInTurn(3, 1000, 41, 1);
}

TEST_F(RenderFaults, MemoryIsGoneFromSomeAllocationOn) {
    FailInTurn(1, 300, 97, INT64_MAX);
}

TEST_F(RenderFaults, MemoryIsGoneForAWhileOnThreeThreads) {
    FailInTurn(3, 300, 97, 20);
}

} // namespace
