#include "render/light_desc.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

/// Shadow rays start this share of the point's distance from the camera away from it, so that a point on a surface is
/// not in its own shadow for the sake of rounding.
constexpr float kShadowStart = 5e-5f;
constexpr float kEndless = 1e30f;

float HalfInRadians(float degrees) {
    return degrees * 0.5f * 3.14159265358979f / 180.0f;
}

/// 0 at or below 0, 1 at or above 1, smooth between.
float SmoothStep(float s) {
    s = std::clamp(s, 0.0f, 1.0f);
    return s * s * (3.0f - 2.0f * s);
}

/// 0 up to `from`, 1 beyond `to`, smooth between; a step where both are the same.
float FadeIn(float distance, float from, float to) {
    return to > from ? SmoothStep((distance - from) / (to - from)) : float(distance > from);
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
    shadowColor_ = block->GetColor(kLightShadowColor, t);
    shadowBias_ = block->GetFloat(kLightShadowBias, t);
    fades_ = ls.useNearAtten || ls.useFarAtten || ls.decay != DECAY_NONE;
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
    acrossWidth_ = Normalize(lightToCam.GetRow(0));
    // Lengths along the height count as if it were the width.
    acrossHeight_ = Normalize(lightToCam.GetRow(1)) * ls.aspect;
    const auto edge = [&](float size) {
        if (ls.type != SPOT_LGT) return size;
        return ls.rectangular ? std::tan(HalfInRadians(size)) : std::cos(HalfInRadians(size));
    };
    full_ = edge(ls.hotsize);
    none_ = edge(ls.fallsize);
    // A hard edge where both are the same.
    slope_ = full_ != none_ ? 1.0f / (full_ - none_) : 0.0f;
    if (generator_ && ls.on && ls.shadow) generator_->UpdateViewDepParams(worldToCam);
}

// Share of the light that the cone or cylinder leaves at a point; `way` leads from there to the light.
inline float HostLightDesc::CrossSection(const Point3& way, const Point3& dir) const {
    const bool spot = ls.type == SPOT_LGT;
    float at = 0;
    if (ls.rectangular) {
        at = std::max(std::fabs(DotProd(way, acrossWidth_)), std::fabs(DotProd(way, acrossHeight_)));
        if (spot) {
            const float depth = DotProd(way, axis_);
            if (!(depth > 0.0f)) return 0.0f;
            at /= depth;
        }
    } else {
        at = spot ? DotProd(dir, axis_) : Length(way - axis_ * DotProd(way, axis_));
    }
    if (slope_ != 0.0f) return SmoothStep((at - none_) * slope_);
    // Cosines are larger inside, the others smaller.
    return float(spot && !ls.rectangular ? at >= full_ : at <= full_);
}

float HostLightDesc::Fading(float distance) const {
    float share = 1.0f;
    if (ls.useNearAtten) share = FadeIn(distance, ls.nearAttenStart, ls.nearAttenEnd);
    if (ls.useFarAtten) share *= 1.0f - FadeIn(distance, ls.farAttenStart, ls.farAttenEnd);
    if (ls.decay == DECAY_NONE || !(distance > ls.decayStart)) return share;
    const float ratio = ls.decayStart / distance;
    return share * (ls.decay == DECAY_INVERSE ? ratio : ratio * ratio);
}

// Unit direction to the light, its distance, and the share of the light that cone and distance leave there.
bool HostLightDesc::ToLight(const Point3& p, Point3& dir, float& distance, float& share) const {
    const Point3 way = position_ - p;
    share = 1.0f;
    if (ls.type == DIRECT_LGT) {
        dir = axis_;
        distance = kEndless;
        share = CrossSection(way, dir);
        if (fades_) share *= Fading(DotProd(way, axis_));
        return share > 0.0f;
    }
    distance = Length(way);
    if (!(distance > 0.0f)) return false;
    dir = way / distance;
    if (ls.type == SPOT_LGT) share = CrossSection(way, dir);
    if (fades_) share *= Fading(distance);
    return share > 0.0f;
}

// What part of the light is missing in shadow, the shadow multiplier included.
Color HostLightDesc::Missing(ShadeContext& sc, const Point3& p, const Point3& dir, float distance) {
    Color light(1, 1, 1);
    if (render_) {
        const float start = kShadowStart * (std::fabs(p.x) + std::fabs(p.y) + std::fabs(p.z)) + shadowBias_;
        if (start < distance) light = render_->Rays().Transmission(p, dir, start, distance, render_);
    }
    if (generator_ && light != Color()) light = light * generator_->Sample(sc, p);
    return (Color(1, 1, 1) - light) * shadowMultiplier_;
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
        const Color missing = Missing(sc, p, dir, distance);
        if (missing == Color(1, 1, 1) && shadowColor_ == Color()) return false;
        color = color * (Color(1, 1, 1) - missing) + shadowColor_ * share * missing;
    }
    return true;
}

} // namespace host
