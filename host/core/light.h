#pragma once
// Omni, spot and direct lights.

#include "sdk/atmos.h"
#include "sdk/object.h"
#include "sdk/plugapi.h"
#include "sdk/render.h"

namespace host {

// Parameters of a light.
enum LightParam : ParamID {
    kLightOn,
    kLightColor,
    kLightMultiplier,
    kLightHotspot, ///< cone angle in degrees (spot) or radius (direct) of full light
    kLightFalloff, ///< the same for the end of light; at least the hotspot when evaluated
    kLightAffectDiffuse,
    kLightAffectSpecular,
    kLightAmbientOnly,
    kLightShadows,
    kLightShadowMultiplier, ///< how much of a shadow counts, 0..1
    kLightExclude,          ///< table of nodes without this light
    kLightInclude,          ///< the table names the only nodes with this light instead
    kLightShape,            ///< cross section of cone or cylinder: 0 round, 1 rectangular
    kLightAspect,           ///< a rectangle's width by its height; hotspot and falloff are its width's
    kLightNearOn,           ///< near attenuation: no light before the start, full light from the end on
    kLightNearStart,
    kLightNearEnd,
    kLightFarOn, ///< far attenuation: full light up to the start, none beyond the end
    kLightFarStart,
    kLightFarEnd,
    kLightDecay,       ///< LightDecay
    kLightDecayStart,  ///< distance of full light
    kLightShadowColor, ///< light that arrives in shadow
    kLightShadowBias,  ///< shadows begin this far from a surface, in scene units
};

/// A light that shines down its node's -Z axis (omni: everywhere).
/// References: 0 the parameter block, 1 the shadow type (null: the renderer's own traced shadows).
class Light : public LightObject {
public:
    /// Makes the descriptor of a light for a frame; the caller of CreateLightDesc deletes it.
    using DescFactory = ObjLightDesc* (*)(Light* light, INode* node);

    explicit Light(LightType type);
    ~Light() override { DeleteAllRefs(); }
    LightType Type() const { return type_; }
    Class_ID ClassID() override;
    void GetClassName(TSTR& s) override { s = GetObjectName(); }
    const char* GetObjectName() override;
    RefResult EvalLightState(TimeValue t, Interval& valid, LightState* ls) override;
    /// Null until a renderer installed its factory.
    ObjLightDesc* CreateLightDesc(INode* node) override;
    static void SetDescFactory(DescFactory factory);
    ShadowType* GetShadowType() override { return shadowType_; }
    bool SetShadowType(ShadowType* type) { return ReplaceReference(1, type) == REF_SUCCEED; }
    Interval ObjectValidity(TimeValue t) override;
    IParamBlock2* Params() { return block_; }

    int NumRefs() override { return 2; }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    int NumSubs() override { return 2; }
    Animatable* SubAnim(int i) override { return GetReference(i); }
    TSTR SubAnimName(int i) override { return i == 0 ? "Parameters" : "Shadow Type"; }
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? block_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? block_ : nullptr; }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    LightType type_;
    IParamBlock2* block_ = nullptr;
    ShadowType* shadowType_ = nullptr;
};

/// The class of omni, spot or direct lights; null for other types.
ClassDesc* LightDescOf(LightType type);

} // namespace host
