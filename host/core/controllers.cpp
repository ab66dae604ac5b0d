// Keyed controllers.

#include "core/controllers.h"

#include <algorithm>
#include <cmath>

namespace host {

float Blend(float a, float b, float u) {
    return a + (b - a) * u;
}

Point3 Blend(const Point3& a, const Point3& b, float u) {
    return a + (b - a) * u;
}

Quat Blend(const Quat& a, const Quat& b, float u) {
    float cosine = DotProd(a, b);
    const float sign = cosine < 0 ? -1.0f : 1.0f;
    cosine *= sign;
    float wa = 1 - u, wb = u;
    if (cosine < 0.9995f) {
        // atan and sin only: their single-precision results are the same on all processors.
        const float angle = 2.0f * std::atan(std::sqrt((1 - cosine) / (1 + cosine)));
        const float sine = std::sin(angle);
        wa = std::sin(wa * angle) / sine;
        wb = std::sin(wb * angle) / sine;
    }
    wb *= sign;
    return Normalize(Quat(a.x * wa + b.x * wb, a.y * wa + b.y * wb, a.z * wa + b.z * wb, a.w * wa + b.w * wb));
}

template <class T>
void KeyTrack<T>::SetKey(const Key<T>& key) {
    const auto at =
        std::lower_bound(keys_.begin(), keys_.end(), key.time, [](const Key<T>& k, TimeValue t) { return k.time < t; });
    if (at != keys_.end() && at->time == key.time)
        *at = key;
    else
        keys_.insert(at, key);
}

// The stretch of equal values around key `i`.
template <class T>
Interval KeyTrack<T>::Stretch(size_t i) const {
    size_t first = i, last = i;
    while (first > 0 && Holds(first - 1) && keys_[first - 1].value == keys_[i].value) --first;
    while (last + 1 < keys_.size() && keys_[last + 1].value == keys_[i].value && Holds(last)) ++last;
    const TimeValue start = first == 0 ? TIME_NegInfinity : keys_[first].time;
    if (last + 1 == keys_.size()) return {start, TIME_PosInfinity};
    return {start, keys_[last].kind == KeyKind::Constant ? keys_[last + 1].time - 1 : keys_[last].time};
}

template <class T>
T KeyTrack<T>::Get(TimeValue t, Interval& valid) const {
    if (keys_.empty()) return constant_;
    const auto after =
        std::upper_bound(keys_.begin(), keys_.end(), t, [](TimeValue time, const Key<T>& k) { return time < k.time; });
    const size_t i = after == keys_.begin() ? 0 : size_t(after - keys_.begin()) - 1;
    const Key<T>& key = keys_[i];
    if (t <= key.time || i + 1 == keys_.size() || Holds(i)) {
        valid &= Stretch(i);
        return key.value;
    }
    valid &= Interval(t, t);
    const Key<T>& next = keys_[i + 1];
    const double u = (double(t) - double(key.time)) / (double(next.time) - double(key.time));
    return Blend(key.value, next.value, float(u));
}

namespace {

template <class T>
T Usable(const T& v) {
    return v;
}
template <>
Quat Usable(const Quat& q) {
    return Normalize(q);
}

} // namespace

template <class T, SClass_ID kSuper>
T KeyControl<T, kSuper>::Default() {
    if constexpr (kSuper == CTRL_SCALE_CLASS_ID)
        return {1, 1, 1};
    else
        return {};
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::GetValue(TimeValue t, void* value, Interval& valid) {
    *static_cast<T*>(value) = track_.Get(t, valid);
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::SetValue(TimeValue t, const void* value) {
    const T v = Usable(*static_cast<const T*>(value));
    if (track_.IsAnimated())
        track_.SetKey({t, v, KeyKind::Linear});
    else
        track_.SetConstant(v);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::SetKey(TimeValue t, const T& value, KeyKind kind) {
    track_.SetKey({t, Usable(value), kind});
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::DeleteKeys() {
    track_.DeleteKeys();
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
}

template <class T, SClass_ID kSuper>
RefTargetHandle KeyControl<T, kSuper>::Clone(RemapDir&) {
    auto* copy = new KeyControl;
    copy->track_ = track_;
    return copy;
}

template <class T, SClass_ID kSuper>
Class_ID KeyControl<T, kSuper>::ClassID() {
    switch (kSuper) {
    case CTRL_FLOAT_CLASS_ID:
        return LINEAR_FLOAT_CLASS_ID;
    case CTRL_POINT3_CLASS_ID:
        return LINEAR_POINT3_CLASS_ID;
    case CTRL_POSITION_CLASS_ID:
        return LINEAR_POSITION_CLASS_ID;
    case CTRL_ROTATION_CLASS_ID:
        return LINEAR_ROTATION_CLASS_ID;
    default:
        return LINEAR_SCALE_CLASS_ID;
    }
}

template <class T, SClass_ID kSuper>
void KeyControl<T, kSuper>::GetClassName(TSTR& s) {
    switch (kSuper) {
    case CTRL_FLOAT_CLASS_ID:
        s = "Linear Float";
        break;
    case CTRL_POINT3_CLASS_ID:
        s = "Linear Point3";
        break;
    case CTRL_POSITION_CLASS_ID:
        s = "Linear Position";
        break;
    case CTRL_ROTATION_CLASS_ID:
        s = "Linear Rotation";
        break;
    default:
        s = "Linear Scale";
        break;
    }
}

template class KeyTrack<float>;
template class KeyTrack<Point3>;
template class KeyTrack<Quat>;
template class KeyControl<float, CTRL_FLOAT_CLASS_ID>;
template class KeyControl<Point3, CTRL_POINT3_CLASS_ID>;
template class KeyControl<Point3, CTRL_POSITION_CLASS_ID>;
template class KeyControl<Quat, CTRL_ROTATION_CLASS_ID>;
template class KeyControl<Point3, CTRL_SCALE_CLASS_ID>;

} // namespace host
