// Strands a second without rendering, one core, against what no strand can avoid: 13 control points from three corner
// strands, then 21 points and tangents, in plain scalar float32.

#include <benchmark/benchmark.h>

#include "Base/CreateHair/WorkUnits.h"
#include "Base/HUtil/Subdivide.h"
#include "BenchEmitter.h"

namespace {

constexpr int kKnots = 5, kSteps = 5;

CurveShape Curve(float y0, float y1) {
    CurveShape c;
    c.knots = {{0, y0, CURVE_CORNER}, {0.5f, 0.4f * y0 + 0.6f * y1, CURVE_SMOOTH}, {1, y1, CURVE_CORNER}};
    c.Fit();
    return c;
}

HairParams StraightFur() {
    HairParams p = HairParams::Defaults(true);
    p.SetInt(pid_knots, kKnots);
    p.SetInt(pid_bezierSteps, kSteps);
    p.SetInt(pid_densType, 0);
    p.SetFloat(pid_densPerFace, 100.0f);
    p.SetFloat(pid_length, 0.2f);
    return p;
}

// Curls, clumping and every random switched on.
HairParams EverythingOn() {
    HairParams p = StraightFur();
    p.SetFloat(pid_fur_leanAngle, 40.0f);
    p.SetFloat(pid_fur_leanAmtRand, 0.3f);
    p.SetFloat(pid_vdirRand, 0.2f);
    p.SetFloat(pid_dirRand, 0.2f);
    p.SetFloat(pid_orientRand, 0.5f);
    p.SetInt(pid_useCurliness, 1);
    p.SetFloat(pid_curlRadius, 0.01f);
    p.SetFloat(pid_clumpAmount, 0.6f);
    p.SetFloat(pid_clumpRadius, 1.0f);
    p.SetInt(pid_clumpAttract, 1);
    p.SetFloat(pid_clumpPercent, 0.05f);
    p.SetCurve(pid_curve_curlTurns, Curve(0, 1));
    p.SetCurve(pid_curve_clumpShape, Curve(0, 1));
    p.SetRandCurve(pid_randDist_length, Curve(0.2f, 1));
    p.SetRandCurve(pid_randDist_thickness, Curve(0.5f, 1));
    for (const int pid : {pid_randDist_colorH, pid_randDist_colorS, pid_randDist_colorV})
        p.SetRandCurve(pid, Curve(1, 1));
    return p;
}

// Takes finished strands and does nothing with them.
struct Nobody {
    static bool Aborted() { return false; }
    void OnStrand(StrandContext& c) { benchmark::DoNotOptimize(c.position.x.Data()); }
};

void Generate(benchmark::State& state, const HairParams& params) {
    BenchEmitter emitter(WavedSheet(40, 10.0f));
    CtlHairMesh control(&emitter);
    control.Evaluate(0, params);
    GenerationRun run;
    RunRequest request;
    request.params = &params;
    request.control = &control;
    run.Prepare(request);
    StrandContext context(run, 0);
    DrawStrandCounts(run, context);
    const std::vector<WorkUnit> units = MakeWorkUnits(run, 128);
    Nobody nobody;
    int64_t strands = 0;
    for (auto _ : state)
        for (const WorkUnit& u : units) BuildUnit(context, u, nobody);
    strands = context.strandsMade;
    state.SetItemsProcessed(strands);
}

void BM_StraightFur(benchmark::State& state) {
    Generate(state, StraightFur());
}
void BM_EverythingOn(benchmark::State& state) {
    Generate(state, EverythingOn());
}

// The reference: the same emitter's corner strands, roots at running weights.
void BM_Reference(benchmark::State& state) {
    constexpr int kControls = 3 * (kKnots - 1) + 1, kPoints = (kKnots - 1) * kSteps + 1, kStrands = 1 << 14;
    static Point3 corner[3][kControls];
    for (int c = 0; c < 3; ++c)
        for (int k = 0; k < kControls; ++k) corner[c][k] = {float(c), float(k) * 0.1f, float(c * k) * 0.01f};
    BezierWeights weights[kSteps];
    for (int j = 0; j < kSteps; ++j) weights[j] = BezierWeightsAt(float(j) / float(kSteps));
    Point3 control[kControls], points[kPoints], tangents[kPoints];
    for (auto _ : state)
        for (int s = 0; s < kStrands; ++s) {
            const float a = float(s) / float(kStrands);
            const Point3 b(a, 0.5f * (1.0f - a), 0.5f * (1.0f - a));
            for (int k = 0; k < kControls; ++k)
                control[k] = BaryInterpolate(b, corner[0][k], corner[1][k], corner[2][k]);
            for (int i = 0; i < kKnots - 1; ++i)
                for (int j = 0; j < kSteps; ++j) {
                    points[i * kSteps + j] = BezierPoint(weights[j], control + 3 * i);
                    tangents[i * kSteps + j] = BezierDerivative(weights[j], control + 3 * i);
                }
            points[kPoints - 1] = control[kControls - 1];
            tangents[kPoints - 1] = control[kControls - 1] - control[kControls - 2];
            benchmark::DoNotOptimize(points);
            benchmark::DoNotOptimize(tangents);
            benchmark::ClobberMemory();
        }
    state.SetItemsProcessed(state.iterations() * kStrands);
}

BENCHMARK(BM_Reference)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StraightFur)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EverythingOn)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
