// The tables of along-length curves, surface distributions and random distributions, and their default objects.

#include "Base/ParamDefs.h"
#include "CurveCtl/CurveCtl.h"
#include "HairDLL/StringTable.h"

namespace {

constexpr uint32_t kEnabled = 1u << 16;

constexpr CurveDefRecord Curve(int pid, int groups, uint32_t scales, float yMin, float startY, float endY) {
    return {VariationSectionId(pid), ParamNameId(pid), groups, scales, 0, 1, yMin, 1, startY, endY, 0, {}};
}

constexpr CurveDefRecord With(CurveDefRecord def, float x, float y) {
    def.inner[def.innerCount].x = x;
    def.inner[def.innerCount].y = y;
    ++def.innerCount;
    return def;
}

constexpr DistDefRecord Dist(int pid, int groups, int scales) {
    return {VariationSectionId(pid), ParamNameId(pid), groups, scales};
}

} // namespace

constinit const std::array<CurveDefRecord, kNumCurves> CurveDefTable = {{
    With(Curve(pid_curve_thickness, GROUP_DYNAMICS | GROUP_RENDER, pid_thickness | kEnabled, 0, 1.0f, 0.087f), 0.577f,
         0.645f),
    Curve(pid_curve_curlRadius, GROUP_SHAPE | GROUP_DYNAMICS, pid_curlRadius | kEnabled, -1, 0.0f, 1.0f),
    Curve(pid_curve_curlTurns, GROUP_SHAPE, pid_curlTurns, 0, 0.0f, 1.0f),
    With(With(With(Curve(pid_curve_dynWeight, GROUP_DYNAMICS, kNoParam, 0, 1.0f, 0.02f), 0.08f, 0.74f), 0.29f, 0.36f),
         0.68f, 0.1f),
    Curve(pid_curve_dynHardness, GROUP_DYNAMICS, kNoParam, 0, 0.2f, 0.2f),
    Curve(pid_curve_dynInertia, GROUP_DYNAMICS, kNoParam, 0, 0.5f, 0.5f),
    Curve(pid_curve_clumpShape, GROUP_RENDER, pid_clumpAmount, 0, 0.0f, 1.0f),
}};

constinit const std::array<DistDefRecord, kNumSurfDists> SurfDistDefTable = {{
    Dist(pid_surfDist_length, GROUP_RENDER | GROUP_VIEW, pid_length),
    Dist(pid_surfDist_leanAngle, GROUP_SHAPE, pid_fur_leanAngle),
    Dist(pid_surfDist_leanDir, GROUP_SHAPE, pid_fur_leanDir),
    Dist(pid_surfDist_bendAmount, GROUP_SHAPE, pid_fur_bendAmount),
    Dist(pid_surfDist_bendDir, GROUP_SHAPE, pid_fur_bendDir),
    Dist(pid_surfDist_density, GROUP_RENDER, pid_densPerArea),
    Dist(pid_surfDist_thickness, GROUP_RENDER, pid_thickness),
    Dist(pid_surfDist_curlRadius, GROUP_RENDER, pid_curlRadius),
    Dist(pid_surfDist_curlTurns, GROUP_RENDER, pid_curlTurns),
    Dist(pid_surfDist_clumpAmount, GROUP_RENDER, pid_clumpAmount),
    Dist(pid_surfDist_clumpRadius, GROUP_RENDER, pid_clumpRadius),
    Dist(pid_surfDist_colBase, GROUP_RENDER, pid_colBase),
    Dist(pid_surfDist_colTip, GROUP_RENDER, pid_colTip),
    Dist(pid_surfDist_leanAbsolute, GROUP_SHAPE, pid_fur_leanAbsolute),
    Dist(pid_surfDist_bendAbsolute, GROUP_SHAPE, pid_fur_bendAbsolute),
    Dist(pid_surfDist_dirRand, GROUP_RENDER, pid_dirRand),
    Dist(pid_surfDist_vdirRand, GROUP_SHAPE, pid_vdirRand),
}};

constinit const std::array<DistDefRecord, kNumRandDists> RandDistDefTable = {{
    Dist(pid_randDist_length, GROUP_RENDER, pid_length),
    Dist(pid_randDist_thickness, GROUP_RENDER, pid_thickness),
    Dist(pid_randDist_colorH, GROUP_RENDER, pid_colTip),
    Dist(pid_randDist_colorS, GROUP_RENDER, pid_colTip),
    Dist(pid_randDist_colorV, GROUP_RENDER, pid_colTip),
}};

int ChangeGroupsOf(int pid) {
    const auto in = [pid](int first, int count) { return pid >= first && pid < first + count; };
    if (in(0, kNumScalarPids)) return ParamDefTable[size_t(pid)].groups;
    if (in(kFirstCurvePid, kNumCurves)) return CurveDefTable[size_t(pid - kFirstCurvePid)].groups;
    if (in(kFirstSurfDistPid, kNumSurfDists)) return SurfDistDefTable[size_t(pid - kFirstSurfDistPid)].groups;
    if (in(kFirstRandDistPid, kNumRandDists)) return RandDistDefTable[size_t(pid - kFirstRandDistPid)].groups;
    return 0;
}

CurveShape DefaultCurveShape(const CurveDefRecord& def) {
    CurveShape s;
    s.xMin = def.xMin, s.xMax = def.xMax, s.yMin = def.yMin, s.yMax = def.yMax;
    s.noiseSize = (def.yMax - def.yMin) / 2.0f;
    s.knots.resize(size_t(def.innerCount) + 2);
    for (int i = 0; i < def.innerCount; ++i) {
        CurveShapeKnot& k = s.knots[size_t(i) + 1];
        k.x = def.inner[i].x, k.y = def.inner[i].y, k.type = CURVE_SMOOTH;
    }
    s.knots.front().y = def.startY;
    s.knots.back().y = def.endY;
    s.Fit();
    return s;
}

CurveCtl* BuildDefaultCurve(const CurveDefRecord& def) {
    CurveCtl* curve = new CurveCtl(def.xMin, def.xMax, def.yMin, def.yMax);
    curve->SetKnot(0, 0, 0.0f, def.startY, false);
    curve->SetKnot(0, curve->KnotCount() - 1, 1.0f, def.endY, false);
    for (int i = 0; i < def.innerCount; ++i) curve->AddKnot(def.inner[i].x, def.inner[i].y);
    curve->SetEnabled(def.EnabledAtCreation());
    return curve;
}

CurveCtl* BuildDefaultRandDist() {
    CurveCtl* curve = new CurveCtl(0.0f, 1.0f, 0.0f, 1.0f);
    curve->SetKnot(0, 0, 0.0f, 1.0f, false);
    return curve;
}
