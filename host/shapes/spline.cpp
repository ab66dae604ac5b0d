// Bezier splines: handles, points, lengths.

#include "sdk/spline.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kParts = 16; ///< parts of a piece that are measured on their own

/// The control points of one piece.
struct Piece {
    Point3 p[4];

    Point3 At(double t) const {
        const double s = 1 - t, w[4] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
        Point3 out;
        for (int k = 0; k < 3; ++k)
            out[k] = float(w[0] * double(p[0][k]) + w[1] * double(p[1][k]) + w[2] * double(p[2][k]) +
                           w[3] * double(p[3][k]));
        return out;
    }
    Point3 Derivative(double t) const {
        const float s = float(1 - t), u = float(t);
        return ((p[1] - p[0]) * (s * s) + (p[2] - p[1]) * (2 * s * u) + (p[3] - p[2]) * (u * u)) * 3.0f;
    }
    /// Length between two parameters, by Gauss-Legendre quadrature with five points.
    double LengthBetween(double a, double b) const {
        constexpr double kAt[5] = {-0.9061798459386640, -0.5384693101056831, 0, 0.5384693101056831, 0.9061798459386640};
        constexpr double kWeight[5] = {0.2369268850561891, 0.4786286704993665, 0.5688888888888889, 0.4786286704993665,
                                       0.2369268850561891};
        double sum = 0;
        for (int i = 0; i < 5; ++i) sum += kWeight[i] * double(Length(Derivative((a + b) / 2 + (b - a) / 2 * kAt[i])));
        return sum * (b - a) / 2;
    }
};

Piece PieceOf(const Spline3D& spline, int segment) {
    const int count = spline.KnotCount();
    if (count == 0) return {};
    const int first = std::clamp(segment, 0, std::max(spline.Segments() - 1, 0));
    const SplineKnot& a = spline.knots[size_t(first)];
    if (spline.Segments() == 0) return {{a.point, a.point, a.point, a.point}};
    const SplineKnot& b = spline.knots[size_t((first + 1) % count)];
    if (a.ltype == LTYPE_LINE) {
        const Point3 third = (b.point - a.point) / 3.0f;
        return {{a.point, a.point + third, b.point - third, b.point}};
    }
    return {{a.point, a.outVec, b.inVec, b.point}};
}

} // namespace

void Spline3D::ComputeBezPoints() {
    const int count = KnotCount();
    for (int i = 0; i < count; ++i) {
        SplineKnot& knot = knots[size_t(i)];
        if (knot.ktype == KTYPE_BEZIER) continue;
        const bool hasBefore = closed || i > 0, hasAfter = closed || i + 1 < count;
        const Point3 before = hasBefore ? knots[size_t((i + count - 1) % count)].point : knot.point;
        const Point3 after = hasAfter ? knots[size_t((i + 1) % count)].point : knot.point;
        if (knot.ktype == KTYPE_CORNER || !hasBefore || !hasAfter) {
            knot.inVec = knot.point + (before - knot.point) / 3.0f;
            knot.outVec = knot.point + (after - knot.point) / 3.0f;
        } else {
            const Point3 along = Normalize(after - before);
            knot.inVec = knot.point - along * (Length(before - knot.point) / 3.0f);
            knot.outVec = knot.point + along * (Length(after - knot.point) / 3.0f);
        }
    }
}

Point3 Spline3D::InterpBezier3D(int segment, float t) const {
    return PieceOf(*this, segment).At(double(std::clamp(t, 0.0f, 1.0f)));
}

Point3 Spline3D::TangentBezier3D(int segment, float t) const {
    const Piece piece = PieceOf(*this, segment);
    const double at = double(std::clamp(t, 0.0f, 1.0f));
    const Point3 direction = Normalize(piece.Derivative(at));
    if (!(direction == Point3())) return direction;
    // A handle on its knot: the curve leaves toward the next control point.
    const Point3 close = at < 0.5 ? piece.At(at + 1e-3) - piece.At(at) : piece.At(at) - piece.At(at - 1e-3);
    return Normalize(close);
}

SplinePlace PlaceAtParam(const Spline3D& spline, float u) {
    const int count = spline.Segments();
    if (count == 0) return {};
    const float at = std::clamp(u, 0.0f, 1.0f) * float(count);
    const int segment = std::min(int(at), count - 1);
    return {segment, at - float(segment)};
}

namespace {

SplinePlace PlaceOnCurve(const Spline3D& spline, float u, int paramType) {
    if (paramType != PARAM_NORMALIZED) return PlaceAtParam(spline, u);
    const SplineLengths lengths(spline);
    return lengths.At(u * lengths.Total());
}

} // namespace

Point3 Spline3D::InterpCurve3D(float u, int paramType) const {
    const SplinePlace place = PlaceOnCurve(*this, u, paramType);
    return InterpBezier3D(place.segment, place.t);
}

Point3 Spline3D::TangentCurve3D(float u, int paramType) const {
    const SplinePlace place = PlaceOnCurve(*this, u, paramType);
    return TangentBezier3D(place.segment, place.t);
}

float Spline3D::SegLength(int segment) const {
    if (Segments() == 0) return 0;
    const Piece piece = PieceOf(*this, segment);
    double sum = 0;
    for (int i = 0; i < kParts; ++i) sum += piece.LengthBetween(double(i) / kParts, double(i + 1) / kParts);
    return float(sum);
}

float Spline3D::SplineLength() const {
    return SplineLengths(*this).Total();
}

Box3 Spline3D::GetBoundingBox() const {
    Box3 box;
    for (const SplineKnot& k : knots) {
        box += k.point;
        box += k.inVec;
        box += k.outVec;
    }
    return box;
}

SplineLengths::SplineLengths(const Spline3D& spline) : spline_(spline) {
    double sum = 0;
    sums_.reserve(size_t(spline.Segments()) * kParts);
    for (int s = 0; s < spline.Segments(); ++s) {
        const Piece piece = PieceOf(spline, s);
        for (int i = 0; i < kParts; ++i) {
            sum += piece.LengthBetween(double(i) / kParts, double(i + 1) / kParts);
            sums_.push_back(sum);
        }
    }
}

SplinePlace SplineLengths::At(float length) const {
    if (sums_.empty()) return {};
    const double wanted = std::clamp(double(length), 0.0, sums_.back());
    const size_t part =
        std::min(size_t(std::lower_bound(sums_.begin(), sums_.end(), wanted) - sums_.begin()), sums_.size() - 1);
    const Piece piece = PieceOf(spline_, int(part / kParts));
    const double start = double(part % kParts) / kParts, before = part == 0 ? 0 : sums_[part - 1];
    double low = start, high = start + 1.0 / kParts, t = (low + high) / 2;
    for (int i = 0; i < 30; ++i) {
        const double over = before + piece.LengthBetween(start, t) - wanted,
                     speed = double(Length(piece.Derivative(t)));
        (over < 0 ? low : high) = t;
        const double newton = t - over / speed;
        // Halving where the speed is (nearly) zero or the step leads outside.
        const double next = newton > low && newton < high ? newton : (low + high) / 2;
        const bool done = std::abs(next - t) < 1e-9;
        t = next;
        if (done) break;
    }
    return {int(part / kParts), float(t)};
}

int BezierShape::KnotCount() const {
    int count = 0;
    for (const Spline3D& s : splines) count += s.KnotCount();
    return count;
}

Point3& BezierShape::ControlPoint(int i) {
    size_t knot = size_t(i) / 3, spline = 0;
    while (knot >= splines[spline].knots.size()) knot -= splines[spline++].knots.size();
    SplineKnot& k = splines[spline].knots[knot];
    return i % 3 == 0 ? k.point : i % 3 == 1 ? k.inVec : k.outVec;
}

Box3 BezierShape::GetBoundingBox() const {
    Box3 box;
    for (const Spline3D& s : splines) box += s.GetBoundingBox();
    return box;
}
