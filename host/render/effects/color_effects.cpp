#include "render/effects/color_effects.h"

#include <algorithm>

#include "image/picture.h"

namespace host {

ClassDesc2& BrightnessContrast::Desc() {
    static BlockClassDesc<BrightnessContrast> desc(
        "Brightness and Contrast", "brightness_contrast", RENDER_EFFECT_CLASS_ID, kClassId,
        WithShared({FloatParam(kBrightness, "brightness", 0, -1, 1), FloatParam(kContrast, "contrast", 0, -1, 1)}));
    return desc;
}

BrightnessContrast::BrightnessContrast() {
    Desc().MakeAutoParamBlocks(this);
}

void BrightnessContrast::Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext*, RendProgressCallback* progress) {
    const float factor = 1.0f + Float(kContrast, t), offset = 0.5f - 0.5f * factor + Float(kBrightness, t);
    const Color f(factor, factor, factor), o(offset, offset, offset);
    EachPixel(t, *bitmap, progress, [&](int, int, EffectPixel& p) { ScaleAndAdd(p, f, o); });
}

ClassDesc2& ColorBalance::Desc() {
    static BlockClassDesc<ColorBalance> desc(
        "Color Balance", "color_balance", RENDER_EFFECT_CLASS_ID, kClassId,
        WithShared({FloatParam(kRed, "red", 0, -1, 1), FloatParam(kGreen, "green", 0, -1, 1),
                    FloatParam(kBlue, "blue", 0, -1, 1), BoolParam(kKeepIntensity, "keepIntensity", false)}));
    return desc;
}

ColorBalance::ColorBalance() {
    Desc().MakeAutoParamBlocks(this);
}

void ColorBalance::Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext*, RendProgressCallback* progress) {
    const Color factor(1.0f + Float(kRed, t), 1.0f + Float(kGreen, t), 1.0f + Float(kBlue, t));
    const bool keep = Int(kKeepIntensity, t) != 0;
    EachPixel(t, *bitmap, progress, [&](int, int, EffectPixel& p) {
        const float before = Intens(Color(p.own) + p.background);
        ScaleAndAdd(p, factor, Color());
        const float after = Intens(Color(p.own) + p.background);
        if (!keep || !(after > 0.0f)) return;
        const float back = before / after;
        ScaleAndAdd(p, Color(back, back, back), Color());
    });
}

ClassDesc2& DepthFog::Desc() {
    static BlockClassDesc<DepthFog> desc(
        "Depth Fog", "depth_fog", RENDER_EFFECT_CLASS_ID, kClassId,
        WithShared({ColorParam(kColor, "color", {0.5f, 0.5f, 0.5f}), FloatParam(kNear, "near", 0, 0, kHuge),
                    FloatParam(kFar, "far", 100, 0, kHuge), FloatParam(kDensity, "density", 1, 0, 1),
                    BoolParam(kFogBackground, "fogBackground", true)}));
    return desc;
}

DepthFog::DepthFog() {
    Desc().MakeAutoParamBlocks(this);
}

void DepthFog::Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext*, RendProgressCallback* progress) {
    ChannelType type = CHANNEL_NONE;
    const auto* const z = static_cast<const float*>(bitmap->GetChannel(BMM_CHAN_Z, type));
    if (!z || type != CHANNEL_32) return;
    const Color color = ColorOf(kColor, t);
    const float near = Float(kNear, t), far = Float(kFar, t), density = Float(kDensity, t);
    const float behind = Int(kFogBackground, t) != 0 ? density : 0.0f;
    const auto amountAt = [&](float depth) {
        return far > near ? std::clamp((depth - near) / (far - near), 0.0f, 1.0f) : float(depth > near);
    };
    const size_t width = size_t(bitmap->Width());
    EachPixel(t, *bitmap, progress, [&](int x, int y, EffectPixel& p) {
        const float at = z[size_t(y) * width + size_t(x)], a = p.own.a;
        const float own = at == kEmptyDepth ? behind : density * amountAt(-at);
        p.own = AColor(Color(p.own) * (1.0f - own) + color * (own * a), a);
        p.background = p.background * (1.0f - behind) + color * (behind * (1.0f - a));
    });
}

} // namespace host
