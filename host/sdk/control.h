#pragma once
// Controllers: values over time.

#include "sdk/color.h"
#include "sdk/matrix3.h"
#include "sdk/quat.h"
#include "sdk/ref.h"

/// How the value comes to a key (in) or leaves it (out).
enum class TangentType {
    Smooth, ///< along the line from the key before to the key after, by their times
    Linear, ///< straight to the neighbouring key
    Step,   ///< the value before the step holds until the next key
    Custom, ///< with the key's own tangent
    Auto,   ///< as Smooth, but never beyond the neighbours' values: flat at a summit or in a valley
};

/// What others see of a key; the typed keys below add values.
struct IKey {
    TimeValue time = 0;
    TangentType in = TangentType::Linear, out = TangentType::Linear;
};
/// A key of values T. Tangents are changes of the value in one tick and count for custom sides only. The tangent of a
/// rotation is its axis times radians a tick, in the sense of Quat, turning on from the key's rotation.
template <class T, class Tangent = T>
struct TypedKey : IKey {
    T val{};
    Tangent intan{}, outtan{};
};
using IFloatKey = TypedKey<float>;
using IPoint3Key = TypedKey<Point3>; ///< points, colours, positions, scales
using IPoint4Key = TypedKey<AColor>;
using IRotKey = TypedKey<Quat, Point3>;

// What a controller gives before its first and after its last key.
enum OutOfRangeType {
    ORT_CONSTANT = 1,  ///< the nearest key's value
    ORT_CYCLE = 2,     ///< the time range again and again
    ORT_LOOP = 3,      ///< the same; what the range has beyond the keys leads from the last key back to the first
    ORT_OSCILLATE = 4, ///< the time range forth and back
    ORT_LINEAR = 5,    ///< straight on from the end key
};
enum { ORT_BEFORE = 1, ORT_AFTER = 2 };

/// Where times go (MapKeys).
class TimeMap {
public:
    virtual ~TimeMap() = default;
    virtual TimeValue map(TimeValue t) = 0;
};

/// Told how a key reduction comes along.
class KeyReduceStatus {
public:
    virtual ~KeyReduceStatus() = default;
    virtual void Init(int total) {}
    /// False ends the reduction; what was removed stays removed.
    virtual bool Progress(int done) { return true; }
};

/// Keys of a controller by number. Keys passed as IKey must be of the controller's own kind. After SetKey or AppendKey
/// changed times, SortKeys must be called before the controller is asked for values.
class IKeyControl {
public:
    virtual ~IKeyControl() = default;
    virtual int GetNumKeys() = 0;
    /// New keys are at the end, at the last key's time plus one tick each.
    virtual void SetNumKeys(int n) = 0;
    virtual void GetKey(int i, IKey* key) = 0;
    virtual void SetKey(int i, const IKey* key) = 0;
    virtual int AppendKey(const IKey* key) = 0;
    /// Sorts by time; of several keys at one time the last one stays.
    virtual void SortKeys() = 0;
};
inline constexpr uint32_t I_KEYCONTROL = 0x64420001;
/// The keys of an object by number; null when it has none.
inline IKeyControl* GetKeyControlInterface(Animatable* anim) {
    return anim ? static_cast<IKeyControl*>(anim->GetInterface(I_KEYCONTROL)) : nullptr;
}

/// A value over time. Super class ids CTRL_* tell the value's type. Edits are undoable while a hold is open.
class Control : public ReferenceTarget {
public:
    /// Writes the value at `t` (float, Point3, AColor, Quat or Matrix3 by super class) and narrows `valid` to where it
    /// holds.
    virtual void GetValue(TimeValue t, void* value, Interval& valid) = 0;
    /// Sets the value: a key at `t` when animated, else the constant.
    virtual void SetValue(TimeValue t, const void* value) = 0;
    virtual bool IsAnimated() const { return false; }

    // Keys by time. A controller of several parts answers for all of them.
    virtual int NumKeys() { return 0; }
    virtual TimeValue GetKeyTime(int i) { return 0; }
    /// Number of the key at `t`, or -1.
    virtual int GetKeyIndex(TimeValue t) { return -1; }
    /// The nearest key after `t` (before, when not `forward`).
    bool GetNextKeyTime(TimeValue t, bool forward, TimeValue& next);
    /// A key of the present value; a key that stands there already stays. On a curve the key does not bend it where its
    /// tangents can follow the curve.
    virtual void AddNewKey(TimeValue t) {}
    virtual bool DeleteKeyAtTime(TimeValue t) { return false; }
    /// Deletes all keys; the constant remains.
    virtual void DeleteKeys() {}
    /// Moves the key at `from`; a key at `to` is replaced.
    virtual bool MoveKey(TimeValue from, TimeValue to) { return false; }
    virtual bool CopyKey(TimeValue from, TimeValue to) { return false; }
    /// Takes the keys to other times, also the edited time range.
    virtual void MapKeys(TimeMap* map) {}
    /// The time that repeats: from the first to the last key unless edited; NEVER without keys.
    virtual Interval GetTimeRange() { return NEVER; }
    /// Sets it; keys stay. An empty range makes it follow the keys again.
    virtual void EditTimeRange(const Interval& range) {}
    /// `which`: ORT_BEFORE, ORT_AFTER, or both (SetORT).
    virtual int GetORT(int which) { return ORT_CONSTANT; }
    virtual void SetORT(int type, int which) {}
    /// Removes inner keys inside `range` as long as the value at range.Start() + n * `step` stays within `threshold`
    /// (the unit of the value, for rotations radians). Number of keys removed; -1 when `status` ended it.
    virtual int ReduceKeys(const Interval& range, float threshold, TimeValue step, KeyReduceStatus* status) {
        return 0;
    }
};

/// Control::ReduceKeys; false when it was ended.
bool ApplyKeyReduction(Control* control, const Interval& range, float threshold, TimeValue step,
                       KeyReduceStatus* status = nullptr);

// New controllers of the host's default classes (Bezier keys; transforms by position, rotation and scale).
Control* NewDefaultFloatController();
Control* NewDefaultPoint3Controller();
Control* NewDefaultColorController();
Control* NewDefaultPoint4Controller();
Control* NewDefaultPositionController();
Control* NewDefaultRotationController();
Control* NewDefaultScaleController();
Control* NewDefaultMatrix3Controller();
