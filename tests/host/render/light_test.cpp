// Lights on surfaces, against closed forms.

#include <cmath>

#include "light_fixture.h"
#include "materials/checker_map.h"

namespace host {
namespace {

TEST_F(LightTest, LambertSphereUnderADirectLight) {
    settings.samples = 1;
    TargetCamera* const camera = AddCamera({0, 0, 10}, {0, 0, 0}, 2 * std::atan(0.15f));
    camera->Params()->SetValue(kCamOrtho, 0, 1);
    AddMesh("sphere", SphereMesh(128), AddMaterial({0.5f, 0.25f, 1}));
    Light* const light = AddLight(DIRECT_LGT, {10, 0, 10}, {0, 0, 0}, {1, 1, 0.5f});
    light->Params()->SetValue(kLightMultiplier, 0, 0.8f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    const Point3 toLight = Normalize({1, 0, 1});
    int inside = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const float px = (float(x) + 0.5f - 20) * 3 / 40, py = -(float(y) + 0.5f - 15) * 3 / 40;
            const float rr = px * px + py * py;
            if (rr > 1.01f) {
                EXPECT_EQ(AlphaAt(x, y), 0.0f);
            }
            if (rr > 0.9f) continue;
            ++inside;
            const Point3 n(px, py, std::sqrt(1 - rr));
            const float d = std::max(DotProd(n, toLight), 0.0f) * 0.8f;
            ExpectColor(ColorAt(x, y), {0.5f * d, 0.25f * d, 0.5f * d}, 2e-3f);
            EXPECT_EQ(AlphaAt(x, y), 1.0f);
            EXPECT_NEAR(DepthAt(x, y), n.z - 10, 2e-3f);
        }
    EXPECT_GT(inside, 400);
}

TEST_F(LightTest, AmbientLightAndNoLight) {
    AddGround();
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(20, 15), Color());
    core.SetAmbient({0.1f, 0.2f, 0.3f});
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(ColorAt(20, 15), {0.1f, 0.2f, 0.3f}, 1e-6f);
}

TEST_F(LightTest, PlaneUnderAnOmni) {
    AddGround();
    AddLight(OMNI_LGT, {1, 0, 3}, {0, 0, 0});
    ASSERT_EQ(Render(), FrameResult::kDone);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const Point3 way = Point3(1, 0, 3) - GroundPoint(x, y);
            const float cosine = 3.0f / Length(way);
            ExpectColor(ColorAt(x, y), {cosine, cosine, cosine}, 1e-4f);
        }
}

TEST_F(LightTest, SpotConeEdgesAndFade) {
    settings.samples = 1;
    AddGround();
    Light* const light = AddLight(SPOT_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightHotspot, 0, 30.0f);
    light->Params()->SetValue(kLightFalloff, 0, 60.0f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    const float full = std::cos(15 * float(M_PI) / 180), none = std::cos(30 * float(M_PI) / 180);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const float cosine = 4 / Length(Point3(0, 0, 4) - GroundPoint(x, y));
            const float s = std::min(std::max((cosine - none) / (full - none), 0.0f), 1.0f);
            const float expected = s * s * (3 - 2 * s) * cosine;
            ExpectColor(ColorAt(x, y), {expected, expected, expected}, 1e-4f);
        }
    // Falloff radius 4 tan 30 = 2.309: pixel centre 2.125 (x = 28) is inside, 2.375 (x = 29) outside.
    EXPECT_GT(ColorAt(28, 14).r, 0.0f);
    EXPECT_EQ(ColorAt(29, 14).r, 0.0f);
}

TEST_F(LightTest, AHardConeEndsBetweenTwoPixels) {
    settings.samples = 1;
    AddGround();
    Light* const light = AddLight(SPOT_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightHotspot, 0, 60.0f);
    light->Params()->SetValue(kLightFalloff, 0, 60.0f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(28, 14).r, 4 / Length(Point3(0, 0, 4) - GroundPoint(28, 14)), 1e-4f);
    EXPECT_EQ(ColorAt(29, 14).r, 0.0f);
}

TEST_F(LightTest, DirectLightFillsACylinder) {
    settings.samples = 1;
    AddGround();
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightHotspot, 0, 1.0f);
    light->Params()->SetValue(kLightFalloff, 0, 3.0f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    for (int x = 0; x < 40; ++x) {
        const float s = std::min(std::max((3 - Length(GroundPoint(x, 15))) / 2, 0.0f), 1.0f);
        EXPECT_NEAR(ColorAt(x, 15).r, s * s * (3 - 2 * s), 1e-4f) << x;
    }
}

TEST_F(LightTest, ACubeThrowsAHardShadowWhereGeometrySays) {
    AddGround();
    Node* const cube = AddMesh("cube", BoxMesh({-1, -1, 1}, {1, 1, 2}), AddMaterial({1, 1, 1}));
    cube->SetRenderFlags(true, false, true, true, true); // not seen, so that the ground below it shows
    Light* const light = AddLight(OMNI_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightShadows, 0, 1);
    ASSERT_EQ(Render(), FrameResult::kDone);
    // The top's edge at height 2 from a light at 4 falls on the ground at 2: pixels 12..27 across, 7..22 down.
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const bool dark = x >= 12 && x < 28 && y >= 7 && y < 23;
            const float cosine = 4 / Length(Point3(0, 0, 4) - GroundPoint(x, y));
            const bool edge = (x == 11 || x == 12 || x == 27 || x == 28 || y == 6 || y == 7 || y == 22 || y == 23);
            EXPECT_NEAR(ColorAt(x, y).r, dark ? 0.0f : cosine, edge ? 0.02f : 1e-3f) << x << " " << y;
        }
    light->Params()->SetValue(kLightShadowMultiplier, 0, 0.25f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 0.75f * 4 / Length(Point3(0, 0, 4) - GroundPoint(20, 15)), 1e-3f);
}

TEST_F(LightTest, WhoCastsAndReceivesShadows) {
    AddGround();
    Node* const cube = AddMesh("cube", BoxMesh({-1, -1, 1}, {1, 1, 2}), AddMaterial({1, 1, 1}));
    Light* const light = AddLight(OMNI_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightShadows, 0, 1);
    cube->SetRenderFlags(true, false, false, true, true);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_GT(ColorAt(20, 15).r, 0.9f); // the cube casts none
    cube->SetRenderFlags(true, false, true, true, true);
    ground->SetRenderFlags(true, true, true, false, true);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_GT(ColorAt(20, 15).r, 0.9f); // the ground takes none
    ground->SetRenderFlags(true, true, true, true, true);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(20, 15).r, 0.0f);
    light->Params()->SetValue(kLightShadows, 0, 0);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_GT(ColorAt(20, 15).r, 0.9f);
}

TEST_F(LightTest, ClearMaterialsThrowThinShadows) {
    AddGround();
    StdMtl* const glass = AddMaterial({1, 1, 1});
    glass->Params()->SetValue(kStdOpacity, 0, 0.25f);
    // Two sheets: each of them leaves three quarters of the light.
    for (const float z : {1.0f, 1.5f}) {
        Node* const sheet = AddMesh("sheet", PlaneMesh(1), glass);
        sheet->SetNodeTM(0, TransMatrix({0, 0, z}));
        sheet->SetRenderFlags(true, false, true, true, true);
    }
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightShadows, 0, 1);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 0.75f * 0.75f, 1e-5f);
    EXPECT_NEAR(ColorAt(2, 15).r, 1, 1e-5f);
    // A half visible node counts half.
    for (Node* const node : core.AllNodes())
        if (std::string(node->GetName()) == "sheet") node->SetVisibility(0.5f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 0.875f * 0.875f, 1e-5f);
}

TEST_F(LightTest, ShadowsOfMapsAreAsSharpAsTheMaps) {
    AddGround();
    CheckerMap squares; // clear where x and y have the same sign
    StdMtl* const cut = AddMaterial({1, 1, 1});
    cut->SetSubTexmap(ID_OP, &squares);
    Node* const sheet = AddMesh("sheet", PlaneMesh(4), cut);
    sheet->SetNodeTM(0, TransMatrix({0, 0, 1}));
    sheet->SetRenderFlags(true, false, true, true, true);
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightShadows, 0, 1);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(28, 7).r, 1, 1e-5f);
    EXPECT_NEAR(ColorAt(12, 23).r, 1, 1e-5f);
    EXPECT_EQ(ColorAt(12, 7).r, 0.0f);
    EXPECT_EQ(ColorAt(28, 23).r, 0.0f);
}

TEST_F(LightTest, ListsExcludeOrIncludeNodes) {
    AddGround();
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 4}, {0, 0, 0});
    EXPECT_TRUE(light->Params()->Append(kLightExclude, ground));
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(20, 15).r, 0.0f);
    light->Params()->SetValue(kLightInclude, 0, 1);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 1, 1e-5f);
}

TEST_F(LightTest, SwitchesOfALight) {
    AddGround();
    StdMtl* const shiny = static_cast<StdMtl*>(ground->GetMtl());
    shiny->Params()->SetValue(kStdSpecularLevel, 0, 1.0f);
    shiny->Params()->SetValue(kStdGlossiness, 0, 0.0f);
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightAffectSpecular, 0, 0);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 1, 1e-5f);
    light->Params()->SetValue(kLightAffectSpecular, 0, 1);
    light->Params()->SetValue(kLightAffectDiffuse, 0, 0);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 0.9f, 1e-5f); // the highlight alone, specular colour 0.9
    light->Params()->SetValue(kLightAmbientOnly, 0, 1);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 1, 1e-5f);
    light->Params()->SetValue(kLightOn, 0, 0);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(20, 15).r, 0.0f);
}

TEST_F(LightTest, BothSidesOfAFaceAreLit) {
    AddGround();
    ground->SetNodeTM(0, ScaleMatrix({1, -1, -1})); // seen from below
    AddLight(DIRECT_LGT, {0, 0, 4}, {0, 0, 0});
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 1, 1e-5f);
    ground->SetNodeTM(0, ScaleMatrix({-1, 1, 1})); // mirrored
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 1, 1e-5f);
}

} // namespace
} // namespace host
