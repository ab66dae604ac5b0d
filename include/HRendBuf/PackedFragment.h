#pragma once
// A fragment in packed arrays: everything but its near end, which stands in an array of its own to be searched.

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
