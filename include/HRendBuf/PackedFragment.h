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

/// The same bits as merging into a link, without its branches: most samples of dense hair end here.
inline void MergeInto(PackedFragment<HairFragment>& f, const ImagePoint& s) {
    static_assert(offsetof(ImagePoint, color) == offsetof(ImagePoint, coverage) + sizeof(float));
    const float a = s.opacity, k = s.coverage;
    const Float4 fractions = Float4(float(f.opacity), float(f.coverage), 0.0f, 0.0f) / Float4(65535.0f);
    const float opacity = fractions[0], coverage = fractions[1];
    const Float4 old = UnpackRealPixel(std::bit_cast<uint32_t>(f.color));
    const Float4 color = Float4::Load(&s.coverage); // and coverage in the lane that nobody reads
    f.color = std::bit_cast<RealPixel>(PackRealPixel(old + (color - old) * Float4(a) * Float4(k)));
    const float total = coverage + k, mean = (opacity * coverage + a * k) / total;
    const Float4 scaled = Float4(total > 0.0f ? mean : 0.0f, coverage * (1.0f - k) + k, 0.0f, 0.0f) * Float4(65535.0f);
    int32_t packed[4];
    ToInts(MinOr(MaxOr(scaled, Float4(0.0f)), Float4(65535.0f)), packed);
    f.opacity = uint16_t(packed[0]);
    f.coverage = uint16_t(packed[1]);
}
