#pragma once
// Controllers: values over time.

#include "sdk/color.h"
#include "sdk/matrix3.h"
#include "sdk/quat.h"
#include "sdk/ref.h"

/// A value over time. Super class ids CTRL_* tell the value's type.
class Control : public ReferenceTarget {
public:
    /// Writes the value at `t` (float, Point3, Quat or Matrix3 by super class) and narrows `valid` to where it holds.
    virtual void GetValue(TimeValue t, void* value, Interval& valid) = 0;
    /// Sets the value: a key at `t` when animated, else the constant.
    virtual void SetValue(TimeValue t, const void* value) = 0;
    virtual bool IsAnimated() const { return false; }
};
