#pragma once
// Axis-aligned boxes.

#include <algorithm>

#include "sdk/matrix3.h"

/// Axis-aligned box; a new box is empty (min above max).
class Box3 {
public:
    Point3 pmin{1e30f, 1e30f, 1e30f};
    Point3 pmax{-1e30f, -1e30f, -1e30f};

    Box3() = default;
    Box3(const Point3& lo, const Point3& hi) : pmin(lo), pmax(hi) {}
    void Init() { *this = Box3(); }
    bool IsEmpty() const { return pmin.x > pmax.x || pmin.y > pmax.y || pmin.z > pmax.z; }
    const Point3& Min() const { return pmin; }
    const Point3& Max() const { return pmax; }
    Point3 Center() const { return (pmin + pmax) / 2.0f; }
    Point3 Width() const { return pmax - pmin; }
    bool Contains(const Point3& p) const {
        return p.x >= pmin.x && p.y >= pmin.y && p.z >= pmin.z && p.x <= pmax.x && p.y <= pmax.y && p.z <= pmax.z;
    }
    /// Grows to hold `p`.
    Box3& operator+=(const Point3& p) {
        pmin = {std::min(pmin.x, p.x), std::min(pmin.y, p.y), std::min(pmin.z, p.z)};
        pmax = {std::max(pmax.x, p.x), std::max(pmax.y, p.y), std::max(pmax.z, p.z)};
        return *this;
    }
    Box3& operator+=(const Box3& b) {
        if (!b.IsEmpty()) *this += b.pmin, *this += b.pmax;
        return *this;
    }
    /// Moves every side outward by `margin`.
    void EnlargeBy(float margin) {
        if (IsEmpty()) return;
        pmin -= Point3(margin, margin, margin);
        pmax += Point3(margin, margin, margin);
    }
    /// Corner 0..7; bit 0 picks x, bit 1 y, bit 2 z.
    Point3 Corner(int i) const {
        return {(i & 1) ? pmax.x : pmin.x, (i & 2) ? pmax.y : pmin.y, (i & 4) ? pmax.z : pmin.z};
    }
};

/// The box of the eight transformed corners; an empty box stays empty.
inline Box3 operator*(const Box3& b, const Matrix3& m) {
    Box3 out;
    if (!b.IsEmpty())
        for (int i = 0; i < 8; ++i) out += b.Corner(i) * m;
    return out;
}
