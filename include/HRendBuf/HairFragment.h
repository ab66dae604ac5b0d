#pragma once
// What a pixel's list is made of: fragments, and the packed forms they hold.

#include <bit>
#include <cstdint>

#include "Base/HUtil/Simd.h"
#include "sdk/color.h"

/// A fraction 0..1 as 16 bits: x 65535, clamped, the rest cut off. Not-a-number is 0.
inline uint16_t PackFraction(float f) {
    float v = f * 65535.0f;
    v = v > 0.0f ? v : 0.0f;
    v = v < 65535.0f ? v : 65535.0f;
    return uint16_t(int(v));
}

inline float UnpackFraction(uint16_t v) {
    return float(v) / 65535.0f;
}

namespace HairFragmentDetail {

/// 2^e for -126 <= e <= 127.
inline float PowerOfTwo(int e) {
    return std::bit_cast<float>(uint32_t(e + 127) << 23);
}

} // namespace HairFragmentDetail

/// Colour (lanes 1..3; lane 0 is not read) to shared-exponent form: the largest component m = f 2^e with f in [0.5, 1)
/// gives the exponent byte e + 128 and component x (f 256 / m), cut off, the other three. A colour whose largest
/// component is not above 1e-32 is four zero bytes. Negative components count as 0, those of 2^127 and more saturate.
/// The bytes are red, green, blue, exponent, lowest first.
inline uint32_t PackRealPixel(Float4 c) {
    float m = c[1];
    m = c[2] > m ? c[2] : m;
    m = c[3] > m ? c[3] : m;
    uint32_t exponent = std::bit_cast<uint32_t>(m) >> 23; // e + 126
    exponent = exponent < 253 ? exponent : 253;
    const float scale = std::bit_cast<float>((261 - exponent) << 23); // f 256 / m is exactly this: 2^(8 - e)
    const uint32_t bytes = ToBytes(MinOr(MaxOr(c * Float4(scale), Float4(0.0f)), Float4(255.0f)));
    return m > 1e-32f ? bytes >> 8 | (exponent + 2) << 24 : 0;
}
inline RealPixel PackRealPixel(const Color& c) {
    const uint32_t bytes = PackRealPixel(Float4(0.0f, c.r, c.g, c.b));
    return {uint8_t(bytes), uint8_t(bytes >> 8), uint8_t(bytes >> 16), uint8_t(bytes >> 24)};
}

/// The same bits as ExpandRealPixel, without its call to the C library for any exponent that PackRealPixel writes.
inline Color UnpackRealPixel(const RealPixel& p) {
    if (p.e < 10) return ExpandRealPixel(p);
    const float scale = HairFragmentDetail::PowerOfTwo(int(p.e) - 136);
    return {float(p.r) * scale, float(p.g) * scale, float(p.b) * scale};
}

/// The same in lanes 1..3, from bytes as PackRealPixel writes them; lane 0 is 0.
inline Float4 UnpackRealPixel(uint32_t bytes) {
    const uint32_t exponent = bytes >> 24; // 0 goes with three zero bytes, else it is at least 22
    return FromBytes(bytes << 8) * Float4(std::bit_cast<float>((exponent > 9 ? exponent - 9 : 0) << 23));
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
