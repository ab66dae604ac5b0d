// Rotations between keys.

#include "core/key_math.h"

#include <cmath>

namespace host {

namespace {

// Axis times angle of a rotation, the shorter way. atan, sin and cos of floats only: their bits are the same on all
// processors.
Point3 LogOf(const Quat& q) {
    const float sign = q.w < 0 ? -1.0f : 1.0f;
    const Point3 v(q.x * sign, q.y * sign, q.z * sign);
    const float sine = Length(v), cosine = q.w * sign;
    if (sine < 1e-9f) return 2.0f * v;
    const float angle = cosine > 0 ? 2.0f * std::atan(sine / cosine) : 3.14159265f;
    return v * (angle / sine);
}

Quat ExpOf(const Point3& v) {
    const float angle = Length(v);
    if (angle < 1e-9f) return Normalize(Quat(v.x * 0.5f, v.y * 0.5f, v.z * 0.5f, 1));
    const float sine = std::sin(angle * 0.5f) / angle;
    return {v.x * sine, v.y * sine, v.z * sine, std::cos(angle * 0.5f)};
}

Quat Conjugate(const Quat& q) {
    return {-q.x, -q.y, -q.z, q.w};
}

} // namespace

template <>
Quat Blend(const Quat& a, const Quat& b, float u) {
    float cosine = DotProd(a, b);
    const float sign = cosine < 0 ? -1.0f : 1.0f;
    cosine *= sign;
    float wa = 1 - u, wb = u;
    if (cosine < 0.9995f) {
        const float angle = 2.0f * std::atan(std::sqrt((1 - cosine) / (1 + cosine)));
        const float sine = std::sin(angle);
        wa = std::sin(wa * angle) / sine;
        wb = std::sin(wb * angle) / sine;
    }
    wb *= sign;
    return Normalize(Quat(a.x * wa + b.x * wb, a.y * wa + b.y * wb, a.z * wa + b.z * wb, a.w * wa + b.w * wb));
}

template <>
Point3 Secant(const Quat& a, const Quat& b, float dt) {
    return LogOf(Conjugate(a) * b) / dt;
}

template <>
Quat Advance(const Quat& a, const Point3& t, float dt) {
    return Normalize(a * ExpOf(t * dt));
}

template <>
Quat Curve(const Quat& a, const Point3& ta, const Quat& b, const Point3& tb, float dt, float u) {
    const Quat leave = Advance(a, ta, dt / 3), come = Advance(b, tb, -dt / 3);
    const Quat p = Blend(a, leave, u), q = Blend(leave, come, u), r = Blend(come, b, u);
    return Blend(Blend(p, q, u), Blend(q, r, u), u);
}

template <>
float KeyDistance(const Quat& a, const Quat& b) {
    return a == b ? 0.0f : Length(LogOf(Conjugate(a) * b));
}

} // namespace host
