#include "materials/std_mtl.h"

#include <algorithm>

#include "core/block_class.h"

namespace host {

namespace {

BlockClassDesc<StdMtl>& Desc() {
    static BlockClassDesc<StdMtl> desc(
        "Standard", "standardMaterial", MATERIAL_CLASS_ID, DMTL_CLASS_ID,
        {ColorParam(kStdAmbient, "ambient", {0.588f, 0.588f, 0.588f}),
         ColorParam(kStdDiffuse, "diffuse", {0.588f, 0.588f, 0.588f}),
         ColorParam(kStdSpecular, "specular", {0.9f, 0.9f, 0.9f}), BoolParam(kStdLockAmbient, "lockAmbient", true),
         FloatParam(kStdGlossiness, "glossiness", 0.1f, 0, 1), FloatParam(kStdSpecularLevel, "specularLevel", 0, 0, 10),
         FloatParam(kStdSelfIllum, "selfIllumination", 0, 0, 1), FloatParam(kStdOpacity, "opacity", 1, 0, 1)});
    return desc;
}

} // namespace

ClassDesc* StdMtlDesc() {
    return &Desc();
}

StdMtl::StdMtl() {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

bool StdMtl::TakesMap(int channel) {
    return channel == ID_DI || channel == ID_SP || channel == ID_SH || channel == ID_SS || channel == ID_SI ||
           channel == ID_OP;
}

Texmap* StdMtl::GetSubTexmap(int channel) {
    return TakesMap(channel) ? Map(channel) : nullptr;
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
    values_.lockAmbient = block->GetInt(kStdLockAmbient, t) != 0;
    values_.glossiness = block->GetFloat(kStdGlossiness, t);
    values_.specLevel = block->GetFloat(kStdSpecularLevel, t);
    values_.selfIllum = block->GetFloat(kStdSelfIllum, t);
    values_.opacity = block->GetFloat(kStdOpacity, t);
}

Color StdMtl::ColorOf(ShadeContext& sc, int channel, const Color& value) const {
    Texmap* const map = Map(channel);
    return map && sc.doMaps ? Color(map->EvalColor(sc)) : value;
}

float StdMtl::NumberOf(ShadeContext& sc, int channel, float value) const {
    Texmap* const map = Map(channel);
    return map && sc.doMaps ? std::clamp(map->EvalMono(sc), 0.0f, 1.0f) : value;
}

void StdMtl::FillIllumParams(ShadeContext& sc, IllumParams& ip) const {
    ip.diffuse = ColorOf(sc, ID_DI, values_.diffuse);
    ip.ambient = values_.lockAmbient ? ip.diffuse : values_.ambient;
    ip.specular = ColorOf(sc, ID_SP, values_.specular);
    ip.glossiness = NumberOf(sc, ID_SH, values_.glossiness);
    ip.specLevel = NumberOf(sc, ID_SS, values_.specLevel);
    ip.opacity = NumberOf(sc, ID_OP, values_.opacity);
    ip.nLights = sc.nLights;
    // What shines by itself does not also reflect.
    const float own = NumberOf(sc, ID_SI, values_.selfIllum);
    if (own > 0.0f) {
        ip.selfIllum = ip.diffuse * own;
        ip.diffuse *= 1.0f - own;
        ip.ambient *= 1.0f - own;
    }
}

void StdMtl::Shade(ShadeContext& sc) {
    if (sc.mode == SCMODE_SHADOW) {
        sc.out.c = Color();
        sc.out.t = ShadowTransparency(sc);
        return;
    }
    IllumParams ip;
    FillIllumParams(sc, ip);
    if (Shader* const shader = GetShader())
        shader->Illum(sc, ip);
    else
        blinn_.Illum(sc, ip);
    sc.out.c = ip.finalC;
    sc.out.t = ip.finalT;
}

Color StdMtl::ShadowTransparency(ShadeContext& sc) {
    const float clear = 1.0f - NumberOf(sc, ID_OP, values_.opacity);
    return {clear, clear, clear};
}

RefTargetHandle StdMtl::Clone(RemapDir& remap) {
    auto* const copy = new StdMtl;
    CopyReferences(*copy, remap);
    copy->Refresh();
    return copy;
}

} // namespace host
