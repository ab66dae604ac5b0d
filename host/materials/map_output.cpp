#include "materials/map_output.h"

#include <algorithm>

#include "core/param_builder.h"

namespace host {

std::vector<ParamDef> MapOutput::Params() {
    return {BoolParam(kOutInvert, "invert", false), BoolParam(kOutClamp, "clamp", false),
            FloatParam(kOutLevel, "level", 1, -kHuge, kHuge), FloatParam(kOutOffset, "offset", 0, -kHuge, kHuge),
            FloatParam(kOutAmount, "amount", 1, -kHuge, kHuge)};
}

void MapOutput::Read(IParamBlock2& block, TimeValue t) {
    invert = block.GetInt(kOutInvert, t) != 0;
    clamp = block.GetInt(kOutClamp, t) != 0;
    level = block.GetFloat(kOutLevel, t);
    offset = block.GetFloat(kOutOffset, t);
    amount = block.GetFloat(kOutAmount, t);
}

AColor MapOutput::Apply(AColor c) const {
    for (float* const v : {&c.r, &c.g, &c.b}) *v = Apply(*v);
    c.a *= amount;
    if (clamp) c.a = std::clamp(c.a, 0.0f, 1.0f);
    return c;
}

float MapOutput::Apply(float v) const {
    if (invert) v = 1.0f - v;
    v = (v * level + offset) * amount;
    return clamp ? std::clamp(v, 0.0f, 1.0f) : v;
}

} // namespace host
