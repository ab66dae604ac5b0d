#include "render/effects/host_effect.h"

#include <algorithm>

namespace host {

std::vector<ParamDef> HostEffect::WithShared(std::vector<ParamDef> own) {
    own.insert(own.begin(), IntParam(kOnlyId, "onlyId", 0, 0, 65535));
    return own;
}

void PutPixel(Bitmap& bitmap, int x, int y, EffectPixel p) {
    for (int i = 0; i < 3; ++i) p.background[i] = std::max(p.background[i], 0.0f);
    bitmap.PutPixel(
        x, y,
        {std::max(p.own.r, 0.0f), std::max(p.own.g, 0.0f), std::max(p.own.b, 0.0f), std::clamp(p.own.a, 0.0f, 1.0f)});
    if (!(p.background == bitmap.GetBackground(x, y))) bitmap.PutBackground(x, y, p.background);
}

void ScaleAndAdd(EffectPixel& p, const Color& factor, const Color& offset) {
    const float a = p.own.a;
    p.own = AColor(Color(p.own) * factor + offset * a, a);
    p.background = p.background * factor + offset * (1.0f - a);
}

} // namespace host
