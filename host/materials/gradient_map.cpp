#include "materials/gradient_map.h"

#include <algorithm>
#include <cmath>

#include "core/block_class.h"
#include "materials/map_wrap.h"

namespace host {

namespace {

std::vector<ParamDef> OwnParams() {
    std::vector<ParamDef> params{
        IntParam(kGradientType, "gradientType", kGradientLinear, kGradientLinear, kGradientRadial),
        IntParam(kGradientInterpolation, "interpolation", kGradientStraight, kGradientStraight, kGradientSteps),
        IntParam(kGradientWrap, "wrap", kWrapRepeat, kWrapRepeat, kWrapClamp),
        IntParam(kGradientCount, "keys", 2, 1, GradientMap::kMostKeys)};
    for (int i = 0; i < GradientMap::kMostKeys; ++i) {
        // From black to white; keys not yet in use are white, at the end.
        const float end = i == 0 ? 0.0f : 1.0f;
        const std::string number = std::to_string(i + 1);
        params.push_back(FloatParam(ParamID(kGradientPosition + i), ("position" + number).c_str(), end, 0, 1));
        params.push_back(ColorParam(ParamID(kGradientColor + i), ("color" + number).c_str(), {end, end, end}));
        params.push_back(MapInputs::MapParam(ParamID(kGradientMap + i), "map" + number));
    }
    return params;
}

std::vector<InputParams> OwnInputs() {
    std::vector<InputParams> inputs;
    for (int i = 0; i < GradientMap::kMostKeys; ++i)
        inputs.push_back({ParamID(kGradientColor + i), ParamID(kGradientMap + i)});
    return inputs;
}

BlockClassDesc<GradientMap>& Desc() {
    static BlockClassDesc<GradientMap> desc("Gradient Ramp", "gradientRampMap", TEXMAP_CLASS_ID, GRADIENT_RAMP_CLASS_ID,
                                            HostMap::WithShared(OwnParams()));
    return desc;
}

} // namespace

ClassDesc* GradientMapDesc() {
    return &Desc();
}

GradientMap::GradientMap() : BlendMap(OwnInputs()) {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

void GradientMap::ReadParams(IParamBlock2& block) {
    BlendMap::ReadParams(block);
    type_ = block.GetInt(kGradientType, Time());
    interpolation_ = block.GetInt(kGradientInterpolation, Time());
    wrap_ = block.GetInt(kGradientWrap, Time());
    count_ = block.GetInt(kGradientCount, Time());
    for (int i = 0; i < count_; ++i) keys_[size_t(i)] = {block.GetFloat(ParamID(kGradientPosition + i), Time()), i};
    std::stable_sort(keys_.begin(), keys_.begin() + count_,
                     [](const Key& a, const Key& b) { return a.position < b.position; });
}

InputBlend GradientMap::BlendOf(float place) const {
    const Key* const begin = keys_.data();
    const Key* const end = begin + count_;
    const Key* const after =
        std::upper_bound(begin, end, place, [](float p, const Key& key) { return p < key.position; });
    if (after == begin) return {begin->input, begin->input, 0};
    const Key& before = after[-1];
    if (after == end || interpolation_ == kGradientSteps) return {before.input, before.input, 0};
    float s = (place - before.position) / (after->position - before.position);
    if (interpolation_ == kGradientSmooth) s = s * s * (3.0f - 2.0f * s);
    return {before.input, after->input, s};
}

Color GradientMap::ColorAt(float place) const {
    const InputBlend blend = BlendOf(place);
    return Inputs().OwnColor(blend.first) * (1.0f - blend.share) + Inputs().OwnColor(blend.second) * blend.share;
}

InputBlend GradientMap::BlendAt(const MapPoint& p) const {
    const float u = Wrapped(p.at.x, wrap_);
    if (type_ == kGradientLinear) return BlendOf(u);
    const float x = u - 0.5f, y = Wrapped(p.at.y, wrap_) - 0.5f;
    return BlendOf(2.0f * std::sqrt(x * x + y * y));
}

RefTargetHandle GradientMap::Clone(RemapDir& remap) {
    return Copied(new GradientMap, remap);
}

} // namespace host
