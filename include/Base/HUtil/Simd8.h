#pragma once
// Eight floats at a time, for files that are compiled for processors with AVX2 and BMI2. As with four, every lane does
// exactly what the scalar expression does.

#if defined(__AVX2__) && defined(__BMI2__)

#include <immintrin.h>

#include "Base/HUtil/SimdWide.h"

struct Float8 {
    static constexpr int kCount = 8, kQuads = 2;
    using Native = float __attribute__((vector_size(32)));
    using Ints = int32_t __attribute__((vector_size(32)));
    Native v;

    Float8() = default;
    [[gnu::always_inline]] Float8(Native n) : v(n) {}
    /// The same value in every lane.
    [[gnu::always_inline]] Float8(float f) : v{f, f, f, f, f, f, f, f} {}
    [[gnu::always_inline]] void Store(float* p) const { std::memcpy(p, &v, sizeof v); }
    /// 0 to 7, or twice 0 to 3.
    [[gnu::always_inline]] static Float8 Ramp() { return Native{0, 1, 2, 3, 4, 5, 6, 7}; }
    [[gnu::always_inline]] static Float8 RampOfQuad() { return Native{0, 1, 2, 3, 0, 1, 2, 3}; }
    /// Two values, four times each.
    [[gnu::always_inline]] static Float8 PerQuad(const float* p) {
        return Native{p[0], p[0], p[0], p[0], p[1], p[1], p[1], p[1]};
    }
    /// Two quads side by side.
    [[gnu::always_inline]] static Float8 Join(const Float4* q) {
        return Native(_mm256_set_m128(__m128(q[1].v), __m128(q[0].v)));
    }
    /// Lanes 4 q to 4 q + 3.
    [[gnu::always_inline]] Float4 Quad(int q) const {
        Float4 r;
        std::memcpy(&r.v, reinterpret_cast<const char*>(&v) + 16 * q, 16);
        return r;
    }
    [[gnu::always_inline]] void StoreQuad(int q, float* p) const {
        std::memcpy(p, reinterpret_cast<const char*>(&v) + 16 * q, 16);
    }
};

/// True when the processor can do this.
[[gnu::always_inline]] inline bool HasFloat8() {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
}

[[gnu::always_inline]] inline Float8 FloatBits(Float8::Ints a) {
    return Float8::Native(a);
}
[[gnu::always_inline]] inline Float8::Ints AtLeastZero(Float8::Ints a) {
    return a & ~(a >> 31);
}
[[gnu::always_inline]] inline Float8 ToFloats(Float8::Ints a) {
    return __builtin_convertvector(a, Float8::Native);
}
[[gnu::always_inline]] inline Float8::Ints ToInts(Float8 a) {
    return __builtin_convertvector(a.v, Float8::Ints);
}
[[gnu::always_inline]] inline Float8 SelectLess(Float8 l, Float8 r, Float8 a, Float8 b) {
    return l.v < r.v ? a.v : b.v;
}
[[gnu::always_inline]] inline Float8 MaxOr(Float8 a, Float8 b) {
    return _mm256_max_ps(__m256(a.v), __m256(b.v));
}
[[gnu::always_inline]] inline Float8 MinOr(Float8 a, Float8 b) {
    return _mm256_min_ps(__m256(a.v), __m256(b.v));
}
[[gnu::always_inline]] inline Float8 Floor(Float8 a) {
    return _mm256_floor_ps(__m256(a.v));
}
[[gnu::always_inline]] inline Float8 Ceil(Float8 a) {
    return _mm256_ceil_ps(__m256(a.v));
}
[[gnu::always_inline]] inline int LanesLess(Float8 a, Float8 b) {
    return _mm256_movemask_ps(_mm256_cmp_ps(__m256(a.v), __m256(b.v), _CMP_LT_OS));
}
/// Stores the lanes whose bits are set side by side; all eight places may be written.
[[gnu::always_inline]] inline void StoreFlagged(Float8 a, int flags, float* to) {
    // A byte of ones for every bit, then the numbers of the lanes whose bytes they are.
    const uint64_t bytes = _pdep_u64(uint64_t(flags), 0x0101010101010101u) * 0xFF;
    const uint64_t lanes = _pext_u64(0x0706050403020100u, bytes);
    const __m256i index = _mm256_cvtepu8_epi32(_mm_cvtsi64_si128(int64_t(lanes)));
    _mm256_storeu_ps(to, _mm256_permutevar8x32_ps(__m256(a.v), index));
}
/// table[i] and table[i + 1] for every lane; i is 0 to 32.
[[gnu::always_inline]] inline void LookUpTwo(const float* table, Float8::Ints i, Float8& at, Float8& next) {
    at = _mm256_i32gather_ps(table, __m256i(i), 4);
    next = _mm256_i32gather_ps(table + 1, __m256i(i), 4);
}
/// Transposes the first four lanes of four rows, and the others.
[[gnu::always_inline]] inline void Transpose(Float8& a, Float8& b, Float8& c, Float8& d) {
    const Float8::Native ab0 = __builtin_shufflevector(a.v, b.v, 0, 8, 1, 9, 4, 12, 5, 13),
                         ab1 = __builtin_shufflevector(a.v, b.v, 2, 10, 3, 11, 6, 14, 7, 15),
                         cd0 = __builtin_shufflevector(c.v, d.v, 0, 8, 1, 9, 4, 12, 5, 13),
                         cd1 = __builtin_shufflevector(c.v, d.v, 2, 10, 3, 11, 6, 14, 7, 15);
    a.v = __builtin_shufflevector(ab0, cd0, 0, 1, 8, 9, 4, 5, 12, 13);
    b.v = __builtin_shufflevector(ab0, cd0, 2, 3, 10, 11, 6, 7, 14, 15);
    c.v = __builtin_shufflevector(ab1, cd1, 0, 1, 8, 9, 4, 5, 12, 13);
    d.v = __builtin_shufflevector(ab1, cd1, 2, 3, 10, 11, 6, 7, 14, 15);
}

#endif
