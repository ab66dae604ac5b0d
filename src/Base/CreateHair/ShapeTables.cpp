#include "Base/CreateHair/ShapeTables.h"

#include "Base/HUtil/Subdivide.h"

StrandContext::Tables::Tables(const GenerationRun& run) : run_(run) {
    const int inner = run.steps - 1, padded = (inner + 3) / 4 * 4;
    for (auto& w : weight) w.assign(size_t(padded), 0.0f);
    for (auto& d : derivative) d.assign(size_t(padded), 0.0f);
    for (int j = 1; j <= inner; ++j) {
        const BezierWeights w = BezierWeightsAt(float(j) / float(run.steps));
        for (int i = 0; i < 4; ++i) weight[i][size_t(j - 1)] = w.p[i];
        for (int i = 0; i < 3; ++i) derivative[i][size_t(j - 1)] = w.d[i];
    }
    clumpFade.byCount.resize(size_t(run.knots));
    const size_t counts = run.maxPoints <= kMaxTabulated ? size_t(run.maxPoints) + 1 : 0;
    curlRadius.byCount.resize(counts);
    curlTurns.byCount.resize(counts);
}

const float* StrandContext::Tables::ClumpFade(int n) {
    const CurveShape* curve = run_.params->Curve(pid_curve_clumpShape);
    if (!curve) return nullptr;
    std::vector<float>& fade = clumpFade.byCount[size_t(n)];
    if (fade.empty())
        for (int k = 0; k <= 3 * n; ++k) fade.push_back(curve->Eval(float(k) / float(3 * n)));
    return fade.data();
}

const float* StrandContext::Tables::CurveTable(PerCount& table, int pid, int count) {
    const CurveShape* curve = run_.params->Curve(pid);
    if (!curve || size_t(count) >= table.byCount.size()) return nullptr;
    std::vector<float>& values = table.byCount[size_t(count)];
    if (values.empty())
        for (int i = 0; i < count; ++i) values.push_back(curve->Eval(float(i) / float(count - 1)));
    return values.data();
}
