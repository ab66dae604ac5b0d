// Projections, depth ranges, what the context tells.

#include <algorithm>
#include <cmath>

#include "core/error.h"
#include "render/camera_view.h"
#include "scene_fixture.h"
#include "sdk/atmos.h"

namespace host {
namespace {

/// Keeps what an effect can see of a render.
class ContextProbe : public Atmospheric {
public:
    void Shade(ShadeContext& sc, const Point3&, const Point3&, Color&, Color&, bool) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (calls++ > 0) return;
        const RenderGlobalContext& g = *sc.globContext;
        projType = g.projType;
        width = g.devWidth, height = g.devHeight;
        xscale = g.xscale, yscale = g.yscale, xc = g.xc, yc = g.yc;
        nearRange = g.nearRange, farRange = g.farRange;
        camToWorld = g.camToWorld;
        instances = sc.globContext->NumRenderInstances();
        threads = GetCOREInterface()->GetRendParams().maxThreads;
        viewCamera = GetCOREInterface()->GetActiveViewport()->GetViewCamera();
        renderer = GetCOREInterface()->GetCurrentRenderer()->ClassID();
    }
    int calls = 0, projType = -1, width = 0, height = 0, instances = -1, threads = -1;
    float xscale = 0, yscale = 0, xc = 0, yc = 0, nearRange = 0, farRange = 0;
    Matrix3 camToWorld;
    INode* viewCamera = nullptr;
    Class_ID renderer;

private:
    std::mutex mutex_;
};

class ViewTest : public SceneTest {
protected:
    void Probe() {
        core.AddAtmosphere(&probe);
        ASSERT_EQ(Render(), FrameResult::kDone);
        ASSERT_GT(probe.calls, 0);
    }
    ContextProbe probe;
};

TEST_F(ViewTest, PerspectiveScalesFollowTheRule) {
    AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    settings.pixelAspect = 2;
    Probe();
    EXPECT_EQ(probe.projType, PROJ_PERSPECTIVE);
    EXPECT_EQ(probe.width, 40);
    EXPECT_EQ(probe.height, 30);
    EXPECT_EQ(probe.xc, 20.0f);
    EXPECT_EQ(probe.yc, 15.0f);
    EXPECT_NEAR(probe.xscale, -20.0f, 1e-5f);
    EXPECT_NEAR(probe.yscale, 40.0f, 1e-5f);
    EXPECT_EQ(probe.camToWorld.GetTrans(), Point3(0, 0, 10));
    EXPECT_EQ(probe.threads, 2);
    EXPECT_EQ(probe.viewCamera, core.GetINodeByName("cam"));
    EXPECT_EQ(probe.renderer, SREND_CLASS_ID);
}

TEST_F(ViewTest, ParallelViewIsAsWideAsThePerspectiveOneAtTheTarget) {
    TargetCamera* const camera = AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    camera->Params()->SetValue(kCamOrtho, 0, 1);
    Probe();
    EXPECT_EQ(probe.projType, PROJ_PARALLEL);
    EXPECT_NEAR(probe.xscale, 2.0f, 1e-5f); // 40 pixels on 2 * 10 * tan 45
    EXPECT_NEAR(probe.yscale, -2.0f, 1e-5f);
}

TEST_F(ViewTest, ATargetNodeGivesTheDistance) {
    TargetCamera* const camera = AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    camera->Params()->SetValue(kCamOrtho, 0, 1);
    Node* const target = core.CreateNode("target");
    target->SetNodeTM(0, TransMatrix({0, 0, 5}));
    static_cast<Node*>(core.GetINodeByName("cam"))->SetTarget(target);
    const CameraView view = MakeCameraView(core.GetINodeByName("cam"), 0, 40, 30, 1);
    EXPECT_NEAR(view.xscale, 4.0f, 1e-5f);
}

TEST_F(ViewTest, RaysThroughAPointsPictureHitThePoint) {
    for (const bool ortho : {false, true}) {
        TargetCamera* const camera = AddCamera({3, -4, 5}, {0, 0, 1}, 0.7f);
        camera->Params()->SetValue(kCamOrtho, 0, ortho ? 1 : 0);
        Node* const node = static_cast<Node*>(core.AllNodes().back());
        const CameraView view = MakeCameraView(node, 0, 320, 200, 1.25f);
        RenderGlobalContext g;
        g.projType = view.projType;
        g.xscale = view.xscale, g.yscale = view.yscale, g.xc = view.xc, g.yc = view.yc;
        for (const Point3& world : {Point3(0, 0, 1), Point3(0.5f, -0.25f, 0.75f), Point3(-1, 0.3f, 2)}) {
            const Point3 p = world * view.worldToCam;
            ASSERT_LT(p.z, 0.0f);
            const Point2 screen = g.MapToScreen(p);
            Point3 from, direction;
            view.RayThrough(screen.x, screen.y, from, direction);
            const Point3 hit = from + direction * -p.z;
            EXPECT_NEAR(Length(hit - p), 0, 2e-5f);
        }
        const Point2 middle = g.MapToScreen(Point3(0, 0, 1) * view.worldToCam);
        EXPECT_NEAR(middle.x, 160, 1e-3f);
        EXPECT_NEAR(middle.y, 100, 1e-3f);
    }
}

// Four small plates, each seen in the pixel that the projection names.
TEST_F(ViewTest, KnownPointsLandOnTheRightPixel) {
    for (const bool ortho : {false, true}) {
        core.ResetScene();
        TargetCamera* const camera = AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
        camera->Params()->SetValue(kCamOrtho, 0, ortho ? 1 : 0);
        // Perspective at depth 10 and the parallel view agree: 2 pixels a unit.
        const Point3 places[] = {{0.25f, 0.25f, 0}, {5.25f, 3.25f, 0}, {-7.25f, 6.25f, 0}, {9.25f, -4.75f, 0}};
        const IPoint2 pixels[] = {{20, 14}, {30, 8}, {5, 2}, {38, 24}};
        settings.samples = 1;
        for (int i = 0; i < 4; ++i) {
            Node* const node = AddMesh("plate", PlaneMesh(0.2f), nullptr);
            node->SetNodeTM(0, TransMatrix(places[i]));
        }
        ASSERT_EQ(Render(), FrameResult::kDone);
        int covered = 0;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) covered += AlphaAt(x, y) > 0.5f;
        EXPECT_EQ(covered, 4);
        for (const IPoint2& p : pixels) {
            EXPECT_EQ(AlphaAt(p.x, p.y), 1.0f) << p.x << " " << p.y;
            EXPECT_NEAR(DepthAt(p.x, p.y), -10.0f, 1e-4f);
        }
    }
}

// The range must not follow what moves in the scene: hair would merge differently from frame to frame.
TEST_F(ViewTest, TheUsualRangeDoesNotDependOnTheScene) {
    AddCamera({0, 0, 10}, {0, 0, 0});
    AddMesh("box", BoxMesh({-1, -1, -2}, {1, 1, 3}), nullptr);
    Probe();
    EXPECT_EQ(probe.instances, 1);
    EXPECT_EQ(probe.nearRange, 0.0f);
    EXPECT_EQ(probe.farRange, 1000.0f);
}

TEST_F(ViewTest, TheCamerasOwnRangesWin) {
    TargetCamera* const camera = AddCamera({0, 0, 10}, {0, 0, 0});
    AddMesh("box", BoxMesh({-1, -1, -2}, {1, 1, 3}), nullptr);
    camera->Params()->SetValue(kCamNearRange, 0, 2.0f);
    camera->Params()->SetValue(kCamFarRange, 0, 50.0f);
    CameraView view = MakeCameraView(core.GetINodeByName("cam"), 0, 40, 30, 1);
    EXPECT_EQ(view.nearRange, 2.0f);
    EXPECT_EQ(view.farRange, 50.0f);
    camera->Params()->SetValue(kCamManualClip, 0, 1);
    camera->Params()->SetValue(kCamHither, 0, 8.0f);
    camera->Params()->SetValue(kCamYon, 0, 11.0f);
    Probe();
    EXPECT_EQ(probe.nearRange, 8.0f);
    EXPECT_EQ(probe.farRange, 11.0f);
    // The box's front at depth 7 is cut away; its back, at 12, lies beyond the far end.
    EXPECT_EQ(AlphaAt(20, 15), 0.0f);
    camera->Params()->SetValue(kCamYon, 0, 13.0f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(DepthAt(20, 15), -12.0f, 1e-4f);
}

TEST_F(ViewTest, ScaledCameraNodesSeeTheSame) {
    AddCamera({0, 0, 10}, {0, 0, 0});
    const Matrix3 plain = core.GetINodeByName("cam")->GetNodeTM(0);
    core.GetINodeByName("cam")->SetNodeTM(0, ScaleMatrix({2, 3, 4}) * plain);
    const CameraView view = MakeCameraView(core.GetINodeByName("cam"), 0, 40, 30, 1);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(Length(view.camToWorld.GetRow(i) - plain.GetRow(i)), 0, 1e-6f);
}

TEST_F(ViewTest, RollTurnsAboutTheViewAxis) {
    TargetCamera* const camera = AddCamera({0, 0, 10}, {0, 0, 0});
    INode* const node = core.GetINodeByName("cam");
    const CameraView level = MakeCameraView(node, 0, 40, 30, 1);
    camera->Params()->SetValue(kCamRoll, 0, float(M_PI / 2));
    const CameraView rolled = MakeCameraView(node, 0, 40, 30, 1);
    EXPECT_NEAR(Length(rolled.camToWorld.GetRow(0) + level.camToWorld.GetRow(1)), 0, 1e-6f);
    EXPECT_NEAR(Length(rolled.camToWorld.GetRow(1) - level.camToWorld.GetRow(0)), 0, 1e-6f);
    EXPECT_EQ(rolled.camToWorld.GetRow(2), level.camToWorld.GetRow(2));
    // What was to the right is up now: the picture turned counter-clockwise.
    const Point3 right = (Point3(1, 0, -5) * level.camToWorld) * rolled.worldToCam;
    EXPECT_NEAR(right.y, 1, 1e-5f);
    EXPECT_NEAR(right.x, 0, 1e-5f);
}

TEST_F(ViewTest, FreeCamerasLookWhereTheirNodeIsTurnedTo) {
    auto* const camera = static_cast<FreeCamera*>(core.CreateInstance(CAMERA_CLASS_ID, SIMPLE_CAM_CLASS_ID));
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->ClassID(), SIMPLE_CAM_CLASS_ID);
    camera->Params()->SetValue(kCamFov, 0, 1.25f);
    Node* const node = core.CreateNode("free", camera);
    node->SetNodeTM(0, LookAtMatrix({0, -5, 0}, {0, 0, 0}));
    const CameraView view = MakeCameraView(node, 0, 40, 30, 1);
    EXPECT_NEAR(Length(Point3(0, 0, 0) * view.worldToCam - Point3(0, 0, -5)), 0, 1e-5f);
    RemapDir remap;
    auto* const copy = static_cast<FreeCamera*>(camera->Clone(remap));
    EXPECT_EQ(copy->ClassID(), SIMPLE_CAM_CLASS_ID);
    EXPECT_EQ(copy->Params()->GetFloat(kCamFov), 1.25f);
    copy->DeleteThis();
}

TEST_F(ViewTest, CamerasAreFoundByNameOrBecauseThereIsOne) {
    EXPECT_THROW(FindCamera(core, ""), Error);
    AddCamera({0, 0, 10}, {0, 0, 0});
    EXPECT_EQ(FindCamera(core, ""), core.GetINodeByName("cam"));
    EXPECT_EQ(FindCamera(core, "cam"), core.GetINodeByName("cam"));
    core.CreateNode("camera2", new TargetCamera);
    try {
        FindCamera(core, "camra2");
        ADD_FAILURE();
    } catch (const Error& e) {
        EXPECT_STREQ(e.what(), "there is no camera 'camra2', expected one of 'camera2', 'cam'");
    }
    EXPECT_THROW(FindCamera(core, ""), Error);
    core.SetViewportCamera(core.GetINodeByName("camera2"));
    EXPECT_EQ(FindCamera(core, ""), core.GetINodeByName("camera2"));
}

} // namespace
} // namespace host
