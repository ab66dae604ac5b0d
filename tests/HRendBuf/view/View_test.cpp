#include <gtest/gtest.h>

#include "Base/HairMath.h"
#include "HRendBuf/HairImageInfo.h"
#include "HRendBuf/ViewParamsEx.h"
#include "core/camera.h"
#include "core/core.h"
#include "sdk/bitmap.h"

namespace {

class PlainBitmap : public Bitmap {
public:
    RenderInfo info;
    bool hasInfo = true;
    int Width() const override { return 320; }
    int Height() const override { return 200; }
    float Aspect() const override { return 1.5f; }
    AColor GetPixel(int, int) const override { return {}; }
    void PutPixel(int, int, const AColor&) override {}
    void* GetChannel(uint32_t, ChannelType& type) override {
        type = CHANNEL_NONE;
        return nullptr;
    }
    RenderInfo* GetRenderInfo() override { return hasInfo ? &info : nullptr; }
};

/// A context that answers the projection extensions.
class CustomContext : public RenderGlobalContext {
public:
    bool refuses = false;
    int camera = -1;
    void* Execute(int cmd, void* arg1, void* arg2, void* arg3) override {
        if (cmd == 0x1b5c) return this;
        if (cmd != 0x1b64 || refuses) return nullptr;
        const auto* p = static_cast<const Point3*>(arg2);
        *static_cast<Point2*>(arg1) = {p->x + 1000, p->y + 2000};
        camera = int(reinterpret_cast<intptr_t>(arg3));
        return this;
    }
};

} // namespace

TEST(HairImageInfo, PerspectiveProjectionByHand) {
    ViewParamsEx view;
    view.fov = HairMath::kHalfPi;
    HairImageInfo image;
    image.SetSize(640, 480, 1.0f);
    image.ComputeScales(view);
    EXPECT_NEAR(image.scaleX, -320.0f, 1e-3f);
    EXPECT_NEAR(image.scaleY, 320.0f, 1e-3f);
    const Point2 p = image.MapCamToScreen({1, 1, -2});
    EXPECT_NEAR(p.x, 480.0f, 1e-3f);
    EXPECT_NEAR(p.y, 80.0f, 1e-3f);
    EXPECT_EQ(image.MapCamToScreen({1, 1, 0}), Point2(0, 0));
    EXPECT_EQ(image.MapCamToScreen({1, 1, 3}), Point2(0, 0));
}

TEST(HairImageInfo, ParallelProjectionByHand) {
    ViewParamsEx view;
    view.projType = PROJ_PARALLEL;
    view.zoom = 0.5f;
    HairImageInfo image;
    image.SetSize(400, 200, 2.0f);
    image.ComputeScales(view);
    EXPECT_EQ(image.scaleX, 2.0f);
    EXPECT_EQ(image.scaleY, -4.0f);
    EXPECT_EQ(image.MapCamToScreen({10, 5, 7}), Point2(220, 80));
}

TEST(HairImageInfo, FromContext) {
    RenderGlobalContext context;
    context.devWidth = 100, context.devHeight = 50, context.devAspect = 2;
    context.xc = 40, context.yc = 20, context.xscale = -30, context.yscale = 60;
    HairImageInfo image;
    EXPECT_TRUE(image.SetFromContext(&context, 3));
    EXPECT_FALSE(image.SetFromContext(&context, 3));
    EXPECT_EQ(image.widthF, 100.0f);
    EXPECT_EQ(image.centreX, 40.0f);
    EXPECT_EQ(image.cameraIndex, 3);
    EXPECT_FALSE(image.hasCustomProjection);
    image.ComputeScales(ViewParamsEx());
    EXPECT_EQ(image.scaleX, -30.0f);
    EXPECT_EQ(image.scaleY, 60.0f);
    EXPECT_EQ(image.MapCamToScreen({1, 1, -2}), Point2(55, -10));
    context.fieldRender = true;
    EXPECT_EQ(image.MapCamToScreen({1, 1, -2}), Point2(55, -20));
    context.devAspect = 1;
    EXPECT_TRUE(image.SetFromContext(&context, 3));
}

TEST(HairImageInfo, CustomProjection) {
    CustomContext context;
    context.devWidth = context.devHeight = 10;
    HairImageInfo image;
    image.SetFromContext(&context, 5);
    EXPECT_TRUE(image.hasCustomProjection);
    EXPECT_EQ(image.MapCamToScreen({1, 2, -1}), Point2(1001, 2002));
    EXPECT_EQ(context.camera, 5);
    context.refuses = true;
    EXPECT_EQ(image.MapCamToScreen({1, 2, -1}), Point2(-1, -2));
}

TEST(HairImageInfo, WithoutContextTheHostsSettingsRule) {
    host::Core core;
    const host::Core::Scope scope(core);
    core.RenderParams().width = 77;
    core.RenderParams().height = 33;
    core.RenderParams().devAspect = 1.25f;
    HairImageInfo image;
    EXPECT_TRUE(image.SetFromContext(nullptr, 0));
    EXPECT_EQ(image.width, 77);
    EXPECT_EQ(image.aspect, 1.25f);
    EXPECT_EQ(image.centreX, 38.5f);
}

TEST(HairImageInfo, FromBitmap) {
    PlainBitmap bitmap;
    bitmap.info.xscale[0] = -7, bitmap.info.yscale[0] = 9, bitmap.info.xc = 1, bitmap.info.yc = 2;
    HairImageInfo image;
    EXPECT_TRUE(image.SetFromBitmap(bitmap));
    EXPECT_EQ(image.width, 320);
    EXPECT_EQ(image.centreY, 100.0f);
    EXPECT_EQ(image.aspect, 1.5f);
    image.ComputeScales(ViewParamsEx());
    EXPECT_EQ(image.scaleX, -7.0f);
    EXPECT_EQ(image.MapCamToScreen({2, 2, -1}), Point2(15, -16));
    bitmap.hasInfo = false;
    EXPECT_FALSE(image.SetFromBitmap(bitmap));
    image.SetSize(4, 4, 1);
    EXPECT_EQ(image.renderInfo, nullptr);
}

TEST(HairImageInfo, ClampToImage) {
    HairImageInfo image;
    image.SetSize(10, 20, 1);
    EXPECT_EQ(image.ClampToImage({-3, -0.5f}), Point2(0, 0));
    EXPECT_EQ(image.ClampToImage({10, 20}), Point2(9, 19));
    EXPECT_EQ(image.ClampToImage({9.5f, 19.9f}), Point2(9.5f, 19.9f));
}

TEST(ViewParamsEx, ContextTakenOverOnce) {
    RenderGlobalContext context;
    context.projType = PROJ_PARALLEL;
    context.nearRange = 5, context.farRange = 2;
    ViewParamsEx view;
    view.cameraNode = reinterpret_cast<INode*>(&context);
    EXPECT_TRUE(view.SetFromContext(context)); // also when its matrix is the identity
    EXPECT_EQ(view.cameraNode, nullptr);
    EXPECT_EQ(view.projType, PROJ_PARALLEL);
    EXPECT_EQ(view.nearRange, 0.0f);
    EXPECT_EQ(view.farRange, 1000.0f);
    context.farRange = 9;
    EXPECT_FALSE(view.SetFromContext(context));
    EXPECT_EQ(view.farRange, 1000.0f);
    context.camToWorld = TransMatrix({1, 2, 3});
    EXPECT_TRUE(view.SetFromContext(context));
    EXPECT_EQ(view.nearRange, 5.0f);
    EXPECT_EQ(view.farRange, 9.0f);
    EXPECT_EQ(view.worldToCam.GetTrans(), Point3(-1, -2, -3));
    EXPECT_EQ(view.affineTM, view.worldToCam);
}

TEST(ViewParamsEx, NormalisedCameraMatrix) {
    ViewParamsEx view;
    const Matrix3 skewed({3, 0, 0}, {1, 2, 0}, {0, 0, 4}, {7, 8, 9});
    view.SetLight(PROJ_PERSPECTIVE, skewed, 1, 100, 0, 1);
    const Matrix3& m = view.camToWorldN;
    EXPECT_EQ(m.GetRow(2), Point3(0, 0, 1));
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(Length(m.GetRow(i)), 1.0f, 1e-6f);
        EXPECT_NEAR(DotProd(m.GetRow(i), m.GetRow((i + 1) % 3)), 0.0f, 1e-6f);
    }
    EXPECT_EQ(m.GetTrans(), Point3(7, 8, 9));
    view.SetLight(PROJ_PERSPECTIVE, ScaleMatrix({-2, 2, 2}), 1, 100, 0, 1);
    EXPECT_LT(view.camToWorldN.Determinant(), 0.0f); // a mirrored camera stays mirrored
}

TEST(ViewParamsEx, LightView) {
    ViewParamsEx view;
    view.SetLight(PROJ_PARALLEL, TransMatrix({0, 0, 5}), 10, 10, 0.25f, 0.5f);
    EXPECT_EQ(view.zoom, 0.25f);
    EXPECT_EQ(view.fov, 0.5f);
    EXPECT_EQ(view.nearRange, 0.0f);
    EXPECT_EQ(view.farRange, 1000.0f);
    EXPECT_EQ(view.worldToCam.GetTrans(), Point3(0, 0, -5));
}

TEST(ViewParamsEx, FromRenderInfo) {
    PlainBitmap bitmap;
    bitmap.info.projType = 1;
    bitmap.info.camToWorld[1] = TransMatrix({4, 0, 0});
    ViewParamsEx view;
    EXPECT_TRUE(view.SetFromRenderInfo(bitmap, 1));
    EXPECT_EQ(view.projType, PROJ_PARALLEL);
    EXPECT_EQ(view.camToWorld.GetTrans(), Point3(4, 0, 0));
    bitmap.hasInfo = false;
    EXPECT_FALSE(view.SetFromRenderInfo(bitmap, 0));
}

TEST(ViewParamsEx, ActiveViewport) {
    host::Core core;
    const host::Core::Scope scope(core);
    ViewParamsEx view;
    EXPECT_FALSE(view.SetFromViewport(0)); // a free view has no camera
    EXPECT_EQ(core.ViewportsInUse(), 0);

    auto* camera = new host::TargetCamera;
    host::Node* node = core.CreateNode("cam", camera);
    node->SetNodeTM(0, TransMatrix({0, 0, 10}));
    core.SetViewportCamera(node);
    IParamBlock2* params = camera->Params();
    params->SetValue(host::kCamFov, 0, 1.25f);
    params->SetValue(host::kCamNearRange, 0, 3.0f);
    params->SetValue(host::kCamFarRange, 0, 30.0f);
    EXPECT_TRUE(view.SetFromViewport(160));
    EXPECT_EQ(core.ViewportsInUse(), 0);
    EXPECT_EQ(view.cameraNode, node);
    EXPECT_EQ(view.projType, PROJ_PERSPECTIVE);
    EXPECT_EQ(view.fov, 1.25f);
    EXPECT_EQ(view.nearRange, 3.0f);
    EXPECT_EQ(view.farRange, 30.0f);
    EXPECT_EQ(view.camToWorld.GetTrans(), Point3(0, 0, 10));

    params->SetValue(host::kCamManualClip, 0, 1);
    params->SetValue(host::kCamHither, 0, 8.0f);
    params->SetValue(host::kCamYon, 0, 8.0f);
    params->SetValue(host::kCamOrtho, 0, 1);
    EXPECT_TRUE(view.SetFromViewport(160));
    EXPECT_EQ(view.projType, PROJ_PARALLEL);
    EXPECT_EQ(view.nearRange, 0.0f);
    EXPECT_EQ(view.farRange, 1000.0f);
}

TEST(ViewParamsEx, WithoutHostThereIsNoViewport) {
    ASSERT_EQ(GetCOREInterface(), nullptr);
    ViewParamsEx view;
    EXPECT_FALSE(view.SetFromViewport(0));
}

TEST(ViewParamsEx, NodeMatrix) {
    ViewParamsEx view;
    const Matrix3 m = TransMatrix({1, 0, 0});
    view.SetNodeMatrix(&m);
    EXPECT_TRUE(view.hasNodeMatrix);
    EXPECT_EQ(view.nodeMatrix, m);
    view.SetNodeMatrix(nullptr);
    EXPECT_FALSE(view.hasNodeMatrix);
}
