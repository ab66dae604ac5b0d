#pragma once
// A control strand: the strand that grows on one emitter vertex.

#include <vector>

#include "sdk/box3.h"
#include "sdk/interval.h"
#include "sdk/point2.h"
#include "sdk/point3.h"

class CtlHairMesh;

/// Where a control strand's spline comes from.
enum SplineSource { SPLINE_NOT_BUILT = 0, SPLINE_FROM_KNOTS = 1, SPLINE_FROM_KEYS = 2, SPLINE_FROM_DYNAMICS = 3 };

/// One control strand. Positions are in the emitter's object space at the current time.
struct VertexStrand {
    int vertex = 0; ///< emitter vertex
    int splineSource = SPLINE_NOT_BUILT;
    CtlHairMesh* owner = nullptr;
    std::vector<Point3> knots; ///< root first
    Point3 normal;             ///< growth direction at the root
    Point3 root;
    float leanAngle = 0, leanDirection = 0, bendAmount = 0, bendDirection = 0; ///< base values of this vertex
    Point3 display[2];           ///< root minus and plus five times the normal
    std::vector<Point3> in, out; ///< handles of the spline, one pair a knot
    std::vector<Point2> uv;      ///< mapping coordinates a knot; empty when none are carried
    Interval valid;
    bool splineDirty = true;

    int KnotCount() const { return int(knots.size()); }
    int Segments() const { return KnotCount() - 1; }
    /// Control point by flat Bezier index k = 1..3n+1: P0, out0, in1, P1, out1 ... Any other index reports an assertion
    /// once and gives the origin.
    Point3 ControlPoint(int k) const;
    /// Rebuilds the handles from the knots.
    void BuildSpline();
    /// Length of the Bezier spline, measured over 16 chords a segment; cached until the spline changes.
    float Length() const;
    /// Box of the spline's control polygon.
    Box3 Bounds() const;
    /// Difference of the last and first segment's directions, normalised: where the strand bends to. False when their
    /// squared difference is 0.001 or less, or the strand has fewer than two segments.
    bool BendDirection(Point3& direction) const;

private:
    mutable float length_ = -1;
    friend class CtlHairMesh;
};
