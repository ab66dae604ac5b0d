#pragma once
// The standard material.

#include "materials/block_owner.h"
#include "materials/shaders.h"
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
    kStdSelfIllumColorOn, ///< self-illumination is a colour that is added, instead of a share
    kStdSelfIllumColor,
    kStdTwoSided,       ///< off: faces are there on their front side only
    kStdOpacityCutoff,  ///< above 0: surfaces are opaque where their opacity is at least this, and not there elsewhere
    kStdMapAmount = 20, ///< of StdMatChannel c: kStdMapAmount + c; bump: height of white in scene units
    kStdMapOn = 40,     ///< of StdMatChannel c: kStdMapOn + c
};

/// The host's standard material. References: 0 the parameter block, 1 the shader (null: Blinn), then a map for every
/// channel of StdMatChannel but ID_FI, which takes none. A map that is on replaces its channel's value by
/// value x (1 - amount) + map x amount; the bump map tilts the normal instead. A shader with values of its own puts
/// them in place of the material's; maps come after them. The material shares ownership of its shader and maps
/// (SetAutoDelete is the setter's choice).
class StdMtl : public BlockOwner<StdMat2, 1 + ID_NUM_CHANNELS> {
public:
    StdMtl();
    ~StdMtl() override { DeleteAllRefs(); }
    void GetClassName(TSTR& s) override { s = "Standard"; }
    Shader* GetShader() override { return static_cast<Shader*>(Slot(0)); }
    void SetShader(Shader* s) override { ReplaceReference(1, s); }
    /// The same, and the shader takes over what standard values of its own the material has now.
    void SwitchShader(Shader* s);
    bool GetTwoSided() override { return values_.twoSided; }
    /// True when the channel takes a map.
    static bool TakesMap(int channel) { return channel >= 0 && channel < ID_NUM_CHANNELS && channel != ID_FI; }
    int NumSubTexmaps() override { return ID_NUM_CHANNELS; }
    Texmap* GetSubTexmap(int channel) override { return TakesMap(channel) ? Map(channel) : nullptr; }
    /// Ignored for channels that take no map.
    void SetSubTexmap(int channel, Texmap* map) override;
    uint32_t Requirements(int) override;
    void SetReference(int i, RefTargetHandle target) override;

    /// In shadow mode (SCMODE_SHADOW) black and the transparency, without lights. Where a one-sided material shows
    /// its back, and where the opacity is below the cutoff: black, transparent, SHADEOUT_NOTHING.
    void Shade(ShadeContext& sc) override;
    Color GetAmbient(int, bool) override { return values_.lockAmbient ? values_.diffuse : values_.ambient; }
    Color GetDiffuse(int, bool) override { return values_.diffuse; }
    Color GetSpecular(int, bool) override { return values_.specular; }
    float GetShininess(int, bool) override { return values_.glossiness; }
    float GetXParency(int, bool) override { return 1.0f - CutOff(values_.opacity); }
    /// What is one-sided throws shadows where its front faces the light.
    Color ShadowTransparency(ShadeContext& sc) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    class OwnValues;
    struct Values {
        Color ambient, diffuse, specular, selfIllumColor;
        bool lockAmbient = true, selfIllumColorOn = false, twoSided = true;
        float glossiness = 0, specLevel = 0, selfIllum = 0, opacity = 1, opacityCutoff = 0;
    };
    void UpdateReferences(TimeValue t, Interval& valid) override;
    void Refresh() override;
    void FindActiveMaps();
    Texmap* Map(int channel) const { return static_cast<Texmap*>(Slot(1 + channel)); }
    /// The map that counts for the channel in a context, or null.
    Texmap* ActiveMap(const ShadeContext& sc, int channel) const {
        return (active_ >> channel & 1u) != 0 && sc.doMaps ? Map(channel) : nullptr;
    }
    Color ColorOf(ShadeContext& sc, int channel, const Color& value) const;
    float NumberOf(ShadeContext& sc, int channel, float value) const;
    float CutOff(float opacity) const {
        return values_.opacityCutoff > 0.0f ? float(opacity >= values_.opacityCutoff) : opacity;
    }
    void FillIllumParams(ShadeContext& sc, IllumParams& ip);
    void ApplyMaps(ShadeContext& sc, IllumParams& ip) const;
    void Illuminate(ShadeContext& sc, IllumParams& ip);

    Values values_;
    float mapAmount_[ID_NUM_CHANNELS] = {};
    bool mapOn_[ID_NUM_CHANNELS] = {};
    uint32_t active_ = 0; ///< bit c: channel c has a map that is on
    BlinnShader blinn_;
};

ClassDesc* StdMtlDesc();

} // namespace host
