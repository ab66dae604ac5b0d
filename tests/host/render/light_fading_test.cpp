// Attenuation, decay, rectangles, what arrives in shadow.

#include <cmath>

#include "light_fixture.h"

namespace host {
namespace {

class LightFadingTest : public LightTest {
protected:
    LightFadingTest() { settings.samples = 1; }
    /// An omni light straight above the origin, and the ground.
    Light* OmniAt(float height) {
        AddGround();
        return AddLight(OMNI_LGT, {0, 0, height}, {0, 0, 0});
    }
    /// Every pixel of the ground against `share` of the light at that distance.
    template <class Share>
    void ExpectFading(float height, Share&& share) {
        ASSERT_EQ(Render(), FrameResult::kDone);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) {
                const float d = Length(Point3(0, 0, height) - GroundPoint(x, y));
                EXPECT_NEAR(ColorAt(x, y).r, share(d) * height / d, 2e-4f) << x << " " << y;
            }
    }
    static float Smooth(float s) {
        s = std::min(std::max(s, 0.0f), 1.0f);
        return s * s * (3 - 2 * s);
    }
};

TEST_F(LightFadingTest, NearAttenuation) {
    Light* const light = OmniAt(3);
    light->Params()->SetValue(kLightNearStart, 0, 3.2f);
    light->Params()->SetValue(kLightNearEnd, 0, 5.0f);
    ExpectFading(3, [](float) { return 1.0f; }); // not yet on
    light->Params()->SetValue(kLightNearOn, 0, 1);
    ExpectFading(3, [](float d) { return Smooth((d - 3.2f) / 1.8f); });
    EXPECT_EQ(ColorAt(20, 15).r, 0.0f);
}

TEST_F(LightFadingTest, FarAttenuation) {
    Light* const light = OmniAt(3);
    light->Params()->SetValue(kLightFarOn, 0, 1);
    light->Params()->SetValue(kLightFarStart, 0, 3.5f);
    light->Params()->SetValue(kLightFarEnd, 0, 5.0f);
    ExpectFading(3, [](float d) { return 1 - Smooth((d - 3.5f) / 1.5f); });
    EXPECT_EQ(ColorAt(0, 0).r, 0.0f);
    light->Params()->SetValue(kLightFarStart, 0, 5.0f); // an edge
    ExpectFading(3, [](float d) { return d <= 5.0f ? 1.0f : 0.0f; });
}

TEST_F(LightFadingTest, Decay) {
    Light* const light = OmniAt(3);
    light->Params()->SetValue(kLightDecayStart, 0, 4.0f);
    light->Params()->SetValue(kLightDecay, 0, int(DECAY_INVERSE));
    ExpectFading(3, [](float d) { return std::min(4 / d, 1.0f); });
    light->Params()->SetValue(kLightDecay, 0, int(DECAY_INVERSE_SQUARE));
    ExpectFading(3, [](float d) { return std::min(16 / (d * d), 1.0f); });
}

// A direct light's distance runs along its axis.
TEST_F(LightFadingTest, DirectLightsFadeAlongTheirAxis) {
    AddGround();
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 6}, {0, 0, 0});
    light->Params()->SetValue(kLightDecayStart, 0, 3.0f);
    light->Params()->SetValue(kLightDecay, 0, int(DECAY_INVERSE_SQUARE));
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 0.25f, 1e-5f);
    EXPECT_NEAR(ColorAt(2, 2).r, 0.25f, 1e-5f);
    light->Params()->SetValue(kLightNearOn, 0, 1);
    light->Params()->SetValue(kLightNearStart, 0, 7.0f);
    light->Params()->SetValue(kLightNearEnd, 0, 8.0f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(20, 15).r, 0.0f);
}

TEST_F(LightFadingTest, ARectangularSpot) {
    AddGround();
    Light* const light = AddLight(SPOT_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightShape, 0, 1);
    light->Params()->SetValue(kLightAspect, 0, 2.0f);
    light->Params()->SetValue(kLightHotspot, 0, 40.0f);
    light->Params()->SetValue(kLightFalloff, 0, 70.0f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    const float full = std::tan(20 * float(M_PI) / 180), none = std::tan(35 * float(M_PI) / 180);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const Point3 p = GroundPoint(x, y);
            const float at = std::max(std::fabs(p.x), 2 * std::fabs(p.y)) / 4;
            const float expected = Smooth((none - at) / (none - full)) * 4 / Length(Point3(0, 0, 4) - p);
            EXPECT_NEAR(ColorAt(x, y).r, expected, 2e-4f) << x << " " << y;
        }
    EXPECT_GT(ColorAt(28, 15).r, 0.0f); // 2.1 aside along the width
    EXPECT_EQ(ColorAt(20, 23).r, 0.0f); // the same along the height
}

TEST_F(LightFadingTest, ARectangularDirectLightWithAHardEdge) {
    AddGround();
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 4}, {0, 0, 0});
    light->Params()->SetValue(kLightShape, 0, 1);
    light->Params()->SetValue(kLightAspect, 0, 0.5f);
    light->Params()->SetValue(kLightHotspot, 0, 1.0f);
    light->Params()->SetValue(kLightFalloff, 0, 1.0f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const Point3 p = GroundPoint(x, y);
            const bool inside = std::fabs(p.x) <= 1 && std::fabs(p.y) <= 2;
            EXPECT_NEAR(ColorAt(x, y).r, inside ? 1 : 0, 1e-5f) << x << " " << y;
        }
}

TEST_F(LightFadingTest, TheShadowColourArrivesWhereLightIsMissing) {
    AddGround();
    Node* const cube = AddMesh("cube", BoxMesh({-1, -1, 1}, {1, 1, 2}), AddMaterial({1, 1, 1}));
    cube->SetRenderFlags(true, false, true, true, true);
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 6}, {0, 0, 0});
    light->Params()->SetValue(kLightShadows, 0, 1);
    light->Params()->SetValue(kLightShadowColor, 0, Color(0, 0.25f, 0.5f));
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(ColorAt(20, 15), {0, 0.25f, 0.5f}, 1e-5f);
    ExpectColor(ColorAt(2, 2), {1, 1, 1}, 1e-5f);
    light->Params()->SetValue(kLightShadowMultiplier, 0, 0.5f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(ColorAt(20, 15), {0.5f, 0.625f, 0.75f}, 1e-5f);
}

TEST_F(LightFadingTest, TheBiasSkipsWhatIsNear) {
    AddGround();
    Node* const cube = AddMesh("cube", BoxMesh({-1, -1, 1}, {1, 1, 2}), AddMaterial({1, 1, 1}));
    cube->SetRenderFlags(true, false, true, true, true);
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 6}, {0, 0, 0});
    light->Params()->SetValue(kLightShadows, 0, 1);
    light->Params()->SetValue(kLightShadowBias, 0, 1.9f); // inside the cube: its top is still ahead
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(20, 15).r, 0.0f);
    light->Params()->SetValue(kLightShadowBias, 0, 2.1f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 1, 1e-5f);
}

TEST_F(LightFadingTest, NegativeLightsTakeAway) {
    AddGround();
    AddLight(DIRECT_LGT, {0, 0, 6}, {0, 0, 0});
    AddLight(DIRECT_LGT, {0, 0, 7}, {0, 0, 0})->Params()->SetValue(kLightMultiplier, 0, -0.75f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_NEAR(ColorAt(20, 15).r, 0.25f, 1e-5f);
    AddLight(DIRECT_LGT, {0, 0, 8}, {0, 0, 0})->Params()->SetValue(kLightMultiplier, 0, -2.0f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(20, 15).r, 0.0f); // pictures have no negative light
}

// A sheet whose front looks up, with a light above: seen from below it is not there, its shadow is.
TEST_F(LightFadingTest, OneSidedSheets) {
    AddGround();
    StdMtl* const front = AddMaterial({1, 0, 0});
    front->Params()->SetValue(kStdTwoSided, 0, 0);
    Node* const sheet = AddMesh("sheet", PlaneMesh(1), front);
    sheet->SetNodeTM(0, TransMatrix({0, 0, 2}));
    Light* const light = AddLight(DIRECT_LGT, {0, 0, 6}, {0, 0, 0});
    light->Params()->SetValue(kLightShadows, 0, 1);
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(ColorAt(20, 15), {1, 0, 0}, 1e-5f);
    sheet->SetNodeTM(0, ScaleMatrix({1, -1, -1}) * TransMatrix({0, 0, 2})); // its back looks up
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(ColorAt(20, 15), {1, 1, 1}, 1e-5f); // the ground, without a shadow
    EXPECT_NEAR(DepthAt(20, 15), -10.0f, 1e-4f);
    // From the side the sheet's shadow shows where its front faces the light.
    sheet->SetNodeTM(0, TransMatrix({0, 0, 2}));
    sheet->SetRenderFlags(true, false, true, true, true);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(20, 15).r, 0.0f);
}

} // namespace
} // namespace host
