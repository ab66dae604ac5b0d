#include "core/light.h"

#include <algorithm>
#include <atomic>

#include "core/param_builder.h"

namespace host {

namespace {

struct LightClass {
    LightType type;
    Class_ID id;
    const char* name;
    const char* intName;
    float hotspot, falloff, widest;
};
constexpr LightClass kClasses[] = {
    {OMNI_LGT, OMNI_LIGHT_CLASS_ID, "Omni Light", "OmniLight", 43, 45, 179.5f},
    {SPOT_LGT, SPOT_LIGHT_CLASS_ID, "Spot Light", "SpotLight", 43, 45, 179.5f},
    {DIRECT_LGT, DIR_LIGHT_CLASS_ID, "Direct Light", "DirectLight", 100, 120, kHuge},
};

const LightClass& ClassOf(LightType type) {
    return kClasses[type == SPOT_LGT ? 1 : type == DIRECT_LGT ? 2 : 0];
}

std::atomic<Light::DescFactory> gFactory{nullptr};

class LightClassDesc : public ClassDesc2 {
public:
    explicit LightClassDesc(LightType type) : class_(ClassOf(type)) {
        block_.intName = "lightParams";
        block_.title = "Light";
        block_.classDesc = this;
        block_.flags = P_AUTO_CONSTRUCT;
        block_.params = {BoolParam(kLightOn, "on", true),
                         ColorParam(kLightColor, "color", {1, 1, 1}),
                         FloatParam(kLightMultiplier, "multiplier", 1, -kHuge, kHuge),
                         FloatParam(kLightHotspot, "hotspot", class_.hotspot, 0, class_.widest),
                         FloatParam(kLightFalloff, "falloff", class_.falloff, 0, class_.widest),
                         BoolParam(kLightAffectDiffuse, "affectDiffuse", true),
                         BoolParam(kLightAffectSpecular, "affectSpecular", true),
                         BoolParam(kLightAmbientOnly, "ambientOnly", false),
                         BoolParam(kLightShadows, "shadows", false),
                         FloatParam(kLightShadowMultiplier, "shadowMultiplier", 1, 0, 1),
                         NamedParam(kLightExclude, "exclude", TYPE_INODE_TAB, P_VARIABLE_SIZE),
                         BoolParam(kLightInclude, "include", false)};
        AddShape(block_.params);
        AddFading(block_.params);
        AddParamBlockDesc(&block_);
    }
    static void AddShape(std::vector<ParamDef>& params) {
        ParamDef shape = NamedParam(kLightShape, "shape", TYPE_INT, 0);
        shape.hasRange = true;
        shape.rangeHigh = 1;
        for (const ParamDef& def : {shape, FloatParam(kLightAspect, "aspect", 1, 0.001f, 1000),
                                    ColorParam(kLightShadowColor, "shadowColor", {0, 0, 0}),
                                    FloatParam(kLightShadowBias, "shadowBias", 0, 0, kHuge)})
            params.push_back(def);
    }
    static void AddFading(std::vector<ParamDef>& params) {
        ParamDef decay = NamedParam(kLightDecay, "decay", TYPE_INT, 0);
        decay.hasRange = true;
        decay.rangeHigh = float(DECAY_INVERSE_SQUARE);
        for (const ParamDef& def :
             {BoolParam(kLightNearOn, "useNearAttenuation", false),
              FloatParam(kLightNearStart, "nearStart", 0, 0, kHuge), FloatParam(kLightNearEnd, "nearEnd", 40, 0, kHuge),
              BoolParam(kLightFarOn, "useFarAttenuation", false), FloatParam(kLightFarStart, "farStart", 80, 0, kHuge),
              FloatParam(kLightFarEnd, "farEnd", 200, 0, kHuge), decay,
              FloatParam(kLightDecayStart, "decayStart", 40, 1e-6f, kHuge)})
            params.push_back(def);
    }
    int IsPublic() override { return 1; }
    void* Create(bool) override { return new Light(class_.type); }
    const char* ClassName() override { return class_.name; }
    SClass_ID SuperClassID() override { return LIGHT_CLASS_ID; }
    Class_ID ClassID() override { return class_.id; }
    const char* Category() override { return "Host"; }
    const char* InternalName() override { return class_.intName; }

private:
    const LightClass& class_;
    ParamBlockDesc2 block_;
};

LightClassDesc& Desc(LightType type) {
    static LightClassDesc omni(OMNI_LGT), spot(SPOT_LGT), direct(DIRECT_LGT);
    return type == SPOT_LGT ? spot : type == DIRECT_LGT ? direct : omni;
}

} // namespace

ClassDesc* LightDescOf(LightType type) {
    return type == AMBIENT_LGT ? nullptr : &Desc(type);
}

Light::Light(LightType type) : type_(ClassOf(type).type) {
    Desc(type_).MakeAutoParamBlocks(this);
}

Class_ID Light::ClassID() {
    return ClassOf(type_).id;
}

const char* Light::GetObjectName() {
    return ClassOf(type_).name;
}

RefResult Light::EvalLightState(TimeValue t, Interval& valid, LightState* ls) {
    ls->type = type_;
    ls->on = block_->GetInt(kLightOn, t, valid) != 0;
    ls->color = block_->GetColor(kLightColor, t, valid);
    ls->intens = block_->GetFloat(kLightMultiplier, t, valid);
    ls->hotsize = block_->GetFloat(kLightHotspot, t, valid);
    ls->fallsize = std::max(block_->GetFloat(kLightFalloff, t, valid), ls->hotsize);
    ls->affectDiffuse = block_->GetInt(kLightAffectDiffuse, t, valid) != 0;
    ls->affectSpecular = block_->GetInt(kLightAffectSpecular, t, valid) != 0;
    ls->ambientOnly = block_->GetInt(kLightAmbientOnly, t, valid) != 0;
    ls->shadow = block_->GetInt(kLightShadows, t, valid) != 0;
    ls->rectangular = block_->GetInt(kLightShape, t, valid) != 0;
    ls->aspect = block_->GetFloat(kLightAspect, t, valid);
    ls->useNearAtten = block_->GetInt(kLightNearOn, t, valid) != 0;
    ls->nearAttenStart = block_->GetFloat(kLightNearStart, t, valid);
    ls->nearAttenEnd = block_->GetFloat(kLightNearEnd, t, valid);
    ls->useFarAtten = block_->GetInt(kLightFarOn, t, valid) != 0;
    ls->farAttenStart = block_->GetFloat(kLightFarStart, t, valid);
    ls->farAttenEnd = block_->GetFloat(kLightFarEnd, t, valid);
    ls->decay = LightDecay(block_->GetInt(kLightDecay, t, valid));
    ls->decayStart = block_->GetFloat(kLightDecayStart, t, valid);
    return REF_SUCCEED;
}

ObjLightDesc* Light::CreateLightDesc(INode* node) {
    const DescFactory factory = gFactory.load();
    return factory ? factory(this, node) : nullptr;
}

void Light::SetDescFactory(DescFactory factory) {
    gFactory.store(factory);
}

Interval Light::ObjectValidity(TimeValue t) {
    Interval valid = FOREVER;
    LightState ls;
    EvalLightState(t, valid, &ls);
    return valid;
}

RefTargetHandle Light::GetReference(int i) {
    return i == 0 ? static_cast<RefTargetHandle>(block_) : i == 1 ? shadowType_ : nullptr;
}

void Light::SetReference(int i, RefTargetHandle target) {
    if (i == 0) block_ = static_cast<IParamBlock2*>(target);
    if (i == 1) shadowType_ = static_cast<ShadowType*>(target);
}

RefTargetHandle Light::Clone(RemapDir& remap) {
    auto* const copy = new Light(type_);
    copy->ReplaceReference(0, remap.CloneRef(block_));
    RefTargetHandle shadow = remap.CloneRef(shadowType_);
    // A copied shadow type has no other owner than the copied light.
    if (shadow && shadow != shadowType_ && !shadow->HasDependents()) shadow->SetAutoDelete(true);
    copy->ReplaceReference(1, shadow ? shadow : shadowType_);
    return copy;
}

} // namespace host
