#include "materials/host_map.h"

#include <algorithm>

namespace host {

std::vector<ParamDef> HostMap::WithShared(std::vector<ParamDef> own) {
    for (const auto& shared : {MapCoords::Params(), MapOutput::Params()})
        own.insert(own.end(), shared.begin(), shared.end());
    return own;
}

void HostMap::Refresh() {
    IParamBlock2* const block = Params();
    if (!block) return;
    coords_.Read(*block, Time());
    output_.Read(*block, Time());
    ReadParams(*block);
}

AColor HostMap::EvalColor(ShadeContext& sc) {
    return output_.Apply(Evaluate(sc, {coords_.At(sc), coords_.Footprint(sc)}));
}

Point3 HostMap::EvalNormalPerturb(ShadeContext& sc) {
    const MapPoint here{coords_.At(sc), coords_.Footprint(sc)};
    Point3 directions[2], changes[2], out = InputRelief(sc, here) * output_.Slope();
    if (!coords_.Along(sc, directions, changes)) return out;
    const float step = std::max(Grain(), 0.5f * std::max(here.across.x, here.across.y));
    for (int i = 0; i < 2; ++i) {
        const float speed = Length(changes[i]);
        if (!(speed > 0.0f)) continue;
        const Point3 aside = changes[i] * (step / speed);
        const float rise = HeightAt(sc, {here.at + aside, here.across}) - HeightAt(sc, {here.at - aside, here.across});
        out = out - directions[i] * (rise * speed / (2.0f * step));
    }
    return out;
}

} // namespace host
