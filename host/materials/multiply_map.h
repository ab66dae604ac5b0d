#pragma once
// The map that multiplies.

#include "materials/block_owner.h"
#include "materials/map_inputs.h"
#include "materials/map_output.h"

namespace host {

inline constexpr Class_ID MULTIPLY_CLASS_ID{0x3201, 0};

// Parameters of the multiplying map, beside MapOutputParam.
enum MultiplyParam : ParamID { kMultiplyColor1, kMultiplyColor2, kMultiplyMap1, kMultiplyMap2 };

/// The product of two colours, each of them white, another colour or a map; alpha and what stands for a number
/// (EvalMono) are multiplied likewise.
class MultiplyMap : public BlockOwner<Texmap, 0> {
public:
    MultiplyMap();
    ~MultiplyMap() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return MULTIPLY_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Multiply"; }
    AColor EvalColor(ShadeContext& sc) override;
    float EvalMono(ShadeContext& sc) override;
    /// By the product rule.
    Point3 EvalNormalPerturb(ShadeContext& sc) override;
    int NumSubTexmaps() override { return inputs_.Count(); }
    Texmap* GetSubTexmap(int i) override { return inputs_.Map(i); }
    /// Ignored for what is no input, and for maps that contain this one.
    void SetSubTexmap(int i, Texmap* map) override { inputs_.SetMap(*Params(), i, map); }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    void Refresh() override;
    void UpdateReferences(TimeValue t, Interval& valid) override { inputs_.Update(t, valid); }

    MapInputs inputs_;
    MapOutput output_;
};

ClassDesc* MultiplyMapDesc();

} // namespace host
