// The plain values that generation reads, filled from the value cache.

#include "Base/BaseAtmo.h"
#include "Base/SurfDist/SurfDist.h"
#include "CurveCtl/CurveCtl.h"
#include "sdk/core.h"

namespace {

/// Dynamics evaluates its curves whether they are switched on or not.
bool IsDynamicsCurve(int pid) {
    return pid >= pid_curve_dynWeight && pid <= pid_curve_dynInertia;
}

CurveShape ShapeOf(ReferenceTarget* value, TimeValue t, bool always) {
    auto* curve = dynamic_cast<CurveCtl*>(value);
    return curve && (always || curve->Active()) ? curve->Shape(t) : CurveShape();
}

} // namespace

void BaseAtmo::FillCurves(TimeValue t) {
    for (int i = 0; i < kNumCurves; ++i) {
        const int pid = kFirstCurvePid + i;
        params_.SetCurve(pid, ShapeOf(cache_[size_t(pid)].ref, t, IsDynamicsCurve(pid)));
    }
    for (int i = 0; i < kNumRandDists; ++i) {
        const int pid = kFirstRandDistPid + i;
        params_.SetRandCurve(pid, ShapeOf(cache_[size_t(pid)].ref, t, false));
    }
    for (int i = 0; i < kNumSurfDists; ++i) {
        const int pid = kFirstSurfDistPid + i;
        const auto* surface = dynamic_cast<SurfDist*>(cache_[size_t(pid)].ref);
        params_.SetSurface(pid, surface ? surface->Settings() : SurfDistSettings());
    }
}

void BaseAtmo::FillSnapshot(TimeValue t) {
    Interface* host = GetCOREInterface();
    params_.isFur = fur_;
    params_.time = t;
    params_.ticksPerFrame = host ? host->GetTicksPerFrame() : 160;
    for (int pid = 0; pid < kNumScalarPids; ++pid) {
        IParamBlock2* block = BlockOf(pid);
        if (!block) continue;
        const ParamType2 type = block->GetDesc()->params[size_t(block->IDtoIndex(ParamID(pid)))].type;
        if (type == TYPE_FLOAT)
            params_.SetFloat(pid, cache_[size_t(pid)].f);
        else if (type == TYPE_INT || type == TYPE_BOOL || type == TYPE_TIMEVALUE)
            params_.SetInt(pid, cache_[size_t(pid)].i);
    }
    params_.colBase = cachedColors_[0];
    params_.colTip = cachedColors_[1];
    params_.faceSelection = faceSelection_;
    params_.mappingChannels = mapping_;
    FillCurves(t);
}
