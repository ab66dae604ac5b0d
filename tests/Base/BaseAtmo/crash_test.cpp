// Processor exceptions inside hair operations: a report with the operation's name, an empty result, and work goes on.

#include "atmo_fixture.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "DebugTools/Assert.h"

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
    BaseAtmo* fur = MakeFur();
    auto* const trapObject = new TrapObject(trap);
    trapObject->mesh = SphereMesh(10, 8, 12);
    ASSERT_TRUE(fur->AddNode(pid_emitters, core.CreateNode("trap", trapObject)));
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

// The host is told about a bucket by the thread that makes it, inside the buffer's lock.
TEST_F(CrashTest, AFaultWhileABucketIsMadeLetsGoOfItsLocks) {
    class TrapWatcher : public RendProgressCallback {
    public:
        void SetTitle(const char*) override { title.Pass(); }
        int Progress(int, int) override { return 1; }
        Trap title;
    } watcher;
    core.SetRenderProgress(&watcher);
    MakeFur();
    SetThreads(core, 2);
    const Picture good = RenderScene(core, context);
    ASSERT_GT(good.Covered(), 50);
    watcher.title.on = true;
    {
        [[maybe_unused]] const LeaksAllowed leaks{};        // of the frames that are left
        EXPECT_EQ(RenderScene(core, context).Covered(), 0); // every sample asks for its bucket anew
    }
    watcher.title.on = false;
    EXPECT_EQ(Reports("in HairRender::Shade"), 1u);
    EXPECT_EQ(RenderScene(core, context), good);
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
