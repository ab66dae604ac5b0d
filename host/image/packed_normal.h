#pragma once
// Directions in the 32 bits of the normal channel.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "sdk/point3.h"

namespace host {

/// A unit vector in 3 x 10 bits, x lowest: 1 to 1023 for -1 to 1. 0 stands for none.
inline uint32_t PackNormal(const Point3& n) {
    uint32_t bits = 0;
    for (int i = 0; i < 3; ++i) bits |= uint32_t(512 + std::lround(std::clamp(n[i], -1.0f, 1.0f) * 511.0f)) << (10 * i);
    return bits;
}

/// The unit vector; zero for 0.
inline Point3 UnpackNormal(uint32_t bits) {
    if (bits == 0) return {0, 0, 0};
    const auto part = [bits](int i) { return (float((bits >> (10 * i)) & 1023u) - 512.0f) / 511.0f; };
    return Normalize(Point3(part(0), part(1), part(2)));
}

} // namespace host
