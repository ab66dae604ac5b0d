#pragma once
// Three-component vectors. Every operation is single precision, evaluated left to right.

#include <cmath>

/// Three 32-bit floats: a point, a direction, or a texture coordinate.
struct Point3 {
    float x = 0, y = 0, z = 0;
    constexpr Point3() = default;
    constexpr Point3(float x, float y, float z) : x(x), y(y), z(z) {}
    constexpr float& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; }
    constexpr float operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }
    constexpr Point3& operator+=(const Point3& b) { return x += b.x, y += b.y, z += b.z, *this; }
    constexpr Point3& operator-=(const Point3& b) { return x -= b.x, y -= b.y, z -= b.z, *this; }
    constexpr Point3& operator*=(float f) { return x *= f, y *= f, z *= f, *this; }
    constexpr Point3& operator/=(float f) { return x /= f, y /= f, z /= f, *this; }
    friend constexpr bool operator==(const Point3&, const Point3&) = default;
};

constexpr Point3 operator+(const Point3& a, const Point3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
constexpr Point3 operator-(const Point3& a, const Point3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
constexpr Point3 operator-(const Point3& a) {
    return {-a.x, -a.y, -a.z};
}
constexpr Point3 operator*(const Point3& a, float f) {
    return {a.x * f, a.y * f, a.z * f};
}
constexpr Point3 operator*(float f, const Point3& a) {
    return {a.x * f, a.y * f, a.z * f};
}
constexpr Point3 operator/(const Point3& a, float f) {
    return {a.x / f, a.y / f, a.z / f};
}
/// Component-wise product.
constexpr Point3 operator*(const Point3& a, const Point3& b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}

constexpr float DotProd(const Point3& a, const Point3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
constexpr Point3 CrossProd(const Point3& a, const Point3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
constexpr float LengthSquared(const Point3& a) {
    return a.x * a.x + a.y * a.y + a.z * a.z;
}
inline float Length(const Point3& a) {
    return std::sqrt(LengthSquared(a));
}

/// The unit vector along `a`; the zero vector stays the zero vector.
inline Point3 Normalize(const Point3& a) {
    const float length = Length(a);
    return length > 0.0f ? a / length : Point3(0, 0, 0);
}

/// True when every component is a finite number.
inline bool IsFinite(const Point3& a) {
    return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}
