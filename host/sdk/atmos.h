#pragma once
// Atmospheric effects, render effects, shadow types, and the samplers of an atmosphere blender.

#include "sdk/color.h"
#include "sdk/hold.h"
#include "sdk/point3.h"
#include "sdk/ref.h"
#include "sdk/shadecontext.h"

class Bitmap;
class INode;
class RendProgressCallback;
class RenderGlobalContext;
class SFXParamDlg;

/// An effect of the environment list.
class SpecialFX : public ReferenceTarget {
public:
    virtual TSTR GetName() { return fxName_; }
    virtual void SetName(const TSTR& s) {
        HoldValue(this, fxName_);
        fxName_ = s;
    }
    virtual bool Active(TimeValue t) { return !disabled_; }
    void SetDisabled(bool on) {
        HoldValue(this, disabled_);
        disabled_ = on;
    }
    /// Brings the effect to `t`, once a frame, before any sample; `valid` is narrowed.
    virtual int Update(TimeValue t, Interval& valid) { return 1; }
    virtual SFXParamDlg* CreateParamDialog(class Interface*) { return nullptr; }

private:
    TSTR fxName_;
    bool disabled_ = false;
};

/// Something in the air: asked for the segment of every camera sample, nearest effect last.
class Atmospheric : public SpecialFX {
public:
    SClass_ID SuperClassID() override { return ATMOSPHERIC_CLASS_ID; }
    virtual int RenderBegin(TimeValue t) { return 1; }
    virtual int RenderEnd(TimeValue t) { return 1; }
    /// The segment from `p0` (near) to `p1` (far), world space. `col` and `trans` hold what lies behind it and receive
    /// the composite. Called from several threads at once.
    virtual void Shade(ShadeContext& sc, const Point3& p0, const Point3& p1, Color& col, Color& trans,
                       bool isBackground = false) = 0;
    virtual INode* GetGizmo(int) { return nullptr; }
    virtual int NumGizmos() { return 0; }
};

/// A render effect: works on the finished picture.
class Effect : public SpecialFX {
public:
    SClass_ID SuperClassID() override { return RENDER_EFFECT_CLASS_ID; }
    virtual uint32_t GBufferChannelsRequired(TimeValue t) { return 0; }
    virtual void Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext* gc, RendProgressCallback* progress) = 0;
};

/// Answers shadow questions for one light.
class ShadowGenerator {
public:
    virtual ~ShadowGenerator() = default;
    virtual int Update(TimeValue t, RenderGlobalContext* rgc, const Matrix3& lightToWorld) { return 1; }
    virtual int UpdateViewDepParams(const Matrix3& worldToCam) { return 1; }
    /// Light that arrives at the context's point, 0..1 per channel.
    virtual Color Sample(ShadeContext& sc, const Point3& pointInCamera) { return {1, 1, 1}; }
};

/// A kind of shadow a light can have.
class ShadowType : public ReferenceTarget {
public:
    SClass_ID SuperClassID() override { return SHADOW_TYPE_CLASS_ID; }
    virtual ShadowGenerator* CreateShadowGenerator(class LightObject* l, class ObjLightDesc* ld, uint32_t flags) = 0;
};

// Samplers: how an atmosphere blender asks an effect instead of calling Shade.

/// One question: in, the sample; out, the hit.
struct SamplerRecord {
    ShadeContext* sc = nullptr;
    Point3 p0, p1;                  ///< segment, world space
    float zNear = 0, zFar = -1e30f; ///< its depth range in camera space, zNear > zFar
    float scale = 1;                ///< distance per unit of the range
    int x = 0, y = 0;               ///< pixel, set by Begin
    const void* current = nullptr;  ///< the sampler's own place in its data
    int hit = 0;
    float distance = 0;
    Color color;
    Color transparency{1, 1, 1};
    uint32_t flags = 0;
    float remainingDepth = 0;
    int mtlId = 0, nodeId = 0;
    Color gbufColor, gbufTransparency;
};

class VolumeSampler {
public:
    virtual ~VolumeSampler() = default;
    virtual void Reserved0() {}
    virtual void Begin(SamplerRecord& r) = 0;
    virtual void Reset(SamplerRecord& r) = 0;
    virtual void SampleFirst(SamplerRecord& r) = 0;
    virtual void SampleNext(SamplerRecord& r) = 0;
    virtual int Reserved1(SamplerRecord& r) { return 0; }
    virtual void Reserved2() {}
};

class RaySampler {
public:
    virtual ~RaySampler() = default;
    virtual bool Attach(void* blender) = 0;
    virtual int NumVolumeSamplers() = 0;
    virtual VolumeSampler* GetVolumeSampler(int i) = 0;
};
