// When render effects and image filters are asked, what they find, and how they stop.

#include <algorithm>

#include "Base/ProgressInd.h"
#include "core/host_classes.h"
#include "render/effects/color_effects.h"
#include "render/effects/negative_filter.h"
#include "scene_fixture.h"
#include "sdk/hold.h"

namespace host {
namespace {

std::string log; // of all probes
constexpr uint32_t kProbeChannels = BMM_CHAN_NORMAL | BMM_CHAN_NODE_ID;

struct Air : Atmospheric {
    ~Air() override { DeleteAllRefs(); }
    int RenderBegin(TimeValue) override { return log += "begin ", 1; }
    int RenderEnd(TimeValue) override { return log += "end ", 1; }
    void Shade(ShadeContext&, const Point3&, const Point3&, Color&, Color&, bool) override {}
};

/// Reports as plug-ins do.
struct Probe : Effect {
    explicit Probe(const char* name) { SetName(name); }
    ~Probe() override { DeleteAllRefs(); }
    int Update(TimeValue t, Interval&) override { return log += "update" + std::to_string(t) + " ", 1; }
    uint32_t GBufferChannelsRequired(TimeValue) override { return kProbeChannels; }
    void Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext* gc, RendProgressCallback* progress) override {
        log += GetName() + std::to_string(t) + " ";
        ChannelType type;
        found = bitmap->GetChannel(BMM_CHAN_NORMAL, type) && bitmap->GetChannel(BMM_CHAN_NODE_ID, type);
        asked = GetCOREInterface()->GetRendParams().gbufChannels;
        info = bitmap->GetRenderInfo() != nullptr;
        context = gc->NumRenderInstances() == 1 && gc->devWidth == bitmap->Width();
        fields = gc->fieldRender;
        if (!work) return;
        EffectProgInd indicator(progress);
        indicator.SetObject("at work", 4);
        for (int i = 0; i <= 4 && !indicator.IsCancelled(); ++i) {
            indicator.SetObjectProgress(i);
            if (i == stopAt) static_cast<Core*>(GetCOREInterface())->RequestRenderAbort();
        }
        cancelled = indicator.IsCancelled();
    }
    bool found = false, info = false, context = false, fields = false, work = false, cancelled = false;
    int stopAt = -1;
    uint32_t asked = 0;
};

struct ProbeFilter : ImageFilter {
    static constexpr Class_ID kId{0x11, 0x22};
    static inline bool stopped = false;
    static inline bool good = true;
    uint32_t ChannelsRequired() override { return BMM_CHAN_UV; }
    void BeforeRender(TimeValue t) override { log += "before" + std::to_string(t) + " "; }
    bool Render(Bitmap* bitmap, IFilterWindow* window) override {
        ChannelType type;
        log += bitmap->GetChannel(BMM_CHAN_UV, type) ? "filter " : "no channel ";
        FilterProgInd indicator(*window);
        indicator.SetTask("hair", 1);
        indicator.SetObject("channels", 10000);
        indicator.SetObjectProgress(300);
        stopped = indicator.IsCancelled();
        return good;
    }
};

ClassDesc* ProbeFilterDesc() {
    static SimpleClassDesc<ProbeFilter> desc("Probe Filter", FLT_CLASS_ID, ProbeFilter::kId);
    return &desc;
}

struct Watcher : IProgressIndicator {
    void SetTask(const std::string&, int) override {}
    void SetTaskProgress(int) override {}
    void SetObject(const std::string& name, int steps) override {
        object = name;
        if (name != "Rendering") text += name + "/" + std::to_string(steps) + ": ";
    }
    void SetObjectProgress(int step) override {
        if (object != "Rendering") text += std::to_string(step) + " ";
    }
    std::string object, text;
};

struct PictureFinishTest : SceneTest {
    Air air;
    PictureFinishTest() {
        log.clear();
        ProbeFilter::good = true;
        AddCamera({0, 0, 10}, {0, 0, 0});
        AddMesh("plane", PlaneMesh(2), AddMaterial({0.5f, 0.25f, 0.75f}));
        core.AddAtmosphere(&air);
        core.Classes().Register(ProbeFilterDesc());
    }
    ~PictureFinishTest() override { log.clear(); }
    Probe* Add(const char* name) {
        auto* const probe = core.Adopt(new Probe(name));
        core.AddEffect(probe);
        return probe;
    }
    FrameResult Watched() { return RenderFrame(core, settings, &watcher, picture, stats); }
    Watcher watcher;
};

TEST_F(PictureFinishTest, EverybodyIsAskedInOrder) {
    Add("second")->SetDisabled(true);
    Add("first");
    Add("third");
    core.Filters().Add(ProbeFilter::kId);
    core.Filters().Add(ProbeFilter::kId)->active = false;
    settings.time = 160;
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(log, "update160 update160 before160 begin first160 third160 filter end ");
}

TEST_F(PictureFinishTest, EffectsFindTheirChannelsAndTheScene) {
    Probe* const probe = Add("probe");
    core.RenderParams().gbufChannels = BMM_CHAN_MTL_ID;
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_TRUE(probe->found && probe->info && probe->context);
    EXPECT_EQ(probe->asked, kProbeChannels | BMM_CHAN_MTL_ID);
    // Afterwards everything is as the scene has it.
    EXPECT_EQ(core.GetRendParams().gbufChannels, BMM_CHAN_MTL_ID);
    EXPECT_EQ(picture.Channels(), BMM_CHAN_Z | BMM_CHAN_MTL_ID);
    probe->SetDisabled(true);
    probe->found = true;
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_TRUE(probe->found) << "was not asked again";
}

TEST_F(PictureFinishTest, BothFieldsAreThereWhenEffectsWork) {
    Probe* const probe = Add("probe");
    settings.fields = FieldMode::kEvenFirst;
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(log, "update0 begin probe0 end ");
    EXPECT_TRUE(probe->fields && probe->context);
}

TEST_F(PictureFinishTest, TheOrderShows) {
    auto* const brighter = core.Adopt(new BrightnessContrast);
    brighter->Params()->SetValue(BrightnessContrast::kBrightness, 0, 0.5f);
    auto* const darker = core.Adopt(new BrightnessContrast);
    darker->Params()->SetValue(BrightnessContrast::kContrast, 0, -0.5f);
    core.SetAmbient({1, 1, 1});
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(picture.Shown(20, 15), {0.5f, 0.25f, 0.75f}, 1e-6f);
    core.AddEffect(brighter);
    core.AddEffect(darker);
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(picture.Shown(20, 15), {0.75f, 0.625f, 0.875f}, 1e-6f); // (in + 1/2) / 2 + 1/4
    ExpectColor(picture.Shown(0, 0), {0.5f, 0.5f, 0.5f}, 1e-6f);
    core.DeleteEffect(0);
    core.AddEffect(core.Adopt(new BrightnessContrast));
    static_cast<BrightnessContrast*>(core.Effects()[1])->Params()->SetValue(BrightnessContrast::kBrightness, 0, 0.5f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(picture.Shown(20, 15), {1, 0.875f, 1.125f}, 1e-6f); // in / 2 + 1/4 + 1/2
    core.Filters().Add(NegativeFilter::kClassId);                   // after the effects
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(picture.Shown(20, 15), {0, 0.125f, 0}, 1e-6f);
}

TEST_F(PictureFinishTest, WhatLiesOutsideTheRegionStaysEmpty) {
    auto* const brighter = core.Adopt(new BrightnessContrast);
    brighter->Params()->SetValue(BrightnessContrast::kBrightness, 0, 0.5f);
    core.AddEffect(brighter);
    settings.crop = {10, 8, 30, 20};
    ASSERT_EQ(Render(), FrameResult::kDone);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const bool inside = x >= 10 && x < 30 && y >= 8 && y < 20;
            ASSERT_EQ(picture.Shown(x, y).g >= 0.5f, inside) << x << ", " << y;
            ASSERT_TRUE(inside || picture.Shown(x, y) == Color());
        }
}

TEST_F(PictureFinishTest, ProgressIsPassedOn) {
    Add("quiet");
    Add("probe")->work = true;
    core.Filters().Add(ProbeFilter::kId);
    ASSERT_EQ(Watched(), FrameResult::kDone);
    EXPECT_EQ(watcher.text, "at work/4: 0 1 2 3 4 hair: channels/1000: 0 300 ");
    EXPECT_FALSE(ProbeFilter::stopped);
    EXPECT_GE(stats.effectSeconds, 0);
    EXPECT_LE(stats.effectSeconds, stats.wallSeconds);
}

TEST_F(PictureFinishTest, TheUserStopsAnEffect) {
    Probe* const probe = Add("probe");
    probe->work = true;
    probe->stopAt = 2;
    Add("later");
    core.Filters().Add(ProbeFilter::kId);
    EXPECT_EQ(Watched(), FrameResult::kAborted);
    EXPECT_EQ(watcher.text, "at work/4: 0 1 2 ");
    EXPECT_TRUE(probe->cancelled);
    EXPECT_EQ(log, "update0 update0 before0 begin probe0 end ");
    EXPECT_EQ(core.GetRendParams().gbufChannels, 0u);
}

TEST_F(PictureFinishTest, AnAbortedPictureIsNotFinished) {
    Add("probe");
    core.RequestRenderAbort();
    EXPECT_EQ(Render(), FrameResult::kAborted);
    EXPECT_EQ(log, "update0 begin end ");
}

TEST_F(PictureFinishTest, AFilterThatFailsFailsTheFrame) {
    core.Filters().Add(ProbeFilter::kId);
    ProbeFilter::good = false;
    try {
        Render();
        FAIL();
    } catch (const Error& e) {
        EXPECT_STREQ(e.what(), "image filter 'Probe Filter' failed");
    }
    EXPECT_EQ(log, "before0 begin filter end ");
}

TEST_F(PictureFinishTest, TheListOfEffectsKnowsUndo) {
    Probe* const a = Add("a");
    theHold.Begin();
    Probe* const b = Add("b");
    theHold.Accept("add");
    theHold.Begin();
    core.DeleteEffect(0);
    theHold.Accept("delete");
    EXPECT_EQ(core.Effects(), (std::vector<Effect*>{b}));
    theHold.Undo();
    EXPECT_EQ(core.Effects(), (std::vector<Effect*>{a, b}));
    theHold.Undo();
    EXPECT_EQ(core.Effects(), (std::vector<Effect*>{a}));
    a->DeleteThis();
    EXPECT_TRUE(core.Effects().empty());
    core.AddEffect(nullptr);
    EXPECT_TRUE(core.Effects().empty());
    EXPECT_EQ(core.Filters().Add({1, 1}), nullptr);
}

TEST_F(PictureFinishTest, AFrameThatIsDoneIsLogged) {
    std::vector<std::string> lines;
    core.Log()->SetSink([&](int type, const std::string& line) {
        EXPECT_EQ(type, SYSLOG_INFO);
        lines.push_back(line);
    });
    settings.samples = 1;
    settings.time = 80; // half a frame
    ASSERT_EQ(Render(), FrameResult::kDone);
    ASSERT_EQ(lines.size(), 1u);
    const std::string before = "velmar: frame 0.5 at 0.017 s: 40 x 30, 1200 samples, ";
    EXPECT_EQ(lines[0].substr(0, before.size()), before);
    float seconds = -1;
    ASSERT_EQ(std::sscanf(lines[0].c_str() + before.size(), "%f s", &seconds), 1) << "no effect counts strands";
    EXPECT_GE(seconds, 0);
    core.RequestRenderAbort();
    Render();
    EXPECT_EQ(lines.size(), 1u) << "nothing is done";
}

} // namespace
} // namespace host
