#include "materials/map_coords.h"

#include <algorithm>
#include <cmath>

#include "core/block_class.h"
#include "sdk/mesh.h"
#include "sdk/render.h"

namespace host {

namespace {

constexpr float kPi = 3.14159265358979f;
/// Steeper than this is straight up or down on the cylinder.
constexpr float kSteepest = 1e6f;

float AroundZ(const Point3& d) {
    return 0.5f + std::atan2(d.x, d.y) / (2.0f * kPi);
}

Point3 OnSphere(const Point3& d) {
    return {AroundZ(d), 0.5f + std::asin(std::clamp(d.z, -1.0f, 1.0f)) / kPi, 0};
}

Point3 OnCylinder(const Point3& d) {
    const float level = std::sqrt(d.x * d.x + d.y * d.y);
    const float slope = level > 0.0f ? d.z / level : d.z < 0.0f ? -kSteepest : kSteepest;
    return {AroundZ(d), 0.5f + 0.5f * std::clamp(slope, -kSteepest, kSteepest), 0};
}

/// Angle that a pixel of a perspective view spans at its middle; 0 when not known.
float PixelAngle(const ShadeContext& sc) {
    const RenderGlobalContext* const g = sc.globContext;
    return g && g->projType == PROJ_PERSPECTIVE && g->xscale != 0.0f ? std::fabs(1.0f / g->xscale) : 0.0f;
}

/// Two unit vectors that stand at right angles on the unit vector `n` and on one another.
void Tangents(const Point3& n, Point3 t[2]) {
    const Point3 aside = std::fabs(n.x) < 0.7f ? Point3(1, 0, 0) : Point3(0, 1, 0);
    t[0] = Normalize(CrossProd(n, aside));
    t[1] = CrossProd(n, t[0]);
}

/// How u and v change along `t`, from the surface's tangents along u and v.
Point3 OnChart(const Point3& t, const Point3& pu, const Point3& pv, float det) {
    const float uu = DotProd(pu, pu), uv = DotProd(pu, pv), vv = DotProd(pv, pv);
    const float tu = DotProd(t, pu), tv = DotProd(t, pv);
    return {(tu * vv - tv * uv) / det, (tv * uu - tu * uv) / det, 0};
}

} // namespace

std::vector<ParamDef> MapCoords::Params() {
    return {IntParam(kMapChannel, "channel", 1, MAP_ALPHA, MAX_MESHMAPS - 1),
            FloatParam(kMapTileU, "tileU", 1, -kHuge, kHuge),
            FloatParam(kMapTileV, "tileV", 1, -kHuge, kHuge),
            FloatParam(kMapOffsetU, "offsetU", 0, -kHuge, kHuge),
            FloatParam(kMapOffsetV, "offsetV", 0, -kHuge, kHuge),
            IntParam(kMapSource, "source", kMapExplicit, kMapExplicit, kMapWorld),
            FloatParam(kMapRotation, "rotation", 0, -kHuge, kHuge)};
}

void MapCoords::Read(IParamBlock2& block, TimeValue t) {
    channel = block.GetInt(kMapChannel, t);
    source = block.GetInt(kMapSource, t);
    tileU = block.GetFloat(kMapTileU, t);
    tileV = block.GetFloat(kMapTileV, t);
    offsetU = block.GetFloat(kMapOffsetU, t);
    offsetV = block.GetFloat(kMapOffsetV, t);
    const float turn = block.GetFloat(kMapRotation, t) * kPi / 180.0f;
    sine = turn != 0.0f ? std::sin(turn) : 0.0f;
    cosine = turn != 0.0f ? std::cos(turn) : 1.0f;
}

Point3 MapCoords::Change(const Point3& d) const {
    if (sine == 0.0f && cosine == 1.0f) return {d.x * tileU, d.y * tileV, d.z};
    return {(d.x * cosine + d.y * sine) * tileU, (d.y * cosine - d.x * sine) * tileV, d.z};
}

Point3 MapCoords::At(ShadeContext& sc) const {
    Point3 c;
    if (source == kMapScreen) {
        Point2 uv, step;
        sc.ScreenUV(uv, step);
        c = {uv.x, uv.y, 0};
    } else if (source == kMapSphere || source == kMapCylinder) {
        const Point3 d = Normalize(sc.VectorTo(sc.V(), REF_WORLD));
        c = source == kMapSphere ? OnSphere(d) : OnCylinder(d);
    } else if (source == kMapObject) {
        c = sc.PObj();
    } else if (source == kMapWorld) {
        c = sc.PointTo(sc.P(), REF_WORLD);
    } else {
        c = sc.UVW(channel);
    }
    if (sine != 0.0f || cosine != 1.0f) {
        // About the middle of the map.
        const Point3 middle(0.5f, 0.5f, 0), d = c - middle;
        c = middle + Point3(d.x * cosine + d.y * sine, d.y * cosine - d.x * sine, d.z);
    }
    return {c.x * tileU - offsetU, c.y * tileV - offsetV, c.z};
}

Point2 MapCoords::Footprint(ShadeContext& sc) const {
    if (!sc.filterMaps) return {};
    Point2 d;
    if (source == kMapScreen) {
        Point2 uv;
        sc.ScreenUV(uv, d);
    } else if (source == kMapSphere || source == kMapCylinder) {
        const float angle = PixelAngle(sc);
        d = {angle / (2.0f * kPi), source == kMapSphere ? angle / kPi : angle * 0.5f};
    } else if (source == kMapExplicit) {
        const Point3 duvw = sc.DUVW(channel);
        d = {duvw.x, duvw.y};
    }
    const float s = std::fabs(sine), c = std::fabs(cosine);
    return {(std::fabs(d.x) * c + std::fabs(d.y) * s) * std::fabs(tileU),
            (std::fabs(d.y) * c + std::fabs(d.x) * s) * std::fabs(tileV)};
}

bool MapCoords::Along(ShadeContext& sc, Point3 directions[2], Point3 changes[2]) const {
    if (source != kMapExplicit && source != kMapObject && source != kMapWorld) return false;
    Tangents(sc.Normal(), directions);
    if (source == kMapExplicit) {
        Point3 dp[3];
        sc.DPdUVW(dp, channel);
        const float uv = DotProd(dp[0], dp[1]);
        const float det = DotProd(dp[0], dp[0]) * DotProd(dp[1], dp[1]) - uv * uv;
        if (!(det > 0.0f)) return false;
        for (int i = 0; i < 2; ++i) changes[i] = Change(OnChart(directions[i], dp[0], dp[1], det));
        return true;
    }
    const RefFrame frame = source == kMapObject ? REF_OBJECT : REF_WORLD;
    for (int i = 0; i < 2; ++i) changes[i] = Change(sc.VectorTo(directions[i], frame));
    return true;
}

} // namespace host
