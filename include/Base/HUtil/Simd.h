#pragma once
// Four floats at a time. Every lane does exactly what the scalar expression does, with one rounding an operation, so
// vector and scalar code give the same bits.

#include <cmath>
#include <cstdint>
#include <cstring>

#if defined(__SSE4_1__)
#include <smmintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Four 32-bit floats.
struct Float4 {
    static constexpr int kCount = 4, kQuads = 1;
    using Native = float __attribute__((vector_size(16)));
    using Ints = int32_t __attribute__((vector_size(16)));
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

    /// 0 to 3.
    static Float4 Ramp() { return Float4(0.0f, 1.0f, 2.0f, 3.0f); }
    // Of code for any number of quads, which are four lanes:
    static Float4 RampOfQuad() { return Ramp(); }
    static Float4 PerQuad(const float* p) { return Float4(p[0]); }
    static Float4 Join(const Float4* quads) { return quads[0]; }
    Float4 Quad(int) const { return *this; }
    void StoreQuad(int, float* p) const { Store(p); }
};

/// Four 32-bit integers, with the operators of the language; comparisons give -1 or 0.
using Int4 = Float4::Ints;

/// Integers as floats, rounded.
inline Float4 ToFloats(Int4 a) {
    return __builtin_convertvector(a, Float4::Native);
}
/// Floats as integers, fractions cut off.
inline Int4 ToInts(Float4 a) {
    return __builtin_convertvector(a.v, Int4);
}
/// The same bits.
inline Float4 FloatBits(Int4 a) {
    return Float4::Native(a);
}
inline Int4 IntBits(Float4 a) {
    return Int4(a.v);
}
/// The larger one of a lane and 0.
inline Int4 AtLeastZero(Int4 a) {
    return a & ~(a >> 31);
}
/// Four rows of four become four columns.
inline void Transpose(Float4& a, Float4& b, Float4& c, Float4& d) {
    const Float4::Native ab0 = __builtin_shufflevector(a.v, b.v, 0, 4, 1, 5),
                         ab1 = __builtin_shufflevector(a.v, b.v, 2, 6, 3, 7),
                         cd0 = __builtin_shufflevector(c.v, d.v, 0, 4, 1, 5),
                         cd1 = __builtin_shufflevector(c.v, d.v, 2, 6, 3, 7);
    a.v = __builtin_shufflevector(ab0, cd0, 0, 1, 4, 5);
    b.v = __builtin_shufflevector(ab0, cd0, 2, 3, 6, 7);
    c.v = __builtin_shufflevector(ab1, cd1, 0, 1, 4, 5);
    d.v = __builtin_shufflevector(ab1, cd1, 2, 3, 6, 7);
}

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
/// Lane by lane: `a` where a > b, else `b`; so `b` where either is not a number.
inline Float4 MaxOr(Float4 a, Float4 b) {
#if defined(__SSE2__)
    return Float4::Native(_mm_max_ps(__m128(a.v), __m128(b.v)));
#else
    return a.v > b.v ? a.v : b.v;
#endif
}
/// Lane by lane: `a` where a < b, else `b`; so `b` where either is not a number.
inline Float4 MinOr(Float4 a, Float4 b) {
#if defined(__SSE2__)
    return Float4::Native(_mm_min_ps(__m128(a.v), __m128(b.v)));
#else
    return a.v < b.v ? a.v : b.v;
#endif
}
inline Float4 Abs(Float4 a) {
    return MaxOr(a, Float4(0.0f) - a);
}
inline Float4 Floor(Float4 a) {
#if defined(__SSE4_1__)
    return Float4::Native(_mm_floor_ps(__m128(a.v)));
#else
    return Float4(std::floor(a[0]), std::floor(a[1]), std::floor(a[2]), std::floor(a[3]));
#endif
}
inline Float4 Ceil(Float4 a) {
#if defined(__SSE4_1__)
    return Float4::Native(_mm_ceil_ps(__m128(a.v)));
#else
    return Float4(std::ceil(a[0]), std::ceil(a[1]), std::ceil(a[2]), std::ceil(a[3]));
#endif
}
/// table[i] and table[i + 1] for every lane; i is 0 to 32.
inline void LookUpTwo(const float* table, Int4 i, Float4& at, Float4& next) {
    const float *a = table + i[0], *b = table + i[1], *c = table + i[2], *d = table + i[3];
    at = Float4(a[0], b[0], c[0], d[0]);
    next = Float4(a[1], b[1], c[1], d[1]);
}
/// Bit i is set where lane i has a < b.
inline int LanesLess(Float4 a, Float4 b) {
#if defined(__SSE2__)
    return _mm_movemask_ps(_mm_cmplt_ps(__m128(a.v), __m128(b.v)));
#else
    return (a[0] < b[0]) | (a[1] < b[1]) << 1 | (a[2] < b[2]) << 2 | (a[3] < b[3]) << 3;
#endif
}
/// Stores the lanes whose bits are set side by side; up to all lanes' room behind them may be written.
inline void StoreFlagged(Float4 a, int flags, float* to) {
    for (int i = 0; i < 4; ++i) {
        *to = a[i];
        to += flags >> i & 1;
    }
}
/// True when any bit of any lane is set.
inline bool AnyLane(Int4 a) {
#if defined(__SSE4_1__)
    return !_mm_testz_si128(__m128i(a), __m128i(a));
#else
    return (a[0] | a[1] | a[2] | a[3]) != 0;
#endif
}
/// The four bytes of `bytes`, lowest first.
inline Float4 FromBytes(uint32_t bytes) {
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(int(bytes)), zero);
    return Float4::Native(_mm_cvtepi32_ps(_mm_unpacklo_epi16(words, zero)));
#else
    return Float4(float(bytes & 255), float(bytes >> 8 & 255), float(bytes >> 16 & 255), float(bytes >> 24));
#endif
}
/// The four lanes as bytes, fractions cut off, lowest first; every lane within 0..255.
inline uint32_t ToBytes(Float4 a) {
#if defined(__SSE2__)
    const __m128i words = _mm_cvttps_epi32(__m128(a.v));
    const __m128i packed = _mm_packs_epi32(words, words);
    return uint32_t(_mm_cvtsi128_si32(_mm_packus_epi16(packed, packed)));
#else
    return uint32_t(a[0]) | uint32_t(a[1]) << 8 | uint32_t(a[2]) << 16 | uint32_t(a[3]) << 24;
#endif
}
/// How many of the sixteen floats at `p` are at least z.
inline uint32_t CountAtLeast16(const float* p, float z) {
    const Float4::Native bound = Float4(z).v;
    const auto atLeast = [&](int i) -> Int4 { return Float4::Load(p + i).v >= bound; }; // true is -1
    const Int4 n = (atLeast(0) + atLeast(4)) + (atLeast(8) + atLeast(12));
    const Int4 pairs = n + __builtin_shufflevector(n, n, 2, 3, 0, 1);
    return uint32_t(-(pairs[0] + pairs[1]));
}
/// `a` where a > b, else `b`, without a branch.
inline float LargerOr(float a, float b) {
    return MaxOr(Float4(a, 0, 0, 0), Float4(b, 0, 0, 0))[0];
}
/// `a` where a < b, else `b`, without a branch.
inline float SmallerOr(float a, float b) {
    return MinOr(Float4(a, 0, 0, 0), Float4(b, 0, 0, 0))[0];
}
