#include "Base/CreateHair/StrandCurve.h"

#include <cmath>

#include "Base/CreateHair/ShapeTables.h"
#include "Base/HUtil/Simd.h"
#include "Base/HUtil/Subdivide.h"

namespace {

// Below this amount of direction random the length is not corrected.
constexpr float kLengthCorrection = 0.001f;

/// One component of the three corner strands' control points.
struct Corners {
    const float *p0, *p1, *p2;
    Float4 At(int k, Float4 w0, Float4 w1, Float4 w2) const {
        return w0 * Float4::Load(p0 + k) + w1 * Float4::Load(p1 + k) + w2 * Float4::Load(p2 + k);
    }
    float At(int k, const Point3& w) const { return w.x * p0[k] + w.y * p1[k] + w.z * p2[k]; }
};

struct CornerStrands {
    Corners x, y, z;
    explicit CornerStrands(const StrandContext& c) {
        const OutputStrands& s = c.run->strands;
        x = {s.X(c.vertex[0]), s.X(c.vertex[1]), s.X(c.vertex[2])};
        y = {s.Y(c.vertex[0]), s.Y(c.vertex[1]), s.Y(c.vertex[2])};
        z = {s.Z(c.vertex[0]), s.Z(c.vertex[1]), s.Z(c.vertex[2])};
    }
    Point3 At(int k, const Point3& w) const { return {x.At(k, w), y.At(k, w), z.At(k, w)}; }
};

// Chord length of the strand that the root's own weights give: segments 1..n, the last one weighted by f.
float UnperturbedLength(const StrandContext& c, const CornerStrands& corners) {
    float length = 0;
    Point3 previous = corners.At(0, c.bary);
    for (int s = 1; s <= c.segments; ++s) {
        const Point3 knot = corners.At(3 * s, c.bary);
        const float chord = Length(knot - previous);
        length += s == c.segments ? chord * c.fraction : chord;
        previous = knot;
    }
    return length;
}

// Cuts the strand in the segment where its accumulated chord length first exceeds `target`.
void CutAtLength(StrandContext& c, float target) {
    float length = 0;
    for (int s = 1; s < c.run->knots; ++s) {
        const float chord = Length(c.control[3 * s] - c.control[3 * (s - 1)]);
        if (length + chord > target) {
            c.segments = s;
            c.fraction = (target - length) / chord;
            return;
        }
        length += chord;
    }
}

// Control points 0..last, four at a time. Weights: (1 - a) * root + a * final, a the fade factor of each control point;
// control points beyond 3n hold the full weight.
void Interpolate(StrandContext& c, const CornerStrands& corners, int last) {
    const int end = 3 * c.segments;
    const float* fade = c.tables->ClumpFade(c.segments);
    const Float4 count = float(end);
    const Float4 b0(c.bary.x), b1(c.bary.y), b2(c.bary.z);
    const Float4 w0(c.weights.x), w1(c.weights.y), w2(c.weights.z);
    for (int k = 0; k <= last; k += 4) {
        Float4 a;
        if (fade) {
            const auto at = [&](int i) { return fade[i < end ? i : end]; };
            a = Float4(at(k), at(k + 1), at(k + 2), at(k + 3));
        } else {
            const auto at = [&](int i) { return float(i < end ? i : end); };
            a = Float4(at(k), at(k + 1), at(k + 2), at(k + 3)) / count;
        }
        const Float4 rest = Float4(1.0f) - a;
        const Float4 u0 = rest * b0 + a * w0, u1 = rest * b1 + a * w1, u2 = rest * b2 + a * w2;
        corners.x.At(k, u0, u1, u2).Store(c.control.x.Data() + k);
        corners.y.At(k, u0, u1, u2).Store(c.control.y.Data() + k);
        corners.z.At(k, u0, u1, u2).Store(c.control.z.Data() + k);
    }
}

// One component of one full segment: point and tangent at j = 0..steps-1.
void SubdivideFull(const float* control, const StrandContext::Tables& tables, int steps, float* points,
                   float* tangents) {
    const float p0 = control[0], p1 = control[1], p2 = control[2], p3 = control[3];
    const float d0 = p1 - p0, d1 = p2 - p1, d2 = p3 - p2;
    points[0] = p0;
    tangents[0] = d0;
    for (int j = 0; j < steps - 1; j += 4) {
        const auto weight = [&](int i) { return Float4::Load(tables.weight[i].data() + j); };
        const auto slope = [&](int i) { return Float4::Load(tables.derivative[i].data() + j); };
        const Float4 p =
            Float4(p0) * weight(0) + Float4(p1) * weight(1) + Float4(p2) * weight(2) + Float4(p3) * weight(3);
        const Float4 t = Float4(d0) * slope(0) + Float4(d1) * slope(1) + Float4(d2) * slope(2);
        // May write past the segment; what follows is overwritten by the next one or is padding.
        p.Store(points + 1 + j);
        t.Store(tangents + 1 + j);
    }
}

// The last segment, used up to a fraction below one.
void SubdividePartial(StrandContext& c, int segment) {
    const Point3 control[4] = {c.control[3 * segment], c.control[3 * segment + 1], c.control[3 * segment + 2],
                               c.control[3 * segment + 3]};
    const int at = segment * c.run->steps;
    c.position.Set(at, control[0]);
    c.tangent.Set(at, control[1] - control[0]);
    for (int j = 1; j <= c.lastSteps; ++j) {
        const BezierWeights w = BezierWeightsAt(c.fraction * float(j) / float(c.lastSteps));
        c.position.Set(at + j, BezierPoint(w, control));
        c.tangent.Set(at + j, BezierDerivative(w, control));
    }
}

} // namespace

bool FindLength(StrandContext& c) {
    const GenerationRun& run = *c.run;
    const float whole = (run.params->isFur ? 1.0f : run.params->Float(pid_length)) * c.Factor(pid_surfDist_length);
    float x = float(run.knots - 1) * whole * c.lengthSample;
    if (run.params->On(pid_useModCutters)) x = x * c.cutFactor;
    c.segments = int(std::ceil(x));
    if (c.segments <= 0) return false;
    if (c.segments > run.knots - 1) c.segments = run.knots - 1, x = float(c.segments);
    c.fraction = x - float(c.segments - 1);
    return true;
}

void BuildControlPoints(StrandContext& c) {
    const CornerStrands corners(c);
    if (c.dirRand < kLengthCorrection) {
        Interpolate(c, corners, 3 * c.segments);
    } else {
        const float target = UnperturbedLength(c, corners);
        Interpolate(c, corners, 3 * (c.run->knots - 1));
        CutAtLength(c, target);
    }
    c.lastSteps = int(std::ceil(c.fraction * float(c.run->steps)));
    // A strand that is cut right at a joint has no step in its last segment; one without any length keeps two points.
    if (c.lastSteps < 1 && c.segments == 1) c.lastSteps = 1;
    c.points = (c.segments - 1) * c.run->steps + 1 + c.lastSteps;
}

void SubdivideStrand(StrandContext& c) {
    const int steps = c.run->steps;
    const bool whole = c.fraction >= 1.0f;
    const int full = whole ? c.segments : c.segments - 1;
    const auto component = [&](PaddedFloats& control, PaddedFloats& position, PaddedFloats& tangent) {
        for (int s = 0; s < full; ++s)
            SubdivideFull(control.Data() + 3 * s, *c.tables, steps, position.Data() + s * steps,
                          tangent.Data() + s * steps);
        if (!whole) return;
        const int last = 3 * full;
        position[full * steps] = control[last];
        tangent[full * steps] = control[last] - control[last - 1];
    };
    component(c.control.x, c.position.x, c.tangent.x);
    component(c.control.y, c.position.y, c.tangent.y);
    component(c.control.z, c.position.z, c.tangent.z);
    if (!whole) SubdividePartial(c, c.segments - 1);
}
