#include "Base/DumMtl.h"

#include "Base/HairMath.h"
#include "HairDLL/StringTable.h"

namespace {

constexpr int kNameText = 40416;
constexpr float kAmbientShare = 0.3f;

/// Light that arrives at a point, split by what it does there.
struct LightSums {
    Color diffuse, specular;
};

LightSums SumLights(ShadeContext& sc, float shininess) {
    LightSums sums;
    const Point3 normal = sc.Normal(), mirror = sc.ReflectVector();
    for (int i = 0; i < sc.nLights; ++i) {
        LightDesc* light = sc.Light(i);
        Color color;
        Point3 direction;
        float cosine = 0, diffuseCoef = 1;
        if (!light || !light->Illuminate(sc, normal, color, direction, cosine, diffuseCoef)) continue;
        if (light->affectDiffuse) sums.diffuse = sums.diffuse + color * diffuseCoef;
        if (!light->affectSpecular) continue;
        const float along = DotProd(direction, mirror);
        if (along > 0.0f) sums.specular = sums.specular + color * (HairMath::Pow(along, shininess) * cosine);
    }
    return sums;
}

} // namespace

DumMtl::DumMtl(const Point3& diffuse, bool useVertexColor)
    : diffuse_(diffuse), useVertexColor_(useVertexColor), shininess_(HairMath::Pow(2.0f, 2.5f)) {
    SetName(FindString(kNameText));
}

void DumMtl::Shade(ShadeContext& sc) {
    if (sc.mode == SCMODE_SHADOW) {
        sc.out.c = Color(0, 0, 0);
        sc.out.t = Color(1, 1, 1);
        return;
    }
    const Color base = Color(useVertexColor_ ? sc.UVW(MAP_VERTCOLOR) : diffuse_);
    const LightSums sums = SumLights(sc, shininess_);
    sc.out.c = (sc.ambientLight * kAmbientShare + sums.diffuse) * base + sums.specular * specular_;
    sc.out.t = Color(0, 0, 0);
}

void DumMtl::GetClassName(TSTR& s) {
    s = FindString(kNameText);
}

void DumMtl::SetReference(int i, RefTargetHandle target) {
    if (i == 0) slot_ = target;
}

RefTargetHandle DumMtl::Clone(RemapDir& remap) {
    auto* copy = new DumMtl(diffuse_, useVertexColor_);
    copy->SetName(GetName());
    copy->ReplaceReference(0, slot_ ? remap.CloneRef(slot_) : nullptr);
    return copy;
}
