// Surfaces in pictures: mapping, material ids, smoothing, environments, shadow types; the surface's context.

#include <cmath>

#include "materials/checker_map.h"
#include "materials/multi_mtl.h"
#include "render/light_desc.h"
#include "render/surface_context.h"
#include "scene_fixture.h"
#include "sdk/atmos.h"

namespace host {
namespace {

class SurfaceTest : public SceneTest {
protected:
    /// Two pixels a unit, the origin at (20, 15), seen from above.
    void LookDown() {
        TargetCamera* const camera = AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
        camera->Params()->SetValue(kCamOrtho, 0, 1);
        core.SetAmbient({1, 1, 1});
        settings.samples = 1;
    }
};

TEST_F(SurfaceTest, CheckerColoursAtKnownPixels) {
    LookDown();
    auto* const checker = core.Adopt(new CheckerMap);
    checker->Params()->SetValue(kCheckerColor1, 0, Color(1, 0, 0));
    checker->Params()->SetValue(kCheckerColor2, 0, Color(0, 1, 0));
    checker->Params()->SetValue(kMapTileU, 0, 2.0f);
    StdMtl* const material = AddMaterial({1, 1, 1});
    material->SetSubTexmap(ID_DI, checker);
    AddMesh("plane", PlaneMesh(4), material); // pixels 12..27 across, 7..22 down; squares 4 wide and 8 high
    ASSERT_EQ(Render(), FrameResult::kDone);
    for (int y = 7; y < 23; ++y)
        for (int x = 12; x < 28; ++x) {
            const bool upperU = ((x - 12) / 4) % 2 == 1, upperV = y < 15;
            ExpectColor(ColorAt(x, y), upperU != upperV ? Color(0, 1, 0) : Color(1, 0, 0), 1e-5f);
        }
    EXPECT_EQ(AlphaAt(11, 15), 0.0f);
    EXPECT_EQ(AlphaAt(28, 15), 0.0f);
}

/// Keeps the footprint at one pixel.
class FootprintProbe : public Texmap {
public:
    FootprintProbe(int x, int y) : pixel_(x, y) {}
    ~FootprintProbe() override { DeleteAllRefs(); }
    AColor EvalColor(ShadeContext& sc) override {
        const IPoint2 p = sc.ScreenCoord();
        if (p.x == pixel_.x && p.y == pixel_.y) {
            duvw = sc.DUVW(1);
            other = sc.DUVW(5);
        }
        return {};
    }
    Point3 duvw{-1, -1, -1}, other{-1, -1, -1};

private:
    IPoint2 pixel_;
};

TEST_F(SurfaceTest, TheFootprintIsAPixelsShareOfTheMap) {
    LookDown();
    settings.threads = 1;
    FootprintProbe probe(22, 17);
    StdMtl* const material = AddMaterial({1, 1, 1});
    material->SetSubTexmap(ID_DI, &probe);
    Node* const plane = AddMesh("plane", PlaneMesh(4), material);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(probe.duvw.x, 0.5f / 8, 1e-5f); // half a unit of 8
    EXPECT_NEAR(probe.duvw.y, 0.5f / 8, 1e-5f);
    EXPECT_EQ(probe.other, Point3());
    plane->SetNodeTM(0, ScaleMatrix({2, 1, 1}));
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(probe.duvw.x, 0.5f / 16, 1e-5f);
    EXPECT_NEAR(probe.duvw.y, 0.5f / 8, 1e-5f);
    // In perspective a pixel at depth 10 is half a unit wide too.
    static_cast<TargetCamera*>(core.GetINodeByName("cam")->GetObjectRef())->Params()->SetValue(kCamOrtho, 0, 0);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(probe.duvw.x, 0.5f / 16, 1e-4f);
    EXPECT_NEAR(probe.duvw.y, 0.5f / 8, 1e-4f);
    material->SetSubTexmap(ID_DI, nullptr);
}

TEST_F(SurfaceTest, MultiMaterialsByFaceId) {
    LookDown();
    auto* const multi = core.Adopt(new MultiMtl);
    multi->SetSubMtl(0, AddMaterial({1, 0, 0}));
    multi->SetSubMtl(1, AddMaterial({0, 0, 1}));
    Mesh mesh = PlaneMesh(4);
    mesh.faces[0].SetMatID(1); // below the diagonal
    mesh.faces[1].SetMatID(2); // modulo 2: the first
    AddMesh("plane", mesh, multi);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(24, 19), Color(0, 0, 1));
    EXPECT_EQ(ColorAt(15, 10), Color(1, 0, 0));
}

TEST_F(SurfaceTest, SmoothingGroupsShadeRoundAndOthersFlat) {
    LookDown();
    core.SetAmbient({0, 0, 0});
    AddLight(DIRECT_LGT, {0, 0, 10}, {0, 0, 0});
    // A roof with its ridge along y.
    Mesh roof;
    roof.verts = {{-4, -4, 0}, {0, -4, 4}, {0, 4, 4}, {-4, 4, 0}, {4, -4, 0}, {4, 4, 0}};
    const int faces[][3] = {{0, 1, 2}, {0, 2, 3}, {1, 4, 5}, {1, 5, 2}};
    for (const auto& v : faces) {
        Face f;
        for (int i = 0; i < 3; ++i) f.v[i] = v[i];
        roof.faces.push_back(f);
    }
    Node* const node = AddMesh("roof", roof, AddMaterial({1, 1, 1}));
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(19, 15).r, std::sqrt(0.5f), 1e-4f);
    EXPECT_NEAR(ColorAt(20, 15).r, std::sqrt(0.5f), 1e-4f);
    for (Face& f : static_cast<TriObject*>(node->GetObjectRef())->mesh.faces) f.smGroup = 4;
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_GT(ColorAt(19, 15).r, 0.98f); // near the ridge the normal points up
    EXPECT_NEAR(ColorAt(12, 15).r, std::sqrt(0.5f), 0.03f);
}

TEST_F(SurfaceTest, NormalsFollowUnevenScale) {
    LookDown();
    core.SetAmbient({0, 0, 0});
    AddLight(DIRECT_LGT, {0, 0, 10}, {0, 0, 0});
    Mesh slope = PlaneMesh(3);
    for (Point3& v : slope.verts) v.z = v.x; // 45 degrees
    AddMesh("slope", slope, AddMaterial({1, 1, 1}))->SetNodeTM(0, ScaleMatrix({1, 1, std::sqrt(3.0f)}));
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 0.5f, 1e-4f); // 60 degrees
}

TEST_F(SurfaceTest, EnvironmentMapsAreSeenBehindEverything) {
    AddCamera({0, 0, 0}, {0, 1, 0}, float(M_PI / 2));
    auto* const sky = core.Adopt(new CheckerMap);
    sky->Params()->SetValue(kMapSource, 0, int(kMapSphere));
    sky->Params()->SetValue(kCheckerColor1, 0, Color(1, 0, 0));
    sky->Params()->SetValue(kCheckerColor2, 0, Color(0, 1, 0));
    core.SetEnvironmentMap(sky);
    ASSERT_EQ(Render(), FrameResult::kDone);
    // u and v change halves at +Y and at the horizon.
    ExpectColor(picture.GetBackground(5, 5), Color(0, 1, 0), 1e-5f);
    ExpectColor(picture.GetBackground(35, 5), Color(1, 0, 0), 1e-5f);
    ExpectColor(picture.GetBackground(5, 25), Color(1, 0, 0), 1e-5f);
    ExpectColor(picture.GetBackground(35, 25), Color(0, 1, 0), 1e-5f);
    EXPECT_EQ(AlphaAt(5, 5), 0.0f);
    ExpectColor(picture.Shown(5, 5), Color(0, 1, 0), 1e-5f);
}

/// Answers every question with a colour and counts.
class TintGenerator : public ShadowGenerator {
public:
    explicit TintGenerator(std::string& log) : log_(log) {}
    ~TintGenerator() override { log_ += "gone "; }
    int Update(TimeValue t, RenderGlobalContext* rgc, const Matrix3& lightToWorld) override {
        log_ += "update" + std::to_string(t) + (rgc && lightToWorld.GetTrans() == Point3(0, 0, 10) ? "+" : "-") + " ";
        return 1;
    }
    int UpdateViewDepParams(const Matrix3&) override { return log_ += "view ", 1; }
    Color Sample(ShadeContext& sc, const Point3& p) override {
        EXPECT_EQ(p, sc.P());
        return {0.5f, 0.25f, 1};
    }

private:
    std::string& log_;
};

class TintShadow : public ShadowType {
public:
    ~TintShadow() override { DeleteAllRefs(); }
    ShadowGenerator* CreateShadowGenerator(LightObject*, ObjLightDesc* desc, uint32_t) override {
        EXPECT_NE(desc, nullptr);
        return new TintGenerator(log);
    }
    std::string log;
};

TEST_F(SurfaceTest, TheLightsOwnShadowTypeMultipliesIn) {
    LookDown();
    core.SetAmbient({0, 0, 0});
    TintShadow type;
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 10}, {0, 0, 0});
    light->SetShadowType(&type);
    AddMesh("plane", PlaneMesh(4), AddMaterial({1, 1, 1}));
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(type.log, "gone "); // shadows are off
    EXPECT_NEAR(ColorAt(20, 15).g, 1, 1e-5f);
    type.log.clear();
    light->Params()->SetValue(kLightShadows, 0, 1);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(type.log, "update0+ view gone ");
    ExpectColor(ColorAt(20, 15), {0.5f, 0.25f, 1}, 1e-5f);
    light->SetShadowType(nullptr);
}

/// Asks a light from points of its own, as strands do: contexts that are no surface.
class PointContext : public ShadeContext {
public:
    TimeValue CurTime() override { return 0; }
    Point3 V() override { return Normalize(p); }
    Point3 P() override { return p; }
    Point3 PObj() override { return p; }
    Point3 p;
};

class LightProbe : public Atmospheric {
public:
    void Shade(ShadeContext& sc, const Point3&, const Point3&, Color&, Color&, bool) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (asked++ > 0) return;
        RenderGlobalContext* const g = sc.globContext;
        lights = g->NumLights();
        instanceLights = int(g->GetRenderInstance(0)->lights.size());
        ask(*g);
    }
    int asked = 0, lights = 0, instanceLights = 0;
    std::function<void(RenderGlobalContext&)> ask;

private:
    std::mutex mutex_;
};

TEST_F(SurfaceTest, LightsAnswerForAnyPoint) {
    AddCamera({0, -10, 0}, {0, 0, 0},
              float(M_PI / 2)); // camera x = world x, camera y = world z, camera z = -world y - 10
    AddMesh("blocker", PlaneMesh(1), nullptr)->SetNodeTM(0, TransMatrix({0, 0, 2}));
    AddLight(OMNI_LGT, {0, 0, 4}, {0, 0, 0}, {1, 0.5f, 0.25f})->Params()->SetValue(kLightShadows, 0, 1);
    AddLight(OMNI_LGT, {0, 0, 4}, {0, 0, 0})->Params()->SetValue(kLightOn, 0, 0);
    LightProbe probe;
    probe.ask = [](RenderGlobalContext& g) {
        PointContext sc;
        Color color;
        Point3 dir;
        float dot = 0, coef = 0;
        LightDesc& light = *g.GetLight(0);
        sc.p = Point3(0, 0, 0) * g.worldToCam;
        ASSERT_TRUE(light.Illuminate(sc, {0, 1, 0}, color, dir, dot, coef));
        EXPECT_EQ(color, Color(1, 0.5f, 0.25f)); // nobody asked for shadows
        EXPECT_NEAR(Length(dir - Point3(0, 1, 0)), 0, 1e-6f);
        EXPECT_NEAR(dot, 1, 1e-6f);
        EXPECT_EQ(dot, coef);
        sc.shadow = 1;
        EXPECT_FALSE(light.Illuminate(sc, {0, 1, 0}, color, dir, dot, coef));
        sc.p = Point3(3, 0, 0) * g.worldToCam;
        EXPECT_TRUE(light.Illuminate(sc, {0, 1, 0}, color, dir, dot, coef));
        EXPECT_NEAR(dot, 0.8f, 1e-6f);
        EXPECT_NEAR(Length(dir - Point3(-0.6f, 0.8f, 0)), 0, 1e-6f);
        EXPECT_FALSE(light.Illuminate(sc, {0, -1, 0}, color, dir, dot, coef)); // turned away
        EXPECT_TRUE(light.Illuminate(sc, {0, 5, 0}, color, dir, dot, coef));   // any length of normal
        EXPECT_NEAR(dot, 4, 1e-5f);
        sc.p = Point3(0, 0, 4) * g.worldToCam; // in the light itself
        EXPECT_FALSE(light.Illuminate(sc, {0, 1, 0}, color, dir, dot, coef));
    };
    core.AddAtmosphere(&probe);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(probe.lights, 1);
    EXPECT_EQ(probe.instanceLights, 1);
}

TEST_F(SurfaceTest, LightTintScalesLights) {
    LookDown();
    core.SetAmbient({0, 0, 0});
    core.SetLightTint({0.5f, 1, 0});
    AddLight(DIRECT_LGT, {0, 0, 10}, {0, 0, 0});
    AddMesh("plane", PlaneMesh(4), AddMaterial({1, 1, 1}));
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(ColorAt(20, 15), {0.5f, 1, 0}, 1e-5f);
}

/// Keeps what a surface's context answers.
class ContextMtl : public Mtl {
public:
    ~ContextMtl() override { DeleteAllRefs(); }
    void Shade(ShadeContext& sc) override {
        sc.out.c = {1, 1, 1};
        if (!(sc.ScreenCoord() == IPoint2(22, 13))) return;
        const std::lock_guard<std::mutex> lock(mutex_);
        ++asked;
        ask(sc);
    }
    int asked = 0;
    std::function<void(ShadeContext&)> ask;

private:
    std::mutex mutex_;
};

TEST_F(SurfaceTest, TheContextKnowsItsPlace) {
    LookDown();
    ContextMtl material;
    Mesh mesh = PlaneMesh(4);
    for (Face& f : mesh.faces) f.SetMatID(3);
    Node* const node = AddMesh("plane", mesh, &material);
    node->SetNodeTM(0, TransMatrix({0, 0, 1}));
    material.ask = [&](ShadeContext& sc) {
        // Pixel (22, 13): world (1.25, 0.75, 1), 9 below the camera.
        EXPECT_NEAR(Length(sc.P() - Point3(1.25f, 0.75f, -9)), 0, 1e-5f);
        EXPECT_NEAR(Length(sc.PObj() - Point3(1.25f, 0.75f, 0)), 0, 1e-5f);
        EXPECT_NEAR(Length(sc.PointTo(sc.P(), REF_WORLD) - Point3(1.25f, 0.75f, 1)), 0, 1e-5f);
        EXPECT_NEAR(Length(sc.PointFrom(sc.PObj(), REF_OBJECT) - sc.P()), 0, 1e-5f);
        EXPECT_NEAR(Length(sc.UVW(1) - Point3(5.25f / 8, 4.75f / 8, 0)), 0, 1e-6f);
        EXPECT_EQ(sc.UVW(2), Point3());
        EXPECT_EQ(sc.Normal(), Point3(0, 0, 1));
        EXPECT_EQ(sc.V(), Point3(0, 0, -1));
        EXPECT_EQ(sc.ProjType(), 1);
        EXPECT_EQ(sc.Node(), node);
        EXPECT_EQ(sc.NodeID(), 0);
        EXPECT_EQ(sc.mtlNum, 3);
        EXPECT_EQ(sc.FaceNumber(), 0);
        EXPECT_EQ(sc.backFace, 0);
        EXPECT_NE(sc.globContext, nullptr);
        EXPECT_EQ(sc.ambientLight, Color(1, 1, 1));
        const Point3 bary = sc.BarycentricCoords();
        EXPECT_NEAR(bary.x + bary.y + bary.z, 1, 1e-6f);
        Point2 uv, duv;
        sc.ScreenUV(uv, duv);
        EXPECT_FLOAT_EQ(uv.x, 22.5f / 40);
        EXPECT_FLOAT_EQ(uv.y, 1 - 13.5f / 30);
        Point3 dP[3];
        sc.DPdUVW(dP, 1);
        EXPECT_NEAR(Length(dP[0] - Point3(8, 0, 0)), 0, 1e-5f);
        EXPECT_NEAR(Length(dP[1] - Point3(0, 8, 0)), 0, 1e-5f);
        EXPECT_NEAR(Length(sc.PObjRelBox() - Point3(1.25f / 4, 0.75f / 4, 0)), 0, 1e-5f);
        EXPECT_NEAR(Length(sc.ReflectVector() - Point3(0, 0, 1)), 0, 1e-6f);
        EXPECT_NEAR(Length(sc.RefractVector(1.5f) - Point3(0, 0, -1)), 0, 1e-6f);
        Color bg, clear;
        sc.GetBGColor(bg, clear);
        EXPECT_EQ(bg, Color(0.25f, 0.5f, 0.75f));
        EXPECT_EQ(clear, Color(1, 1, 1));
    };
    core.SetBackGround({0.25f, 0.5f, 0.75f});
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_GE(material.asked, 1);
    node->SetMtl(nullptr);
}

} // namespace
} // namespace host
