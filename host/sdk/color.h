#pragma once
// Colours: three floats 0..1 (no clamping), colour with alpha, bytes, and the shared-exponent form.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "sdk/point3.h"

/// Red, green, blue, linear.
struct Color {
    float r = 0, g = 0, b = 0;
    constexpr Color() = default;
    constexpr Color(float r, float g, float b) : r(r), g(g), b(b) {}
    explicit constexpr Color(const Point3& p) : r(p.x), g(p.y), b(p.z) {}
    explicit constexpr operator Point3() const { return {r, g, b}; }
    constexpr float& operator[](int i) { return i == 0 ? r : i == 1 ? g : b; }
    constexpr float operator[](int i) const { return i == 0 ? r : i == 1 ? g : b; }
    constexpr Color& operator+=(const Color& c) { return r += c.r, g += c.g, b += c.b, *this; }
    constexpr Color& operator*=(float f) { return r *= f, g *= f, b *= f, *this; }
    friend constexpr bool operator==(const Color&, const Color&) = default;
};
constexpr Color operator+(const Color& a, const Color& b) {
    return {a.r + b.r, a.g + b.g, a.b + b.b};
}
constexpr Color operator-(const Color& a, const Color& b) {
    return {a.r - b.r, a.g - b.g, a.b - b.b};
}
constexpr Color operator*(const Color& a, const Color& b) {
    return {a.r * b.r, a.g * b.g, a.b * b.b};
}
constexpr Color operator*(const Color& a, float f) {
    return {a.r * f, a.g * f, a.b * f};
}
constexpr Color operator*(float f, const Color& a) {
    return {a.r * f, a.g * f, a.b * f};
}
constexpr Color operator/(const Color& a, float f) {
    return {a.r / f, a.g / f, a.b / f};
}
/// The mean of the three channels.
constexpr float Intens(const Color& c) {
    return (c.r + c.g + c.b) / 3.0f;
}

/// Colour with alpha; whether it is premultiplied is the user's business.
struct AColor {
    float r = 0, g = 0, b = 0, a = 1;
    constexpr AColor() = default;
    constexpr AColor(float r, float g, float b, float a = 1) : r(r), g(g), b(b), a(a) {}
    explicit constexpr AColor(const Color& c, float a = 1) : r(c.r), g(c.g), b(c.b), a(a) {}
    explicit constexpr operator Color() const { return {r, g, b}; }
    friend constexpr bool operator==(const AColor&, const AColor&) = default;
};

/// Three bytes.
struct Color24 {
    uint8_t r = 0, g = 0, b = 0;
    friend constexpr bool operator==(const Color24&, const Color24&) = default;
};

/// Shared-exponent colour in four bytes (Radiance RGBE).
struct RealPixel {
    uint8_t r = 0, g = 0, b = 0, e = 0;
    friend constexpr bool operator==(const RealPixel&, const RealPixel&) = default;
};

/// The colour that a shared-exponent pixel stands for: byte x 2^(e - 136); e = 0 is black.
inline Color ExpandRealPixel(const RealPixel& p) {
    if (p.e == 0) return Color();
    const float scale = std::ldexp(1.0f, int(p.e) - 136);
    return {float(p.r) * scale, float(p.g) * scale, float(p.b) * scale};
}
