#pragma once
// The blur effect.

#include "render/effects/host_effect.h"

namespace host {

/// Gaussian blur of colour, alpha and background. At the border of the picture the pixels inside count alone.
class Blur : public HostEffect {
public:
    enum : ParamID { kRadius = kOwnParams }; ///< standard deviation in pixels, 0..100; 0 changes nothing
    static constexpr Class_ID kClassId{0x5b1c22f4, 0x4a0e6d36};

    Blur();
    ~Blur() override { DeleteAllRefs(); }
    static ClassDesc2& Desc();
    Class_ID ClassID() override { return kClassId; }
    void GetClassName(TSTR& s) override { s = "Blur"; }
    RefTargetHandle Clone(RemapDir& remap) override { return CopyOf<Blur>(remap); }
    void Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext* gc, RendProgressCallback* progress) override;
};

} // namespace host
