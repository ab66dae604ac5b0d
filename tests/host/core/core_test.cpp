// The core interface; cameras and lights.

#include <gtest/gtest.h>

#include <thread>

#include "core/camera.h"
#include "core/controllers.h"
#include "core/core.h"
#include "core/light.h"
#include "test_objects.h"

namespace {

using namespace host;

class Fog : public Atmospheric {
public:
    static inline int alive = 0;
    Fog() { ++alive; }
    ~Fog() override { --alive; }
    void Shade(ShadeContext&, const Point3&, const Point3&, Color&, Color&, bool) override {}
};

class Spots : public Texmap {
public:
    AColor EvalColor(ShadeContext&) override { return {}; }
};

TEST(Core, ScopesNest) {
    EXPECT_EQ(GetCOREInterface(), nullptr);
    Core outer;
    {
        const Core::Scope scope(outer);
        EXPECT_EQ(GetCOREInterface(), &outer);
        Core inner;
        {
            const Core::Scope innerScope(inner);
            EXPECT_EQ(GetCOREInterface(), &inner);
        }
        EXPECT_EQ(GetCOREInterface(), &outer);
    }
    EXPECT_EQ(GetCOREInterface(), nullptr);
    {
        Core current;
        current.MakeCurrent();
        EXPECT_EQ(GetCOREInterface(), &current);
    }
    EXPECT_EQ(GetCOREInterface(), nullptr) << "a dead core is no core";
}

TEST(Core, TheSceneDiesWhileItsCoreIsStillToBeAsked) {
    struct Asks : ReferenceTarget {
        explicit Asks(Interface** s) : seen(s) {}
        ~Asks() override { *seen = GetCOREInterface(); }
        Interface** seen;
    };
    Interface* seen = nullptr;
    const Interface* address = nullptr;
    {
        Core core;
        address = &core;
        core.Adopt(new Asks(&seen));
    }
    EXPECT_EQ(seen, address);
}

TEST(Core, TimeAndRates) {
    Core core;
    EXPECT_EQ(core.GetTicksPerFrame(), 160);
    EXPECT_EQ(core.GetAnimRange(), Interval(0, 16000));
    EXPECT_TRUE(core.SetFrameRate(24));
    EXPECT_EQ(core.GetTicksPerFrame(), 200);
    EXPECT_FALSE(core.SetFrameRate(0));
    EXPECT_FALSE(core.SetFrameRate(4801));
    EXPECT_EQ(core.GetFrameRate(), 24);
    EXPECT_FALSE(core.SetAnimRange(NEVER));
    TimeValue told = -1;
    core.AddTimeCallback([&](TimeValue t) { told = t; });
    core.SetTime(77);
    EXPECT_EQ(core.GetTime(), 77);
    EXPECT_EQ(told, 77);
    EXPECT_EQ(core.VersionWord() >> 16, 13900u);
    EXPECT_NE(core.ApplicationID(), 2);
}

TEST(Core, AtmosphericsAreAListWithoutHoles) {
    Core core;
    Fog outside;
    auto* const owned = core.Adopt(new Fog);
    auto* const dies = core.Adopt(new Fog);
    core.AddAtmosphere(&outside);
    core.AddAtmosphere(owned);
    core.AddAtmosphere(dies);
    core.AddAtmosphere(owned);
    core.AddAtmosphere(nullptr);
    EXPECT_EQ(core.NumAtmospheric(), 3);
    EXPECT_EQ(core.GetAtmospheric(3), nullptr);
    EXPECT_EQ(core.GetAtmospheric(-1), nullptr);
    dies->DeleteThis();
    EXPECT_EQ(core.NumAtmospheric(), 2);
    core.DeleteAtmosphere(1);
    EXPECT_EQ(Fog::alive, 1) << "owned and not referred to: deleted";
    core.DeleteAtmosphere(0);
    EXPECT_EQ(Fog::alive, 1) << "not the scene's";
    EXPECT_EQ(core.NumAtmospheric(), 0);
    core.DeleteAtmosphere(0);
}

TEST(Core, BackgroundAndAmbientMayBeAnimated) {
    Core core;
    core.SetBackGround({0.1f, 0.2f, 0.3f});
    Interval valid = FOREVER;
    EXPECT_EQ(core.GetBackGround(0, valid), Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(valid, FOREVER);
    auto* const c = new Point3Control;
    c->SetKey(0, {0, 0, 0});
    c->SetKey(10, {1, 1, 1});
    ASSERT_TRUE(core.SetAmbientController(c));
    EXPECT_EQ(core.GetAmbient(5, valid), Color(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(valid, Interval(5, 5));
    FloatControl wrong;
    EXPECT_FALSE(core.SetBackGroundController(&wrong));
    core.SetAmbient({1, 0, 0});
    valid = FOREVER;
    EXPECT_EQ(core.GetAmbient(5, valid), Color(1, 0, 0));
}

TEST(Core, ViewportCameras) {
    Core core;
    ViewExp* const free = core.GetActiveViewport();
    EXPECT_EQ(free->GetViewCamera(), nullptr);
    EXPECT_EQ(core.ViewportsInUse(), 1);
    core.ReleaseViewport(free);
    EXPECT_EQ(core.ViewportsInUse(), 0);
    Node* const camera = core.CreateNode("cam", new TargetCamera);
    core.SetViewportCamera(camera);
    EXPECT_EQ(core.GetActiveViewport()->GetViewCamera(), camera);
    core.DeleteNode(camera);
    EXPECT_EQ(core.GetActiveViewport()->GetViewCamera(), nullptr);
}

TEST(Core, AbortFromAnotherThread) {
    Core core;
    EXPECT_FALSE(core.CheckForRenderAbort());
    std::thread([&] { core.RequestRenderAbort(); }).join();
    EXPECT_TRUE(core.CheckForRenderAbort());
    core.ClearRenderAbort();
    EXPECT_FALSE(core.CheckForRenderAbort());
}

TEST(Core, MessageBoxesAreRecordedAndAnswered) {
    Core core;
    core.Boxes().PrepareAnswer(true);
    core.Boxes().PrepareAnswer(false);
    EXPECT_FALSE(core.MessageBox("careful", "velmar", MB_WARNING)) << "only Yes is true";
    EXPECT_TRUE(core.MessageBox("really?", "velmar", MB_QUESTION));
    EXPECT_FALSE(core.MessageBox("really?", "velmar", MB_QUESTION));
    EXPECT_FALSE(core.MessageBox("really?", "velmar", MB_QUESTION)) << "no answer prepared";
    ASSERT_EQ(core.Boxes().Shown().size(), 4u);
    EXPECT_EQ(core.Boxes().Shown()[1].text, "really?");
    EXPECT_EQ(core.Boxes().Shown()[1].title, "velmar");
    EXPECT_TRUE(core.Boxes().Shown()[1].answer);
}

TEST(Core, QuietModeAndTheLog) {
    Core core;
    std::vector<std::string> lines;
    core.Log()->SetSink([&](int, const std::string& line) { lines.push_back(line); });
    core.SetQuietMode(true);
    EXPECT_TRUE(core.GetQuietMode());
    EXPECT_FALSE(core.MessageBox("two\nlines\n", "velmar", MB_ERROR));
    EXPECT_TRUE(core.Boxes().Shown().empty());
    core.Log()->LogEntry(SYSLOG_INFO, false, nullptr, "hello");
    core.Log()->LogEntry(SYSLOG_WARN, false, "t", "w");
    core.Log()->LogEntry(SYSLOG_DEBUG, false, "t", "hidden");
    core.Log()->SetDebug(true);
    core.Log()->LogEntry(SYSLOG_DEBUG, false, "t", nullptr);
    EXPECT_EQ(lines, (std::vector<std::string>{"velmar: error: velmar: two lines", "velmar: hello",
                                               "velmar: warning: t: w", "velmar: debug: t: "}));
}

TEST(Core, ScriptAnswers) {
    Core core;
    int i = 9;
    float f = 9;
    EXPECT_FALSE(core.EvalScriptInt("a.b", i));
    core.SetScriptInt("a.b", 4);
    core.SetScriptFloat("c", 0.5f);
    EXPECT_TRUE(core.EvalScriptInt("a.b", i));
    EXPECT_EQ(i, 4);
    EXPECT_TRUE(core.EvalScriptFloat("c", f));
    EXPECT_EQ(f, 0.5f);
    EXPECT_FALSE(core.EvalScriptInt("c", i)) << "another type";
    EXPECT_EQ(i, 4);
}

TEST(Core, Notifications) {
    Core core;
    static std::vector<int> heard;
    heard.clear();
    const auto proc = [](void* param, int code, void*) { heard.push_back(*static_cast<int*>(param) + code); };
    int one = 1000, two = 2000;
    core.RegisterNotification(proc, &one, NOTIFY_FILE_POST_OPEN);
    core.RegisterNotification(proc, &two, NOTIFY_FILE_POST_OPEN);
    core.RegisterNotification(proc, &two, NOTIFY_MERGE_DONE);
    core.BroadcastNotification(NOTIFY_FILE_POST_OPEN);
    core.UnRegisterNotification(proc, &one, NOTIFY_FILE_POST_OPEN);
    core.BroadcastNotification(NOTIFY_FILE_POST_OPEN);
    core.BroadcastNotification(NOTIFY_FILE_PRE_SAVE);
    EXPECT_EQ(heard, (std::vector<int>{1010, 2010, 2010}));
}

TEST(Core, InstancesOfHostClasses) {
    Core core;
    for (ClassDesc* const desc : core.Classes().All()) {
        ReferenceTarget* const made = core.CreateInstance(desc->SuperClassID(), desc->ClassID());
        ASSERT_NE(made, nullptr) << desc->ClassName();
        EXPECT_EQ(made->SuperClassID(), desc->SuperClassID()) << desc->ClassName();
        EXPECT_EQ(made->ClassID(), desc->ClassID()) << desc->ClassName();
        EXPECT_TRUE(core.Owner().Owns(made));
    }
    EXPECT_EQ(core.FindClass(LIGHT_CLASS_ID, SPOT_LIGHT_CLASS_ID), LightDescOf(SPOT_LGT));
    EXPECT_EQ(core.FindClass(CAMERA_CLASS_ID, SPOT_LIGHT_CLASS_ID), nullptr);
    EXPECT_EQ(core.CreateInstance(CAMERA_CLASS_ID, {1, 1}), nullptr);
}

TEST(Core, MapsByName) {
    Core core;
    auto* const map = core.Adopt(new Spots);
    map->SetName("spots");
    EXPECT_EQ(core.FindTexmapByName("spots"), map);
    EXPECT_EQ(core.FindTexmapByName("Spots"), nullptr);
    EXPECT_EQ(core.FindTexmapByName(""), nullptr);
    core.SetEnvironmentMap(map);
    EXPECT_EQ(core.GetEnvironmentMap(), map);
    map->DeleteThis();
    EXPECT_EQ(core.GetEnvironmentMap(), nullptr);
}

TEST(Core, ResetEmptiesTheScene) {
    Core core;
    core.CreateNode("a", new TriObject);
    core.AddAtmosphere(core.Adopt(new Fog));
    core.RequestRenderAbort();
    core.ResetScene();
    EXPECT_EQ(Fog::alive, 0);
    EXPECT_EQ(core.NumAtmospheric(), 0);
    EXPECT_TRUE(core.AllNodes().empty());
    EXPECT_NE(core.GetRootNode(), nullptr);
    EXPECT_FALSE(core.CheckForRenderAbort());
}

TEST(TargetCamera, StateComesFromTheParameters) {
    Core core;
    auto* const camera = core.Adopt(new TargetCamera);
    CameraState state;
    Interval valid = FOREVER;
    camera->EvalCameraState(0, valid, &state);
    EXPECT_EQ(state.fov, 0.785398f);
    EXPECT_FALSE(state.isOrtho);
    EXPECT_EQ(valid, FOREVER);
    auto* const zoom = new FloatControl;
    zoom->SetKey(0, 0.5f);
    zoom->SetKey(100, 1.5f);
    camera->Params()->SetController(kCamFov, zoom);
    camera->Params()->SetValue(kCamOrtho, 0, 1);
    camera->Params()->SetValue(kCamHither, 0, 2.0f);
    camera->EvalCameraState(50, valid, &state);
    EXPECT_EQ(state.fov, 1.0f);
    EXPECT_TRUE(state.isOrtho);
    EXPECT_EQ(state.hither, 2);
    EXPECT_EQ(valid, Interval(50, 50));
    EXPECT_EQ(camera->ObjectValidity(200), Interval(100, TIME_PosInfinity));
    RemapDir remap;
    auto* const copy = core.Adopt(static_cast<TargetCamera*>(remap.CloneRef(camera)));
    copy->Params()->SetValue(kCamHither, 0, 9.0f);
    camera->EvalCameraState(0, valid, &state);
    EXPECT_EQ(state.hither, 2);
}

TEST(TargetCamera, ChangesReachTheDependentsOfItsNode) {
    Core core;
    auto* const camera = new TargetCamera;
    Node* const node = core.CreateNode("cam", camera);
    Thing watcher(1);
    watcher.ReplaceReference(0, node);
    camera->Params()->SetValue(kCamFov, 0, 1.0f);
    EXPECT_EQ(watcher.heard.size(), 1u);
    watcher.DeleteAllRefs();
}

TEST(Light, StateComesFromTheParameters) {
    Core core;
    for (const LightType type : {OMNI_LGT, SPOT_LGT, DIRECT_LGT}) {
        auto* const light = core.Adopt(new Light(type));
        LightState state;
        Interval valid = FOREVER;
        light->EvalLightState(0, valid, &state);
        EXPECT_EQ(state.type, type);
        EXPECT_TRUE(state.on && state.affectDiffuse && state.affectSpecular);
        EXPECT_FALSE(state.shadow || state.ambientOnly);
        EXPECT_EQ(state.intens, 1);
        EXPECT_LE(state.hotsize, state.fallsize);
        light->Params()->SetValue(kLightMultiplier, 0, -2.5f);
        light->Params()->SetValue(kLightColor, 0, Color(1, 0.5f, 0));
        light->Params()->SetValue(kLightHotspot, 0, 60.0f);
        light->Params()->SetValue(kLightFalloff, 0, 30.0f);
        light->Params()->SetValue(kLightShadows, 0, 1);
        light->EvalLightState(0, valid, &state);
        EXPECT_EQ(state.intens, -2.5f) << "lights may take light away";
        EXPECT_EQ(state.color, Color(1, 0.5f, 0));
        EXPECT_EQ(state.hotsize, 60);
        EXPECT_EQ(state.fallsize, 60) << "never inside the hotspot";
        EXPECT_TRUE(state.shadow);
    }
    Light spot(SPOT_LGT);
    spot.Params()->SetValue(kLightFalloff, 0, 500.0f);
    LightState state;
    Interval valid = FOREVER;
    spot.EvalLightState(0, valid, &state);
    EXPECT_EQ(state.fallsize, 179.5f);
    EXPECT_EQ(LightDescOf(AMBIENT_LGT), nullptr);
}

class NoShadow : public ShadowType {
public:
    ShadowGenerator* CreateShadowGenerator(LightObject*, ObjLightDesc*, uint32_t) override { return nullptr; }
};

TEST(Light, ShadowTypeSlotAndDescriptorHook) {
    Core core;
    auto* const light = core.Adopt(new Light(SPOT_LGT));
    EXPECT_EQ(light->GetShadowType(), nullptr);
    auto* const shadow = new NoShadow;
    EXPECT_TRUE(light->SetShadowType(shadow));
    EXPECT_EQ(light->GetShadowType(), shadow);
    delete shadow;
    EXPECT_EQ(light->GetShadowType(), nullptr);
    EXPECT_EQ(light->CreateLightDesc(nullptr), nullptr);
    static Light* asked = nullptr;
    Light::SetDescFactory([](Light* l, INode*) -> ObjLightDesc* {
        asked = l;
        return nullptr;
    });
    light->CreateLightDesc(nullptr);
    EXPECT_EQ(asked, light);
    Light::SetDescFactory(nullptr);
}

} // namespace
