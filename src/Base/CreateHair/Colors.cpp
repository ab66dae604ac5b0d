#include "Base/CreateHair/Colors.h"

#include "Base/HUtil/HairColor.h"

namespace {

// Moves a component toward 1 (e >= 0) or toward 0 (e < 0) by the share e.
float Vary(float s, float e) {
    return e >= 0.0f ? s + e * (1.0f - s) : s + e * s;
}

Color SurfaceColor(StrandContext& c, int pid, const Color& plain) {
    SurfDistEvaluator* e = c.Evaluator(pid);
    if (!e) return plain;
    c.Factor(pid);
    return Color(e->Result());
}

} // namespace

Color HsvRoundTrip(const Color& c) {
    return FromHsv(ToHsv(c));
}

void DrawColors(StrandContext& c) {
    const GenerationRun& run = *c.run;
    if (!run.needsColors || run.plainColors) {
        c.base = run.plainBase;
        c.tip = run.plainTip;
        c.rng.Skip(3); // three draws: hue, saturation, value, all discarded
        return;
    }
    HsvColor base = ToHsv(SurfaceColor(c, pid_surfDist_colBase, run.params->colBase));
    HsvColor tip = ToHsv(SurfaceColor(c, pid_surfDist_colTip, run.params->colTip));
    const RandDist& hue = run.randDist[pid_randDist_colorH - kFirstRandDistPid];
    const RandDist& saturation = run.randDist[pid_randDist_colorS - kFirstRandDistPid];
    const RandDist& value = run.randDist[pid_randDist_colorV - kFirstRandDistPid];
    // Draws: hue, saturation, value. A distribution without a table discards its draw.
    const float h = hue.Sample(c.rng), s = saturation.Sample(c.rng), v = value.Sample(c.rng);
    if (hue.Active()) base.h = WrapUnit(base.h + (h - 0.5f)), tip.h = WrapUnit(tip.h + (h - 0.5f));
    if (saturation.Active()) base.s = Vary(base.s, 2.0f * s - 1.0f), tip.s = Vary(tip.s, 2.0f * s - 1.0f);
    if (value.Active()) base.v = Vary(base.v, 2.0f * v - 1.0f), tip.v = Vary(tip.v, 2.0f * v - 1.0f);
    c.base = FromHsv(base);
    c.tip = FromHsv(tip);
}

Color StrandColorAt(const StrandContext& c, float v) {
    float t = v + c.run->params->Float(pid_colBias);
    t = t < 0.0f ? 0.0f : t > 1.0f ? 1.0f : t;
    return c.base * (1.0f - t) + c.tip * t;
}
