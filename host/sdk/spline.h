#pragma once
// Bezier splines and shapes.

#include <vector>

#include "sdk/box3.h"
#include "sdk/point3.h"

// Knot types.
inline constexpr int KTYPE_AUTO = 0;   ///< smooth: ComputeBezPoints places the handles
inline constexpr int KTYPE_CORNER = 1; ///< ComputeBezPoints places the handles on the straight lines to the neighbours
inline constexpr int KTYPE_BEZIER = 2; ///< the handles stay where they are
// Types of the piece after a knot.
inline constexpr int LTYPE_CURVE = 0, LTYPE_LINE = 1;
// What a parameter along a spline counts.
inline constexpr int PARAM_SIMPLE = 0;     ///< every piece the same share
inline constexpr int PARAM_NORMALIZED = 1; ///< share of the length

/// One knot: position and absolute handle positions.
struct SplineKnot {
    int ktype = KTYPE_BEZIER;
    int ltype = LTYPE_CURVE;
    Point3 point, inVec, outVec;
};

/// One open or closed Bezier spline. Indices count from 0; an index or a parameter out of range takes the nearest.
struct Spline3D {
    std::vector<SplineKnot> knots;
    bool closed = false;

    int KnotCount() const { return int(knots.size()); }
    /// Pieces between knots; none below two knots.
    int Segments() const { return KnotCount() < 2 ? 0 : closed ? KnotCount() : KnotCount() - 1; }
    /// Adds a knot with its handles at its place.
    void AddKnot(const Point3& point, int ktype = KTYPE_CORNER, int ltype = LTYPE_CURVE) {
        knots.push_back({ktype, ltype, point, point, point});
    }
    const Point3& GetKnotPoint(int i) const { return knots[size_t(i)].point; }
    /// Places the handles of smooth and corner knots. A smooth knot's handles lie along the line between its
    /// neighbours, a third of the distance to the neighbour away; at open ends they point at the neighbour.
    void ComputeBezPoints();
    /// Point at `t` (0..1) of a piece.
    Point3 InterpBezier3D(int segment, float t) const;
    /// Unit direction at `t` of a piece; where the handles lie on the knot, that of the curve close by. Zero for a
    /// piece without length.
    Point3 TangentBezier3D(int segment, float t) const;
    /// Point and unit direction at `u` (0..1) of the whole spline. PARAM_NORMALIZED measures the spline on every call:
    /// for many points take a SplineLengths.
    Point3 InterpCurve3D(float u, int paramType = PARAM_SIMPLE) const;
    Point3 TangentCurve3D(float u, int paramType = PARAM_SIMPLE) const;
    /// Lengths of one piece and of all, to about six digits.
    float SegLength(int segment) const;
    float SplineLength() const;
    /// Box of the knots and handles.
    Box3 GetBoundingBox() const;
};

/// A place on a spline: piece and parameter in it.
struct SplinePlace {
    int segment = 0;
    float t = 0;
};

/// The place at `u` (0..1) when every piece has the same share.
SplinePlace PlaceAtParam(const Spline3D& spline, float u);

/// Lengths along a spline that does not change meanwhile.
class SplineLengths {
public:
    explicit SplineLengths(const Spline3D& spline);
    float Total() const { return sums_.empty() ? 0.0f : float(sums_.back()); }
    /// The place at that length from the start, clamped to the spline.
    SplinePlace At(float length) const;

private:
    const Spline3D& spline_;
    std::vector<double> sums_; ///< lengths up to the end of every part; a piece has kParts
};

/// A shape of several splines.
struct BezierShape {
    std::vector<Spline3D> splines;
    Spline3D* NewSpline() { return &splines.emplace_back(); }
    int SplineCount() const { return int(splines.size()); }
    Spline3D* GetSpline(int i) { return i >= 0 && i < SplineCount() ? &splines[size_t(i)] : nullptr; }
    /// Knots of all splines.
    int KnotCount() const;
    /// Control point `i` of all splines: every knot has three, its place, its incoming and its outgoing handle.
    Point3& ControlPoint(int i);
    Box3 GetBoundingBox() const;
};
