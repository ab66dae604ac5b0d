#pragma once
// Controllers: constants and keys over time, transforms.

#include <initializer_list>
#include <memory>
#include <vector>

#include "core/key_track.h"
#include "sdk/control.h"

namespace host {

inline constexpr Class_ID LINEAR_FLOAT_CLASS_ID{0x2001, 0};
inline constexpr Class_ID LINEAR_POINT3_CLASS_ID{0x2002, 0};
inline constexpr Class_ID LINEAR_POSITION_CLASS_ID{0x2003, 0};
inline constexpr Class_ID LINEAR_ROTATION_CLASS_ID{0x2004, 0};
inline constexpr Class_ID LINEAR_SCALE_CLASS_ID{0x2005, 0};
inline constexpr Class_ID MATRIX_CLASS_ID{0x2006, 0};
inline constexpr Class_ID PRS_CLASS_ID{0x2007, 0};
inline constexpr Class_ID LINEAR_POINT4_CLASS_ID{0x2008, 0};
/// The Bezier class beside a linear one has the same first word and this second one.
inline constexpr uint32_t BEZIER_CLASS_PART = 1;

/// The class of keys: what tangents new keys have.
enum class KeyClass {
    Linear, ///< straight ones
    Bezier, ///< automatic ones
};

/// What the keyed controllers of all value types have in common.
class KeyedControl : public Control {
public:
    explicit KeyedControl(KeyClass keyClass) : keyClass_(keyClass) {}
    KeyClass GetKeyClass() const { return keyClass_; }
    /// Another class for keys to come; keys keep their tangents.
    void SetKeyClass(KeyClass keyClass);
    TangentType NewKeyTangent() const {
        return keyClass_ == KeyClass::Linear ? TangentType::Linear : TangentType::Auto;
    }

private:
    KeyClass keyClass_;
};

/// A keyed controller of one value type. A new one holds the constant default (0; no rotation; scale 1).
template <class T, SClass_ID kSuper>
class KeyControl : public KeyedControl {
public:
    using Key = typename KeyTrack<T>::Key;

    explicit KeyControl(const T& constant = Default(), KeyClass keyClass = KeyClass::Linear);
    explicit KeyControl(KeyClass keyClass) : KeyControl(Default(), keyClass) {}
    ~KeyControl() override { DeleteAllRefs(); }
    SClass_ID SuperClassID() override { return kSuper; }
    Class_ID ClassID() override;
    void GetClassName(TSTR& s) override;
    void* GetInterface(uint32_t id) override;
    void GetValue(TimeValue t, void* value, Interval& valid) override {
        *static_cast<T*>(value) = track_.Get(t, valid);
    }
    void SetValue(TimeValue t, const void* value) override;
    bool IsAnimated() const override { return track_.IsAnimated(); }
    RefTargetHandle Clone(RemapDir& remap) override;
    /// The class of keys, the constant, the keys, the time range and what is beyond it.
    IOResult Save(ISave* save) override;
    /// IO_ERROR when the data is not what Save writes; the controller then stays as it was.
    IOResult Load(ILoad* load) override;

    /// Adds or replaces a key, from then on the controller is animated. Dependents are told.
    void SetKey(const Key& key);
    void SetKey(TimeValue t, const T& value, TangentType type);
    void SetKey(TimeValue t, const T& value) { SetKey(t, value, NewKeyTangent()); }
    const std::vector<Key>& Keys() const { return track_.Keys(); }

    int NumKeys() override { return int(Keys().size()); }
    TimeValue GetKeyTime(int i) override { return i >= 0 && i < NumKeys() ? Keys()[size_t(i)].time : 0; }
    int GetKeyIndex(TimeValue t) override { return track_.IndexOf(t); }
    void AddNewKey(TimeValue t) override;
    bool DeleteKeyAtTime(TimeValue t) override;
    void DeleteKeys() override;
    bool MoveKey(TimeValue from, TimeValue to) override;
    bool CopyKey(TimeValue from, TimeValue to) override;
    void MapKeys(TimeMap* map) override;
    Interval GetTimeRange() override { return track_.Range(); }
    void EditTimeRange(const Interval& range) override;
    int GetORT(int which) override { return track_.Ort(which & ORT_BEFORE); }
    void SetORT(int type, int which) override;
    int ReduceKeys(const Interval& range, float threshold, TimeValue step, KeyReduceStatus* status) override;

private:
    class TrackRestore;
    class Access;
    static T Default();
    /// Records the track, lets `edit` change it and tells dependents of the times around the `touched` ones.
    template <class Edit>
    void Change(std::initializer_list<TimeValue> touched, Edit&& edit);

    KeyTrack<T> track_;
    uint64_t held_ = 0; ///< the hold that knows the track
    std::unique_ptr<IKeyControl> access_;
};

using FloatControl = KeyControl<float, CTRL_FLOAT_CLASS_ID>;
using Point3Control = KeyControl<Point3, CTRL_POINT3_CLASS_ID>; ///< points and colours
using Point4Control = KeyControl<AColor, CTRL_POINT4_CLASS_ID>; ///< colours with alpha
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
    uint64_t held_ = 0; ///< the hold that knows the matrix
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

    int NumKeys() override { return int(KeyTimes().size()); }
    TimeValue GetKeyTime(int i) override;
    int GetKeyIndex(TimeValue t) override;
    void AddNewKey(TimeValue t) override;
    bool DeleteKeyAtTime(TimeValue t) override;
    void DeleteKeys() override;
    bool MoveKey(TimeValue from, TimeValue to) override;
    bool CopyKey(TimeValue from, TimeValue to) override;
    void MapKeys(TimeMap* map) override;
    Interval GetTimeRange() override;
    void EditTimeRange(const Interval& range) override;
    int GetORT(int which) override { return subs_[0] ? subs_[0]->GetORT(which) : int(ORT_CONSTANT); }
    void SetORT(int type, int which) override;
    /// The threshold counts for each part in its own unit.
    int ReduceKeys(const Interval& range, float threshold, TimeValue step, KeyReduceStatus* status) override;

    // The parts. Another one may be put in with ReplaceReference(0..2, ...) when its super class fits.
    Control* Position() const { return subs_[0]; }
    Control* Rotation() const { return subs_[1]; }
    Control* Scale() const { return subs_[2]; }

private:
    std::vector<TimeValue> KeyTimes();

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
