#pragma once
// Colour conversions: hue, saturation and value by the hexagon model, and byte colours.

#include "sdk/color.h"

/// Hue, saturation and value, all 0..1. The hue of greys is 0.
struct HsvColor {
    float h = 0, s = 0, v = 0;
};

/// Hexagon model: value is the largest component, saturation the spread over it, hue runs red, yellow, green, cyan,
/// blue, magenta in sixths.
inline HsvColor ToHsv(const Color& c) {
    const float high = std::max(c.r, std::max(c.g, c.b));
    const float low = std::min(c.r, std::min(c.g, c.b));
    const float spread = high - low;
    if (!(spread > 0.0f) || high == 0.0f) return {0.0f, 0.0f, high};
    float sixth;
    if (c.r == high) {
        sixth = (c.g - c.b) / spread;
    } else if (c.g == high) {
        sixth = 2.0f + (c.b - c.r) / spread;
    } else {
        sixth = 4.0f + (c.r - c.g) / spread;
    }
    const float h = sixth / 6.0f;
    return {h < 0.0f ? h + 1.0f : h, spread / high, high};
}

/// The inverse; hue 1 is hue 0.
inline Color FromHsv(const HsvColor& c) {
    if (c.s == 0.0f) return {c.v, c.v, c.v};
    const float h6 = (c.h >= 1.0f ? 0.0f : c.h) * 6.0f;
    const int sector = int(h6);
    const float f = h6 - float(sector);
    const float p = c.v * (1.0f - c.s);
    const float q = c.v * (1.0f - c.s * f);
    const float t = c.v * (1.0f - c.s * (1.0f - f));
    switch (sector) {
    case 0:
        return {c.v, t, p};
    case 1:
        return {q, c.v, p};
    case 2:
        return {p, c.v, t};
    case 3:
        return {p, q, c.v};
    case 4:
        return {t, p, c.v};
    default:
        return {c.v, p, q};
    }
}

/// Bytes to 0..1.
constexpr Color ToColor(const Color24& c) {
    return {float(c.r) / 255.0f, float(c.g) / 255.0f, float(c.b) / 255.0f};
}

/// A component 0..1 as a byte, truncated; values outside give the ends, not-a-number gives 0.
constexpr uint8_t ToByte(float v) {
    return v >= 1.0f ? uint8_t(255) : v > 0.0f ? uint8_t(v * 255.0f) : uint8_t(0);
}

constexpr Color24 ToColor24(const Color& c) {
    return {ToByte(c.r), ToByte(c.g), ToByte(c.b)};
}
