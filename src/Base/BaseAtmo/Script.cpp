// The object's script properties: its material, its mapping table, its estimate.

#include "Base/BaseAtmo.h"
#include "Base/ScriptProps.h"
#include "sdk/core.h"

namespace {

constexpr const char* kProperties[] = {"material"};
enum Operation { kGetMapping, kSetMapping, kEstimateGeom };
constexpr const char* kOperations[] = {"GetMapping", "SetMapping", "EstimateGeom"};
constexpr int kLastMapping = MAX_MESHMAPS - 1;

int Saturated(int64_t n) {
    return int(n > INT_MAX ? INT_MAX : n);
}

} // namespace

std::vector<TSTR> BaseAtmo::ListProperties() {
    return {std::begin(kProperties), std::end(kProperties)};
}

bool BaseAtmo::GetProperty(const TSTR& name, ScriptValue& value, TSTR& error) {
    if (ScriptProps::Find(kProperties, name) < 0) return ScriptProps::UnknownProperty(error);
    value = ScriptValue::Object(material_);
    return true;
}

bool BaseAtmo::SetProperty(const TSTR& name, const ScriptValue& value, TSTR& error) {
    if (ScriptProps::Find(kProperties, name) < 0) return ScriptProps::UnknownProperty(error);
    ReferenceTarget* material = nullptr;
    if (!ScriptProps::TakeTarget(value, MATERIAL_CLASS_ID, "a material", material, error)) return false;
    if (!SetMaterial(static_cast<Mtl*>(material)))
        return ScriptProps::Fail(error, "expected a material that does not depend on this object");
    InvalidateGroups(GROUP_RENDER, true);
    return true;
}

ScriptValue BaseAtmo::ScriptEstimate() {
    Interface* host = GetCOREInterface();
    const GeometryEstimate g = EstimateGeometry(host ? host->GetTime() : 0);
    std::vector<ScriptValue> items;
    for (const int64_t n : {g.vertices, g.faces, g.strands, g.points}) items.push_back(ScriptValue::Int(Saturated(n)));
    return ScriptValue::Array(std::move(items));
}

bool BaseAtmo::Call(const TSTR& name, const std::vector<ScriptValue>& args, ScriptValue& result, TSTR& error) {
    using namespace ScriptProps;
    int channel = 0, type = 0;
    switch (Find(kOperations, name)) {
    case kGetMapping:
        if (!TakeArgs(args, 1, error) || !TakeInt(args[0], 0, kLastMapping, channel, error)) return false;
        result = ScriptValue::Int(GetMapping(channel));
        return true;
    case kSetMapping:
        if (!TakeArgs(args, 2, error) || !TakeInt(args[0], 0, kLastMapping, channel, error) ||
            !TakeInt(args[1], STRANDMAP_EMITTER_COLOR, kLastMapping, type, error))
            return false;
        result = ScriptValue();
        return SetMapping(channel, type);
    case kEstimateGeom:
        if (!TakeArgs(args, 0, error)) return false;
        result = ScriptEstimate();
        return true;
    default:
        return UnknownOperation(error);
    }
}
