#include "modifiers/deform_modifiers.h"

#include <cmath>
#include <numbers>

#include "core/euler.h"
#include "sdk/noise.h"

namespace host {

namespace {

constexpr float kRadians = float(std::numbers::pi) / 180.0f;

template <class M>
BlockClassDesc<M>& DescOf(const char* internalName, std::vector<ParamDef> params) {
    static BlockClassDesc<M> desc(M::kName, internalName, OSM_CLASS_ID, M::kClass, std::move(params));
    return desc;
}

class MatrixDeformer : public Deformer {
public:
    explicit MatrixDeformer(const Matrix3& tm) : tm_(tm) {}
    Point3 Map(int, const Point3& p) override { return p * tm_; }

private:
    Matrix3 tm_;
};

/// Round the arc of radius 1 / `curve`, toward the axis at `direction`.
class BendDeformer : public Deformer {
public:
    BendDeformer(float curve, float direction)
        : curve_(curve), cosine_(std::cos(direction)), sine_(std::sin(direction)) {}
    Point3 Map(int, const Point3& p) override {
        const float toward = p.x * cosine_ + p.y * sine_, across = p.y * cosine_ - p.x * sine_;
        const float radius = 1.0f / curve_, angle = p.z * curve_;
        const float bent = radius - (radius - toward) * std::cos(angle);
        return {bent * cosine_ - across * sine_, bent * sine_ + across * cosine_, (radius - toward) * std::sin(angle)};
    }

private:
    float curve_, cosine_, sine_;
};

class NoiseDeformer : public Deformer {
public:
    NoiseDeformer(const Point3& strength, float scale, float phase, int seed)
        : strength_(strength), frequency_(1.0f / scale), phase_(phase), shift_(float(seed % 256) * 1.37f) {}
    Point3 Map(int, const Point3& p) override {
        const Point3 at = p * frequency_ + Point3(shift_, shift_, shift_);
        // One function read at three places far apart.
        return p + strength_ * Point3(noise3(at.x + 0.5f, at.y, at.z + phase_),
                                      noise3(at.x + 101.5f, at.y + phase_, at.z),
                                      noise3(at.x + phase_, at.y + 53.5f, at.z));
    }

private:
    Point3 strength_;
    float frequency_, phase_, shift_;
};

ClassDesc2* XFormDesc() {
    return &DescOf<XFormModifier>("xform", {PointParam(XFormModifier::kPosition, "position", {0, 0, 0}),
                                            PointParam(XFormModifier::kRotation, "rotation", {0, 0, 0}),
                                            PointParam(XFormModifier::kScale, "scale", {1, 1, 1}),
                                            PointParam(XFormModifier::kCenter, "center", {0, 0, 0})});
}

ClassDesc2* BendDesc() {
    return &DescOf<BendModifier>("bend", {FloatParam(BendModifier::kAngle, "angle", 0, -kHuge, kHuge),
                                          FloatParam(BendModifier::kDirection, "direction", 0, -kHuge, kHuge)});
}

ClassDesc2* NoiseDesc() {
    return &DescOf<NoiseModifier>("noise", {PointParam(NoiseModifier::kStrength, "strength", {0, 0, 0}),
                                            FloatParam(NoiseModifier::kWaveSize, "scale", 1, 1e-6f, kHuge),
                                            FloatParam(NoiseModifier::kPhase, "phase", 0, -kHuge, kHuge),
                                            IntParam(NoiseModifier::kSeed, "seed", 0, 0, 1000000)});
}

} // namespace

ClassDesc* XFormModifierDesc() {
    return XFormDesc();
}
ClassDesc* BendModifierDesc() {
    return BendDesc();
}
ClassDesc* NoiseModifierDesc() {
    return NoiseDesc();
}

void DeformModifier::ModifyObject(TimeValue t, ModContext&, ObjectState* os, INode*) {
    if (!os->obj->IsDeformable()) return;
    if (const auto deformer = MakeDeformer(t, os->obj->GetDeformBBox(true))) os->obj->Deform(deformer.get(), true);
}

XFormModifier::XFormModifier() {
    XFormDesc()->MakeAutoParamBlocks(this);
}

std::unique_ptr<Deformer> XFormModifier::MakeDeformer(TimeValue t, const Box3&) {
    const Point3 center = Point(kCenter, t);
    return std::make_unique<MatrixDeformer>(TransMatrix(-center) * ScaleMatrix(Point(kScale, t)) *
                                            EulerMatrix(Point(kRotation, t)) *
                                            TransMatrix(center + Point(kPosition, t)));
}

BendModifier::BendModifier() {
    BendDesc()->MakeAutoParamBlocks(this);
}

std::unique_ptr<Deformer> BendModifier::MakeDeformer(TimeValue t, const Box3& box) {
    const float height = box.IsEmpty() ? 0.0f : box.Width().z, angle = Float(kAngle, t) * kRadians;
    if (!(height > 0.0f) || std::abs(angle) < 1e-6f) return nullptr;
    return std::make_unique<BendDeformer>(angle / height, Float(kDirection, t) * kRadians);
}

NoiseModifier::NoiseModifier() {
    NoiseDesc()->MakeAutoParamBlocks(this);
}

std::unique_ptr<Deformer> NoiseModifier::MakeDeformer(TimeValue t, const Box3&) {
    return std::make_unique<NoiseDeformer>(Point(kStrength, t), Float(kWaveSize, t), Float(kPhase, t), Int(kSeed, t));
}

} // namespace host
