// A curve's script properties and operations.

#include "Base/ScriptProps.h"
#include "CurveCtl/CurveCtl.h"
#include "sdk/core.h"

namespace {

enum Property { kEnabled, kUseNoise, kNoiseSize, kNoiseDensity, kNoisePhase, kTitle };
constexpr const char* kProperties[] = {"enabled", "useNoise", "noiseSize", "noiseDensity", "noisePhase", "title"};
enum Operation { kSetKnots, kGetValue };
constexpr const char* kOperations[] = {"SetKnots", "GetValue"};

constexpr const char* kKnotsExpected = "expected 2 to 100 knots, each as x, y, type, with ascending x";

/// Reads x, y, type triples.
bool TakeKnots(const std::vector<ScriptValue>& args, std::vector<CurveShapeKnot>& knots, TSTR& error) {
    using namespace ScriptProps;
    const size_t count = args.size() / 3;
    if (args.size() % 3 != 0 || count < 2 || count > kMaxCurveKnots) return Fail(error, kKnotsExpected);
    knots.resize(count);
    for (size_t i = 0; i < count; ++i) {
        CurveShapeKnot& k = knots[i];
        if (!TakeFloat(args[3 * i], k.x, error) || !TakeFloat(args[3 * i + 1], k.y, error) ||
            !TakeInt(args[3 * i + 2], CURVE_SMOOTH, CURVE_STEP, k.type, error))
            return false;
        if (i > 0 && !(k.x > knots[i - 1].x)) return Fail(error, kKnotsExpected);
    }
    return true;
}

TimeValue HostTime() {
    Interface* host = GetCOREInterface();
    return host ? host->GetTime() : 0;
}

} // namespace

void* CurveCtl::GetInterface(uint32_t id) {
    if (id == SCRIPT_PROPERTIES_INTERFACE_ID) return static_cast<IScriptProperties*>(this);
    return ReferenceTarget::GetInterface(id);
}

void CurveCtl::ReplaceKnots(const std::vector<CurveShapeKnot>& knots) {
    const bool before = SetBatch(true);
    RemoveAllKnots();
    for (const CurveShapeKnot& k : knots) InsertKnot(KnotCount(), new CurveKnot(k.x, k.y, k.type));
    selection.SetSize(KnotCount());
    selection.ClearAll();
    SetBatch(before);
    RebuildAndNotify();
}

std::vector<TSTR> CurveCtl::ListProperties() {
    return {std::begin(kProperties), std::end(kProperties)};
}

bool CurveCtl::GetProperty(const TSTR& name, ScriptValue& value, TSTR& error) {
    switch (ScriptProps::Find(kProperties, name)) {
    case kEnabled:
        value = ScriptValue::Bool(Enabled());
        return true;
    case kUseNoise:
        value = ScriptValue::Bool(UseNoise());
        return true;
    case kNoiseSize:
        value = ScriptValue::Float(NoiseSize());
        return true;
    case kNoiseDensity:
        value = ScriptValue::Float(NoiseDensity());
        return true;
    case kNoisePhase:
        value = ScriptValue::Float(NoisePhase());
        return true;
    case kTitle:
        value = ScriptValue::Text(Title());
        return true;
    default:
        return ScriptProps::UnknownProperty(error);
    }
}

bool CurveCtl::SetProperty(const TSTR& name, const ScriptValue& value, TSTR& error) {
    using namespace ScriptProps;
    bool enabled = Enabled(), useNoise = UseNoise();
    float size = NoiseSize(), density = NoiseDensity(), phase = NoisePhase();
    TSTR title;
    bool taken = false;
    switch (Find(kProperties, name)) {
    case kEnabled:
        if (TakeBool(value, enabled, error)) return SetEnabled(enabled), true;
        return false;
    case kTitle:
        if (TakeText(value, title, error)) return SetTitle(title), true;
        return false;
    case kUseNoise:
        taken = TakeBool(value, useNoise, error);
        break;
    case kNoiseSize:
        taken = TakeFloat(value, size, error);
        break;
    case kNoiseDensity:
        taken = TakeFloat(value, density, error);
        break;
    case kNoisePhase:
        taken = TakeFloat(value, phase, error);
        break;
    default:
        return UnknownProperty(error);
    }
    if (taken) SetNoise(useNoise, size, density, phase);
    return taken;
}

bool CurveCtl::Call(const TSTR& name, const std::vector<ScriptValue>& args, ScriptValue& result, TSTR& error) {
    using namespace ScriptProps;
    std::vector<CurveShapeKnot> knots;
    float x = 0;
    switch (Find(kOperations, name)) {
    case kSetKnots:
        if (!TakeKnots(args, knots, error)) return false;
        ReplaceKnots(knots);
        result = ScriptValue();
        return true;
    case kGetValue:
        if (!TakeArgs(args, 1, error) || !TakeFloat(args[0], x, error)) return false;
        result = ScriptValue::Float(GetValue(HostTime(), x));
        return true;
    default:
        return UnknownOperation(error);
    }
}
