#pragma once
// What the host's maps with coordinates have in common.

#include "materials/block_owner.h"
#include "materials/map_coords.h"
#include "materials/map_output.h"
#include "sdk/mtl.h"

namespace host {

/// Where a map is asked for its colour.
struct MapPoint {
    Point3 at;     ///< coordinates
    Point2 across; ///< width of the region to answer for along u and v; 0: a point
};

/// A map with coordinates and adjustable output; its class answers for points of the map.
class HostMap : public BlockOwner<Texmap, 0> {
public:
    AColor EvalColor(ShadeContext& sc) override;
    /// By central differences, a grain or half a pixel to each side.
    Point3 EvalNormalPerturb(ShadeContext& sc) override;

    /// `own` with the parameters of coordinates and output appended.
    static std::vector<ParamDef> WithShared(std::vector<ParamDef> own);

protected:
    /// The colour before adjustments.
    virtual AColor Evaluate(const MapPoint& p) const = 0;
    /// Size of the smallest detail in units of the coordinates, above 0.
    virtual float Grain() const { return 1.0f / 512.0f; }
    /// Takes the class's own parameters over.
    virtual void ReadParams(IParamBlock2& block) = 0;
    void Refresh() final;

private:
    float HeightAt(const MapPoint& p) const { return Intens(Color(output_.Apply(Evaluate(p)))); }

    MapCoords coords_;
    MapOutput output_;
};

} // namespace host
