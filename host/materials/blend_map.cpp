#include "materials/blend_map.h"

namespace host {

AColor BlendMap::Evaluate(ShadeContext& sc, const MapPoint& p) const {
    const InputBlend blend = BlendAt(p);
    // A map that does not show is not asked.
    if (blend.share <= 0.0f) return inputs_.At(sc, blend.first);
    if (blend.share >= 1.0f) return inputs_.At(sc, blend.second);
    const AColor a = inputs_.At(sc, blend.first), b = inputs_.At(sc, blend.second);
    const float rest = 1.0f - blend.share;
    return {a.r * rest + b.r * blend.share, a.g * rest + b.g * blend.share, a.b * rest + b.b * blend.share,
            a.a * rest + b.a * blend.share};
}

Point3 BlendMap::InputRelief(ShadeContext& sc, const MapPoint& p) const {
    const InputBlend blend = BlendAt(p);
    return inputs_.ReliefAt(sc, blend.first) * (1.0f - blend.share) + inputs_.ReliefAt(sc, blend.second) * blend.share;
}

} // namespace host
