#pragma once
// Affine matrices for row vectors: v' = v * M, and A * B applies A first.

#include "sdk/point3.h"

/// 4x3 affine matrix: rows 0..2 are the images of the axes, row 3 the translation.
class Matrix3 {
public:
    /// The identity.
    constexpr Matrix3() : rows_{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}} {}
    constexpr Matrix3(const Point3& r0, const Point3& r1, const Point3& r2, const Point3& translation)
        : rows_{r0, r1, r2, translation} {}

    constexpr const Point3& GetRow(int i) const { return rows_[i]; }
    constexpr void SetRow(int i, const Point3& row) { rows_[i] = row; }
    constexpr const Point3& GetTrans() const { return rows_[3]; }
    constexpr void SetTrans(const Point3& t) { rows_[3] = t; }
    constexpr void NoTrans() { rows_[3] = Point3(); }
    /// Scales every axis to unit length, keeping directions and translation.
    void NoScale() {
        for (int i = 0; i < 3; ++i) rows_[i] = Normalize(rows_[i]);
    }

    /// `v` through the rotation and scale part only.
    constexpr Point3 VectorTransform(const Point3& v) const {
        return {v.x * rows_[0].x + v.y * rows_[1].x + v.z * rows_[2].x,
                v.x * rows_[0].y + v.y * rows_[1].y + v.z * rows_[2].y,
                v.x * rows_[0].z + v.y * rows_[1].z + v.z * rows_[2].z};
    }
    constexpr Point3 PointTransform(const Point3& p) const {
        return {p.x * rows_[0].x + p.y * rows_[1].x + p.z * rows_[2].x + rows_[3].x,
                p.x * rows_[0].y + p.y * rows_[1].y + p.z * rows_[2].y + rows_[3].y,
                p.x * rows_[0].z + p.y * rows_[1].z + p.z * rows_[2].z + rows_[3].z};
    }
    constexpr float Determinant() const { return DotProd(rows_[0], CrossProd(rows_[1], rows_[2])); }

    friend constexpr bool operator==(const Matrix3& a, const Matrix3& b) {
        for (int i = 0; i < 4; ++i)
            if (!(a.rows_[i] == b.rows_[i])) return false;
        return true;
    }

private:
    Point3 rows_[4];
};

constexpr Point3 operator*(const Point3& p, const Matrix3& m) {
    return m.PointTransform(p);
}
constexpr Point3 VectorTransform(const Point3& v, const Matrix3& m) {
    return m.VectorTransform(v);
}
constexpr Matrix3 operator*(const Matrix3& a, const Matrix3& b) {
    return {b.VectorTransform(a.GetRow(0)), b.VectorTransform(a.GetRow(1)), b.VectorTransform(a.GetRow(2)),
            b.PointTransform(a.GetRow(3))};
}

/// The inverse by cofactors; a singular matrix gives the identity.
constexpr Matrix3 Inverse(const Matrix3& m) {
    const Point3 a = m.GetRow(0), b = m.GetRow(1), c = m.GetRow(2);
    const Point3 bc = CrossProd(b, c), ca = CrossProd(c, a), ab = CrossProd(a, b);
    const float det = DotProd(a, bc);
    if (det == 0.0f) return Matrix3();
    Matrix3 inv({bc.x / det, ca.x / det, ab.x / det}, {bc.y / det, ca.y / det, ab.y / det},
                {bc.z / det, ca.z / det, ab.z / det}, Point3());
    inv.SetTrans(-inv.VectorTransform(m.GetTrans()));
    return inv;
}

constexpr Matrix3 TransMatrix(const Point3& t) {
    return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, t};
}
constexpr Matrix3 ScaleMatrix(const Point3& s) {
    return {{s.x, 0, 0}, {0, s.y, 0}, {0, 0, s.z}, {0, 0, 0}};
}
