#pragma once
// The checker map.

#include "materials/blend_map.h"

namespace host {

// Parameters of the checker map, beside MapCoordParam and MapOutputParam.
enum CheckerParam : ParamID { kCheckerColor1, kCheckerColor2, kCheckerMap1, kCheckerMap2 };

/// Two by two squares a repetition: the first colour where u and v both lie in the lower, or both in the upper half.
/// Regions get the colours' shares of their area. Maps may take the colours' places.
class CheckerMap : public BlendMap {
public:
    CheckerMap();
    ~CheckerMap() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return CHECKER_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Checker"; }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    InputBlend BlendAt(const MapPoint& p) const override;
};

ClassDesc* CheckerMapDesc();

} // namespace host
