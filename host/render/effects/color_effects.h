#pragma once
// Effects that change every pixel by itself.

#include "render/effects/host_effect.h"

namespace host {

/// out = (in - 1/2) (1 + contrast) + 1/2 + brightness, on linear colours.
class BrightnessContrast : public HostEffect {
public:
    enum : ParamID { kBrightness = kOwnParams, kContrast }; ///< -1..1 each, 0 changes nothing
    static constexpr Class_ID kClassId{0x5b1c22f1, 0x4a0e6d33};

    BrightnessContrast();
    ~BrightnessContrast() override { DeleteAllRefs(); }
    static ClassDesc2& Desc();
    Class_ID ClassID() override { return kClassId; }
    void GetClassName(TSTR& s) override { s = "Brightness and Contrast"; }
    RefTargetHandle Clone(RemapDir& remap) override { return CopyOf<BrightnessContrast>(remap); }
    void Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext* gc, RendProgressCallback* progress) override;
};

/// Multiplies red, green and blue by 1 plus their value each; on demand the outcome is scaled so that its intensity is
/// the former one.
class ColorBalance : public HostEffect {
public:
    enum : ParamID { kRed = kOwnParams, kGreen, kBlue, kKeepIntensity }; ///< colours -1..1, 0 changes nothing
    static constexpr Class_ID kClassId{0x5b1c22f2, 0x4a0e6d34};

    ColorBalance();
    ~ColorBalance() override { DeleteAllRefs(); }
    static ClassDesc2& Desc();
    Class_ID ClassID() override { return kClassId; }
    void GetClassName(TSTR& s) override { s = "Color Balance"; }
    RefTargetHandle Clone(RemapDir& remap) override { return CopyOf<ColorBalance>(remap); }
    void Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext* gc, RendProgressCallback* progress) override;
};

/// Mixes a colour in by the depth of what is seen: nothing up to `near`, `density` of it from `far` on, linearly
/// between. Depth is the distance along the view axis, of surfaces; what shows none counts as background, which is
/// fogged in full or not at all.
class DepthFog : public HostEffect {
public:
    enum : ParamID { kColor = kOwnParams, kNear, kFar, kDensity, kFogBackground };
    static constexpr Class_ID kClassId{0x5b1c22f3, 0x4a0e6d35};

    DepthFog();
    ~DepthFog() override { DeleteAllRefs(); }
    static ClassDesc2& Desc();
    Class_ID ClassID() override { return kClassId; }
    void GetClassName(TSTR& s) override { s = "Depth Fog"; }
    RefTargetHandle Clone(RemapDir& remap) override { return CopyOf<DepthFog>(remap); }
    uint32_t GBufferChannelsRequired(TimeValue t) override {
        return HostEffect::GBufferChannelsRequired(t) | BMM_CHAN_Z;
    }
    void Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext* gc, RendProgressCallback* progress) override;
};

} // namespace host
