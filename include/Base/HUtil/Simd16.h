#pragma once
// Sixteen floats at a time, for files that are compiled for processors with AVX-512. As with four, every lane does
// exactly what the scalar expression does.

#ifdef __AVX512F__

#include <immintrin.h>

#include "Base/HUtil/SimdWide.h"

struct Float16 {
    static constexpr int kCount = 16, kQuads = 4;
    using Native = float __attribute__((vector_size(64)));
    using Ints = int32_t __attribute__((vector_size(64)));
    Native v;

    Float16() = default;
    [[gnu::always_inline]] Float16(Native n) : v(n) {}
    /// The same value in every lane.
    [[gnu::always_inline]] Float16(float f) : v(Native(_mm512_set1_ps(f))) {}
    /// 0 to 15, or four times 0 to 3.
    [[gnu::always_inline]] static Float16 Ramp() {
        return Native{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    }
    [[gnu::always_inline]] static Float16 RampOfQuad() {
        return Native{0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3};
    }
    /// Four values, four times each.
    [[gnu::always_inline]] static Float16 PerQuad(const float* p) {
        const __m512i lanes = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
        return Native(_mm512_permutexvar_ps(lanes, _mm512_castps128_ps512(_mm_loadu_ps(p))));
    }
    /// Four quads side by side.
    [[gnu::always_inline]] static Float16 Join(const Float4* q) {
        return Native(_mm512_insertf32x4(
            _mm512_insertf32x4(_mm512_insertf32x4(_mm512_castps128_ps512(__m128(q[0].v)), __m128(q[1].v), 1),
                               __m128(q[2].v), 2),
            __m128(q[3].v), 3));
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
[[gnu::always_inline]] inline bool HasFloat16() {
    return __builtin_cpu_supports("avx512f");
}

[[gnu::always_inline]] inline Float16 FloatBits(Float16::Ints a) {
    return Float16::Native(a);
}
[[gnu::always_inline]] inline Float16::Ints AtLeastZero(Float16::Ints a) {
    return a & ~(a >> 31);
}
[[gnu::always_inline]] inline Float16 ToFloats(Float16::Ints a) {
    return Float16::Native(_mm512_cvtepi32_ps(__m512i(a)));
}
[[gnu::always_inline]] inline Float16::Ints ToInts(Float16 a) {
    return Float16::Ints(_mm512_cvttps_epi32(__m512(a.v)));
}
[[gnu::always_inline]] inline Float16 SelectLess(Float16 l, Float16 r, Float16 a, Float16 b) {
    const __mmask16 less = _mm512_cmp_ps_mask(__m512(l.v), __m512(r.v), _CMP_LT_OS);
    return Float16::Native(_mm512_mask_blend_ps(less, __m512(b.v), __m512(a.v)));
}
[[gnu::always_inline]] inline Float16 MaxOr(Float16 a, Float16 b) {
    return Float16::Native(_mm512_max_ps(__m512(a.v), __m512(b.v)));
}
[[gnu::always_inline]] inline Float16 MinOr(Float16 a, Float16 b) {
    return Float16::Native(_mm512_min_ps(__m512(a.v), __m512(b.v)));
}
[[gnu::always_inline]] inline Float16 Floor(Float16 a) {
    return Float16::Native(_mm512_roundscale_ps(__m512(a.v), _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC));
}
[[gnu::always_inline]] inline Float16 Ceil(Float16 a) {
    return Float16::Native(_mm512_roundscale_ps(__m512(a.v), _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC));
}
[[gnu::always_inline]] inline int LanesLess(Float16 a, Float16 b) {
    return int(_mm512_cmp_ps_mask(__m512(a.v), __m512(b.v), _CMP_LT_OS));
}
/// Stores the lanes whose bits are set side by side; all sixteen places may be written.
[[gnu::always_inline]] inline void StoreFlagged(Float16 a, int flags, float* to) {
    _mm512_storeu_ps(to, _mm512_maskz_compress_ps(__mmask16(flags), __m512(a.v)));
}
/// table[i] and table[i + 1] for every lane; i is 0 to 32.
[[gnu::always_inline]] inline void LookUpTwo(const float* table, Float16::Ints i, Float16& at, Float16& next) {
    // Two registers hold all entries but the last one, which is much faster than gathering.
    const auto index = __m512i(i);
    const __mmask16 last = _mm512_cmpeq_epi32_mask(index, _mm512_set1_epi32(32));
    const auto lookUp = [&](const float* t) __attribute__((always_inline)) {
        const __m512 most = _mm512_permutex2var_ps(_mm512_loadu_ps(t), index, _mm512_loadu_ps(t + 16));
        return Float16::Native(_mm512_mask_blend_ps(last, most, _mm512_set1_ps(t[32])));
    };
    at = lookUp(table);
    next = lookUp(table + 1);
}
/// Transposes every four lanes of four rows.
[[gnu::always_inline]] inline void Transpose(Float16& a, Float16& b, Float16& c, Float16& d) {
    const __m512 ab0 = _mm512_unpacklo_ps(__m512(a.v), __m512(b.v)), ab1 = _mm512_unpackhi_ps(__m512(a.v), __m512(b.v)),
                 cd0 = _mm512_unpacklo_ps(__m512(c.v), __m512(d.v)), cd1 = _mm512_unpackhi_ps(__m512(c.v), __m512(d.v));
    a.v = Float16::Native(_mm512_shuffle_ps(ab0, cd0, _MM_SHUFFLE(1, 0, 1, 0)));
    b.v = Float16::Native(_mm512_shuffle_ps(ab0, cd0, _MM_SHUFFLE(3, 2, 3, 2)));
    c.v = Float16::Native(_mm512_shuffle_ps(ab1, cd1, _MM_SHUFFLE(1, 0, 1, 0)));
    d.v = Float16::Native(_mm512_shuffle_ps(ab1, cd1, _MM_SHUFFLE(3, 2, 3, 2)));
}

#endif
