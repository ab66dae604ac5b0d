#include "materials/checker_map.h"

#include <cmath>

#include "core/block_class.h"

namespace host {

namespace {

BlockClassDesc<CheckerMap>& Desc() {
    static BlockClassDesc<CheckerMap> desc("Checker", "checkerMap", TEXMAP_CLASS_ID, CHECKER_CLASS_ID, [] {
        std::vector<ParamDef> params = MapCoords::Params();
        params.push_back(ColorParam(kCheckerColor1, "color1", {0, 0, 0}));
        params.push_back(ColorParam(kCheckerColor2, "color2", {1, 1, 1}));
        return params;
    }());
    return desc;
}

/// True in the upper half of a repetition.
bool UpperHalf(float v) {
    return v - std::floor(v) >= 0.5f;
}

} // namespace

ClassDesc* CheckerMapDesc() {
    return &Desc();
}

CheckerMap::CheckerMap() {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

void CheckerMap::Refresh() {
    if (!Params()) return;
    colors_[0] = Params()->GetColor(kCheckerColor1, Time());
    colors_[1] = Params()->GetColor(kCheckerColor2, Time());
    coords_.Read(*Params(), Time());
}

AColor CheckerMap::EvalColor(ShadeContext& sc) {
    const Point2 uv = coords_.At(sc);
    return AColor(colors_[UpperHalf(uv.x) != UpperHalf(uv.y)]);
}

RefTargetHandle CheckerMap::Clone(RemapDir& remap) {
    auto* const copy = new CheckerMap;
    CopyReferences(*copy, remap);
    copy->Refresh();
    return copy;
}

} // namespace host
