#pragma once
// Script-style access to an object by names: properties beside its parameter blocks, and operations.

#include <cstdint>
#include <utility>
#include <vector>

#include "sdk/point3.h"
#include "sdk/ref.h"

/// A value as scripts see it.
struct ScriptValue {
    enum Kind { kUndefined, kBool, kInt, kFloat, kPoint3, kString, kObject, kArray };
    Kind kind = kUndefined;
    int i = 0; ///< bools (0, 1) and integers
    float f = 0;
    Point3 p;                       ///< points and colours
    TSTR s;                         ///< text and names
    ReferenceTarget* r = nullptr;   ///< not owned
    std::vector<ScriptValue> items; ///< an array's

    static ScriptValue Bool(bool v) { return Number(kBool, v ? 1 : 0); }
    static ScriptValue Int(int v) { return Number(kInt, v); }
    static ScriptValue Float(float v) {
        ScriptValue value = Of(kFloat);
        value.f = v;
        return value;
    }
    static ScriptValue Text(TSTR v) {
        ScriptValue value = Of(kString);
        value.s = std::move(v);
        return value;
    }
    static ScriptValue Point(const Point3& v) {
        ScriptValue value = Of(kPoint3);
        value.p = v;
        return value;
    }
    static ScriptValue Object(ReferenceTarget* v) {
        ScriptValue value = Of(v ? kObject : kUndefined);
        value.r = v;
        return value;
    }
    static ScriptValue Array(std::vector<ScriptValue> v) {
        ScriptValue value = Of(kArray);
        value.items = std::move(v);
        return value;
    }
    /// A number (bool, integer or float) as a float; 0 for other kinds.
    float AsFloat() const { return kind == kFloat ? f : kind == kInt || kind == kBool ? float(i) : 0.0f; }

private:
    static ScriptValue Of(Kind k) {
        ScriptValue value;
        value.kind = k;
        return value;
    }
    static ScriptValue Number(Kind k, int v) {
        ScriptValue value = Of(k);
        value.i = v;
        return value;
    }
};

/// What an object offers by name. Names are compared without regard to case. An operation that fails answers false,
/// leaves the object as it was and puts one line into `error`: "no such property" or "no such operation" when the name
/// is unknown, else what was expected. A whole number stands for a float; a bool stands for nothing else. Main thread.
///
/// Names that the hair objects' parts have in common:
/// - curves: properties enabled (bool), useNoise (bool), noiseSize, noiseDensity, noisePhase (floats), title (text);
///   SetKnots(x, y, type, x, y, type, ...): all knots anew, 2..100 of them with ascending x, type 0 smooth, 1 corner,
///   2 step, in place of the former ones; GetValue(x) -> float at the current time;
/// - surface distributions: properties enabled, useFinalShading (bools), type, channelType, submatID, channelID,
///   component (integers), map (a map or undefined);
/// - hair and fur objects: property material (a material or undefined: what shades the strands); GetMapping(channel) ->
///   integer, SetMapping(channel, type): the strands' mapping table; EstimateGeom() -> array of integers: vertices,
///   faces, strands, points of the strands at the current time.
class IScriptProperties {
public:
    virtual ~IScriptProperties() = default;
    /// Names of the properties.
    virtual std::vector<TSTR> ListProperties() = 0;
    virtual bool GetProperty(const TSTR& name, ScriptValue& value, TSTR& error) = 0;
    virtual bool SetProperty(const TSTR& name, const ScriptValue& value, TSTR& error) = 0;
    /// Runs an operation; `result` is undefined when it has none.
    virtual bool Call(const TSTR& name, const std::vector<ScriptValue>& args, ScriptValue& result, TSTR& error) = 0;
};

/// Animatable::GetInterface id of IScriptProperties.
inline constexpr uint32_t SCRIPT_PROPERTIES_INTERFACE_ID = 0x27110101;

/// The object's properties; null when `a` is null or has none.
inline IScriptProperties* GetScriptProperties(Animatable* a) {
    return a ? static_cast<IScriptProperties*>(a->GetInterface(SCRIPT_PROPERTIES_INTERFACE_ID)) : nullptr;
}
