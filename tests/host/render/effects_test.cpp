// The host's own render effects and image filter, on pictures made by hand.

#include <cmath>

#include "render/effects/blur.h"
#include "render/effects/color_effects.h"
#include "render/effects/negative_filter.h"
#include "scene_fixture.h"

namespace host {
namespace {

struct NoWindow : IFilterWindow {
    void SendMessage(unsigned message, intptr_t, intptr_t second) override {
        if (message == FLT_CHECKABORT) *reinterpret_cast<int*>(second) = 0;
    }
};

void ExpectPixel(const Picture& p, int x, int y, const AColor& own, const Color& background) {
    ExpectColor(Color(p.GetPixel(x, y)), Color(own), 1e-6f, "own");
    EXPECT_NEAR(p.GetPixel(x, y).a, own.a, 1e-6f);
    ExpectColor(p.GetBackground(x, y), background, 1e-6f, "background");
}

/// 3 x 1: a full pixel, a quarter over a background, the background alone.
struct Effects : testing::Test {
    Picture picture{3, 1};
    Effects() {
        picture.PutPixel(0, 0, {0.5f, 0.25f, 0.75f, 1});
        picture.PutPixel(1, 0, {0.125f, 0.125f, 0, 0.25f});
        picture.PutBackground(1, 0, {0.3f, 0.6f, 0.15f});
        picture.PutBackground(2, 0, {0.4f, 0.8f, 0.2f});
    }
    void Apply(Effect& effect) { effect.Apply(0, &picture, nullptr, nullptr); }
};

TEST_F(Effects, BrightnessAndContrastWorkOnWhatIsSeen) {
    BrightnessContrast effect;
    effect.Params()->SetValue(BrightnessContrast::kBrightness, 0, 0.1f);
    effect.Params()->SetValue(BrightnessContrast::kContrast, 0, 0.5f);
    Apply(effect); // 1.5 in - 0.25 + 0.1
    ExpectPixel(picture, 0, 0, {0.6f, 0.225f, 0.975f, 1}, {0, 0, 0});
    // The pixel's quarter and the background's three take their shares of the offset; below zero there is nothing.
    ExpectPixel(picture, 1, 0, {0.15f, 0.15f, 0, 0.25f}, {0.3375f, 0.7875f, 0.1125f});
    ExpectPixel(picture, 2, 0, {0, 0, 0, 0}, {0.45f, 1.05f, 0.15f});
}

TEST_F(Effects, ColorBalanceMayKeepTheIntensity) {
    ColorBalance effect;
    effect.Params()->SetValue(ColorBalance::kRed, 0, 1.0f);
    effect.Params()->SetValue(ColorBalance::kBlue, 0, -1.0f);
    Apply(effect);
    ExpectPixel(picture, 0, 0, {1, 0.25f, 0, 1}, {0, 0, 0});
    ExpectPixel(picture, 2, 0, {0, 0, 0, 0}, {0.8f, 0.8f, 0});
    effect.Params()->SetValue(ColorBalance::kBlue, 0, 0.0f);
    effect.Params()->SetValue(ColorBalance::kKeepIntensity, 0, 1);
    Apply(effect); // (2, 1/4, 0) and (1.6, 0.8, 0), brought back to sums of 1.25 and 1.6
    ExpectPixel(picture, 0, 0, {2 / 1.8f, 0.25f / 1.8f, 0, 1}, {0, 0, 0});
    ExpectPixel(picture, 2, 0, {0, 0, 0, 0}, {1.6f / 1.5f, 0.8f / 1.5f, 0});
}

TEST_F(Effects, FogGrowsWithDepth) {
    picture.AddChannels(BMM_CHAN_Z);
    picture.Z()[0] = -15;
    picture.Z()[1] = -40;
    DepthFog effect;
    effect.Params()->SetValue(DepthFog::kColor, 0, Color(1, 0, 0));
    effect.Params()->SetValue(DepthFog::kNear, 0, 10.0f);
    effect.Params()->SetValue(DepthFog::kFar, 0, 20.0f);
    effect.Params()->SetValue(DepthFog::kDensity, 0, 0.5f);
    EXPECT_EQ(effect.GBufferChannelsRequired(0), BMM_CHAN_Z);
    const Picture before = picture;
    Apply(effect);
    ExpectPixel(picture, 0, 0, {0.75f * 0.5f + 0.25f, 0.75f * 0.25f, 0.75f * 0.75f, 1}, {0, 0, 0}); // a quarter
    ExpectPixel(picture, 1, 0, {0.0625f + 0.125f, 0.0625f, 0, 0.25f}, {0.15f + 0.375f, 0.3f, 0.075f});
    ExpectPixel(picture, 2, 0, {0, 0, 0, 0}, {0.7f, 0.4f, 0.1f});
    picture = before;
    effect.Params()->SetValue(DepthFog::kFogBackground, 0, 0);
    Apply(effect);
    ExpectPixel(picture, 1, 0, {0.0625f + 0.125f, 0.0625f, 0, 0.25f}, {0.3f, 0.6f, 0.15f});
    ExpectPixel(picture, 2, 0, {0, 0, 0, 0}, {0.4f, 0.8f, 0.2f});
}

TEST_F(Effects, ABlurredPointIsABell) {
    picture.Reset(41, 31);
    picture.PutPixel(20, 15, {1, 2, 0, 1});
    Blur effect;
    effect.Params()->SetValue(Blur::kRadius, 0, 2.0f);
    Apply(effect);
    double sum = 0;
    for (int i = -6; i <= 6; ++i) sum += std::exp(-i * i / 8.0);
    for (int y = 0; y < 31; ++y)
        for (int x = 0; x < 41; ++x) {
            const int dx = x - 20, dy = y - 15;
            const bool inside = std::abs(dx) <= 6 && std::abs(dy) <= 6;
            const double expected = inside ? std::exp(-(dx * dx + dy * dy) / 8.0) / (sum * sum) : 0;
            ASSERT_NEAR(picture.GetPixel(x, y).r, expected, 1e-7) << x << ", " << y;
            ASSERT_NEAR(picture.GetPixel(x, y).g, 2 * expected, 2e-7);
            ASSERT_NEAR(picture.GetPixel(x, y).a, expected, 1e-7);
        }
    EXPECT_FALSE(picture.HasBackground()) << "black stays no background";
}

TEST_F(Effects, ABlurLeavesEvenPicturesAlone) {
    picture.Reset(9, 7);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) {
            picture.PutPixel(x, y, {0.5f, 0.25f, 0.125f, 0.5f});
            picture.PutBackground(x, y, {0.2f, 0.1f, 0.4f});
        }
    Blur effect;
    effect.Params()->SetValue(Blur::kRadius, 0, 3.0f); // reaches beyond all borders
    Apply(effect);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) ExpectPixel(picture, x, y, {0.5f, 0.25f, 0.125f, 0.5f}, {0.2f, 0.1f, 0.4f});
}

TEST_F(Effects, OnlyNodesWithAnIdAreChanged) {
    BrightnessContrast effect;
    EXPECT_EQ(effect.GBufferChannelsRequired(0), 0u);
    effect.Params()->SetValue(HostEffect::kOnlyId, 0, 7);
    EXPECT_EQ(effect.GBufferChannelsRequired(0), BMM_CHAN_NODE_ID);
    effect.Params()->SetValue(BrightnessContrast::kBrightness, 0, 0.25f);
    Apply(effect); // no channel, no such nodes
    ExpectPixel(picture, 0, 0, {0.5f, 0.25f, 0.75f, 1}, {0, 0, 0});
    picture.AddChannels(BMM_CHAN_NODE_ID);
    ChannelType type;
    static_cast<uint16_t*>(picture.GetChannel(BMM_CHAN_NODE_ID, type))[0] = 7;
    Apply(effect);
    ExpectPixel(picture, 0, 0, {0.75f, 0.5f, 1, 1}, {0, 0, 0});
    ExpectPixel(picture, 2, 0, {0, 0, 0, 0}, {0.4f, 0.8f, 0.2f});
}

TEST_F(Effects, TheNegativeMixes) {
    NegativeFilter filter;
    NoWindow window;
    ASSERT_EQ(filter.EvaluateConfigure(), 4);
    for (const int32_t wrong : {-1, 101}) EXPECT_FALSE(filter.LoadConfigure(&wrong));
    int32_t percent = 0;
    EXPECT_TRUE(filter.SaveConfigure(&percent));
    EXPECT_EQ(percent, 100);
    EXPECT_TRUE(filter.Render(&picture, &window));
    ExpectPixel(picture, 0, 0, {0.5f, 0.75f, 0.25f, 1}, {0, 0, 0});
    ExpectPixel(picture, 1, 0, {0.125f, 0.125f, 0.25f, 0.25f}, {0.45f, 0.15f, 0.6f});
    ExpectPixel(picture, 2, 0, {0, 0, 0, 0}, {0.6f, 0.2f, 0.8f});
    percent = 50;
    EXPECT_TRUE(filter.LoadConfigure(&percent));
    EXPECT_TRUE(filter.Render(&picture, &window));
    ExpectPixel(picture, 2, 0, {0, 0, 0, 0}, {0.5f, 0.5f, 0.5f});
}

TEST_F(Effects, CopiesHaveTheirOwnValues) {
    Blur effect;
    effect.SetName("soft");
    effect.SetDisabled(true);
    effect.Params()->SetValue(Blur::kRadius, 0, 5.0f);
    RemapDir remap;
    auto* const copy = static_cast<Blur*>(remap.CloneRef(&effect));
    remap.Finish();
    effect.Params()->SetValue(Blur::kRadius, 0, 1.0f);
    EXPECT_EQ(copy->Params()->GetFloat(Blur::kRadius, 0), 5.0f);
    EXPECT_EQ(copy->GetName(), "soft");
    EXPECT_FALSE(copy->Active(0));
    copy->DeleteThis();
}

} // namespace
} // namespace host
