#include "render/light_desc.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

/// Shadow rays start this share of the point's distance from the camera away from it, so that a point on a surface is
/// not in its own shadow for the sake of rounding.
constexpr float kShadowStart = 5e-5f;
constexpr float kEndless = 1e30f;

float CosOfHalf(float degrees) {
    return std::cos(degrees * 0.5f * 3.14159265358979f / 180.0f);
}

/// 0 at or below 0, 1 at or above 1, smooth between.
float SmoothStep(float s) {
    s = std::clamp(s, 0.0f, 1.0f);
    return s * s * (3.0f - 2.0f * s);
}

} // namespace

HostLightDesc::HostLightDesc(Light* light, INode* node) : light_(light) {
    inode = node;
    if (ShadowType* const type = light->GetShadowType()) {
        generator_.reset(type->CreateShadowGenerator(light, this, 0));
        shadGen = generator_.get();
    }
}

int HostLightDesc::Update(TimeValue t, RenderGlobalContext* rgc) {
    Interval valid = FOREVER;
    light_->EvalLightState(t, valid, &ls);
    affectDiffuse = ls.affectDiffuse;
    affectSpecular = ls.affectSpecular;
    ambientOnly = ls.ambientOnly;
    render_ = dynamic_cast<RenderContext*>(rgc);
    color_ = ls.color * ls.intens;
    if (rgc) color_ = color_ * rgc->globalLightLevel;
    lightToWorld = inode->GetObjectTM(t);
    lightToWorld.NoScale();
    worldToLight = Inverse(lightToWorld);

    IParamBlock2* const block = light_->Params();
    shadowMultiplier_ = block->GetFloat(kLightShadowMultiplier, t);
    include = block->GetInt(kLightInclude, t) != 0;
    exclude.clear();
    for (int i = 0; i < block->Count(kLightExclude); ++i)
        if (INode* const n = block->GetINode(kLightExclude, t, i)) exclude.push_back(n);
    if (generator_ && ls.on && ls.shadow) generator_->Update(t, rgc, lightToWorld);
    return 1;
}

void HostLightDesc::UpdateViewDepParams(const Matrix3& worldToCam) {
    lightToCam = lightToWorld * worldToCam;
    camToLight = Inverse(lightToCam);
    position_ = lightToCam.GetTrans();
    axis_ = Normalize(lightToCam.GetRow(2));
    full_ = ls.type == SPOT_LGT ? CosOfHalf(ls.hotsize) : ls.hotsize;
    none_ = ls.type == SPOT_LGT ? CosOfHalf(ls.fallsize) : ls.fallsize;
    // A hard edge where both are the same.
    slope_ = full_ != none_ ? 1.0f / (full_ - none_) : 0.0f;
    if (generator_ && ls.on && ls.shadow) generator_->UpdateViewDepParams(worldToCam);
}

// Unit direction to the light, its distance, and the share of the light that the cone leaves there.
bool HostLightDesc::ToLight(const Point3& p, Point3& dir, float& distance, float& share) const {
    const Point3 way = position_ - p;
    share = 1.0f;
    if (ls.type == DIRECT_LGT) {
        dir = axis_;
        distance = kEndless;
        const Point3 aside = way - axis_ * DotProd(way, axis_);
        const float from = Length(aside);
        share = slope_ != 0.0f ? SmoothStep((from - none_) * slope_) : float(from <= full_);
        return share > 0.0f;
    }
    distance = Length(way);
    if (!(distance > 0.0f)) return false;
    dir = way / distance;
    if (ls.type == SPOT_LGT) {
        const float cosine = DotProd(dir, axis_);
        share = slope_ != 0.0f ? SmoothStep((cosine - none_) * slope_) : float(cosine >= full_);
    }
    return share > 0.0f;
}

Color HostLightDesc::ShadowAt(ShadeContext& sc, const Point3& p, const Point3& dir, float distance) {
    Color light(1, 1, 1);
    if (render_) {
        const float start = kShadowStart * (std::fabs(p.x) + std::fabs(p.y) + std::fabs(p.z));
        light = render_->Rays().Transmission(p, dir, start, distance, render_);
    }
    if (generator_ && light != Color()) light = light * generator_->Sample(sc, p);
    return Color(1, 1, 1) + (light - Color(1, 1, 1)) * shadowMultiplier_;
}

bool HostLightDesc::Illuminate(ShadeContext& sc, const Point3& normal, Color& color, Point3& dir, float& dot_nl,
                               float& diffuseCoef) {
    if (!ls.on) return false;
    const Point3 p = sc.P();
    float distance = 0, share = 1;
    if (!ToLight(p, dir, distance, share)) return false;
    color = color_ * share;
    if (ambientOnly) {
        dot_nl = diffuseCoef = 1.0f;
        return true;
    }
    dot_nl = diffuseCoef = DotProd(normal, dir);
    if (!(dot_nl > 0.0f)) return false;
    if (sc.shadow && ls.shadow) {
        const Color light = ShadowAt(sc, p, dir, distance);
        if (light == Color()) return false;
        color = color * light;
    }
    return true;
}

} // namespace host
