#pragma once
// What the objects' script properties share: names without regard to case, values of a wanted kind.

#include <cctype>
#include <cmath>

#include "sdk/properties.h"

namespace ScriptProps {

inline bool SameName(const TSTR& a, const char* b) {
    size_t i = 0;
    for (; i < a.size() && b[i]; ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return i == a.size() && !b[i];
}

/// Place of `name` in a list of names; -1 when it is not there.
template <size_t N>
int Find(const char* const (&names)[N], const TSTR& name) {
    for (size_t i = 0; i < N; ++i)
        if (SameName(name, names[i])) return int(i);
    return -1;
}

/// Answers false with the reason.
inline bool Fail(TSTR& error, const TSTR& reason) {
    error = reason;
    return false;
}

inline bool UnknownProperty(TSTR& error) {
    return Fail(error, "no such property");
}
inline bool UnknownOperation(TSTR& error) {
    return Fail(error, "no such operation");
}

inline bool TakeArgs(const std::vector<ScriptValue>& args, size_t count, TSTR& error) {
    return args.size() == count || Fail(error, "expected " + std::to_string(count) + " arguments");
}

// Each takes a value of its kind; false with what was expected otherwise, and `out` stays.

inline bool TakeBool(const ScriptValue& v, bool& out, TSTR& error) {
    if (v.kind != ScriptValue::kBool) return Fail(error, "expected true or false");
    out = v.i != 0;
    return true;
}

inline bool TakeInt(const ScriptValue& v, int low, int high, int& out, TSTR& error) {
    if (v.kind != ScriptValue::kInt || v.i < low || v.i > high)
        return Fail(error, "expected a whole number " + std::to_string(low) + " to " + std::to_string(high));
    out = v.i;
    return true;
}

/// A finite number; whole numbers are numbers.
inline bool TakeFloat(const ScriptValue& v, float& out, TSTR& error) {
    const bool number = v.kind == ScriptValue::kFloat || v.kind == ScriptValue::kInt;
    if (!number || !std::isfinite(v.AsFloat())) return Fail(error, "expected a number");
    out = v.AsFloat();
    return true;
}

inline bool TakeText(const ScriptValue& v, TSTR& out, TSTR& error) {
    if (v.kind != ScriptValue::kString) return Fail(error, "expected a text");
    out = v.s;
    return true;
}

/// An object of a super class, or none.
inline bool TakeTarget(const ScriptValue& v, SClass_ID superClass, const char* what, ReferenceTarget*& out,
                       TSTR& error) {
    ReferenceTarget* target = v.kind == ScriptValue::kObject ? v.r : nullptr;
    if ((v.kind != ScriptValue::kObject && v.kind != ScriptValue::kUndefined) ||
        (target && target->SuperClassID() != superClass))
        return Fail(error, TSTR("expected ") + what + " or undefined");
    out = target;
    return true;
}

} // namespace ScriptProps
