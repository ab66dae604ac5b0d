#pragma once
// Four floats at a time. Every lane does exactly what the scalar expression does, with one rounding an operation, so
// vector and scalar code give the same bits.

#include <cmath>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Four 32-bit floats.
struct Float4 {
    using Native = float __attribute__((vector_size(16)));
    Native v;

    Float4() = default;
    Float4(Native n) : v(n) {}
    /// The same value in every lane.
    Float4(float f) : v{f, f, f, f} {}
    Float4(float a, float b, float c, float d) : v{a, b, c, d} {}
    /// Four floats from memory, of any alignment.
    static Float4 Load(const float* p) {
        Float4 r;
        std::memcpy(&r.v, p, sizeof r.v);
        return r;
    }
    void Store(float* p) const { std::memcpy(p, &v, sizeof v); }
    float operator[](int lane) const { return v[lane]; }
};

inline Float4 operator+(Float4 a, Float4 b) {
    return a.v + b.v;
}
inline Float4 operator-(Float4 a, Float4 b) {
    return a.v - b.v;
}
inline Float4 operator*(Float4 a, Float4 b) {
    return a.v * b.v;
}
inline Float4 operator/(Float4 a, Float4 b) {
    return a.v / b.v;
}

inline Float4 Sqrt(Float4 a) {
#if defined(__SSE2__)
    return Float4::Native(_mm_sqrt_ps(__m128(a.v)));
#else
    return Float4(std::sqrt(a[0]), std::sqrt(a[1]), std::sqrt(a[2]), std::sqrt(a[3]));
#endif
}
/// Lane by lane: `a` where l < r, else `b`.
inline Float4 SelectLess(Float4 l, Float4 r, Float4 a, Float4 b) {
    return l.v < r.v ? a.v : b.v;
}
/// Lane by lane: `a` where `test` is above zero, else `b`.
inline Float4 SelectPositive(Float4 test, Float4 a, Float4 b) {
    return test.v > Float4(0.0f).v ? a.v : b.v;
}
