#pragma once
// The cubic Bezier spline through the knots of a strand.

#include <vector>

#include "sdk/point3.h"

/// Handles (absolute positions) of the spline through `n` points with equal parameter steps 1 / (n - 1). Inner tangents
/// are those of the parabola through a knot and its neighbours, end tangents those of the parabola at its end; two
/// knots give a straight segment, one knot handles on the point.
void BuildStrandHandles(int n, const Point3* points, Point3* in, Point3* out);

/// One knot of a strand spline.
struct StrandKnot {
    float step = 0; ///< parameter step of the segment after this knot
    Point3 point;
    Point3 in;  ///< handle before the knot, absolute
    Point3 out; ///< handle after the knot, absolute
};

/// An ordered list of knots with lazily computed steps, handles and length. Not safe for concurrent first use.
class StrandSpline {
public:
    /// Replaces all knots. `count` < 0 counts as 0.
    void SetPoints(int count, const Point3* points);
    /// Moves one knot; an index outside the list is ignored.
    void SetPoint(int i, const Point3& p);
    int Count() const { return int(knots_.size()); }
    const Point3& Point(int i) const { return knots_[size_t(i)].point; }
    /// The knot with its step and handles up to date.
    const StrandKnot& Knot(int i) const;
    /// Number of control points: 3n + 1 for n segments, 0 without knots.
    int ControlPointCount() const { return knots_.empty() ? 0 : 3 * Count() - 2; }
    /// Control point by flat index, counted from 1: point 0, out 0, in 1, point 1 ... The origin outside the list.
    Point3 ControlPoint(int k) const;
    /// Point and, when wanted, derivative of segment `i` at parameter `u` in 0..1. The segment must exist.
    Point3 EvalSegment(int i, float u, Point3* derivative = nullptr) const;
    /// Length of the whole spline, measured over 16 chords a segment; 0 below two knots.
    float Length() const;

private:
    void UpdateSteps() const;
    void UpdateHandles() const;

    mutable std::vector<StrandKnot> knots_;
    mutable bool stepsValid_ = false, handlesValid_ = false, lengthValid_ = false;
    mutable float length_ = 0;
};
