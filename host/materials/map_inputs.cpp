#include "materials/map_inputs.h"

namespace host {

void MapInputs::Read(IParamBlock2& block, TimeValue t) {
    for (size_t i = 0; i < inputs_.size(); ++i) {
        Interval valid = FOREVER;
        inputs_[i].color = block.GetColor(params_[i].color, t);
        inputs_[i].map = static_cast<Texmap*>(block.GetReferenceTarget(params_[i].map, t, valid));
    }
}

void MapInputs::Update(TimeValue t, Interval& valid) {
    for (const Input& input : inputs_)
        if (input.map) input.map->Update(t, valid);
}

void MapInputs::SetMap(IParamBlock2& block, int i, Texmap* map) const {
    if (i >= 0 && i < Count()) block.SetValue(params_[size_t(i)].map, 0, static_cast<ReferenceTarget*>(map));
}

} // namespace host
