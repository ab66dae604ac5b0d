#pragma once
// Keys of one value in ascending time, and the value between and beyond them.

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <vector>

#include "core/key_math.h"
#include "sdk/control.h"

namespace host {

/// A constant, or keys in ascending time.
template <class T>
class KeyTrack {
public:
    using Key = TypedKey<T, Tangent<T>>;

    const std::vector<Key>& Keys() const { return keys_; }
    std::vector<Key>& Keys() { return keys_; }
    bool IsAnimated() const { return !keys_.empty(); }
    const T& Constant() const { return constant_; }
    void SetConstant(const T& v) { constant_ = v; }
    /// Adds a key; a key at the same time is replaced.
    void SetKey(const Key& key);
    /// Number of the key at `t`, or -1.
    int IndexOf(TimeValue t) const;
    void DeleteKey(int i) { keys_.erase(keys_.begin() + i); }
    /// Adds a key on the curve; `type` is its tangents' where the neighbours do not ask for others.
    void InsertKey(TimeValue t, TangentType type);
    void MoveKey(int i, TimeValue to);
    /// By time; of several keys at one time the last one stays.
    void Sort();
    /// The value at `t`; `valid` is narrowed to the whole stretch around `t` where the value stays the same, as long as
    /// that is straight or stepped; on curves and beyond repeating ends to a part of it.
    T Get(TimeValue t, Interval& valid) const;
    T Get(TimeValue t) const {
        Interval valid = FOREVER;
        return Get(t, valid);
    }
    /// Times between which a change of the key at `t` can change values.
    Interval Around(TimeValue t) const;

    Interval Range() const;
    void SetRange(const Interval& range) { range_ = range; }
    const Interval& EditedRange() const { return range_; }
    int Ort(bool before) const { return before ? before_ : after_; }
    void SetOrt(bool before, int type) { (before ? before_ : after_) = type; }

    /// As Control::ReduceKeys.
    int Reduce(const Interval& range, float threshold, TimeValue step, KeyReduceStatus* status);

private:
    bool IsStep(size_t i) const { return keys_[i].out == TangentType::Step || keys_[i + 1].in == TangentType::Step; }
    bool IsStraight(size_t i) const {
        return keys_[i].out == TangentType::Linear && keys_[i + 1].in == TangentType::Linear;
    }
    float Duration(size_t i) const { return float(double(keys_[i + 1].time) - double(keys_[i].time)); }
    Tangent<T> Straight(size_t i) const { return Secant(keys_[i].val, keys_[i + 1].val, Duration(i)); }
    Tangent<T> TangentAt(size_t i, bool in) const;
    bool Holds(size_t i) const;
    bool IsConstant() const;
    Interval Stretch(size_t i) const;
    size_t SegmentOf(TimeValue t) const;
    T GetInside(TimeValue t, Interval& valid) const;
    T GetBeyond(TimeValue t, bool before, int type) const;
    int EffectiveOrt(bool before) const;
    Tangent<T> EndTangent(bool before) const;
    bool Fits(const KeyTrack& original, const Interval& part, const Interval& range, TimeValue step, float threshold,
              TimeValue removed) const;

    T constant_{};
    std::vector<Key> keys_;
    Interval range_ = NEVER; ///< NEVER: from the first key to the last
    int before_ = ORT_CONSTANT, after_ = ORT_CONSTANT;
};

extern template class KeyTrack<float>;
extern template class KeyTrack<Point3>;
extern template class KeyTrack<AColor>;
extern template class KeyTrack<Quat>;

} // namespace host
