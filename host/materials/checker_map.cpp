#include "materials/checker_map.h"

#include <algorithm>
#include <cmath>

#include "core/block_class.h"

namespace host {

namespace {

BlockClassDesc<CheckerMap>& Desc() {
    static BlockClassDesc<CheckerMap> desc(
        "Checker", "checkerMap", TEXMAP_CLASS_ID, CHECKER_CLASS_ID,
        HostMap::WithShared({ColorParam(kCheckerColor1, "color1", {0, 0, 0}),
                             ColorParam(kCheckerColor2, "color2", {1, 1, 1}), MapInputs::MapParam(kCheckerMap1, "map1"),
                             MapInputs::MapParam(kCheckerMap2, "map2")}));
    return desc;
}

/// Length of the upper halves of the repetitions between 0 and `v`.
float UpperUpTo(float v) {
    const float whole = std::floor(v);
    return 0.5f * whole + std::max(v - whole - 0.5f, 0.0f);
}

/// Share of upper halves in a stretch around `v`.
float UpperShare(float v, float across) {
    if (!(across > 0.0f)) return v - std::floor(v) >= 0.5f ? 1.0f : 0.0f;
    // Over many repetitions it is one half, and differences of large numbers are coarse.
    if (across > 8.0f) return 0.5f;
    const float from = v - std::floor(v) - 0.5f * across;
    return std::clamp((UpperUpTo(from + across) - UpperUpTo(from)) / across, 0.0f, 1.0f);
}

} // namespace

ClassDesc* CheckerMapDesc() {
    return &Desc();
}

CheckerMap::CheckerMap() : BlendMap({{kCheckerColor1, kCheckerMap1}, {kCheckerColor2, kCheckerMap2}}) {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

InputBlend CheckerMap::BlendAt(const MapPoint& p) const {
    const float u = UpperShare(p.at.x, p.across.x), v = UpperShare(p.at.y, p.across.y);
    return {0, 1, u * (1.0f - v) + v * (1.0f - u)};
}

RefTargetHandle CheckerMap::Clone(RemapDir& remap) {
    return Copied(new CheckerMap, remap);
}

} // namespace host
