#pragma once
// A fragment in packed arrays: everything but its near end, which stands in an array of its own to be searched.

#include <cstddef>

#include "HRendBuf/FragmentList.h"

template <class Fragment>
struct PackedFragment;
template <>
struct PackedFragment<HairFragment> {
    float zMin;
    uint16_t opacity, coverage;
    RealPixel color;
};
template <>
struct PackedFragment<ShadowFragment> {
    float zMin;
    uint16_t opacity, coverage;
};

inline void CopyColor(PackedFragment<HairFragment>& to, const HairFragment& from) {
    to.color = from.color;
}
inline void CopyColor(HairFragment& to, const PackedFragment<HairFragment>& from) {
    to.color = from.color;
}
inline void CopyColor(PackedFragment<ShadowFragment>&, const ShadowFragment&) {}
inline void CopyColor(ShadowFragment&, const PackedFragment<ShadowFragment>&) {}

/// The packed form of a linked fragment, without its near end.
template <class Fragment>
inline PackedFragment<Fragment> Pack(const Fragment& f) {
    PackedFragment<Fragment> packed;
    packed.zMin = f.zMin;
    packed.opacity = f.opacity;
    packed.coverage = f.coverage;
    CopyColor(packed, f);
    return packed;
}
/// A linked fragment, not linked to anything, from its packed form.
template <class Fragment>
inline Fragment Unpack(float zMax, const PackedFragment<Fragment>& packed) {
    Fragment f;
    f.next = nullptr;
    f.zMax = zMax;
    f.zMin = packed.zMin;
    f.opacity = packed.opacity;
    f.coverage = packed.coverage;
    CopyColor(f, packed);
    return f;
}

/// The same bits as merging each of four samples into its link: most samples of dense hair end here. True when one of
/// the fragments may have become opaque.
inline bool MergeFour(PackedFragment<HairFragment>* const f[4], const ImagePoint* const s[4]) {
    static_assert(offsetof(ImagePoint, color) == offsetof(ImagePoint, coverage) + sizeof(float));
    static_assert(offsetof(PackedFragment<HairFragment>, color) ==
                  offsetof(PackedFragment<HairFragment>, opacity) + sizeof(uint32_t));
    // Both fractions of a fragment are one number, its colour another.
    struct Words {
        int32_t fractions, color;
    };
    Words w[4];
    for (int i = 0; i < 4; ++i) std::memcpy(&w[i], &f[i]->opacity, sizeof(Words));
    const Int4 fractions{w[0].fractions, w[1].fractions, w[2].fractions, w[3].fractions};
    const Int4 rgbe{w[0].color, w[1].color, w[2].color, w[3].color};
    const Float4 zero = 0.0f, one = 1.0f, all = 65535.0f;

    const Float4 a(s[0]->opacity, s[1]->opacity, s[2]->opacity, s[3]->opacity);
    Float4 k = Float4::Load(&s[0]->coverage), r = Float4::Load(&s[1]->coverage), g = Float4::Load(&s[2]->coverage),
           b = Float4::Load(&s[3]->coverage);
    Transpose(k, r, g, b);

    // An exponent of 0 goes with three zero bytes, else it is at least 22.
    const Int4 e = (rgbe >> 24 & 255) - 9;
    const Float4 unpack = FloatBits((e > 0 ? e : Int4{}) << 23);
    const auto merged = [&](int shift, Float4 c) {
        const Float4 old = ToFloats(rgbe >> shift & 255) * unpack;
        return old + (c - old) * a * k;
    };
    r = merged(0, r), g = merged(8, g), b = merged(16, b);
    const Float4 m = MaxOr(b, MaxOr(g, r));
    const Int4 raised = IntBits(m) >> 23 & 511, exponent = raised < 253 ? raised : Int4{253, 253, 253, 253};
    const Float4 pack = FloatBits((261 - exponent) << 23);
    const auto byte = [&](Float4 c) { return ToInts(MinOr(MaxOr(c * pack, zero), Float4(255.0f))); };
    const Int4 packed = byte(r) | byte(g) << 8 | byte(b) << 16 | (exponent + 2) << 24;
    const Int4 color = (m.v > Float4(1e-32f).v) & packed;

    const Float4 opacity = ToFloats(fractions & 65535) / all, coverage = ToFloats(fractions >> 16 & 65535) / all;
    const Float4 total = coverage + k, mean = (opacity * coverage + a * k) / total;
    const auto fraction = [&](Float4 v) { return ToInts(MinOr(MaxOr(v * all, zero), all)); };
    const Int4 newOpacity = fraction(SelectPositive(total, mean, zero)),
               newCoverage = fraction(coverage * (one - k) + k);
    const Int4 both = newOpacity | newCoverage << 16;
    for (int i = 0; i < 4; ++i) {
        const Words out{both[i], color[i]};
        std::memcpy(&f[i]->opacity, &out, sizeof(Words));
    }
    return LanesLess(Float4(float(kOpaque) - 0.5f), MinOr(ToFloats(newOpacity), ToFloats(newCoverage))) != 0;
}
/// The same without colours.
inline bool MergeFour(PackedFragment<ShadowFragment>* const f[4], const ShadowPoint* const s[4]) {
    for (int i = 0; i < 4; ++i) MergeInto(*f[i], *s[i]);
    return true;
}
