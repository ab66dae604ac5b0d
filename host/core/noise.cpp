// One- and three-dimensional lattice noise.

#include "sdk/noise.h"

#include <array>
#include <cmath>
#include <cstdint>

namespace {

// A fixed permutation of 0..255, so that the noise is the same on every machine.
constexpr std::array<uint8_t, 256> MakePermutation() {
    std::array<uint8_t, 256> p{};
    for (int i = 0; i < 256; ++i) p[size_t(i)] = uint8_t(i);
    uint32_t state = 0x9e3779b9u;
    for (int i = 255; i > 0; --i) {
        state = state * 1664525u + 1013904223u;
        const int j = int((state >> 8) % uint32_t(i + 1));
        const uint8_t t = p[size_t(i)];
        p[size_t(i)] = p[size_t(j)];
        p[size_t(j)] = t;
    }
    return p;
}
constexpr std::array<uint8_t, 256> kPerm = MakePermutation();

constexpr uint8_t Hash(int i) {
    return kPerm[size_t(i & 255)];
}
constexpr float Fade(float t) {
    return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f);
}
constexpr float Lerp(float t, float a, float b) {
    return a + t * (b - a);
}

// Slopes are spread evenly over -2..2, so that the largest possible value is close to 1.
constexpr float Slope(int i) {
    return (float(Hash(i)) - 127.5f) / 63.75f;
}

// The twelve edge directions of a cube, four of them twice.
constexpr float Gradient(uint8_t h, float x, float y, float z) {
    const int k = h & 15;
    const float u = k < 8 ? x : y;
    const float v = k < 4 ? y : (k == 12 || k == 14) ? x : z;
    return ((k & 1) ? -u : u) + ((k & 2) ? -v : v);
}

} // namespace

float noise1(float x) {
    const float cell = std::floor(x);
    const int i = int(cell);
    const float t = x - cell;
    return Lerp(Fade(t), Slope(i) * t, Slope(i + 1) * (t - 1.0f));
}

float noise3(float x, float y, float z) {
    const float fx = std::floor(x), fy = std::floor(y), fz = std::floor(z);
    const int ix = int(fx), iy = int(fy), iz = int(fz);
    x -= fx, y -= fy, z -= fz;
    const auto corner = [&](int a, int b, int c) {
        return Gradient(Hash(Hash(Hash(ix + a) + iy + b) + iz + c), x - float(a), y - float(b), z - float(c));
    };
    const float u = Fade(x), v = Fade(y), w = Fade(z);
    return Lerp(w, Lerp(v, Lerp(u, corner(0, 0, 0), corner(1, 0, 0)), Lerp(u, corner(0, 1, 0), corner(1, 1, 0))),
                Lerp(v, Lerp(u, corner(0, 0, 1), corner(1, 0, 1)), Lerp(u, corner(0, 1, 1), corner(1, 1, 1))));
}
