#include "materials/multiply_map.h"

#include "core/block_class.h"

namespace host {

namespace {

BlockClassDesc<MultiplyMap>& Desc() {
    static BlockClassDesc<MultiplyMap> desc("Multiply", "multiplyMap", TEXMAP_CLASS_ID, MULTIPLY_CLASS_ID, [] {
        std::vector<ParamDef> params = MapOutput::Params();
        for (const ParamDef& def :
             {ColorParam(kMultiplyColor1, "color1", {1, 1, 1}), ColorParam(kMultiplyColor2, "color2", {1, 1, 1}),
              MapInputs::MapParam(kMultiplyMap1, "map1"), MapInputs::MapParam(kMultiplyMap2, "map2")})
            params.push_back(def);
        return params;
    }());
    return desc;
}

} // namespace

ClassDesc* MultiplyMapDesc() {
    return &Desc();
}

MultiplyMap::MultiplyMap() : inputs_({{kMultiplyColor1, kMultiplyMap1}, {kMultiplyColor2, kMultiplyMap2}}) {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

void MultiplyMap::Refresh() {
    if (!Params()) return;
    output_.Read(*Params(), Time());
    inputs_.Read(*Params(), Time());
}

AColor MultiplyMap::EvalColor(ShadeContext& sc) {
    const AColor a = inputs_.At(sc, 0), b = inputs_.At(sc, 1);
    return output_.Apply({a.r * b.r, a.g * b.g, a.b * b.b, a.a * b.a});
}

float MultiplyMap::EvalMono(ShadeContext& sc) {
    return output_.Apply(inputs_.MonoAt(sc, 0) * inputs_.MonoAt(sc, 1));
}

Point3 MultiplyMap::EvalNormalPerturb(ShadeContext& sc) {
    const Point3 slope =
        inputs_.ReliefAt(sc, 0) * inputs_.MonoAt(sc, 1) + inputs_.ReliefAt(sc, 1) * inputs_.MonoAt(sc, 0);
    return slope * output_.Slope();
}

RefTargetHandle MultiplyMap::Clone(RemapDir& remap) {
    return Copied(new MultiplyMap, remap);
}

} // namespace host
