#include "materials/noise_map.h"

#include <algorithm>
#include <cmath>

#include "core/block_class.h"
#include "sdk/noise.h"

namespace host {

namespace {

BlockClassDesc<NoiseMap>& Desc() {
    static BlockClassDesc<NoiseMap> desc(
        "Noise", "noiseMap", TEXMAP_CLASS_ID, NOISE_CLASS_ID,
        HostMap::WithShared(
            {ColorParam(kNoiseColor1, "color1", {0, 0, 0}), ColorParam(kNoiseColor2, "color2", {1, 1, 1}),
             IntParam(kNoiseType, "noiseType", kNoiseRegular, kNoiseRegular, kNoiseTurbulence),
             FloatParam(kNoiseSize, "size", 1, 1e-6f, kHuge), FloatParam(kNoiseLevels, "levels", 3, 1, 10),
             FloatParam(kNoiseLow, "low", 0, 0, 1), FloatParam(kNoiseHigh, "high", 1, 0, 1),
             FloatParam(kNoisePhase, "phase", 0, -kHuge, kHuge), MapInputs::MapParam(kNoiseMap1, "map1"),
             MapInputs::MapParam(kNoiseMap2, "map2")}));
    return desc;
}

} // namespace

ClassDesc* NoiseMapDesc() {
    return &Desc();
}

NoiseMap::NoiseMap() : BlendMap({{kNoiseColor1, kNoiseMap1}, {kNoiseColor2, kNoiseMap2}}) {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

void NoiseMap::ReadParams(IParamBlock2& block) {
    BlendMap::ReadParams(block);
    type_ = block.GetInt(kNoiseType, Time());
    size_ = block.GetFloat(kNoiseSize, Time());
    levels_ = block.GetFloat(kNoiseLevels, Time());
    low_ = block.GetFloat(kNoiseLow, Time());
    high_ = block.GetFloat(kNoiseHigh, Time());
    phase_ = block.GetFloat(kNoisePhase, Time());
}

float NoiseMap::ValueAt(const Point3& at) const {
    const Point3 p = at / size_;
    if (type_ == kNoiseRegular) return 0.5f + 0.5f * noise4(p.x, p.y, p.z, phase_);
    float sum = 0, total = 0, frequency = 1;
    for (float left = levels_; left > 0.0f; left -= 1.0f, frequency *= 2.0f) {
        // Octaves side by side in the phase, so that their zeros do not fall together.
        const float weight = std::min(left, 1.0f) / frequency;
        const float n = noise4(p.x * frequency, p.y * frequency, p.z * frequency, phase_ + 0.37f * (frequency - 1.0f));
        sum += (type_ == kNoiseTurbulence ? std::fabs(n) : n) * weight;
        total += weight;
    }
    return type_ == kNoiseTurbulence ? sum / total : 0.5f + 0.5f * sum / total;
}

InputBlend NoiseMap::BlendAt(const MapPoint& p) const {
    const float value = ValueAt(p.at);
    // Where both thresholds are the same, a hard edge.
    return {0, 1, high_ > low_ ? std::clamp((value - low_) / (high_ - low_), 0.0f, 1.0f) : float(value >= low_)};
}

RefTargetHandle NoiseMap::Clone(RemapDir& remap) {
    return Copied(new NoiseMap, remap);
}

} // namespace host
