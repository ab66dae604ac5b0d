// Processor exceptions inside hair operations: a report with the operation's name, an empty result, and work goes on.

#include "atmo_fixture.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "DebugTools/Assert.h"
#include "DebugTools/MemTracker.h"
#include "sdk/control.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

/// What this thread allocates meanwhile may stay behind.
struct LeaksAllowed {
#if defined(__SANITIZE_ADDRESS__)
    __lsan::ScopedDisabler disabler;
#endif
};

namespace fs = std::filesystem;

/// Fails as long as it is switched on.
struct Trap {
    std::atomic<bool> on{false};
    void Pass() {
        if (on) asm volatile("movl $1, 0x10" ::: "memory");
    }
};

class TrapLight : public FrontLight {
public:
    explicit TrapLight(Trap& trap) : trap_(trap) {}
    using FrontLight::Illuminate;
    bool Illuminate(ShadeContext& sc, const Point3& normal, Color& color, Point3& dir, float& cosine,
                    float& diffuse) override {
        trap_.Pass();
        return FrontLight::Illuminate(sc, normal, color, dir, cosine, diffuse);
    }

private:
    Trap& trap_;
};

class TrapObject : public TriObject {
public:
    explicit TrapObject(Trap& trap) : trap_(trap) {}
    Object* ConvertToType(TimeValue t, Class_ID id) override {
        trap_.Pass();
        return TriObject::ConvertToType(t, id);
    }
    Mesh* GetRenderMesh(TimeValue t, INode* node, bool& needDelete) override {
        trap_.Pass();
        return TriObject::GetRenderMesh(t, node, needDelete);
    }
    /// Holds at no other time, so that every time asks for it.
    Interval ObjectValidity(TimeValue t) override { return {t, t}; }

private:
    Trap& trap_;
};

/// 1.5 at time 0, ever more afterwards.
class TrapController : public Control {
public:
    explicit TrapController(Trap& trap) : trap_(trap) {}
    SClass_ID SuperClassID() override { return CTRL_FLOAT_CLASS_ID; }
    void GetValue(TimeValue t, void* value, Interval& valid) override {
        trap_.Pass();
        *static_cast<float*>(value) = 1.5f + float(t);
        valid &= Interval(t, t);
    }
    void SetValue(TimeValue, const void*) override {}

private:
    Trap& trap_;
};

class TrapSample : public SampleContext {
public:
    explicit TrapSample(Trap& trap) : trap_(trap) {}
    IPoint2 ScreenCoord() override {
        trap_.Pass();
        return SampleContext::ScreenCoord();
    }

private:
    Trap& trap_;
};

class CrashTest : public AtmoTest {
protected:
    CrashTest() : light(trap) {
        folder = fs::temp_directory_path() / ("velmar_crash_" + std::to_string(getpid()));
        fs::create_directories(folder);
        LogSetFileName(nullptr, (folder / "velmar.log").c_str());
        LogSetCrashCopyName(nullptr, (folder / "copy.log").c_str());
        LogSetSizeLimit(nullptr, 100000000);
        context.lights = {&light};
    }
    ~CrashTest() override {
        LogSetCopyOnClose(nullptr, false);
        LogSetFileName(nullptr, nullptr); // closes the file
        fs::remove_all(folder);
    }
    /// Reports with this message so far.
    size_t Reports(const std::string& message) const {
        std::ifstream in(folder / "velmar.log", std::ios::binary);
        std::stringstream read;
        read << in.rdbuf();
        const std::string text = read.str(), line = "\r\nMessage: " + message + "\r\n";
        size_t count = 0;
        for (size_t at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) ++count;
        return count;
    }

    /// An emitter of a fur object, whose mesh fails.
    BaseAtmo* MakeFurOnTrap() {
        BaseAtmo* fur = MakeFur();
        auto* const trapObject = new TrapObject(trap);
        trapObject->mesh = SphereMesh(10, 8, 12);
        EXPECT_TRUE(fur->AddNode(pid_emitters, core.CreateNode("trap", trapObject)));
        return fur;
    }
    /// An operation of the hair renderer whose parameter fails: reported each time, and the render has no hair.
    void ExpectNoRender(ParamID param, const std::function<void(Atmospheric&)>& operation) {
        MakeFur();
        const Picture good = RenderScene(core, context);
        ASSERT_GT(good.Covered(), 50);
        Atmospheric& renderer = *core.GetAtmospheric(0);
        IParamBlock2* block = renderer.GetParamBlock(0);
        ASSERT_TRUE(block->SetController(param, new TrapController(trap)));
        for (size_t i = 1; i <= 2; ++i) {
            renderer.RenderBegin(0);
            trap.on = true;
            operation(renderer);
            trap.on = false;
            EXPECT_TRUE(HairRender::Instance().Inactive());
            EXPECT_EQ(Reports("in velmar Renderer"), i);
            renderer.RenderEnd(0);
        }
        block->SetController(param, nullptr);
        EXPECT_EQ(RenderScene(core, context), good);
    }

    Trap trap;
    TrapLight light;
    FakeContext context{32, 24, 45};
    fs::path folder;
};

} // namespace

TEST_F(CrashTest, RenderThreadsThatFailGiveNoHairAndAreReportedOnce) {
    MakeFur();
    SetThreads(core, 2);
    const Picture good = RenderScene(core, context);
    ASSERT_GT(good.Covered(), 50);
    for (const int threads : {1, 2, 4}) {
        SetThreads(core, threads);
        trap.on = true;
        EXPECT_EQ(RenderScene(core, context).Covered(), 0) << threads;
        trap.on = false;
        EXPECT_EQ(RenderScene(core, context), good) << threads;
    }
    EXPECT_EQ(Reports("in rendering thread"), 1u);
    EXPECT_TRUE(LogGetCopyOnClose(nullptr));
}

TEST_F(CrashTest, AnEstimateThatFailsIsEmptyAndReported) {
    [[maybe_unused]] const LeaksAllowed leaks{}; // of the frames that are left
    BaseAtmo* fur = MakeFurOnTrap();
    trap.on = true;
    for (size_t i = 1; i <= 2; ++i) {
        const GeometryEstimate failed = fur->EstimateGeometry(0);
        EXPECT_EQ(failed.strands, 0);
        EXPECT_EQ(failed.vertices, 0);
        EXPECT_EQ(Reports("in EstimateGeometry"), i);
    }
    trap.on = false;
    EXPECT_GT(fur->EstimateGeometry(0).strands, 100);
}

TEST_F(CrashTest, AnUpdateThatFailsIsReportedAndHoldsForNoTime) {
    [[maybe_unused]] const LeaksAllowed leaks{}; // of the frames that are left
    BaseAtmo* fur = MakeFurOnTrap();
    for (int i = 1; i <= 2; ++i) {
        const TimeValue t = 480 * i;
        trap.on = true;
        Interval valid = FOREVER;
        EXPECT_EQ(fur->Update(t, valid), 1);
        EXPECT_TRUE(valid.Empty());
        EXPECT_EQ(Reports("in BaseAtmo::Update"), size_t(i));
        trap.on = false;
        valid = FOREVER;
        EXPECT_EQ(fur->Update(t, valid), 1);
        EXPECT_EQ(valid, Interval(t, t));
    }
    EXPECT_GT(fur->EstimateGeometry(0).strands, 100);
}

// The parameters were those of the failed time already: what had held before does not hold any more.
TEST_F(CrashTest, AnUpdateThatFailsLeavesNothingOfTheFormerTime) {
    [[maybe_unused]] const LeaksAllowed leaks{}; // of the frames that are left
    BaseAtmo* fur = MakeFurOnTrap();
    Trap open;
    ASSERT_TRUE(fur->BlockOf(pid_densPerArea)->SetController(pid_densPerArea, new TrapController(open)));
    const int64_t strands = fur->EstimateGeometry(0).strands;
    trap.on = true;
    EXPECT_EQ(fur->EstimateGeometry(1).strands, 0);
    trap.on = false;
    EXPECT_EQ(fur->EstimateGeometry(0).strands, strands);
    EXPECT_GT(fur->EstimateGeometry(1).strands, strands);
}

TEST_F(CrashTest, ARenderThatCannotBeginHasNoHair) {
    ExpectNoRender(HRP_FILTER_SIZE, [](Atmospheric& renderer) { renderer.RenderBegin(0); });
}

TEST_F(CrashTest, ARenderThatCannotFollowTheTimeHasNoHair) {
    ExpectNoRender(HRP_QUALITY_MEMORY, [](Atmospheric& renderer) {
        Interval valid = FOREVER;
        renderer.Update(0, valid);
    });
}

TEST_F(CrashTest, ARenderThatCannotEndIsReported) {
    static Trap freeing;
    static const RawAllocator trapped = {std::malloc, [](void* memory) {
                                             std::free(memory);
                                             freeing.Pass();
                                         }};
    SetThreads(core, 1);
    {
        [[maybe_unused]] const LeaksAllowed leaks{}; // of the frame whose end fails
        MakeFur();
        Atmospheric& renderer = *core.GetAtmospheric(0);
        renderer.RenderBegin(0);
        SampleContext sample;
        sample.globContext = &context;
        sample.pixel = {16, 12};
        Color color, trans(1, 1, 1);
        renderer.Shade(sample, {0, 0, 45}, {0, 0, -45}, color, trans);
        ASSERT_LT(trans.r, 1.0f);
        SetRawAllocator(&trapped);
        freeing.on = true;
        renderer.RenderEnd(0);
        freeing.on = false;
        SetRawAllocator(nullptr);
    }
    EXPECT_EQ(Reports("in velmar Renderer"), 1u);
    EXPECT_TRUE(HairRender::Instance().Inactive());
    EXPECT_GT(RenderScene(core, context).Covered(), 50);
}

TEST_F(CrashTest, ASamplerThatFailsHitsNothing) {
    static Trap clock;
    MakeFur();
    Atmospheric& renderer = *core.GetAtmospheric(0);
    auto* const part = static_cast<RaySampler*>(renderer.GetInterface(RAYSAMPLER_INTERFACE_ID));
    VolumeSampler& sampler = *part->GetVolumeSampler(0);
    renderer.RenderBegin(0);
    SampleContext sample;
    sample.globContext = &context;
    sample.pixel = {16, 12};
    SamplerRecord record;
    record.sc = &sample;
    record.p0 = {0, 0, 45}, record.p1 = {0, 0, -45};
    record.zNear = 0, record.zFar = -90;
    sampler.Begin(record);
    auto& tick = static_cast<IHRendOwner&>(HairRender::Instance()).Settings().tick;
    uint32_t (*const realTick)() = tick;
    tick = [] {
        clock.Pass();
        return 0u;
    };
    for (const auto ask : {&VolumeSampler::SampleFirst, &VolumeSampler::SampleNext}) {
        (sampler.*ask)(record);
        EXPECT_EQ(record.hit, 1);
        clock.on = true;
        (sampler.*ask)(record);
        clock.on = false;
        EXPECT_EQ(record.hit, 0);
    }
    EXPECT_EQ(Reports("in velmar Renderer"), 1u); // the place is the same
    tick = realTick;
    renderer.RenderEnd(0);
}

// The host is told about a bucket by the thread that makes it, inside the buffer's lock.
TEST_F(CrashTest, AFaultWhileABucketIsMadeLetsGoOfItsLocks) {
    class TrapWatcher : public RendProgressCallback {
    public:
        void SetTitle(const char*) override { title.Pass(); }
        int Progress(int done, int) override {
            if (done > 0) progress.Pass();
            return 1;
        }
        Trap title, progress;
    } watcher;
    core.SetRenderProgress(&watcher);
    FakeContext context{8, 6, 45}; // few samples, because every one draws the bucket anew
    MakeFur();
    SetThreads(core, 2);
    const Picture good = RenderScene(core, context);
    ASSERT_GT(good.Covered(), 5);
    for (Trap* trap : {&watcher.title, &watcher.progress}) {
        // With strands drawn, what is left behind would be other threads' as well.
        SetThreads(core, trap == &watcher.title ? 2 : 1);
        const size_t before = Reports("in HairRender::Shade");
        trap->on = true;
        {
            [[maybe_unused]] const LeaksAllowed leaks{}; // of the frames that are left
            EXPECT_EQ(RenderScene(core, context).Covered(), 0);
        }
        trap->on = false;
        EXPECT_EQ(Reports("in HairRender::Shade"), before + 1);
        SetThreads(core, 2);
        EXPECT_EQ(RenderScene(core, context), good);
    }
    core.SetRenderProgress(nullptr);
}

TEST_F(CrashTest, ASampleThatFailsHasNoHairAndTheRenderGoesOn) {
    MakeFur();
    const Picture good = RenderScene(core, context);
    Atmospheric* renderer = core.GetAtmospheric(0);
    Interval valid = FOREVER;
    for (int i = 0; i < core.NumAtmospheric(); ++i) {
        core.GetAtmospheric(i)->RenderBegin(0);
        core.GetAtmospheric(i)->Update(0, valid);
    }
    TrapSample sample(trap);
    sample.globContext = &context;
    sample.pixel = {16, 12};
    const Color behind(0.25f, 0.5f, 0.75f), open(1, 1, 1);
    const auto shade = [&](Color& color, Color& trans) {
        color = behind, trans = open;
        renderer->Shade(sample, {0, 0, 45}, {0, 0, -45}, color, trans);
    };
    Color color, trans;
    trap.on = true;
    for (int i = 0; i < 100; ++i) {
        shade(color, trans);
        EXPECT_EQ(color, behind);
        EXPECT_EQ(trans, open);
    }
    EXPECT_EQ(Reports("in HairRender::Shade"), 1u);
    trap.on = false;
    shade(color, trans);
    EXPECT_LT(trans.r, 1.0f);
    for (int i = 0; i < core.NumAtmospheric(); ++i) core.GetAtmospheric(i)->RenderEnd(0);
    EXPECT_EQ(RenderScene(core, context), good);
}
