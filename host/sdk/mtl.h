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
    /// As a relief of height EvalMono, in scene units, over the context's surface: the negative gradient of the height
    /// along the surface, in camera space. Added to the unit normal it gives the relief's normal.
    virtual Point3 EvalNormalPerturb(ShadeContext& sc) { return {0, 0, 0}; }
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
    Color ambient, diffuse, specular;
    Color selfIllum;              ///< a colour that is added, or (selfIllumColorOn off) the share of each channel
    bool selfIllumColorOn = true; ///< selfIllum is a colour
    float glossiness = 0.25f;     ///< 0..1
    float specLevel = 0.0f;       ///< multiplier of the highlight
    float opacity = 1.0f;
    float finalAttenuation = 1.0f; ///< how bright the lights are here, for effects that stand back in the light
    int shaderChannelCount = 0;
    float shaderFloats[16] = {}; ///< a plug-in shader's own channels
};

/// What a shader's channel takes.
enum ShaderChannelType { UNSUPPORTED_CHANNEL, CLR_CHANNEL, MONO_CHANNEL };

/// The slot of a standard material that turns channel values and lights into a colour. A shader may have channel values
/// of its own (GetIllumParams) or use the material's. The accessors are what shaders copy from one another; those
/// without a value answer black, 0 or false and ignore what is set.
class Shader : public ReferenceTarget {
public:
    SClass_ID SuperClassID() override { return SHADER_CLASS_ID; }
    virtual void Update(TimeValue t, Interval& valid) {}
    /// Puts the shader's own values in place of the material's. Maps come afterwards.
    virtual void GetIllumParams(ShadeContext& sc, IllumParams& ip) {}
    /// Adds the lights' contributions into `ip` and leaves colour and transparency in ip.finalC, ip.finalT.
    virtual void Illum(ShadeContext& sc, IllumParams& ip) = 0;
    /// finalC and finalT from the outputs: opacity x (ambient + diffuse + self-illumination) + highlight + reflection +
    /// what is seen through.
    virtual void CombineComponents(ShadeContext& sc, IllumParams& ip) {
        ip.finalC = ip.opacity * (ip.ambIllumOut + ip.diffIllumOut + ip.selfIllumOut) + ip.specIllumOut +
                    ip.reflIllumOut + ip.transIllumOut;
        const float clear = 1.0f - ip.opacity;
        ip.finalT = {clear, clear, clear};
    }
    /// Tints what is reflected.
    virtual void AffectReflMap(ShadeContext& sc, IllumParams& ip, Color& reflected) {
        reflected = reflected * ip.specular;
    }

    /// Which standard values the shader has of its own (bit set); 0: none, it uses the material's.
    virtual uint32_t SupportStdParams() { return 0; }
    /// Takes the standard values of another shader over.
    virtual void CopyStdParams(Shader* from) {}
    virtual void SetAmbientClr(const Color& c, TimeValue t) {}
    virtual void SetDiffuseClr(const Color& c, TimeValue t) {}
    virtual void SetSpecularClr(const Color& c, TimeValue t) {}
    virtual void SetSelfIllumClr(const Color& c, TimeValue t) {}
    virtual void SetSelfIllum(float v, TimeValue t) {}
    virtual void SetGlossiness(float v, TimeValue t) {}
    virtual void SetSpecularLevel(float v, TimeValue t) {}
    virtual void SetSoftenLevel(float v, TimeValue t) {}
    virtual void SetSelfIllumClrOn(bool on) {}
    virtual void SetLockDS(bool on) {}
    virtual void SetLockAD(bool on) {}
    virtual void SetLockADTex(bool on) {}
    virtual Color GetAmbientClr(TimeValue t) { return Color(); }
    virtual Color GetDiffuseClr(TimeValue t) { return Color(); }
    virtual Color GetSpecularClr(TimeValue t) { return Color(); }
    virtual Color GetSelfIllumClr(TimeValue t) { return Color(); }
    virtual float GetSelfIllum(TimeValue t) { return 0; }
    virtual float GetGlossiness(TimeValue t) { return 0; }
    virtual float GetSpecularLevel(TimeValue t) { return 0; }
    virtual float GetSoftenLevel(TimeValue t) { return 0; }
    virtual bool IsSelfIllumClrOn() { return false; }
    virtual bool GetLockDS() { return false; }
    virtual bool GetLockAD() { return false; }
    virtual bool GetLockADTex() { return false; }

    /// The shader's channel for a standard one (StdMatChannel), -1 when it has none. Bump is the material's own.
    virtual int StdIDToChannel(int id) { return id >= 0 && id < ID_BU ? id : -1; }
    virtual ShaderChannelType ChannelType(int channel) {
        if (channel == ID_SH || channel == ID_SS || channel == ID_OP) return MONO_CHANNEL;
        return channel >= 0 && channel < ID_BU ? CLR_CHANNEL : UNSUPPORTED_CHANNEL;
    }
    /// Height of the highlight at `x`, 0 its middle to 1, for displays; and in two dimensions.
    virtual float EvalHiliteCurve(float x) { return 0; }
    virtual float EvalHiliteCurve2(float x, float y, int level) { return 0; }
};

/// The host's standard material as others see it.
class StdMat2 : public Mtl {
public:
    Class_ID ClassID() override { return DMTL_CLASS_ID; }
    virtual Shader* GetShader() = 0;
    virtual void SetShader(Shader* s) = 0;
    /// Off: faces are there on their front side only.
    virtual bool GetTwoSided() { return true; }
};
