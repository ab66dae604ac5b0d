#pragma once
// Frames and rotations. Frames are matrices whose rows are the axes. Quaternions become matrices through
// Quat::ToMatrix() (sdk/quat.h), in the host's sense.

#include "Base/HairMath.h"
#include "sdk/mesh.h"
#include "sdk/quat.h"

/// Unit axis: 0 X, 1 Y, any other index Z.
constexpr Point3 AxisByIndex(int i) {
    return i == 0 ? Point3(1, 0, 0) : i == 1 ? Point3(0, 1, 0) : Point3(0, 0, 1);
}

/// Frame with third row `n` (unit): rows x = normalise(-n.y, n.x, 0), n x x, n; x is the X axis when n is vertical.
inline Matrix3 FrameFromDirection(const Point3& n) {
    const Point3 x = n.x == 0.0f && n.y == 0.0f ? Point3(1, 0, 0) : Normalize(Point3(-n.y, n.x, 0.0f));
    return {x, CrossProd(n, x), n, Point3()};
}

/// Frame with third row `n` (unit) and first row along the part of `r` across it. A reference along `n` gives zero
/// rows.
inline Matrix3 FrameFromDirection(const Point3& n, const Point3& r) {
    const Point3 x = Normalize(r - n * DotProd(n, r));
    return {x, CrossProd(n, x), n, Point3()};
}

/// The matrix that takes normals where `m` takes points: its inverse transposed, without translation. Lengths change.
constexpr Matrix3 NormalMatrix(const Matrix3& m) {
    const Matrix3 inv = Inverse(m);
    const Point3 a = inv.GetRow(0), b = inv.GetRow(1), c = inv.GetRow(2);
    return {{a.x, b.x, c.x}, {a.y, b.y, c.y}, {a.z, b.z, c.z}, Point3()};
}

/// Frame from a mapping channel at a vertex: rows are the unit U and V tangents of the channel on face `face` and the
/// normal, not orthonormalised. `normal` null means the vertex normal; `face` -1 means the lowest face that uses the
/// vertex, and `vertex` -1 the vertex at `corner` of `face`. The frame from the normal where the channel is missing,
/// its triangle is degenerate or no face is found.
Matrix3 FrameFromMapping(const Mesh& mesh, int vertex, int channel, const Point3* normal = nullptr, int face = -1,
                         int corner = 0);

/// `v` turned about the unit `axis` by the angle with that sine and cosine, counter-clockwise seen against the axis
/// (Rodrigues): X about Z by 90 degrees gives Y.
constexpr Point3 RotateAboutAxis(const Point3& v, const Point3& axis, float sinAngle, float cosAngle) {
    return v * cosAngle + CrossProd(axis, v) * sinAngle + axis * (DotProd(axis, v) * (1.0f - cosAngle));
}

/// Leans the unit direction `n` toward the unit direction `v` by the fraction `amount` of the angle between them, at
/// most `maxAngle` (radians). A negative amount leans toward -v; within 0.0001 of zero `n` stays.
inline Point3 LeanToward(const Point3& n, const Point3& v, float amount, float maxAngle) {
    if (amount < -0.0001f) return LeanToward(n, -v, -amount, maxAngle);
    if (!(amount > 0.0001f)) return n;
    const float dot = DotProd(n, v);
    const float c = dot < -0.999f ? -0.999f : dot > 0.999f ? 0.999f : dot;
    const float full = HairMath::Acos(c) * amount;
    const float angle = full < maxAngle ? full : maxAngle;
    const float f = (1.0f - HairMath::Cos(angle)) / (1.0f - c);
    return Normalize(n * (1.0f - f) + v * f);
}
