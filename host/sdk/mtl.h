#pragma once
// Materials, maps and shaders.

#include "sdk/hold.h"
#include "sdk/ref.h"
#include "sdk/shadecontext.h"

class Texmap;
class ParamDlg;

/// What materials and maps have in common: a name, sub-materials, sub-maps.
class MtlBase : public ReferenceTarget {
public:
    TSTR name;
    const TSTR& GetName() const { return name; }
    void SetName(const TSTR& s) {
        HoldValue(this, name);
        name = s;
    }
    /// Brings the object to `t` before a render; `valid` is narrowed.
    virtual void Update(TimeValue t, Interval& valid) {}
    virtual Interval Validity(TimeValue t) { return FOREVER; }
    virtual uint32_t Requirements(int subMtl) { return 0; }
    virtual int NumSubTexmaps() { return 0; }
    virtual Texmap* GetSubTexmap(int) { return nullptr; }
    virtual void SetSubTexmap(int, Texmap*) {}
};

/// A map: colour or value at a shading point. Evaluated from several threads at once.
class Texmap : public MtlBase {
public:
    SClass_ID SuperClassID() override { return TEXMAP_CLASS_ID; }
    virtual AColor EvalColor(ShadeContext& sc) = 0;
    virtual float EvalMono(ShadeContext& sc) { return Intens(Color(EvalColor(sc))); }
};

class Shader;

/// A material. Shade is called from several threads at once.
class Mtl : public MtlBase {
public:
    SClass_ID SuperClassID() override { return MATERIAL_CLASS_ID; }
    /// Fills `sc.out`.
    virtual void Shade(ShadeContext& sc) = 0;
    virtual Color GetAmbient(int mtlNum = 0, bool backFace = false) { return Color(); }
    virtual Color GetDiffuse(int mtlNum = 0, bool backFace = false) { return Color(); }
    virtual Color GetSpecular(int mtlNum = 0, bool backFace = false) { return Color(); }
    virtual float GetShininess(int mtlNum = 0, bool backFace = false) { return 0; }
    virtual float GetXParency(int mtlNum = 0, bool backFace = false) { return 0; } ///< 0 opaque, 1 clear
    virtual int NumSubMtls() { return 0; }
    virtual Mtl* GetSubMtl(int) { return nullptr; }
    virtual void SetSubMtl(int, Mtl*) {}
    virtual bool IsMultiMtl() { return false; }
    /// Transparency at a point as a shadow ray meets it (1 clear).
    virtual Color ShadowTransparency(ShadeContext& sc) {
        const float x = GetXParency(sc.mtlNum);
        return {x, x, x};
    }
};

// Requirement flags.
inline constexpr uint32_t MTLREQ_FACEMAP = 0x4, MTLREQ_BGCOL = 0x2000, MTLREQ_UV = 0x10000;

// Channel numbers of the standard material.
enum StdMatChannel { ID_AM, ID_DI, ID_SP, ID_SH, ID_SS, ID_SI, ID_OP, ID_FI, ID_BU, ID_NUM_CHANNELS };

/// Values of a standard material's channels at a point, after maps: what a shader turns into a colour.
class IllumParams {
public:
    TSTR* hasComponents = nullptr;
    uint32_t flags = 0;
    int nLights = 0;
    Color ambIllumOut, diffIllumOut, specIllumOut, selfIllumOut, reflIllumOut, transIllumOut, finalC, finalT;
    Color ambient, diffuse, specular, selfIllum;
    float glossiness = 0.25f; ///< 0..1
    float specLevel = 0.0f;   ///< multiplier of the highlight
    float opacity = 1.0f;
    int shaderChannelCount = 0;
    float shaderFloats[16] = {}; ///< a plug-in shader's own channels
};

/// The slot of a standard material that turns channel values and lights into a colour.
class Shader : public ReferenceTarget {
public:
    SClass_ID SuperClassID() override { return SHADER_CLASS_ID; }
    virtual void Update(TimeValue t, Interval& valid) {}
    /// Adds the lights' contributions into `ip` and leaves colour and transparency in ip.finalC, ip.finalT.
    virtual void Illum(ShadeContext& sc, IllumParams& ip) = 0;
};

/// The host's standard material as others see it.
class StdMat2 : public Mtl {
public:
    Class_ID ClassID() override { return DMTL_CLASS_ID; }
    virtual Shader* GetShader() = 0;
    virtual void SetShader(Shader* s) = 0;
};
