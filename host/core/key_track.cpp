// Keys: editing, the value between keys.

#include "core/key_track.h"

#include <limits>

namespace host {

template <class T>
void KeyTrack<T>::SetKey(const Key& key) {
    const auto at =
        std::lower_bound(keys_.begin(), keys_.end(), key.time, [](const Key& k, TimeValue t) { return k.time < t; });
    if (at != keys_.end() && at->time == key.time)
        *at = key;
    else
        keys_.insert(at, key);
}

template <class T>
int KeyTrack<T>::IndexOf(TimeValue t) const {
    const auto at =
        std::lower_bound(keys_.begin(), keys_.end(), t, [](const Key& k, TimeValue time) { return k.time < time; });
    return at != keys_.end() && at->time == t ? int(at - keys_.begin()) : -1;
}

// On a stretch that holds or is straight the new key goes on so; on a curve that is no automatic one it takes the
// curve's own direction there.
template <class T>
void KeyTrack<T>::InsertKey(TimeValue t, TangentType type) {
    if (IndexOf(t) >= 0) return;
    Key key;
    key.time = t;
    key.in = key.out = type;
    key.val = keys_.empty() ? constant_ : Get(t);
    if (!keys_.empty() && t > keys_.front().time && t < keys_.back().time) {
        const size_t i = SegmentOf(t);
        if (IsStep(i))
            key.in = key.out = TangentType::Step;
        else if (IsStraight(i))
            key.in = key.out = TangentType::Linear;
    }
    SetKey(key);
}

template <class T>
void KeyTrack<T>::MoveKey(int i, TimeValue to) {
    Key key = keys_[size_t(i)];
    DeleteKey(i);
    key.time = to;
    SetKey(key);
}

template <class T>
void KeyTrack<T>::Sort() {
    std::stable_sort(keys_.begin(), keys_.end(), [](const Key& a, const Key& b) { return a.time < b.time; });
    size_t kept = 0;
    for (size_t i = 0; i < keys_.size(); ++i) {
        if (kept > 0 && keys_[kept - 1].time == keys_[i].time) --kept;
        keys_[kept++] = keys_[i];
    }
    keys_.resize(kept);
}

template <class T>
Tangent<T> KeyTrack<T>::TangentAt(size_t i, bool in) const {
    const Key& key = keys_[i];
    const TangentType type = in ? key.in : key.out;
    if (type == TangentType::Custom) return in ? key.intan : key.outtan;
    if (type == TangentType::Step) return NoTangent<T>();
    const bool first = i == 0, last = i + 1 == keys_.size();
    if (type == TangentType::Linear || first || last) {
        if (first && last) return NoTangent<T>();
        return Straight(last || (in && !first) ? i - 1 : i);
    }
    const Tangent<T> before = Straight(i - 1), after = Straight(i);
    return type == TangentType::Auto ? AutoTangent(before, Duration(i - 1), after, Duration(i))
                                     : SmoothTangent(before, Duration(i - 1), after, Duration(i));
}

// Whether the value stays the same from key `i` to the next, apart from a step at its end.
template <class T>
bool KeyTrack<T>::Holds(size_t i) const {
    if (IsStep(i)) return true;
    if (!(keys_[i].val == keys_[i + 1].val)) return false;
    if (IsStraight(i)) return true;
    return TangentAt(i, false) == NoTangent<T>() && TangentAt(i + 1, true) == NoTangent<T>();
}

template <class T>
bool KeyTrack<T>::IsConstant() const {
    for (size_t i = 0; i + 1 < keys_.size(); ++i)
        if (!Holds(i) || !(keys_[i].val == keys_[i + 1].val)) return false;
    return true;
}

// The stretch of equal values around key `i`.
template <class T>
Interval KeyTrack<T>::Stretch(size_t i) const {
    size_t first = i, last = i;
    while (first > 0 && Holds(first - 1) && keys_[first - 1].val == keys_[i].val) --first;
    while (last + 1 < keys_.size() && keys_[last + 1].val == keys_[i].val && Holds(last)) ++last;
    const TimeValue start = first == 0 ? TIME_NegInfinity : keys_[first].time;
    if (last + 1 == keys_.size()) return {start, TIME_PosInfinity};
    return {start, IsStep(last) ? keys_[last + 1].time - 1 : keys_[last].time};
}

// The last key at or before `t`, else the first one.
template <class T>
size_t KeyTrack<T>::SegmentOf(TimeValue t) const {
    const auto after =
        std::upper_bound(keys_.begin(), keys_.end(), t, [](TimeValue time, const Key& k) { return time < k.time; });
    return after == keys_.begin() ? 0 : size_t(after - keys_.begin()) - 1;
}

template <class T>
T KeyTrack<T>::GetInside(TimeValue t, Interval& valid) const {
    const size_t i = SegmentOf(t);
    const Key& key = keys_[i];
    if (t <= key.time || i + 1 == keys_.size() || Holds(i)) {
        valid &= Stretch(i);
        return key.val;
    }
    valid &= Interval(t, t);
    const Key& next = keys_[i + 1];
    const float u = float((double(t) - double(key.time)) / (double(next.time) - double(key.time)));
    if (IsStraight(i)) return Blend(key.val, next.val, u);
    return Curve(key.val, TangentAt(i, false), next.val, TangentAt(i + 1, true), Duration(i), u);
}

template <class T>
Interval KeyTrack<T>::Around(TimeValue t) const {
    if (keys_.empty() || before_ != ORT_CONSTANT || after_ != ORT_CONSTANT) return FOREVER;
    // A smooth neighbour's tangent changes, too, and with it the curve on its far side.
    const auto low =
        std::lower_bound(keys_.begin(), keys_.end(), t, [](const Key& k, TimeValue time) { return k.time < time; });
    const size_t before = size_t(low - keys_.begin());
    const size_t after = before + (low != keys_.end() && low->time == t ? 1 : 0);
    return {before >= 2 ? keys_[before - 2].time : TIME_NegInfinity,
            after + 1 < keys_.size() ? keys_[after + 1].time : TIME_PosInfinity};
}

template class KeyTrack<float>;
template class KeyTrack<Point3>;
template class KeyTrack<AColor>;
template class KeyTrack<Quat>;

} // namespace host
