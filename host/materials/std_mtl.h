#pragma once
// The standard material.

#include "materials/blinn_shader.h"
#include "materials/block_owner.h"
#include "sdk/mtl.h"

namespace host {

// Parameters of the standard material; fractions 0..1 unless said otherwise.
enum StdMtlParam : ParamID {
    kStdAmbient,
    kStdDiffuse,
    kStdSpecular,
    kStdLockAmbient, ///< the ambient colour is the diffuse one, map included
    kStdGlossiness,
    kStdSpecularLevel, ///< 0..10
    kStdSelfIllum,     ///< share of the diffuse colour that shines by itself
    kStdOpacity,
};

/// The host's standard material. References: 0 the parameter block, 1 the shader (null: Blinn), then a map for every
/// channel of StdMatChannel. Maps of ID_DI, ID_SP, ID_SH, ID_SS, ID_SI and ID_OP replace the channel's value; the other
/// channels take no map. The material shares ownership of its shader and maps (SetAutoDelete is the setter's choice).
class StdMtl : public BlockOwner<StdMat2, 1 + ID_NUM_CHANNELS> {
public:
    StdMtl();
    ~StdMtl() override { DeleteAllRefs(); }
    void GetClassName(TSTR& s) override { s = "Standard"; }
    Shader* GetShader() override { return static_cast<Shader*>(Slot(0)); }
    void SetShader(Shader* s) override { ReplaceReference(1, s); }
    /// True when the channel takes a map.
    static bool TakesMap(int channel);
    int NumSubTexmaps() override { return ID_NUM_CHANNELS; }
    Texmap* GetSubTexmap(int channel) override;
    /// Ignored for channels that take no map.
    void SetSubTexmap(int channel, Texmap* map) override;
    uint32_t Requirements(int) override;

    /// In shadow mode (SCMODE_SHADOW) black and the transparency, without lights.
    void Shade(ShadeContext& sc) override;
    Color GetAmbient(int, bool) override { return values_.lockAmbient ? values_.diffuse : values_.ambient; }
    Color GetDiffuse(int, bool) override { return values_.diffuse; }
    Color GetSpecular(int, bool) override { return values_.specular; }
    float GetShininess(int, bool) override { return values_.glossiness; }
    float GetXParency(int, bool) override { return 1.0f - values_.opacity; }
    Color ShadowTransparency(ShadeContext& sc) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    struct Values {
        Color ambient, diffuse, specular;
        bool lockAmbient = true;
        float glossiness = 0, specLevel = 0, selfIllum = 0, opacity = 1;
    };
    void UpdateReferences(TimeValue t, Interval& valid) override;
    void Refresh() override;
    Texmap* Map(int channel) const { return static_cast<Texmap*>(Slot(1 + channel)); }
    Color ColorOf(ShadeContext& sc, int channel, const Color& value) const;
    float NumberOf(ShadeContext& sc, int channel, float value) const;
    void FillIllumParams(ShadeContext& sc, IllumParams& ip) const;

    Values values_;
    BlinnShader blinn_;
};

ClassDesc* StdMtlDesc();

} // namespace host
