#include "Base/CreateHair/Thickness.h"

void FillThicknessProfile(const HairParams& params, int knots, int steps, float cutFactor, float* profile) {
    const CurveShape* curve = params.Curve(pid_curve_thickness);
    const int last = (knots - 1) * steps;
    for (int i = 0; i < knots - 1; ++i)
        for (int j = 0; j < steps; ++j)
            profile[i * steps + j] =
                curve ? curve->Eval(cutFactor * (float(i) + float(j) / float(steps)) / float(knots - 1)) : 1.0f;
    profile[last] = curve ? curve->Eval(cutFactor) : 1.0f;
}

void DrawLengthAndThickness(StrandContext& c) {
    const GenerationRun& run = *c.run;
    const HairParams& params = *run.params;
    float profileMax = run.profileMax;
    if (c.cutFactor != 1.0f) {
        FillThicknessProfile(params, run.knots, run.steps, c.cutFactor, c.profile.Data());
        profileMax = 0;
        for (int i = 0; i < run.maxPoints; ++i) profileMax = profileMax < c.profile[i] ? c.profile[i] : profileMax;
    }
    float thickness = params.Float(pid_thickness) * c.Factor(pid_surfDist_thickness);
    if (run.request.mode == GEN_RENDER && run.request.pass == PASS_SHADOW)
        thickness = thickness * params.Float(pid_thickShadow);
    c.lengthSample = run.randDist[pid_randDist_length - kFirstRandDistPid].Sample(c.rng); // draw: length
    float t = c.lengthSample;
    if (params.On(pid_linkThickRand2LenRand))
        RandDist::Skip(c.rng); // draw: thickness, discarded
    else
        t = run.randDist[pid_randDist_thickness - kFirstRandDistPid].Sample(c.rng); // draw: thickness
    c.thickness = thickness * t;
    c.thick = profileMax * c.thickness >= params.Float(pid_geomMinThick);
}

void SpreadThickness(StrandContext& c) {
    const GenerationRun& run = *c.run;
    const float* profile = c.cutFactor != 1.0f ? c.profile.Data() : run.profile.data();
    float* width = c.width.Data();
    if (c.points == run.maxPoints || run.params->On(pid_thickLenRandCut)) {
        for (int i = 0; i < c.points; ++i) width[i] = profile[i] * c.thickness;
        return;
    }
    // The whole profile is stretched over the shorter strand.
    const int last = run.maxPoints - 1;
    for (int i = 0; i < c.points; ++i) {
        const float q = float(i * last) / float(c.points - 1);
        const int i0 = int(q);
        const float f = q - float(i0);
        const float a = profile[i0] * c.thickness;
        width[i] = i0 >= last ? a : (1.0f - f) * a + f * (profile[i0 + 1] * c.thickness);
    }
}
