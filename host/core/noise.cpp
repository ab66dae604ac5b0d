// Lattice noise in one, three and four dimensions.

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

// The 32 edge directions of a hypercube: one coordinate is left out, the others are taken with either sign.
constexpr float Gradient(uint8_t h, const float d[4]) {
    const int out = (h >> 3) & 3;
    float sum = 0;
    for (int i = 0, bit = 0; i < 4; ++i) {
        if (i == out) continue;
        sum += ((h >> bit++) & 1) ? -d[i] : d[i];
    }
    return sum;
}

/// Lattice point below a coordinate, and the rest.
struct Cell {
    int i = 0;
    float rest = 0;
    explicit Cell(float c) {
        if (!(std::fabs(c) < 1e9f)) return;
        const float low = std::floor(c);
        i = int(low);
        rest = c - low;
    }
};

} // namespace

float noise1(float x) {
    const Cell c(x);
    return Lerp(Fade(c.rest), Slope(c.i) * c.rest, Slope(c.i + 1) * (c.rest - 1.0f));
}

float noise3(float x, float y, float z) {
    const Cell cx(x), cy(y), cz(z);
    const auto corner = [&](int a, int b, int c) {
        return Gradient(Hash(Hash(Hash(cx.i + a) + cy.i + b) + cz.i + c), cx.rest - float(a), cy.rest - float(b),
                        cz.rest - float(c));
    };
    const float u = Fade(cx.rest), v = Fade(cy.rest), w = Fade(cz.rest);
    return Lerp(w, Lerp(v, Lerp(u, corner(0, 0, 0), corner(1, 0, 0)), Lerp(u, corner(0, 1, 0), corner(1, 1, 0))),
                Lerp(v, Lerp(u, corner(0, 0, 1), corner(1, 0, 1)), Lerp(u, corner(0, 1, 1), corner(1, 1, 1))));
}

float noise4(float x, float y, float z, float w) {
    const Cell cells[4] = {Cell(x), Cell(y), Cell(z), Cell(w)};
    float values[16];
    for (int k = 0; k < 16; ++k) {
        float d[4];
        int h = 0;
        for (int i = 0; i < 4; ++i) {
            const int upper = (k >> i) & 1;
            h = Hash(h + cells[i].i + upper);
            d[i] = cells[i].rest - float(upper);
        }
        values[k] = Gradient(uint8_t(h), d);
    }
    for (int i = 0, n = 8; i < 4; ++i, n /= 2)
        for (int k = 0; k < n; ++k) values[k] = Lerp(Fade(cells[i].rest), values[2 * k], values[2 * k + 1]);
    return values[0];
}
