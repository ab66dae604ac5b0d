// The snapshot of a new object, from the parameter blocks' defaults.

#include "Base/HairParams.h"
#include "Base/ParamBlocks.h"
#include "Base/ParamDefs.h"

namespace {

void SetDefault(HairParams& params, const ParamDef& p) {
    if (p.id >= kNumScalarPids) return;
    switch (p.type) {
    case TYPE_FLOAT:
        params.SetFloat(p.id, p.def.f);
        break;
    case TYPE_INT:
    case TYPE_BOOL:
        params.SetInt(p.id, p.def.i);
        break;
    case TYPE_TIMEVALUE:
        params.SetInt(p.id, p.def.i / params.ticksPerFrame);
        break; // kept in frames
    case TYPE_RGBA:
        (p.id == pid_colBase ? params.colBase : params.colTip) = Color(p.def.p);
        break;
    default:
        break;
    }
}

/// Dynamics evaluates its curves whether they are switched on or not.
bool IsDynamicsCurve(int pid) {
    return pid >= pid_curve_dynWeight && pid <= pid_curve_dynInertia;
}

} // namespace

HairParams HairParams::Defaults(bool fur) {
    HairParams params;
    params.isFur = fur;
    for (int b = 0; b < kNumHairBlocks; ++b)
        if (const ParamBlockDesc2* block = GetObjectBlock(fur, b))
            for (const ParamDef& p : block->params) SetDefault(params, p);
    for (int i = 0; i < kNumCurves; ++i) {
        const CurveDefRecord& def = CurveDefTable[size_t(i)];
        const int pid = kFirstCurvePid + i;
        if (def.EnabledAtCreation() || IsDynamicsCurve(pid)) params.SetCurve(pid, DefaultCurveShape(def));
    }
    return params;
}
