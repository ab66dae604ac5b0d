#pragma once
// A strand made slowly and plainly: one value at a time, from the formulas, without tables or vectors.

#include "Base/EngineFixture.h"
#include "Base/HUtil/Subdivide.h"
#include "Base/HairMath.h"

namespace engine {

class ReferenceStrand {
public:
    ReferenceStrand(const GenerationRun& run, const EmitterFace& face, int index)
        : run_(run), p_(*run.params), face_(face), mesh_(*run.mesh) {
        Roots(index);
        rng.Seed(uint32_t(index) * 13737u + face.seed);
        rng.Draw();
        Make();
    }
    HairRandom rng;
    bool made = false;
    Point3 bary, weights;
    int segments = 0;
    float fraction = 0;
    std::vector<Point3> control, position, tangent;

private:
    void Roots(int index) {
        HairRandom faceRandom;
        faceRandom.Seed(face_.seed);
        count_ = RandomRound(faceRandom, face_.strandCount);
        attractors_ = RandomRound(faceRandom, face_.clumpValue);
        for (int i = 0; i < count_; ++i) roots_.push_back(RandomBarycentric(faceRandom));
        bary = roots_[size_t(index)];
        const int limit = attractors_ < 1 || attractors_ >= count_ ? count_ : attractors_;
        attracted_ = p_.Int(pid_clumpAttract) != 0 && index >= limit;
    }
    const VertexStrand& Corner(int c) const { return *run_.control->Strand(mesh_.faces[size_t(face_.face)].v[c]); }
    Point3 CornerPoint(int c, int k) const { return Corner(c).ControlPoint(k + 1) * run_.objectToOutput; }
    Point3 At(int k, const Point3& w) const {
        return BaryInterpolate(w, CornerPoint(0, k), CornerPoint(1, k), CornerPoint(2, k));
    }

    void Make() {
        lengthSample_ = run_.randDist[0].Sample(rng);
        rng.Draw();                                              // thickness
        for (int i = 0; i < 3; ++i) rng.Draw();                  // colours
        const float turn = float(rng.Draw() - 16383) / 16383.0f; // orientation
        const float angle = float(p_.Int(pid_orientAngle)) + p_.Float(pid_orientRand) * 90.0f * turn;
        const float s1 = float(rng.Draw() - 16383) / 16383.0f, s2 = float(rng.Draw() - 16383) / 16383.0f;
        Perturb(s1, s2);
        Clump();
        const float x = float(run_.knots - 1) * 1.0f * lengthSample_;
        segments = int(std::ceil(x));
        if (segments == 0) return;
        made = true;
        fraction = x - float(segments - 1);
        ControlPoints();
        Points();
        Curl(angle, float(rng.Draw() - 16383) / 16383.0f);
    }

    static void Shift(Point3& w, int i, float x) {
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        const float a = std::fabs(w[j]), b = std::fabs(w[k]);
        const bool tiny = a + b < 0.001f;
        w[i] += x;
        w[j] -= tiny ? x * 0.5f : x * (a / (a + b));
        w[k] -= tiny ? x * 0.5f : x * (b / (a + b));
    }
    void Perturb(float s1, float s2) {
        weights = bary;
        const float d = p_.Float(pid_dirRand);
        if (d == 0.0f) return;
        Shift(weights, 0, d * s1);
        Shift(weights, 1, d * s2);
        for (int i = 0; i < 3; ++i) {
            if (weights[i] < -d) Shift(weights, i, -d - weights[i]);
            if (weights[i] > 1.0f + d) Shift(weights, i, 1.0f + d - weights[i]);
        }
    }
    void Clump() {
        const float amount = p_.Float(pid_clumpAmount);
        if (!(amount > 0.0f)) return;
        std::vector<Point3> candidates;
        if (p_.Int(pid_clumpAttract) == 0)
            candidates = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
        else if (attracted_)
            candidates.assign(roots_.begin(), roots_.begin() + attractors_);
        float nearest = 1.0e30f;
        Point3 winner;
        for (const Point3& c : candidates) {
            const float d = Length(BaryInterpolate(c - bary, face_.corner[0], face_.corner[1], face_.corner[2]));
            if (d < nearest) nearest = d, winner = c;
        }
        if (nearest < p_.Float(pid_clumpRadius)) weights = (1.0f - amount) * weights + amount * winner;
    }

    float Fade(int k) const {
        const float x = k < 3 * length_ ? float(k) / float(3 * length_) : 1.0f;
        const CurveShape* curve = p_.Curve(pid_curve_clumpShape);
        return curve ? curve->Eval(x) : x;
    }
    void ControlPoints() {
        length_ = segments;
        const auto point = [&](int k) {
            const float a = Fade(k);
            return At(k, (1.0f - a) * bary + a * weights);
        };
        for (int k = 0; k <= 3 * (run_.knots - 1); ++k) control.push_back(point(k));
        if (p_.Float(pid_dirRand) >= 0.001f) {
            float target = 0;
            for (int s = 1; s <= segments; ++s) {
                const float chord = Length(At(3 * s, bary) - At(3 * (s - 1), bary));
                target += s == segments ? chord * fraction : chord;
            }
            float length = 0;
            for (int s = 1; s < run_.knots; ++s) {
                const float chord = Length(control[size_t(3 * s)] - control[size_t(3 * s - 3)]);
                if (length + chord > target) {
                    segments = s;
                    fraction = (target - length) / chord;
                    break;
                }
                length += chord;
            }
        }
        control.resize(size_t(3 * segments + 1));
    }
    void Points() {
        const int steps = run_.steps;
        for (int s = 0; s < segments; ++s) {
            const Point3* c = &control[size_t(3 * s)];
            const bool last = s == segments - 1;
            const int n = last ? int(std::ceil(fraction * float(steps))) : steps;
            for (int j = s == 0 ? 0 : 1; j <= n; ++j) {
                const float f = last ? fraction : 1.0f;
                position.push_back(BezierPoint(BezierWeightsAt(f * float(j) / float(n)), c));
                tangent.push_back(BezierDerivative(BezierWeightsAt(f * float(j) / float(n)), c));
                if (j == 0) position.back() = c[0], tangent.back() = c[1] - c[0];
                if (j == n && f == 1.0f) position.back() = c[3], tangent.back() = c[3] - c[2];
            }
            // The joint's tangent is that of the segment that starts there.
            if (!last) tangent.back() = c[4] - c[3];
        }
    }
    void Curl(float angle, float s) {
        if (!p_.On(pid_useCurliness)) return;
        const float phi = p_.Float(pid_curlOrientRandom) * s * 180.0f * 0.017453292f;
        const size_t n = position.size();
        const Point3 axis = p_.Int(pid_orientAxis) == 0   ? Point3(1, 0, 0)
                            : p_.Int(pid_orientAxis) == 1 ? Point3(0, 1, 0)
                                                          : Point3(0, 0, 1);
        Point3 side = std::fabs(axis.x) + std::fabs(axis.y) >= 0.001f ? Point3(-axis.y, axis.x, 0) : Point3(1, 0, 0);
        const Point3 up = CrossProd(axis, side);
        const float a = angle * 0.017453292f;
        const Point3 o = VectorTransform(side * HairMath::Cos(a) + up * HairMath::Sin(a), run_.request.worldToOutput);
        Point3 before, frame;
        const CurveShape *radiusCurve = p_.Curve(pid_curve_curlRadius), *turnsCurve = p_.Curve(pid_curve_curlTurns);
        const int count = p_.On(pid_curlLenRandCut) ? run_.maxPoints : int(n);
        for (size_t i = 0; i < n; ++i) {
            const Point3 t = Normalize(tangent[i]);
            if (i == 0) {
                side = Point3(1, 0, 0);
                for (size_t j = 1; j < n; ++j) {
                    const Point3 c = CrossProd(o, Normalize(tangent[j]));
                    if (!(LengthSquared(c) > 0.001f)) continue;
                    side = Normalize(c);
                    break;
                }
            } else {
                side = Normalize(CrossProd(before, t));
            }
            frame = CrossProd(t, side);
            if (DotProd(frame, before) < 0.0f) frame = -frame;
            before = frame;
            const float u = float(i) / float(count - 1);
            const float alpha = p_.Float(pid_curlTurns) * 6.2831855f * (turnsCurve ? turnsCurve->Eval(u) : u) + phi;
            const float r = p_.Float(pid_curlRadius) * (radiusCurve ? radiusCurve->Eval(u) : 1.0f);
            position[i] += CrossProd(t, frame) * (r * HairMath::Sin(alpha)) + frame * (r * HairMath::Cos(alpha));
        }
        for (size_t i = 0; i < n; ++i) tangent[i] = position[i + 1 < n ? i + 1 : i] - position[i > 0 ? i - 1 : i];
    }

    const GenerationRun& run_;
    const HairParams& p_;
    const EmitterFace& face_;
    const Mesh& mesh_;
    int count_ = 0, attractors_ = 0, length_ = 0;
    bool attracted_ = false;
    std::vector<Point3> roots_;
    float lengthSample_ = 1;
};

} // namespace engine
