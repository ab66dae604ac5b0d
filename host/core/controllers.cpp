// Keyed controllers.

#include "core/controllers.h"

#include <algorithm>
#include <cmath>

#include "core/key_track_io.h"
#include "sdk/hold.h"

namespace host {

namespace {

template <class T>
T Usable(const T& v) {
    return v;
}
template <>
Quat Usable(const Quat& q) {
    return Normalize(q);
}

struct Named {
    SClass_ID super;
    Class_ID linear;
    const char* name;
};
constexpr Named kNames[] = {{CTRL_FLOAT_CLASS_ID, LINEAR_FLOAT_CLASS_ID, "Float"},
                            {CTRL_POINT3_CLASS_ID, LINEAR_POINT3_CLASS_ID, "Point3"},
                            {CTRL_POINT4_CLASS_ID, LINEAR_POINT4_CLASS_ID, "Point4"},
                            {CTRL_POSITION_CLASS_ID, LINEAR_POSITION_CLASS_ID, "Position"},
                            {CTRL_ROTATION_CLASS_ID, LINEAR_ROTATION_CLASS_ID, "Rotation"},
                            {CTRL_SCALE_CLASS_ID, LINEAR_SCALE_CLASS_ID, "Scale"}};

constexpr const Named& NameOf(SClass_ID super) {
    for (const Named& n : kNames)
        if (n.super == super) return n;
    return kNames[0];
}

Interval Hull(const Interval& a, const Interval& b) {
    return {std::min(a.Start(), b.Start()), std::max(a.End(), b.End())};
}

} // namespace

void KeyedControl::SetKeyClass(KeyClass keyClass) {
    HoldValue(this, keyClass_);
    keyClass_ = keyClass;
}

/// The whole track before a hold's first edit.
template <class T, SClass_ID kSuper>
class KeyControl<T, kSuper>::TrackRestore : public ExchangeRestore {
public:
    explicit TrackRestore(KeyControl* control) : control_(control), saved_(control->track_) {}
    TSTR Description() override { return "Keys"; }

private:
    void Exchange() override {
        auto* const control = static_cast<KeyControl*>(control_.Maker());
        if (!control) return;
        std::swap(control->track_, saved_);
        control->NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    }

    MakerHandle control_;
    KeyTrack<T> saved_;
};

/// The keys by number.
template <class T, SClass_ID kSuper>
class KeyControl<T, kSuper>::Access : public IKeyControl {
public:
    explicit Access(KeyControl& control) : control_(control) {}
    int GetNumKeys() override { return control_.NumKeys(); }
    void SetNumKeys(int n) override {
        Edit([n](std::vector<Key>& keys) {
            const size_t before = keys.size();
            keys.resize(size_t(std::max(n, 0)));
            for (size_t i = std::max<size_t>(before, 1); i < keys.size(); ++i) keys[i].time = keys[i - 1].time + 1;
        });
    }
    void GetKey(int i, IKey* key) override {
        if (IsKey(i)) *static_cast<Key*>(key) = control_.Keys()[size_t(i)];
    }
    void SetKey(int i, const IKey* key) override {
        if (IsKey(i)) Edit([&](std::vector<Key>& keys) { keys[size_t(i)] = *static_cast<const Key*>(key); });
    }
    int AppendKey(const IKey* key) override {
        Edit([key](std::vector<Key>& keys) { keys.push_back(*static_cast<const Key*>(key)); });
        return control_.NumKeys() - 1;
    }
    void SortKeys() override {
        control_.Change({}, [](KeyTrack<T>& track) { track.Sort(); });
    }

private:
    bool IsKey(int i) const { return i >= 0 && size_t(i) < control_.Keys().size(); }
    template <class F>
    void Edit(F&& edit) {
        control_.Change({}, [&](KeyTrack<T>& track) {
            edit(track.Keys());
            for (Key& key : track.Keys()) key.val = Usable(key.val);
        });
    }

    KeyControl& control_;
};

template <class T, SClass_ID kSuper>
KeyControl<T, kSuper>::KeyControl(const T& constant, KeyClass keyClass) : KeyedControl(keyClass) {
    track_.SetConstant(constant);
}

template <class T, SClass_ID kSuper>
T KeyControl<T, kSuper>::Default() {
    if constexpr (kSuper == CTRL_SCALE_CLASS_ID)
        return {1, 1, 1};
    else
        return {};
}

template <class T, SClass_ID kSuper>
Class_ID KeyControl<T, kSuper>::ClassID() {
    const Class_ID linear = NameOf(kSuper).linear;
    return GetKeyClass() == KeyClass::Linear ? linear : Class_ID(linear.PartA(), BEZIER_CLASS_PART);
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::GetClassName(TSTR& s) {
    s = GetKeyClass() == KeyClass::Linear ? "Linear " : "Bezier ";
    s += NameOf(kSuper).name;
}

template <class T, SClass_ID kSuper>
void* KeyControl<T, kSuper>::GetInterface(uint32_t id) {
    if (id != I_KEYCONTROL) return KeyedControl::GetInterface(id);
    if (!access_) access_ = std::make_unique<Access>(*this);
    return access_.get();
}

template <class T, SClass_ID kSuper>
template <class Edit>
void KeyControl<T, kSuper>::Change(std::initializer_list<TimeValue> touched, Edit&& edit) {
    if (HoldOnce(held_)) theHold.Put(new TrackRestore(this));
    Interval around = touched.size() == 0 ? FOREVER : NEVER;
    for (const TimeValue t : touched) around = Hull(around, track_.Around(t));
    edit(track_);
    for (const TimeValue t : touched) around = Hull(around, track_.Around(t));
    NotifyDependents(around, PART_ALL, REFMSG_CHANGE);
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::SetValue(TimeValue t, const void* value) {
    const T v = Usable(*static_cast<const T*>(value));
    if (!track_.IsAnimated()) return Change({}, [&](KeyTrack<T>& track) { track.SetConstant(v); });
    // A key that stands there keeps its tangents.
    Key key;
    key.time = t;
    key.in = key.out = NewKeyTangent();
    if (const int at = track_.IndexOf(t); at >= 0) key = Keys()[size_t(at)];
    key.val = v;
    SetKey(key);
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::SetKey(const Key& key) {
    Key usable = key;
    usable.val = Usable(key.val);
    Change({key.time}, [&](KeyTrack<T>& track) { track.SetKey(usable); });
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::SetKey(TimeValue t, const T& value, TangentType type) {
    Key key;
    key.time = t;
    key.in = key.out = type;
    key.val = value;
    SetKey(key);
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::AddNewKey(TimeValue t) {
    if (track_.IndexOf(t) >= 0) return;
    Change({t}, [&](KeyTrack<T>& track) { track.InsertKey(t, NewKeyTangent()); });
}

template <class T, SClass_ID kSuper>
bool KeyControl<T, kSuper>::DeleteKeyAtTime(TimeValue t) {
    const int at = track_.IndexOf(t);
    if (at >= 0) Change({t}, [at](KeyTrack<T>& track) { track.DeleteKey(at); });
    return at >= 0;
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::DeleteKeys() {
    Change({}, [](KeyTrack<T>& track) { track.Keys().clear(); });
}

template <class T, SClass_ID kSuper>
bool KeyControl<T, kSuper>::MoveKey(TimeValue from, TimeValue to) {
    const int at = track_.IndexOf(from);
    if (at >= 0 && from != to) Change({from, to}, [&](KeyTrack<T>& track) { track.MoveKey(at, to); });
    return at >= 0;
}

template <class T, SClass_ID kSuper>
bool KeyControl<T, kSuper>::CopyKey(TimeValue from, TimeValue to) {
    const int at = track_.IndexOf(from);
    if (at < 0) return false;
    Key key = Keys()[size_t(at)];
    key.time = to;
    SetKey(key);
    return true;
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::MapKeys(TimeMap* map) {
    if (!map) return;
    Change({}, [map](KeyTrack<T>& track) {
        for (Key& key : track.Keys()) key.time = map->map(key.time);
        track.Sort();
        const Interval edited = track.EditedRange();
        if (edited.Empty()) return;
        const TimeValue start = map->map(edited.Start()), end = map->map(edited.End());
        track.SetRange({std::min(start, end), std::max(start, end)});
    });
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::EditTimeRange(const Interval& range) {
    Change({}, [&](KeyTrack<T>& track) { track.SetRange(range); });
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::SetORT(int type, int which) {
    if (type < ORT_CONSTANT || type > ORT_LINEAR) return;
    Change({}, [&](KeyTrack<T>& track) {
        if (which & ORT_BEFORE) track.SetOrt(true, type);
        if (which & ORT_AFTER) track.SetOrt(false, type);
    });
}

template <class T, SClass_ID kSuper>
int KeyControl<T, kSuper>::ReduceKeys(const Interval& range, float threshold, TimeValue step, KeyReduceStatus* status) {
    int removed = 0;
    Change({}, [&](KeyTrack<T>& track) { removed = track.Reduce(range, threshold, step, status); });
    return removed;
}

template <class T, SClass_ID kSuper>
RefTargetHandle KeyControl<T, kSuper>::Clone(RemapDir&) {
    auto* copy = new KeyControl(GetKeyClass());
    copy->track_ = track_;
    return copy;
}

template <class T, SClass_ID kSuper>
IOResult KeyControl<T, kSuper>::Save(ISave* save) {
    return SaveTrack(save, track_, GetKeyClass() == KeyClass::Bezier);
}

template <class T, SClass_ID kSuper>
IOResult KeyControl<T, kSuper>::Load(ILoad* load) {
    KeyTrack<T> track;
    bool bezier = false;
    const IOResult result = LoadTrack(load, track, bezier);
    if (result != IO_OK) return result;
    track.SetConstant(Usable(track.Constant()));
    for (Key& key : track.Keys()) key.val = Usable(key.val);
    Change({}, [&](KeyTrack<T>& own) { own = track; });
    SetKeyClass(bezier ? KeyClass::Bezier : KeyClass::Linear);
    return IO_OK;
}

template class KeyControl<float, CTRL_FLOAT_CLASS_ID>;
template class KeyControl<Point3, CTRL_POINT3_CLASS_ID>;
template class KeyControl<AColor, CTRL_POINT4_CLASS_ID>;
template class KeyControl<Point3, CTRL_POSITION_CLASS_ID>;
template class KeyControl<Quat, CTRL_ROTATION_CLASS_ID>;
template class KeyControl<Point3, CTRL_SCALE_CLASS_ID>;

} // namespace host
