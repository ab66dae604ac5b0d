#pragma once
// Rotations as unit quaternions, in the host's sense.

#include "sdk/matrix3.h"

/// A rotation: (axis * sin(angle / 2), cos(angle / 2)).
/// The sense is the host's, opposite to the right hand: with v' = v * q.ToMatrix() and axis = Normalize(n x r), a
/// positive sine turns r toward n (about Z, Y toward X).
struct Quat {
    float x = 0, y = 0, z = 0, w = 1;
    constexpr Quat() = default;
    constexpr Quat(float x, float y, float z, float w) : x(x), y(y), z(z), w(w) {}
    constexpr Quat(const Point3& v, float w) : x(v.x), y(v.y), z(v.z), w(w) {}
    friend constexpr bool operator==(const Quat&, const Quat&) = default;

    /// The rotation matrix, without translation.
    constexpr Matrix3 ToMatrix() const {
        return {{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
                {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
                {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)},
                {0, 0, 0}};
    }
};

/// The rotation `a` followed by `b`: (a * b).ToMatrix() = a.ToMatrix() * b.ToMatrix().
constexpr Quat operator*(const Quat& a, const Quat& b) {
    return {a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y, a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
            a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w, a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
}
constexpr float DotProd(const Quat& a, const Quat& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}
/// The unit quaternion along `q`; zero gives no rotation.
inline Quat Normalize(const Quat& q) {
    const float n = std::sqrt(DotProd(q, q));
    return n > 0 ? Quat(q.x / n, q.y / n, q.z / n, q.w / n) : Quat();
}
