#include "materials/std_mtl.h"

#include <algorithm>
#include <string>

#include "core/block_class.h"

namespace host {

namespace {

/// Names of the channels' map parameters; null where there is no map.
constexpr const char* kChannelNames[ID_NUM_CHANNELS] = {
    "ambient", "diffuse", "specular", "glossiness", "specularLevel", "selfIllumination", "opacity", nullptr, "bump"};

std::vector<ParamDef> OwnParams() {
    std::vector<ParamDef> params{ColorParam(kStdAmbient, "ambient", {0.588f, 0.588f, 0.588f}),
                                 ColorParam(kStdDiffuse, "diffuse", {0.588f, 0.588f, 0.588f}),
                                 ColorParam(kStdSpecular, "specular", {0.9f, 0.9f, 0.9f}),
                                 BoolParam(kStdLockAmbient, "lockAmbient", true),
                                 FloatParam(kStdGlossiness, "glossiness", 0.1f, 0, 1),
                                 FloatParam(kStdSpecularLevel, "specularLevel", 0, 0, 10),
                                 FloatParam(kStdSelfIllum, "selfIllumination", 0, 0, 1),
                                 FloatParam(kStdOpacity, "opacity", 1, 0, 1),
                                 BoolParam(kStdSelfIllumColorOn, "useSelfIllumColor", false),
                                 ColorParam(kStdSelfIllumColor, "selfIllumColor", {0, 0, 0}),
                                 BoolParam(kStdTwoSided, "twoSided", true),
                                 FloatParam(kStdOpacityCutoff, "opacityCutoff", 0, 0, 1)};
    for (int c = 0; c < ID_NUM_CHANNELS; ++c) {
        if (!kChannelNames[c]) continue;
        const std::string name = kChannelNames[c];
        // A relief has a height in scene units, of either sign.
        const bool bump = c == ID_BU;
        params.push_back(FloatParam(ParamID(kStdMapAmount + c), (name + "MapAmount").c_str(), bump ? 0.1f : 1.0f,
                                    bump ? -kHuge : 0.0f, bump ? kHuge : 1.0f));
        params.push_back(BoolParam(ParamID(kStdMapOn + c), (name + "MapOn").c_str(), true));
    }
    return params;
}

BlockClassDesc<StdMtl>& Desc() {
    static BlockClassDesc<StdMtl> desc("Standard", "standardMaterial", MATERIAL_CLASS_ID, DMTL_CLASS_ID, OwnParams());
    return desc;
}

/// As if the surface were not there.
void ShowNothing(ShadeContext& sc) {
    sc.out.c = Color();
    sc.out.t = {1, 1, 1};
    sc.out.flags |= SHADEOUT_NOTHING;
}

/// Gives a context the normal of a relief for a scope.
class TiltedNormal {
public:
    TiltedNormal(ShadeContext& sc, Texmap* relief, float height) : sc_(sc) {
        if (!relief || height == 0.0f) return;
        former_ = sc.Normal();
        // A relief that stands out on one side is a hollow on the other.
        const Point3 tilt = relief->EvalNormalPerturb(sc) * (sc.backFace ? -height : height);
        if (tilt == Point3() || !IsFinite(tilt)) return;
        tilted_ = true;
        Set(Normalize(former_ + tilt));
    }
    ~TiltedNormal() {
        if (tilted_) Set(former_);
    }
    TiltedNormal(const TiltedNormal&) = delete;
    TiltedNormal& operator=(const TiltedNormal&) = delete;

private:
    // Some contexts turn what they are given on back faces.
    void Set(const Point3& n) {
        sc_.SetNormal(n);
        if (DotProd(sc_.Normal(), n) < 0.0f) sc_.SetNormal(-n);
    }
    ShadeContext& sc_;
    Point3 former_;
    bool tilted_ = false;
};

} // namespace

/// The material's values as a shader that others can copy from.
class StdMtl::OwnValues : public Shader {
public:
    explicit OwnValues(const Values& values) : values_(values) {}
    ~OwnValues() override { DeleteAllRefs(); }
    void Illum(ShadeContext&, IllumParams&) override {}
    Color GetAmbientClr(TimeValue) override { return values_.lockAmbient ? values_.diffuse : values_.ambient; }
    Color GetDiffuseClr(TimeValue) override { return values_.diffuse; }
    Color GetSpecularClr(TimeValue) override { return values_.specular; }
    Color GetSelfIllumClr(TimeValue) override { return values_.selfIllumColor; }
    float GetSelfIllum(TimeValue) override { return values_.selfIllum; }
    float GetGlossiness(TimeValue) override { return values_.glossiness; }
    float GetSpecularLevel(TimeValue) override { return values_.specLevel; }
    bool IsSelfIllumClrOn() override { return values_.selfIllumColorOn; }
    bool GetLockAD() override { return values_.lockAmbient; }
    bool GetLockADTex() override { return values_.lockAmbient; }

private:
    const Values& values_;
};

ClassDesc* StdMtlDesc() {
    return &Desc();
}

StdMtl::StdMtl() {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

void StdMtl::SwitchShader(Shader* s) {
    SetShader(s);
    if (!s || s->SupportStdParams() == 0) return;
    OwnValues own(values_);
    s->CopyStdParams(&own);
}

void StdMtl::SetSubTexmap(int channel, Texmap* map) {
    if (TakesMap(channel)) ReplaceReference(2 + channel, map);
}

uint32_t StdMtl::Requirements(int) {
    for (int i = 0; i < ID_NUM_CHANNELS; ++i)
        if (Map(i)) return MTLREQ_UV;
    return 0;
}

void StdMtl::UpdateReferences(TimeValue t, Interval& valid) {
    if (Shader* const shader = GetShader()) shader->Update(t, valid);
    for (int i = 0; i < ID_NUM_CHANNELS; ++i)
        if (Map(i)) Map(i)->Update(t, valid);
}

void StdMtl::Refresh() {
    IParamBlock2* const block = Params();
    if (!block) return;
    const TimeValue t = Time();
    values_.ambient = block->GetColor(kStdAmbient, t);
    values_.diffuse = block->GetColor(kStdDiffuse, t);
    values_.specular = block->GetColor(kStdSpecular, t);
    values_.selfIllumColor = block->GetColor(kStdSelfIllumColor, t);
    values_.lockAmbient = block->GetInt(kStdLockAmbient, t) != 0;
    values_.selfIllumColorOn = block->GetInt(kStdSelfIllumColorOn, t) != 0;
    values_.twoSided = block->GetInt(kStdTwoSided, t) != 0;
    values_.glossiness = block->GetFloat(kStdGlossiness, t);
    values_.specLevel = block->GetFloat(kStdSpecularLevel, t);
    values_.selfIllum = block->GetFloat(kStdSelfIllum, t);
    values_.opacity = block->GetFloat(kStdOpacity, t);
    values_.opacityCutoff = block->GetFloat(kStdOpacityCutoff, t);
    for (int c = 0; c < ID_NUM_CHANNELS; ++c) {
        if (!TakesMap(c)) continue;
        mapOn_[c] = block->GetInt(ParamID(kStdMapOn + c), t) != 0;
        mapAmount_[c] = block->GetFloat(ParamID(kStdMapAmount + c), t);
    }
    FindActiveMaps();
}

void StdMtl::FindActiveMaps() {
    active_ = 0;
    for (int c = 0; c < ID_NUM_CHANNELS; ++c)
        if (mapOn_[c] && Map(c)) active_ |= 1u << c;
}

void StdMtl::SetReference(int i, RefTargetHandle target) {
    BlockOwner::SetReference(i, target);
    FindActiveMaps();
}

Color StdMtl::ColorOf(ShadeContext& sc, int channel, const Color& value) const {
    Texmap* const map = ActiveMap(sc, channel);
    if (!map) return value;
    const float amount = mapAmount_[channel];
    return value * (1.0f - amount) + Color(map->EvalColor(sc)) * amount;
}

float StdMtl::NumberOf(ShadeContext& sc, int channel, float value) const {
    Texmap* const map = ActiveMap(sc, channel);
    if (!map) return value;
    const float amount = mapAmount_[channel];
    return value * (1.0f - amount) + std::clamp(map->EvalMono(sc), 0.0f, 1.0f) * amount;
}

void StdMtl::FillIllumParams(ShadeContext& sc, IllumParams& ip) {
    ip.nLights = sc.nLights;
    ip.diffuse = values_.diffuse;
    ip.ambient = values_.lockAmbient ? values_.diffuse : values_.ambient;
    ip.specular = values_.specular;
    ip.glossiness = values_.glossiness;
    ip.specLevel = values_.specLevel;
    ip.opacity = values_.opacity;
    ip.selfIllumColorOn = values_.selfIllumColorOn;
    const float own = values_.selfIllum;
    ip.selfIllum = values_.selfIllumColorOn ? values_.selfIllumColor : Color(own, own, own);
    if (Shader* const shader = GetShader()) shader->GetIllumParams(sc, ip);
    if (active_ != 0 && sc.doMaps) ApplyMaps(sc, ip);
    ip.opacity = CutOff(ip.opacity);
}

void StdMtl::ApplyMaps(ShadeContext& sc, IllumParams& ip) const {
    ip.diffuse = ColorOf(sc, ID_DI, ip.diffuse);
    if (!values_.lockAmbient)
        ip.ambient = ColorOf(sc, ID_AM, ip.ambient);
    else if (ActiveMap(sc, ID_DI))
        ip.ambient = ip.diffuse;
    ip.specular = ColorOf(sc, ID_SP, ip.specular);
    ip.glossiness = NumberOf(sc, ID_SH, ip.glossiness);
    ip.specLevel = NumberOf(sc, ID_SS, ip.specLevel);
    ip.selfIllum = ColorOf(sc, ID_SI, ip.selfIllum);
    ip.opacity = NumberOf(sc, ID_OP, ip.opacity);
}

void StdMtl::Illuminate(ShadeContext& sc, IllumParams& ip) {
    if (Shader* const shader = GetShader())
        shader->Illum(sc, ip);
    else
        blinn_.Illum(sc, ip);
}

void StdMtl::Shade(ShadeContext& sc) {
    if (sc.mode == SCMODE_SHADOW) {
        sc.out.c = Color();
        sc.out.t = ShadowTransparency(sc);
        return;
    }
    if (sc.backFace && !values_.twoSided) return ShowNothing(sc);
    const TiltedNormal normal(sc, ActiveMap(sc, ID_BU), mapAmount_[ID_BU]);
    IllumParams ip;
    FillIllumParams(sc, ip);
    if (values_.opacityCutoff > 0.0f && ip.opacity == 0.0f) return ShowNothing(sc);
    Illuminate(sc, ip);
    sc.out.c = ip.finalC;
    sc.out.t = ip.finalT;
}

Color StdMtl::ShadowTransparency(ShadeContext& sc) {
    // In shadow mode the context looks towards the light: it sees the front of what faces away from it.
    if (!values_.twoSided && sc.mode == SCMODE_SHADOW && !sc.backFace) return {1, 1, 1};
    const float clear = 1.0f - CutOff(NumberOf(sc, ID_OP, values_.opacity));
    return {clear, clear, clear};
}

RefTargetHandle StdMtl::Clone(RemapDir& remap) {
    return Copied(new StdMtl, remap);
}

} // namespace host
