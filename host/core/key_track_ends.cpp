// Keys: the value beyond the ends, time ranges, reduction.

#include <cstdint>

#include "core/key_track.h"

namespace host {

template <class T>
Interval KeyTrack<T>::Range() const {
    if (keys_.empty()) return NEVER;
    return range_.Empty() ? Interval(keys_.front().time, keys_.back().time) : range_;
}

// The curve's direction at its first or last key.
template <class T>
Tangent<T> KeyTrack<T>::EndTangent(bool before) const {
    if (keys_.size() < 2 || IsStep(before ? 0 : keys_.size() - 2)) return NoTangent<T>();
    return before ? TangentAt(0, false) : TangentAt(keys_.size() - 1, true);
}

// The end's type as far as it makes a difference.
template <class T>
int KeyTrack<T>::EffectiveOrt(bool before) const {
    const int type = Ort(before);
    if (type == ORT_CONSTANT || IsConstant()) return ORT_CONSTANT;
    if (type == ORT_LINEAR) return EndTangent(before) == NoTangent<T>() ? ORT_CONSTANT : ORT_LINEAR;
    const Interval range = Range();
    return range.Start() < range.End() ? type : int(ORT_CONSTANT);
}

// `t` is beyond the end of the keys (straight on) or of the range.
template <class T>
T KeyTrack<T>::GetBeyond(TimeValue t, bool before, int type) const {
    Interval valid = FOREVER;
    const Key& first = keys_.front();
    const Key& last = keys_.back();
    if (type == ORT_LINEAR) {
        const Key& end = before ? first : last;
        return Advance(end.val, EndTangent(before), float(double(t) - double(end.time)));
    }
    const Interval range = Range();
    const int64_t start = range.Start(), length = int64_t(range.End()) - start;
    const int64_t period = type == ORT_OSCILLATE ? 2 * length : length;
    int64_t phase = (int64_t(t) - start) % period;
    if (phase < 0) phase += period;
    if (range.InInterval(t)) phase = int64_t(t) - start; // the range's own end is no new beginning
    if (phase > length) phase = period - phase;
    const int64_t at = start + phase;
    // Between the last key and the first key's next appearance.
    if (type == ORT_LOOP && (at > last.time || at < first.time)) {
        const int64_t gap = int64_t(first.time) + length - last.time;
        const int64_t from = at > last.time ? at - last.time : at + length - last.time;
        if (gap > 0) return Blend(last.val, first.val, float(double(from) / double(gap)));
    }
    return GetInside(TimeValue(at), valid);
}

template <class T>
T KeyTrack<T>::Get(TimeValue t, Interval& valid) const {
    if (keys_.empty()) return constant_;
    if (before_ == ORT_CONSTANT && after_ == ORT_CONSTANT) return GetInside(t, valid);
    for (const bool before : {true, false}) {
        const int type = EffectiveOrt(before);
        if (type == ORT_CONSTANT) continue;
        // Where the keys alone decide: up to the end key, or to the end of what repeats.
        const Interval range = Range();
        const TimeValue key = before ? keys_.front().time : keys_.back().time;
        TimeValue end = before ? range.Start() : range.End();
        if (type == ORT_LINEAR) end = key;
        if (type == ORT_LOOP) end = before ? std::max(end, key) : std::min(end, key);
        if (before ? t < end : t > end) {
            valid &= Interval(t, t);
            return GetBeyond(t, before, type);
        }
        valid &= before ? Interval(end, TIME_PosInfinity) : Interval(TIME_NegInfinity, end);
    }
    return GetInside(t, valid);
}

// Whether this track is within `threshold` of `original` at every grid time inside `part`, and at the removed key.
template <class T>
bool KeyTrack<T>::Fits(const KeyTrack& original, const Interval& part, const Interval& range, TimeValue step,
                       float threshold, TimeValue removed) const {
    const auto near = [&](int64_t t) {
        return KeyDistance(Get(TimeValue(t)), original.Get(TimeValue(t))) <= threshold;
    };
    if (!near(removed)) return false;
    const int64_t origin = range.Start(), low = std::max<int64_t>(part.Start(), origin);
    const int64_t high = std::min<int64_t>(part.End(), range.End());
    for (int64_t t = origin + (low - origin + step - 1) / step * step; t <= high; t += step)
        if (!near(t)) return false;
    return true;
}

template <class T>
int KeyTrack<T>::Reduce(const Interval& range, float threshold, TimeValue step, KeyReduceStatus* status) {
    if (keys_.size() < 3 || range.Empty() || step < 1) return 0;
    const KeyTrack original = *this;
    int removed = 0, done = 0;
    if (status) status->Init(int(keys_.size()) - 2);
    for (size_t i = 1; i + 1 < keys_.size();) {
        if (status && !status->Progress(done++)) return -1;
        const Key key = keys_[i];
        if (!range.InInterval(key.time)) {
            ++i;
            continue;
        }
        keys_.erase(keys_.begin() + std::ptrdiff_t(i));
        // The neighbours' tangents change, and with them the curve on their far sides.
        const Interval part(keys_[i >= 2 ? i - 2 : 0].time, keys_[std::min(i + 1, keys_.size() - 1)].time);
        if (Fits(original, part, range, step, threshold, key.time)) {
            ++removed;
        } else {
            keys_.insert(keys_.begin() + std::ptrdiff_t(i), key);
            ++i;
        }
    }
    return removed;
}

template class KeyTrack<float>;
template class KeyTrack<Point3>;
template class KeyTrack<AColor>;
template class KeyTrack<Quat>;

} // namespace host
