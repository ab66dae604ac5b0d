#pragma once
// The checker map.

#include "materials/block_owner.h"
#include "materials/map_coords.h"
#include "sdk/mtl.h"

namespace host {

// Parameters of the checker map, beside MapCoordParam.
enum CheckerParam : ParamID { kCheckerColor1, kCheckerColor2 };

/// Two by two squares a repetition: the first colour where u and v both lie in the lower, or both in the upper half.
class CheckerMap : public BlockOwner<Texmap, 0> {
public:
    CheckerMap();
    ~CheckerMap() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return CHECKER_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Checker"; }
    AColor EvalColor(ShadeContext& sc) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    void Refresh() override;
    Color colors_[2];
    MapCoords coords_;
};

ClassDesc* CheckerMapDesc();

} // namespace host
