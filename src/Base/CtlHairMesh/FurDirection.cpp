// Leaning and bending of fur.

#include "Base/CtlHairMesh/FurDirection.h"

#include <cmath>

#include "Base/HairMath.h"
#include "Base/SurfDist/SurfDistEvaluator.h"

namespace {

// Direction modes other than a mapping channel 1..99.
constexpr int kModeEmitter = -2, kModeWorld = -3;

float AbsSum(const Point3& v) {
    return std::fabs(v.x) + std::fabs(v.y) + std::fabs(v.z);
}

} // namespace

FurDirections::FurDirections(const HairParams& params, std::shared_ptr<const Mesh> mesh, const Matrix3& objectTM,
                             const ISurfaceProvider* surfaces)
    : params_(params), mesh_(std::move(mesh)), objectTM_(objectTM), worldToObject_(Inverse(objectTM)),
      normalTM_(NormalMatrix(objectTM)), surfaces_(size_t(kNumSurfDists)) {
    lowestFace_ = FindLowestFaces(*mesh_);
    for (const int pid : {pid_surfDist_leanAngle, pid_surfDist_leanDir, pid_surfDist_bendAmount, pid_surfDist_bendDir,
                          pid_surfDist_leanAbsolute, pid_surfDist_bendAbsolute, pid_surfDist_vdirRand})
        if (const SurfDistSettings* s = params.Surface(pid); s && surfaces)
            surfaces_[size_t(pid - kFirstSurfDistPid)] = surfaces->MakeEvaluator(*s, mesh_, objectTM);
}

FurDirections::~FurDirections() = default;

float FurDirections::BaseValue(int pid, int surfPid, int v) {
    auto& e = surfaces_[size_t(surfPid - kFirstSurfDistPid)];
    return e ? params_.Float(pid) * e->AtVertex(v) : params_.Float(pid);
}

float FurDirections::TiltAmount(int v) {
    return BaseValue(pid_vdirRand, pid_surfDist_vdirRand, v);
}

// The distribution's colour around grey as a unit vector; grey itself gives the zero vector.
Point3 FurDirections::AbsoluteDirection(int surfPid, int v) {
    auto& e = surfaces_[size_t(surfPid - kFirstSurfDistPid)];
    e->AtVertex(v);
    const AColor& c = e->Result();
    return Normalize(Point3(c.r - 0.5f, c.g - 0.5f, c.b - 0.5f));
}

Matrix3 FurDirections::Frame(int mode, int v, const Point3& normal) const {
    if (mode == kModeEmitter) return Matrix3();
    if (mode == kModeWorld) {
        Matrix3 m = worldToObject_;
        m.NoTrans();
        return m;
    }
    if (mode >= 1 && mode <= 99) return FrameFromMapping(*mesh_, v, mode, &normal, lowestFace_[size_t(v)].face);
    return FrameFromDirection(normal);
}

// A direction of mode `mode`'s frame in world space. Around the normal the frame itself is taken there, so that no lean
// is the world normal and scaled emitters grow hair straight out.
Point3 FurDirections::LeanToWorld(const Point3& local, int mode, int v, const FurDirection& d) const {
    const Matrix3 frame = Frame(mode, v, d.normalObject);
    if (mode == kModeEmitter || mode == kModeWorld)
        return Normalize(VectorTransform(VectorTransform(local, frame), objectTM_));
    const Point3 x = Normalize(VectorTransform(frame.GetRow(0), objectTM_)),
                 y = Normalize(VectorTransform(frame.GetRow(1), objectTM_));
    return Normalize(x * local.x + y * local.y + d.normal * local.z);
}

// Direction of leaning in world space; the normal when leaning is off. Two draws when it is on.
Point3 FurDirections::Lean(int v, FurDirection& d, HairRandom& rng) {
    if (!params_.On(pid_fur_useLeaning)) return d.normal;
    const float rand = params_.Float(pid_fur_leanAmtRand) * 90.0f, dirRand = params_.Float(pid_fur_leanDirRand) * 90.0f;
    const float lambda = RandomOffset(rng, d.leanAngle, rand) * HairMath::kDegToRad;       // draw: lean angle
    const float delta = RandomOffset(rng, d.leanDirection, dirRand) * HairMath::kDegToRad; // draw: lean direction
    const int mode = params_.Int(pid_fur_leanDirChan);
    if (params_.Int(pid_fur_leanAbsolute) == 1 && surfaces_[pid_surfDist_leanAbsolute - kFirstSurfDistPid]) {
        const Point3 absolute = AbsoluteDirection(pid_surfDist_leanAbsolute, v);
        return absolute == Point3() ? d.normal : LeanToWorld(absolute, mode, v, d);
    }
    const Point3 local(HairMath::Sin(lambda) * HairMath::Cos(delta), HairMath::Sin(lambda) * HairMath::Sin(delta),
                       HairMath::Cos(lambda));
    return LeanToWorld(local, mode, v, d);
}

// Polar bend. Two draws.
void FurDirections::BendPolar(int v, FurDirection& d, HairRandom& rng) {
    const Matrix3 frame = Frame(params_.Int(pid_fur_bendDirChan), v, d.normalObject);
    Point3 direction;
    float amount = 0;
    if (params_.Int(pid_fur_bendAbsolute) == 1 && surfaces_[pid_surfDist_bendAbsolute - kFirstSurfDistPid]) {
        // Intended: an absolute bend has no amount of its own, so it acts through bend vectors only.
        rng.Skip(2); // two draws, discarded
        direction = VectorTransform(AbsoluteDirection(pid_surfDist_bendAbsolute, v), frame);
    } else {
        const float angle = RandomOffset(rng, d.bendDirection, params_.Float(pid_fur_bendDirRand) * 90.0f) *
                            HairMath::kDegToRad;                                      // draw: bend direction
        amount = RandomReduce(rng, d.bendAmount, params_.Float(pid_fur_bendAmtRand)); // draw: bend amount
        direction = VectorTransform(Point3(HairMath::Cos(angle), HairMath::Sin(angle), 0.0f), frame);
    }
    if (amount < 0.0f) amount = -amount, direction = -direction;
    if (!(amount > 0.001f && AbsSum(direction) > 0.01f)) return;
    d.bend = FurDirection::BendPolar;
    d.polarBend = Normalize(VectorTransform(direction * amount, objectTM_));
    d.polarAmount = amount;
}

FurDirection FurDirections::Next(int v, bool carries, HairRandom& rng) {
    const bool polar = params_.On(pid_fur_useBending) && !params_.On(pid_fur_bendStyle);
    FurDirection d;
    if (!carries) {
        if (params_.On(pid_fur_useLeaning)) rng.Skip(2); // lean angle, lean direction
        if (polar) rng.Skip(2);                          // bend direction, bend amount
        return d;
    }
    d.normalObject = mesh_->VertexNormals()[size_t(v)];
    d.normal = Normalize(VectorTransform(d.normalObject, normalTM_));
    d.leanAngle = BaseValue(pid_fur_leanAngle, pid_surfDist_leanAngle, v);
    d.leanDirection = BaseValue(pid_fur_leanDir, pid_surfDist_leanDir, v);
    d.bendAmount = BaseValue(pid_fur_bendAmount, pid_surfDist_bendAmount, v);
    d.bendDirection = BaseValue(pid_fur_bendDir, pid_surfDist_bendDir, v);
    d.lean = Lean(v, d, rng);
    if (polar)
        BendPolar(v, d, rng);
    else if (params_.On(pid_fur_useBending))
        d.bend = FurDirection::BendLeaning;
    return d;
}
