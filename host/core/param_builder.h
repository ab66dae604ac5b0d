#pragma once
// Short forms for the parameter descriptions of host classes.

#include "sdk/iparamb2.h"

namespace host {

/// Upper end of ranges that have none by nature.
inline constexpr float kHuge = 1e30f;

inline ParamDef NamedParam(ParamID id, const char* name, ParamType2 type, unsigned flags) {
    ParamDef def;
    def.id = id;
    def.intName = def.name = name;
    def.type = type;
    def.flags = flags;
    return def;
}
/// Animatable float with a range.
inline ParamDef FloatParam(ParamID id, const char* name, float value, float low, float high) {
    ParamDef def = NamedParam(id, name, TYPE_FLOAT, P_ANIMATABLE);
    def.def.f = value;
    def.hasRange = true;
    def.rangeLow = low;
    def.rangeHigh = high;
    return def;
}
/// Animatable switch.
inline ParamDef BoolParam(ParamID id, const char* name, bool value) {
    ParamDef def = NamedParam(id, name, TYPE_BOOL, P_ANIMATABLE);
    def.def.i = value;
    return def;
}
/// Animatable triple of numbers.
inline ParamDef PointParam(ParamID id, const char* name, const Point3& value) {
    ParamDef def = NamedParam(id, name, TYPE_POINT3, P_ANIMATABLE);
    def.def.p = value;
    return def;
}
/// Animatable colour.
inline ParamDef ColorParam(ParamID id, const char* name, const Color& value) {
    ParamDef def = NamedParam(id, name, TYPE_RGBA, P_ANIMATABLE);
    def.def.p = Point3(value);
    return def;
}

} // namespace host
