#pragma once
// Arithmetic of keyed values: what a key track needs of floats, points, colours and rotations.

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "sdk/color.h"
#include "sdk/point3.h"
#include "sdk/quat.h"

namespace host {

// Components of the plain types.
template <class T>
inline constexpr int kComponents = 3;
template <>
inline constexpr int kComponents<float> = 1;
template <>
inline constexpr int kComponents<AColor> = 4;
inline float& Component(float& v, int) {
    return v;
}
inline float& Component(Point3& v, int i) {
    return v[i];
}
inline float& Component(AColor& v, int i) {
    return i == 0 ? v.r : i == 1 ? v.g : i == 2 ? v.b : v.a;
}
template <class T>
float Component(const T& v, int i) {
    T copy = v;
    return Component(copy, i);
}

/// What tangents of values T are.
template <class T>
struct TangentOf {
    using Type = T;
};
template <>
struct TangentOf<Quat> {
    using Type = Point3;
};
template <class T>
using Tangent = typename TangentOf<T>::Type;
/// The tangent without movement.
template <class T>
constexpr Tangent<T> NoTangent() {
    if constexpr (std::is_same_v<T, AColor>)
        return AColor(0, 0, 0, 0);
    else
        return {};
}

/// The value between two linear keys, `u` in 0..1.
template <class T>
T Blend(const T& a, const T& b, float u) {
    T v{};
    for (int i = 0; i < kComponents<T>; ++i)
        Component(v, i) = Component(a, i) + (Component(b, i) - Component(a, i)) * u;
    return v;
}
/// Spherical interpolation along the shorter arc. The quaternions are unit.
template <>
Quat Blend(const Quat& a, const Quat& b, float u);

/// The cubic curve from `a` to `b` over `dt` ticks with the tangents `ta` and `tb`. For rotations the same Bezier
/// construction with spherical interpolation.
template <class T>
T Curve(const T& a, const Tangent<T>& ta, const T& b, const Tangent<T>& tb, float dt, float u) {
    const float u2 = u * u, u3 = u2 * u;
    const float step = 3 * u2 - 2 * u3, leave = (u3 - 2 * u2 + u) * dt, come = (u3 - u2) * dt;
    T v{};
    for (int i = 0; i < kComponents<T>; ++i)
        Component(v, i) = Component(a, i) + (Component(b, i) - Component(a, i)) * step + Component(ta, i) * leave +
                          Component(tb, i) * come;
    return v;
}
template <>
Quat Curve(const Quat& a, const Point3& ta, const Quat& b, const Point3& tb, float dt, float u);

/// The tangent of a straight way from `a` to `b` in `dt` ticks.
template <class T>
Tangent<T> Secant(const T& a, const T& b, float dt) {
    T v{};
    for (int i = 0; i < kComponents<T>; ++i) Component(v, i) = (Component(b, i) - Component(a, i)) / dt;
    return v;
}
template <>
Point3 Secant(const Quat& a, const Quat& b, float dt);

/// Where `a` comes to with tangent `t` in `dt` ticks.
template <class T>
T Advance(const T& a, const Tangent<T>& t, float dt) {
    T v{};
    for (int i = 0; i < kComponents<T>; ++i) Component(v, i) = Component(a, i) + Component(t, i) * dt;
    return v;
}
template <>
Quat Advance(const Quat& a, const Point3& t, float dt);

/// How far two values are from each other: Euclidean, for rotations the angle in radians.
template <class T>
float KeyDistance(const T& a, const T& b) {
    float sum = 0;
    for (int i = 0; i < kComponents<T>; ++i) {
        const float d = Component(a, i) - Component(b, i);
        sum += d * d;
    }
    return std::sqrt(sum);
}
template <>
float KeyDistance(const Quat& a, const Quat& b);

/// The smooth tangent between the straight tangents before (`db` ticks) and after (`da` ticks).
template <class V>
V SmoothTangent(const V& before, float db, const V& after, float da) {
    V v{};
    for (int i = 0; i < kComponents<V>; ++i)
        Component(v, i) = (Component(before, i) * db + Component(after, i) * da) / (db + da);
    return v;
}
/// The automatic one: by components 0 where the straight tangents' signs differ, else at most three times the smaller
/// one, which keeps the curve between the keys' values.
template <class V>
V AutoTangent(const V& before, float db, const V& after, float da) {
    V v = SmoothTangent(before, db, after, da);
    for (int i = 0; i < kComponents<V>; ++i) {
        const float b = Component(before, i), a = Component(after, i), most = 3 * std::min(std::fabs(a), std::fabs(b));
        float& c = Component(v, i);
        c = a * b <= 0 ? 0 : std::clamp(c, -most, most);
    }
    return v;
}

} // namespace host
