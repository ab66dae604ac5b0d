#pragma once
// Barycentric interpolation and the subdivision of cubic Bezier segments: the innermost arithmetic of every strand.

#include "sdk/point3.h"

/// b0 * p0 + b1 * p1 + b2 * p2.
constexpr Point3 BaryInterpolate(const Point3& b, const Point3& p0, const Point3& p1, const Point3& p2) {
    return {b.x * p0.x + b.y * p1.x + b.z * p2.x, b.x * p0.y + b.y * p1.y + b.z * p2.y,
            b.x * p0.z + b.y * p1.z + b.z * p2.z};
}

/// Weights of a cubic Bezier segment at one parameter.
struct BezierWeights {
    float p[4]; ///< of the four control points
    float d[3]; ///< of the three control point differences, giving the derivative
};

/// Bernstein weights at `u`: (1-u)^3, 3u(1-u)^2, 3u^2(1-u), u^3, and 3(1-u)^2, 6u(1-u), 3u^2.
constexpr BezierWeights BezierWeightsAt(float u) {
    const float v = 1.0f - u;
    return {{v * v * v, 3.0f * u * v * v, 3.0f * u * u * v, u * u * u}, {3.0f * v * v, 6.0f * u * v, 3.0f * u * u}};
}

constexpr Point3 BezierPoint(const BezierWeights& w, const Point3 c[4]) {
    return c[0] * w.p[0] + c[1] * w.p[1] + c[2] * w.p[2] + c[3] * w.p[3];
}

constexpr Point3 BezierDerivative(const BezierWeights& w, const Point3 c[4]) {
    return (c[1] - c[0]) * w.d[0] + (c[2] - c[1]) * w.d[1] + (c[3] - c[2]) * w.d[2];
}

/// Subdivides the segment with control points c[0..3] into `steps` >= 1 parts: writes steps + 1 points and tangents.
/// The ends are exact and their tangents the control point differences c1 - c0 and c3 - c2; inner tangents are the true
/// derivative.
inline void SubdivideSegment(int steps, const Point3 c[4], Point3* points, Point3* tangents) {
    points[0] = c[0];
    tangents[0] = c[1] - c[0];
    for (int i = 1; i < steps; ++i) {
        const BezierWeights w = BezierWeightsAt(float(i) / float(steps));
        points[i] = BezierPoint(w, c);
        tangents[i] = BezierDerivative(w, c);
    }
    points[steps] = c[3];
    tangents[steps] = c[3] - c[2];
}

/// The same over the parameters 0..f, 0 < f <= 1: point i lies at f * i / steps. An end below 1 is a point inside the
/// segment, so its tangent is the true derivative there.
inline void SubdivideSegmentPartial(int steps, float f, const Point3 c[4], Point3* points, Point3* tangents) {
    if (f >= 1.0f) return SubdivideSegment(steps, c, points, tangents);
    points[0] = c[0];
    tangents[0] = c[1] - c[0];
    for (int i = 1; i <= steps; ++i) {
        const BezierWeights w = BezierWeightsAt(f * float(i) / float(steps));
        points[i] = BezierPoint(w, c);
        tangents[i] = BezierDerivative(w, c);
    }
}
