#pragma once
// The sRGB transfer curve.

#include <cmath>
#include <cstdint>

namespace host {

/// Linear light of an sRGB-encoded value 0..1 (IEC 61966-2-1).
inline float SrgbToLinear(float v) {
    return v <= 0.04045f ? v / 12.92f : std::pow((v + 0.055f) / 1.055f, 2.4f);
}
/// sRGB-encoded value of linear light; the inverse of SrgbToLinear.
inline float LinearToSrgb(float v) {
    return v <= 0.0031308f ? v * 12.92f : 1.055f * std::pow(v, 1.0f / 2.4f) - 0.055f;
}
/// Linear light as an sRGB byte: clamped to 0..1 and rounded; what is not a number is 0.
inline uint8_t LinearToSrgbByte(float v) {
    if (!(v > 0.0f)) return 0;
    return v >= 1.0f ? uint8_t(255) : uint8_t(LinearToSrgb(v) * 255.0f + 0.5f);
}

} // namespace host
