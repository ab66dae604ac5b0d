#pragma once
// Bezier splines and shapes.

#include <vector>

#include "sdk/point3.h"

inline constexpr int KTYPE_AUTO = 0, KTYPE_CORNER = 1, KTYPE_BEZIER = 2;
inline constexpr int LTYPE_CURVE = 0, LTYPE_LINE = 1;

/// One knot: position and absolute handle positions.
struct SplineKnot {
    int ktype = KTYPE_BEZIER;
    int ltype = LTYPE_CURVE;
    Point3 point, inVec, outVec;
};

/// One open or closed Bezier spline.
struct Spline3D {
    std::vector<SplineKnot> knots;
    bool closed = false;
    int KnotCount() const { return int(knots.size()); }
};

/// A shape of several splines.
struct BezierShape {
    std::vector<Spline3D> splines;
    Spline3D* NewSpline() { return &splines.emplace_back(); }
    int SplineCount() const { return int(splines.size()); }
};
