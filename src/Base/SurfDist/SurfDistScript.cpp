// A surface distribution's script properties.

#include "Base/ScriptProps.h"
#include "Base/SurfDist/SurfDist.h"
#include "SurfDistRanges.h"

namespace {

enum Property { kEnabled, kUseFinalShading, kType, kChannelType, kSubmatID, kChannelID, kComponent, kMap };
constexpr const char* kNames[] = {"enabled",  "useFinalShading", "type",      "channelType",
                                  "submatID", "channelID",       "component", "map"};

} // namespace

void* SurfDist::GetInterface(uint32_t id) {
    if (id == SCRIPT_PROPERTIES_INTERFACE_ID) return static_cast<IScriptProperties*>(this);
    return ReferenceTarget::GetInterface(id);
}

std::vector<TSTR> SurfDist::ListProperties() {
    return {std::begin(kNames), std::end(kNames)};
}

bool SurfDist::GetProperty(const TSTR& name, ScriptValue& value, TSTR& error) {
    const SurfDistSettings& s = settings_;
    switch (ScriptProps::Find(kNames, name)) {
    case kEnabled:
        value = ScriptValue::Bool(s.enabled);
        return true;
    case kUseFinalShading:
        value = ScriptValue::Bool(s.useFinalShading);
        return true;
    case kType:
        value = ScriptValue::Int(s.source);
        return true;
    case kChannelType:
        value = ScriptValue::Int(s.channelType);
        return true;
    case kSubmatID:
        value = ScriptValue::Int(s.subMtlId);
        return true;
    case kChannelID:
        value = ScriptValue::Int(s.channel);
        return true;
    case kComponent:
        value = ScriptValue::Int(s.component);
        return true;
    case kMap:
        value = ScriptValue::Object(s.map);
        return true;
    default:
        return ScriptProps::UnknownProperty(error);
    }
}

bool SurfDist::SetProperty(const TSTR& name, const ScriptValue& value, TSTR& error) {
    using namespace ScriptProps;
    const int property = Find(kNames, name);
    const auto number = [&](const SurfDistRange& range, int& out) {
        return TakeInt(value, range.low, range.high, out, error);
    };
    SurfDistSettings s = settings_;
    ReferenceTarget* map = nullptr;
    bool taken = false;
    switch (property) {
    case kEnabled:
        taken = TakeBool(value, s.enabled, error);
        break;
    case kUseFinalShading:
        taken = TakeBool(value, s.useFinalShading, error);
        break;
    case kType:
        taken = number(kSurfDistSources, s.source);
        break;
    case kChannelType:
        taken = number(kSurfDistChannelTypes, s.channelType);
        break;
    case kSubmatID:
        taken = number(kSurfDistSubMtls, s.subMtlId);
        break;
    case kChannelID:
        taken = number(kSurfDistChannels, s.channel);
        break;
    case kComponent:
        taken = number(kSurfDistComponents, s.component);
        break;
    case kMap:
        if (!TakeTarget(value, TEXMAP_CLASS_ID, "a map", map, error)) return false;
        return SetMap(static_cast<Texmap*>(map)) || Fail(error, "expected a map that does not depend on this object");
    default:
        return UnknownProperty(error);
    }
    if (taken) SetSettings(s);
    return taken;
}

bool SurfDist::Call(const TSTR&, const std::vector<ScriptValue>&, ScriptValue&, TSTR& error) {
    return ScriptProps::UnknownOperation(error);
}
