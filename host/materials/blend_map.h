#pragma once
// What the maps that mix colours have in common.

#include "materials/host_map.h"
#include "materials/map_inputs.h"

namespace host {

/// Which inputs a point of the map shows: the first x (1 - share) + the second x share.
struct InputBlend {
    int first = 0, second = 0;
    float share = 0;
};

/// A map that mixes two of its inputs at every point. Colours, alpha and reliefs of the maps in the inputs are mixed
/// alike; they are asked at the shading point, with coordinates of their own.
class BlendMap : public HostMap {
public:
    int NumSubTexmaps() override { return inputs_.Count(); }
    Texmap* GetSubTexmap(int i) override { return inputs_.Map(i); }
    /// Ignored for what is no input, and for maps that contain this one.
    void SetSubTexmap(int i, Texmap* map) override { inputs_.SetMap(*Params(), i, map); }

protected:
    explicit BlendMap(std::vector<InputParams> inputs) : inputs_(std::move(inputs)) {}
    /// Both numbers are inputs.
    virtual InputBlend BlendAt(const MapPoint& p) const = 0;
    void ReadParams(IParamBlock2& block) override { inputs_.Read(block, Time()); }
    const MapInputs& Inputs() const { return inputs_; }

private:
    AColor Evaluate(ShadeContext& sc, const MapPoint& p) const final;
    Point3 InputRelief(ShadeContext& sc, const MapPoint& p) const final;
    void UpdateReferences(TimeValue t, Interval& valid) final { inputs_.Update(t, valid); }

    MapInputs inputs_;
};

} // namespace host
