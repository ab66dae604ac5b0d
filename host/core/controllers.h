#pragma once
// Controllers: constants and keys over time, transforms.

#include <vector>

#include "sdk/control.h"

namespace host {

inline constexpr Class_ID LINEAR_FLOAT_CLASS_ID{0x2001, 0};
inline constexpr Class_ID LINEAR_POINT3_CLASS_ID{0x2002, 0};
inline constexpr Class_ID LINEAR_POSITION_CLASS_ID{0x2003, 0};
inline constexpr Class_ID LINEAR_ROTATION_CLASS_ID{0x2004, 0};
inline constexpr Class_ID LINEAR_SCALE_CLASS_ID{0x2005, 0};
inline constexpr Class_ID MATRIX_CLASS_ID{0x2006, 0};
inline constexpr Class_ID PRS_CLASS_ID{0x2007, 0};

/// How a key's value goes on to the next key's.
enum class KeyKind {
    Linear,   ///< straight to the next value (rotations: along the shorter arc)
    Constant, ///< held until the next key
};

template <class T>
struct Key {
    TimeValue time = 0;
    T value{};
    KeyKind kind = KeyKind::Linear;
};

/// The value between two linear keys, `u` in 0..1.
float Blend(float a, float b, float u);
Point3 Blend(const Point3& a, const Point3& b, float u);
/// Spherical interpolation along the shorter arc. The quaternions are unit.
Quat Blend(const Quat& a, const Quat& b, float u);

/// A constant, or keys in ascending time. Before the first key the value is the first key's, after the last the last's.
template <class T>
class KeyTrack {
public:
    const std::vector<Key<T>>& Keys() const { return keys_; }
    bool IsAnimated() const { return !keys_.empty(); }
    void SetConstant(const T& v) { constant_ = v; }
    /// Adds a key; a key at the same time is replaced.
    void SetKey(const Key<T>& key);
    void DeleteKeys() { keys_.clear(); }
    /// The value at `t`; `valid` is narrowed to the whole stretch around `t` where the value stays the same.
    T Get(TimeValue t, Interval& valid) const;

private:
    bool Holds(size_t i) const { return keys_[i].kind == KeyKind::Constant || keys_[i].value == keys_[i + 1].value; }
    Interval Stretch(size_t i) const;

    T constant_{};
    std::vector<Key<T>> keys_;
};

/// A keyed controller of one value type. A new one holds the constant default (0; no rotation; scale 1).
template <class T, SClass_ID kSuper>
class KeyControl : public Control {
public:
    explicit KeyControl(const T& constant = Default()) { track_.SetConstant(constant); }
    ~KeyControl() override { DeleteAllRefs(); }
    SClass_ID SuperClassID() override { return kSuper; }
    Class_ID ClassID() override;
    void GetClassName(TSTR& s) override;
    void GetValue(TimeValue t, void* value, Interval& valid) override;
    void SetValue(TimeValue t, const void* value) override;
    bool IsAnimated() const override { return track_.IsAnimated(); }
    RefTargetHandle Clone(RemapDir& remap) override;

    /// Adds or replaces a key, from then on the controller is animated. Dependents are told.
    void SetKey(TimeValue t, const T& value, KeyKind kind = KeyKind::Linear);
    void DeleteKeys();
    const std::vector<Key<T>>& Keys() const { return track_.Keys(); }

private:
    static T Default();
    KeyTrack<T> track_;
};

using FloatControl = KeyControl<float, CTRL_FLOAT_CLASS_ID>;
using Point3Control = KeyControl<Point3, CTRL_POINT3_CLASS_ID>; ///< points and colours
using PositionControl = KeyControl<Point3, CTRL_POSITION_CLASS_ID>;
using RotationControl = KeyControl<Quat, CTRL_ROTATION_CLASS_ID>;
using ScaleControl = KeyControl<Point3, CTRL_SCALE_CLASS_ID>; ///< factors along the object's own axes

/// A constant transform, kept as it was set.
class MatrixControl : public Control {
public:
    ~MatrixControl() override { DeleteAllRefs(); }
    SClass_ID SuperClassID() override { return CTRL_MATRIX3_CLASS_ID; }
    Class_ID ClassID() override { return MATRIX_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Matrix"; }
    void GetValue(TimeValue t, void* value, Interval& valid) override;
    void SetValue(TimeValue t, const void* value) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    Matrix3 tm_;
};

/// Position, rotation and scale: value = scale x rotation x translation.
/// Setting a matrix splits it; shear is lost, a mirrored matrix gets three negative factors.
class PrsControl : public Control {
public:
    PrsControl();
    ~PrsControl() override { DeleteAllRefs(); }
    SClass_ID SuperClassID() override { return CTRL_MATRIX3_CLASS_ID; }
    Class_ID ClassID() override { return PRS_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Position/Rotation/Scale"; }
    void GetValue(TimeValue t, void* value, Interval& valid) override;
    void SetValue(TimeValue t, const void* value) override;
    bool IsAnimated() const override;
    RefTargetHandle Clone(RemapDir& remap) override;
    int NumRefs() override { return 3; }
    RefTargetHandle GetReference(int i) override { return i >= 0 && i < 3 ? subs_[i] : nullptr; }
    void SetReference(int i, RefTargetHandle target) override;
    int NumSubs() override { return 3; }
    Animatable* SubAnim(int i) override { return GetReference(i); }
    TSTR SubAnimName(int i) override;

    // The parts. Another one may be put in with ReplaceReference(0..2, ...) when its super class fits.
    Control* Position() const { return subs_[0]; }
    Control* Rotation() const { return subs_[1]; }
    Control* Scale() const { return subs_[2]; }

private:
    Control* subs_[3] = {nullptr, nullptr, nullptr};
};

/// Splits an affine matrix: matrix = scale x rotation x translation, as far as that is possible (no shear).
struct AffineParts {
    Point3 translation;
    Quat rotation;
    Point3 scale{1, 1, 1};
};
AffineParts Decompose(const Matrix3& m);
/// The rotation of a matrix whose rows are unit, at right angles and right-handed.
Quat QuatFromMatrix(const Matrix3& m);

} // namespace host
