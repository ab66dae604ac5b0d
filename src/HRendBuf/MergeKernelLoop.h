#pragma once
// The loop of all kernels. Whoever includes this may be compiled for another processor than the rest: nothing in here
// leaves a function behind that other files could share.

#include <cstddef>

#include "HRendBuf/MergeKernel.h"

// Both fractions of a fragment are one number, its colour is another, and a sample's coverage goes before its colour.
static_assert(offsetof(ImagePoint, color) == offsetof(ImagePoint, coverage) + sizeof(float));
static_assert(offsetof(PackedFragment<HairFragment>, color) ==
              offsetof(PackedFragment<HairFragment>, opacity) + sizeof(uint32_t));

/// Fractions and colours of four fragments.
[[gnu::always_inline]] inline void LoadWords(const PackedFragment<HairFragment>* fragments, const uint32_t* at,
                                             Float4& fractions, Float4& colors) {
    using Words = int64_t __attribute__((vector_size(16)));
    Words w[4];
    for (int i = 0; i < 4; ++i) {
        int64_t word;
        std::memcpy(&word, &fragments[at[i]].opacity, sizeof word);
        w[i] = Words{word, 0};
    }
    const auto pair = [](Words a, Words b) __attribute__((always_inline)) {
        return __builtin_shufflevector(Float4::Native(a), Float4::Native(b), 0, 4, 1, 5);
    };
    const Float4::Native low = pair(w[0], w[1]), high = pair(w[2], w[3]);
    fractions = __builtin_shufflevector(low, high, 0, 1, 4, 5);
    colors = __builtin_shufflevector(low, high, 2, 3, 6, 7);
}
[[gnu::always_inline]] inline void StoreWords(PackedFragment<HairFragment>* fragments, const uint32_t* at,
                                              Float4 fractions, Float4 colors) {
    using Words = int64_t __attribute__((vector_size(16)));
    const Words low = Words(__builtin_shufflevector(fractions.v, colors.v, 0, 4, 1, 5)),
                high = Words(__builtin_shufflevector(fractions.v, colors.v, 2, 6, 3, 7));
    const int64_t words[4] = {low[0], low[1], high[0], high[1]};
    for (int i = 0; i < 4; ++i) std::memcpy(&fragments[at[i]].opacity, &words[i], sizeof words[i]);
}

/// Merges Lanes::kCount samples.
template <class Lanes>
[[gnu::always_inline]] inline unsigned MergeLanes(PackedFragment<HairFragment>* fragments, const uint32_t* at,
                                                  const ImagePoint* const* samples) {
    using Ints = typename Lanes::Ints;
    constexpr int kQuads = Lanes::kQuads;
    const Lanes zero = 0.0f, one = 1.0f, all = 65535.0f;

    Float4 oldFractions[kQuads], oldColors[kQuads], alpha[kQuads], rows[4][kQuads];
    for (int q = 0; q < kQuads; ++q) {
        LoadWords(fragments, at + 4 * q, oldFractions[q], oldColors[q]);
        const ImagePoint* const* s = samples + 4 * q;
        alpha[q] = Float4(s[0]->opacity, s[1]->opacity, s[2]->opacity, s[3]->opacity);
        for (int i = 0; i < 4; ++i) rows[i][q] = Float4::Load(&s[i]->coverage);
    }
    const Ints fractions = IntBits(Lanes::Join(oldFractions)), rgbe = IntBits(Lanes::Join(oldColors));
    const Lanes a = Lanes::Join(alpha);
    Lanes k = Lanes::Join(rows[0]), r = Lanes::Join(rows[1]), g = Lanes::Join(rows[2]), b = Lanes::Join(rows[3]);
    Transpose(k, r, g, b);

    // An exponent of 0 goes with three zero bytes, else it is at least 22.
    const Lanes unpack = FloatBits(AtLeastZero((rgbe >> 24 & 255) - 9) << 23);
    const auto merged = [&](int shift, Lanes c) __attribute__((always_inline)) {
        const Lanes old = ToFloats(rgbe >> shift & 255) * unpack;
        return old + (c - old) * a * k;
    };
    r = merged(0, r), g = merged(8, g), b = merged(16, b);
    const Lanes m = MaxOr(b, MaxOr(g, r));
    const Ints exponent = 253 - AtLeastZero(253 - (IntBits(m) >> 23 & 511));
    const Lanes pack = FloatBits((261 - exponent) << 23);
    const auto byte = [&](Lanes c) __attribute__((always_inline)) {
        return ToInts(MinOr(MaxOr(c * pack, zero), Lanes(255.0f)));
    };
    const Ints packed = byte(r) | byte(g) << 8 | byte(b) << 16 | (exponent + 2) << 24;
    const Lanes color = SelectLess(Lanes(1e-32f), m, FloatBits(packed), zero);

    const Lanes opacity = ToFloats(fractions & 65535) / all, coverage = ToFloats(fractions >> 16 & 65535) / all;
    const Lanes total = coverage + k, mean = (opacity * coverage + a * k) / total;
    const auto fraction = [&](Lanes v) __attribute__((always_inline)) {
        return ToInts(MinOr(MaxOr(v * all, zero), all));
    };
    const Ints newOpacity = fraction(SelectLess(zero, total, mean, zero)),
               newCoverage = fraction(coverage * (one - k) + k);
    const Lanes both = FloatBits(newOpacity | newCoverage << 16);
    for (int q = 0; q < kQuads; ++q) StoreWords(fragments, at + 4 * q, both.Quad(q), color.Quad(q));
    return unsigned(LanesLess(Lanes(float(kOpaque) - 0.5f), MinOr(ToFloats(newOpacity), ToFloats(newCoverage))));
}

template <class Lanes>
unsigned RunMergeKernel(PackedFragment<HairFragment>* fragments, const uint32_t* at,
                        const ImagePoint* const* samples) {
    unsigned opaque = 0;
    for (int i = 0; i < kMergeSamples; i += Lanes::kCount)
        opaque |= MergeLanes<Lanes>(fragments, at + i, samples + i) << i;
    return opaque;
}
