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
    float EvalMono(ShadeContext& sc) override { return Mono(EvalColor(sc)); }
    /// By central differences, a grain or half a pixel to each side.
    Point3 EvalNormalPerturb(ShadeContext& sc) override;

    /// `own` with the parameters of coordinates and output appended.
    static std::vector<ParamDef> WithShared(std::vector<ParamDef> own);

protected:
    /// The colour before adjustments.
    virtual AColor Evaluate(ShadeContext& sc, const MapPoint& p) const = 0;
    /// The number that a colour of the map stands for.
    virtual float Mono(const AColor& c) const { return Intens(Color(c)); }
    /// Relief, before adjustments, of other maps that show at the point.
    virtual Point3 InputRelief(ShadeContext& sc, const MapPoint& p) const { return {}; }
    /// Size of the smallest detail in units of the coordinates, above 0.
    virtual float Grain() const { return 1.0f / 512.0f; }
    /// Takes the class's own parameters over.
    virtual void ReadParams(IParamBlock2& block) = 0;
    void Refresh() final;

private:
    float HeightAt(ShadeContext& sc, const MapPoint& p) const { return Mono(output_.Apply(Evaluate(sc, p))); }

    MapCoords coords_;
    MapOutput output_;
};

} // namespace host
