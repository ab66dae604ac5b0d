#include "materials/map_coords.h"

#include <algorithm>
#include <cmath>

#include "core/block_class.h"
#include "sdk/mesh.h"

namespace host {

namespace {

constexpr float kPi = 3.14159265358979f;

Point2 OnSphere(ShadeContext& sc) {
    const Point3 d = Normalize(sc.VectorTo(sc.V(), REF_WORLD));
    return {0.5f + std::atan2(d.x, d.y) / (2.0f * kPi), 0.5f + std::asin(std::clamp(d.z, -1.0f, 1.0f)) / kPi};
}

} // namespace

std::vector<ParamDef> MapCoords::Params() {
    return {IntParam(kMapChannel, "channel", 1, MAP_ALPHA, MAX_MESHMAPS - 1),
            FloatParam(kMapTileU, "tileU", 1, -kHuge, kHuge),
            FloatParam(kMapTileV, "tileV", 1, -kHuge, kHuge),
            FloatParam(kMapOffsetU, "offsetU", 0, -kHuge, kHuge),
            FloatParam(kMapOffsetV, "offsetV", 0, -kHuge, kHuge),
            IntParam(kMapSource, "source", kMapExplicit, kMapExplicit, kMapScreen)};
}

void MapCoords::Read(IParamBlock2& block, TimeValue t) {
    channel = block.GetInt(kMapChannel, t);
    source = block.GetInt(kMapSource, t);
    tileU = block.GetFloat(kMapTileU, t);
    tileV = block.GetFloat(kMapTileV, t);
    offsetU = block.GetFloat(kMapOffsetU, t);
    offsetV = block.GetFloat(kMapOffsetV, t);
}

Point2 MapCoords::At(ShadeContext& sc) const {
    Point2 uv;
    if (source == kMapScreen) {
        Point2 step;
        sc.ScreenUV(uv, step);
    } else if (source == kMapSphere) {
        uv = OnSphere(sc);
    } else {
        const Point3 uvw = sc.UVW(channel);
        uv = {uvw.x, uvw.y};
    }
    return {uv.x * tileU - offsetU, uv.y * tileV - offsetV};
}

} // namespace host
