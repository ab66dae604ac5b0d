// Handles, evaluation and length of strand splines.

#include "Base/HUtil/StrandSpline.h"

#include "Base/HUtil/Subdivide.h"

namespace {

/// Chords a segment that the length is measured over.
constexpr int kLengthChords = 16;

/// Tangent third at a row's end, from the end knot `p0` and the two knots after it (toward the inside).
Point3 EndTangent(const Point3& p0, const Point3& p1, const Point3& p2, float la, float lb) {
    const Point3 a = p1 - p0, b = p2 - p1;
    const float w = la / (la + lb);
    return (a * ((w + 1.0f) / la) - b * (w / lb)) / 3.0f;
}

/// The rule of all handles. `point(i)` and `step(i)` read knot i and the step after it; `set(i, in, out)` stores.
template <class PointAt, class StepAt, class Store>
void ComputeHandles(int n, const PointAt& point, const StepAt& step, const Store& set) {
    if (n <= 0) return;
    if (n == 1) return set(0, point(0), point(0));
    if (n == 2) {
        set(0, point(0), (2.0f * point(0) + point(1)) / 3.0f);
        return set(1, (2.0f * point(1) + point(0)) / 3.0f, point(1));
    }
    const float first = step(0), last = step(n - 2);
    set(0, point(0), point(0) + EndTangent(point(0), point(1), point(2), first, step(1)) * first);
    for (int i = 1; i < n - 1; ++i) {
        const Point3 p = point(i);
        const Point3 a = p - point(i - 1), b = point(i + 1) - p;
        const float lp = step(i - 1), li = step(i);
        const float w = lp / (lp + li);
        const Point3 t = (b * (w / li) + a * ((1.0f - w) / lp)) / 3.0f;
        set(i, p - t * lp, p + t * li);
    }
    // The last knot is the mirror image of the first: the row read backwards.
    const Point3 end = point(n - 1);
    set(n - 1, end + EndTangent(end, point(n - 2), point(n - 3), last, step(n - 3)) * last, end);
}

} // namespace

void BuildStrandHandles(int n, const Point3* points, Point3* in, Point3* out) {
    const float step = n > 1 ? 1.0f / float(n - 1) : 1.0f;
    ComputeHandles(
        n, [&](int i) { return points[i]; }, [&](int) { return step; },
        [&](int i, const Point3& before, const Point3& after) { in[i] = before, out[i] = after; });
}

void StrandSpline::SetPoints(int count, const Point3* points) {
    knots_.resize(size_t(count > 0 ? count : 0));
    for (size_t i = 0; i < knots_.size(); ++i) knots_[i].point = points[i];
    stepsValid_ = handlesValid_ = lengthValid_ = false;
}

void StrandSpline::SetPoint(int i, const Point3& p) {
    if (i < 0 || i >= Count()) return;
    knots_[size_t(i)].point = p;
    stepsValid_ = handlesValid_ = lengthValid_ = false;
}

void StrandSpline::UpdateSteps() const {
    if (stepsValid_) return;
    const float step = Count() > 1 ? 1.0f / float(Count() - 1) : 1.0f;
    for (StrandKnot& k : knots_) k.step = step;
    stepsValid_ = true;
}

void StrandSpline::UpdateHandles() const {
    if (handlesValid_) return;
    UpdateSteps();
    ComputeHandles(
        Count(), [&](int i) { return knots_[size_t(i)].point; }, [&](int i) { return knots_[size_t(i)].step; },
        [&](int i, const Point3& before, const Point3& after) {
            knots_[size_t(i)].in = before;
            knots_[size_t(i)].out = after;
        });
    handlesValid_ = true;
}

const StrandKnot& StrandSpline::Knot(int i) const {
    UpdateHandles();
    return knots_[size_t(i)];
}

Point3 StrandSpline::ControlPoint(int k) const {
    if (k < 1 || k > ControlPointCount()) return {};
    const StrandKnot& knot = Knot(k / 3);
    return k % 3 == 1 ? knot.point : k % 3 == 2 ? knot.out : knot.in;
}

Point3 StrandSpline::EvalSegment(int i, float u, Point3* derivative) const {
    const StrandKnot &a = Knot(i), &b = Knot(i + 1);
    const Point3 c[4] = {a.point, a.out, b.in, b.point};
    const BezierWeights w = BezierWeightsAt(u);
    if (derivative) *derivative = BezierDerivative(w, c);
    return BezierPoint(w, c);
}

float StrandSpline::Length() const {
    if (lengthValid_) return length_;
    length_ = 0.0f;
    Point3 points[kLengthChords + 1], tangents[kLengthChords + 1];
    for (int i = 0; i + 1 < Count(); ++i) {
        const StrandKnot &a = Knot(i), &b = Knot(i + 1);
        const Point3 c[4] = {a.point, a.out, b.in, b.point};
        SubdivideSegment(kLengthChords, c, points, tangents);
        for (int j = 0; j < kLengthChords; ++j) length_ += ::Length(points[j + 1] - points[j]);
    }
    lengthValid_ = true;
    return length_;
}
