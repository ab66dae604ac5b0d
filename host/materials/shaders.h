#pragma once
// The shaders that the host has for a standard material's slot.

#include "sdk/mtl.h"
#include "sdk/plugapi.h"

namespace host {

/// Lambert's diffuse light and a highlight, from the material's own values. Final colour: opacity x (ambient + diffuse
/// + self-illumination) + highlight. Self-illumination by amount takes that share of the reflected light's place.
class LambertShader : public Shader {
public:
    ~LambertShader() override { DeleteAllRefs(); }
    void Illum(ShadeContext& sc, IllumParams& ip) override;

protected:
    /// Cosine that the highlight is a power of; all unit vectors, `v` from the viewer to the point.
    virtual float HighlightCosine(const Point3& n, const Point3& toLight, const Point3& v) const = 0;

private:
    void AddLight(ShadeContext& sc, LightDesc& light, const Point3& n, float exponent, IllumParams& ip) const;
};

/// Blinn's highlight: specLevel x (N.H)^(2^(10 x glossiness)), H half way between light and viewer.
class BlinnShader final : public LambertShader {
public:
    Class_ID ClassID() override { return BLINN_SHADER_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Blinn"; }
    RefTargetHandle Clone(RemapDir&) override { return new BlinnShader; }

protected:
    float HighlightCosine(const Point3& n, const Point3& toLight, const Point3& v) const override;
};

/// Phong's highlight: specLevel x (R.L)^(2^(10 x glossiness)), R the mirrored view direction.
class PhongShader final : public LambertShader {
public:
    Class_ID ClassID() override { return PHONG_SHADER_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Phong"; }
    RefTargetHandle Clone(RemapDir&) override { return new PhongShader; }

protected:
    float HighlightCosine(const Point3& n, const Point3& toLight, const Point3& v) const override;
};

ClassDesc* BlinnShaderDesc();
ClassDesc* PhongShaderDesc();

} // namespace host
