#include "Base/CreateHair/StrandShading.h"

#include <algorithm>
#include <cmath>

#include "Base/HUtil/Simd.h"
#include "Base/HairMath.h"
#include "HRendBuf/HairImageInfo.h"
#include "HRendBuf/ViewParamsEx.h"

namespace {

constexpr float kNearZero = 0.001f;
constexpr float kNearOne = 0.999f;

float ClampInside(float v) {
    return v < kNearZero ? kNearZero : v > kNearOne ? kNearOne : v;
}

/// Four points or vectors. Every lane is the scalar function's expression.
struct Point3x4 {
    Float4 x, y, z;
    Point3x4(Float4 x, Float4 y, Float4 z) : x(x), y(y), z(z) {}
    explicit Point3x4(const Point3& p) : x(p.x), y(p.y), z(p.z) {}
    static Point3x4 Load(const PaddedPoints& p, int i) {
        return {Float4::Load(p.x.Data() + i), Float4::Load(p.y.Data() + i), Float4::Load(p.z.Data() + i)};
    }
    void Store(PaddedPoints& p, int i) const {
        x.Store(p.x.Data() + i);
        y.Store(p.y.Data() + i);
        z.Store(p.z.Data() + i);
    }
};
Point3x4 VectorTransform(const Point3x4& v, const Matrix3& m) {
    const auto component = [&](int c) {
        return v.x * Float4(m.GetRow(0)[c]) + v.y * Float4(m.GetRow(1)[c]) + v.z * Float4(m.GetRow(2)[c]);
    };
    return {component(0), component(1), component(2)};
}
Point3x4 PointTransform(const Point3x4& p, const Matrix3& m) {
    const Point3x4 v = VectorTransform(p, m), trans(m.GetTrans());
    return {v.x + trans.x, v.y + trans.y, v.z + trans.z};
}
Point3x4 CrossProd(const Point3x4& a, const Point3x4& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Point3x4 Normalize(const Point3x4& a) {
    const Float4 length = Sqrt(a.x * a.x + a.y * a.y + a.z * a.z), zero = 0.0f;
    return {SelectPositive(length, a.x / length, zero), SelectPositive(length, a.y / length, zero),
            SelectPositive(length, a.z / length, zero)};
}

} // namespace

bool UsesHairShader(Mtl* material, int materialId) {
    // A multi-material that contains itself is refused by the reference system, so this walk ends.
    while (material && material->IsMultiMtl()) {
        const int n = material->NumSubMtls();
        if (n <= 0) return false;
        material = material->GetSubMtl(materialId % n);
    }
    auto* standard = material && material->ClassID() == DMTL_CLASS_ID ? dynamic_cast<StdMat2*>(material) : nullptr;
    Shader* shader = standard ? standard->GetShader() : nullptr;
    return shader && shader->ClassID() == HAIR_SHADER_CLASS_ID;
}

StrandShading::StrandShading(const ShadingSetup& setup, const HairParams& params)
    : setup_(setup), flat_(params.Int(pid_crossSec) == 1), samples_(std::max(1, params.Int(pid_maxWidthSamples))),
      bias_(params.Float(pid_colBias)), channels_(params.mappingChannels.begin(), params.mappingChannels.end()),
      uvw_(params.mappingChannels.size()) {
    for (const int c : channels_) cylindrical_.push_back(c == STRANDMAP_CYLINDRICAL);
    wantsU_ = std::find(cylindrical_.begin(), cylindrical_.end(), char(1)) != cylindrical_.end();
    objectToWorld_ = setup.objectTM;
    worldToCam_ = setup.view->worldToCam;
    camToWorld_ = setup.view->camToWorld;
    objectToCam_ = objectToWorld_ * worldToCam_;
    worldToObject_ = Inverse(objectToWorld_);
    camToObject_ = camToWorld_ * worldToObject_;
    context_.globContext = setup.context;
    context_.ambientLight = setup.ambient;
    context_.shadow = setup.castsShadowQueries;
    context_.SetNode(setup.node, setup.time);
    context_.SetHalfImageSize(setup.image->widthF / 2.0f, setup.image->heightF / 2.0f);
    context_.SetTransforms(&objectToWorld_, &worldToCam_, &objectToCam_, &camToWorld_, &worldToObject_, &camToObject_);
    if (setup.useLights) context_.SetLights(int(setup.lights.size()), setup.lights.data());
}

bool StrandShading::Degenerate(const Point3& t) {
    return std::fabs(t.x) + std::fabs(t.y) + std::fabs(t.z) <= 0.0001f;
}

void StrandShading::SetStrand(const StrandSurface& s) {
    strand_ = s;
    const size_t id = size_t(s.materialId);
    if (id >= shaderById_.size()) shaderById_.resize(id + 1, -1);
    if (shaderById_[id] < 0) shaderById_[id] = UsesHairShader(setup_.material, s.materialId);
    hairShader_ = shaderById_[id] == 1;
}

// The eye vector, found in world space and turned back.
Point3 StrandShading::Eye(const Point3& p) const {
    return VectorTransform(camToWorld_.GetTrans() - p * camToWorld_, worldToCam_);
}

// The unit normal of a round strand towards the eye.
Point3 StrandShading::Facing(const Point3& p, const Point3& tangent) const {
    return Normalize(CrossProd(tangent, CrossProd(Eye(p), tangent)));
}

StrandShading::Frame StrandShading::RoundFrame(const Point3& facing, const Point3& tangent) const {
    Frame f;
    f.normal = facing;
    if (samples_ > 1) f.side = Normalize(CrossProd(tangent, f.normal));
    f.contextNormal = hairShader_ ? Normalize(tangent) : f.normal;
    return f;
}

StrandShading::Frame StrandShading::FlatFrame(const Point3& p, const Point3& tangent) const {
    Frame f;
    f.normal =
        hairShader_ ? Normalize(tangent) : Normalize(CrossProd(tangent, CrossProd(strand_.orientation, tangent)));
    f.backFace = DotProd(Eye(p), f.normal) < 0.0f;
    // Intended: with the hair shader T x n vanishes, so flat width samples do not spread.
    f.side = Normalize(CrossProd(tangent, f.normal));
    f.contextNormal = f.normal;
    return f;
}

void StrandShading::SetPoints(const PaddedPoints& position, const PaddedPoints& tangent, int count) {
    position_ = &position;
    tangent_ = &tangent;
    if (flat_) return;
    if (int(facing_.x.data.size()) < count + 8) facing_.Resize(count);
    for (int i = 0; i < count; i += 4) {
        const Point3x4 p = Point3x4::Load(position, i), t = Point3x4::Load(tangent, i);
        const Point3x4 away = PointTransform(p, camToWorld_), trans(camToWorld_.GetTrans());
        const Point3x4 eye = VectorTransform({trans.x - away.x, trans.y - away.y, trans.z - away.z}, worldToCam_);
        Normalize(CrossProd(t, CrossProd(eye, t))).Store(facing_, i);
    }
}

// Output channels by their mapping types, for (u, v) along the strand.
void StrandShading::FillMapping(float u, float v) {
    for (size_t i = 0; i < channels_.size(); ++i) {
        const int type = channels_[i];
        Point3& out = uvw_[i];
        out = Point3();
        if (type == STRANDMAP_CYLINDRICAL) {
            out = {u, v, 0.0f};
        } else if (type == STRANDMAP_STRAND_COLOR) {
            float t = v + bias_;
            t = t < 0.0f ? 0.0f : t > 1.0f ? 1.0f : t;
            out = Point3(strand_.base * (1.0f - t) + strand_.tip * t);
        } else if (type == STRANDMAP_EMITTER_COLOR) {
            if (strand_.mapRootCount > 2) out = strand_.mapRoot[2];
        } else if (type > 0 && type + 2 < strand_.mapRootCount) {
            out = strand_.mapRoot[type + 2];
            out.z = v;
        }
    }
}

void StrandShading::SetU(float u) {
    for (size_t i = 0; i < channels_.size(); ++i)
        if (channels_[i] == STRANDMAP_CYLINDRICAL) uvw_[i].x = u;
}

// Around a round strand at its single sample, which faces the viewer.
float StrandShading::Around() {
    const Point3& o = strand_.orientation;
    const Point3 side = Normalize(CrossProd(aroundTangent_, aroundNormal_));
    const float a = HairMath::Atan2(-DotProd(o, aroundNormal_), DotProd(o, side));
    const float u = (4.712389f - a) / HairMath::kTwoPi;
    return u > 1.0f ? u - 1.0f : u;
}

void StrandShading::ShadeAt(const Point3& p, const Point3& normal, bool backFace, Color& color, float& opacity) {
    const Point2 screen = setup_.image->ClampToImage(setup_.image->MapCamToScreen(p));
    context_.out.Reset();
    context_.SetPoint(p, p * camToObject_, normal, strand_.bary, uvw_.data(), 0, int(uvw_.size()), screen,
                      strand_.materialId, strand_.face, backFace);
    setup_.material->Shade(context_);
    color = context_.out.c;
    opacity = (1.0f - Intens(context_.out.t)) * setup_.visibility;
}

void StrandShading::ShadeSingle(const Point3& p, const Point3& tangent, float v, Color& color, float& opacity) {
    const Frame f = flat_ ? FlatFrame(p, tangent) : RoundFrame(Facing(p, tangent), tangent);
    FillMapping(0.5f, ClampInside(v));
    ShadeAt(p, f.contextNormal, f.backFace, color, opacity);
}

void StrandShading::ShadeSamples(int i, float thickness, float v, Color* colors, float* opacities) {
    const Point3 p = (*position_)[i], tangent = (*tangent_)[i];
    const Frame f = flat_ ? FlatFrame(p, tangent) : RoundFrame(facing_[i], tangent);
    const int n = samples_;
    FillMapping(0.5f, ClampInside(v));
    if (flat_) {
        if (n == 1) return ShadeAt(p, f.contextNormal, f.backFace, colors[0], opacities[0]);
        // Intended: flat samples span twice the thickness across, round ones lie at half of it.
        const Point3 first = p - f.side * thickness;
        for (int k = 0; k < n; ++k) {
            SetU(ClampInside(float(k) / float(n - 1)));
            const Point3 at = first + float(k) * f.side * (2.0f * thickness / float(n - 1));
            ShadeAt(at, f.contextNormal, f.backFace, colors[k], opacities[k]);
        }
        return;
    }
    if (n == 1) {
        aroundNormal_ = f.normal, aroundTangent_ = tangent;
        if (wantsU_) context_.SetAround(this, cylindrical_.data());
        ShadeAt(p + f.normal * (thickness / 2.0f), f.contextNormal, f.backFace, colors[0], opacities[0]);
        context_.SetAround(nullptr, nullptr);
        return;
    }
    const Point3& o = strand_.orientation;
    const float a = wantsU_ ? HairMath::Atan2(-DotProd(o, f.normal), DotProd(o, f.side)) : 0.0f;
    for (int k = 0; k < n; ++k) {
        const float across = -1.0f + float(k) * (2.0f / float(n - 1));
        const float rest = 1.0f - across * across;
        const Point3 m = f.normal * (rest > 0.0f ? std::sqrt(rest) : 0.0f) + f.side * across;
        if (wantsU_) {
            float u = (HairMath::kTwoPi - HairMath::Acos(across) - a) / HairMath::kTwoPi;
            if (u > 1.0f) u = u - 1.0f;
            SetU(u < kNearZero ? kNearZero : u);
        }
        ShadeAt(p + m * (thickness / 2.0f), hairShader_ ? f.contextNormal : m, f.backFace, colors[k], opacities[k]);
    }
}
