#pragma once
// A curve y = f(x) as plain data: what generation evaluates, without any host object.

#include <vector>

/// Kinds of knot.
enum CurveKnotType { CURVE_SMOOTH = 0, CURVE_CORNER = 1, CURVE_STEP = 2 };

inline constexpr int kMaxCurveKnots = 100;

/// One knot with the coefficients of the segment that ends at it.
struct CurveShapeKnot {
    float x = 0, y = 0;
    int type = CURVE_CORNER;
    float m = 0;   ///< second derivative at the knot
    float c1 = 0;  ///< linear coefficient of the segment that ends here
    float c0 = 0;  ///< constant of that segment
};

/// A curve over [xMin, xMax] with values in [yMin, yMax].
struct CurveShape {
    std::vector<CurveShapeKnot> knots;
    float xMin = 0, xMax = 1, yMin = 0, yMax = 1;
    bool useNoise = false;
    float noiseSize = 0.5f, noiseDensity = 10, noisePhase = 0;

    /// Corrects the knots into the ranges and fits the natural cubic splines through runs of Smooth knots.
    void Fit();
    /// Value at x; outside the first and last knot their y. Reentrant, allocates nothing. No knots: 0.
    float Eval(float x) const;
};
