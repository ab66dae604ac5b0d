#pragma once
// What a pixel's list is made of: fragments, and the packed forms they hold.

#include <bit>
#include <cstdint>

#include "sdk/color.h"

/// A fraction 0..1 as 16 bits: x 65535, clamped, the rest cut off. Not-a-number is 0.
inline uint16_t PackFraction(float f) {
    const float v = f * 65535.0f;
    return v > 0.0f ? (v < 65535.0f ? uint16_t(v) : uint16_t(65535)) : uint16_t(0);
}

inline float UnpackFraction(uint16_t v) {
    return float(v) / 65535.0f;
}

namespace HairFragmentDetail {

/// 2^e for -126 <= e <= 127.
inline float PowerOfTwo(int e) {
    return std::bit_cast<float>(uint32_t(e + 127) << 23);
}

inline uint8_t Mantissa(float component, float scale) {
    const float v = component * scale;
    return v > 0.0f ? (v < 255.0f ? uint8_t(v) : uint8_t(255)) : uint8_t(0);
}

} // namespace HairFragmentDetail

/// Colour to shared-exponent form: the largest component m = f 2^e with f in [0.5, 1) gives the exponent byte e + 128
/// and component x (f 256 / m), cut off, the other three. A colour whose largest component is not above 1e-32 is four
/// zero bytes. Negative components count as 0, those of 2^127 and more saturate.
inline RealPixel PackRealPixel(const Color& c) {
    float m = c.r;
    m = c.g > m ? c.g : m;
    m = c.b > m ? c.b : m;
    if (!(m > 1e-32f)) return {};
    int e = int(std::bit_cast<uint32_t>(m) >> 23) - 126;
    if (e > 127) e = 127;
    const float scale = HairFragmentDetail::PowerOfTwo(8 - e); // f 256 / m is exactly this
    return {HairFragmentDetail::Mantissa(c.r, scale), HairFragmentDetail::Mantissa(c.g, scale),
            HairFragmentDetail::Mantissa(c.b, scale), uint8_t(e + 128)};
}

/// The same bits as ExpandRealPixel, without its call to the C library for any exponent that PackRealPixel writes.
inline Color UnpackRealPixel(const RealPixel& p) {
    if (p.e < 10) return ExpandRealPixel(p);
    const float scale = HairFragmentDetail::PowerOfTwo(int(p.e) - 136);
    return {float(p.r) * scale, float(p.g) * scale, float(p.b) * scale};
}

/// A stretch of hair in one pixel of a picture. Larger z is nearer.
struct HairFragment {
    HairFragment* next; ///< the next farther one
    float zMin, zMax;   ///< far and near end, camera space
    uint16_t opacity, coverage;
    RealPixel color;
};
static_assert(sizeof(void*) != 8 || sizeof(HairFragment) == 24);

/// The same for a light's view: no colour.
struct ShadowFragment {
    ShadowFragment* next;
    float zMin, zMax;
    uint16_t opacity, coverage;
};

/// One entry of a compacted shadow map.
struct ShadowSample {
    float zMax, zMin;
    float density; ///< opacity x coverage
};
