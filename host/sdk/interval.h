#pragma once
// Validity intervals of scene time, both ends inclusive.

#include "sdk/basetypes.h"

/// A range of scene time, both ends inclusive. The default interval is empty.
class Interval {
public:
    constexpr Interval() = default;
    constexpr Interval(TimeValue start, TimeValue end) : start_(start), end_(end) {}
    constexpr TimeValue Start() const { return start_; }
    constexpr TimeValue End() const { return end_; }
    constexpr void SetEmpty() { start_ = TIME_PosInfinity, end_ = TIME_NegInfinity; }
    constexpr void SetInfinite() { start_ = TIME_NegInfinity, end_ = TIME_PosInfinity; }
    constexpr void SetInstant(TimeValue t) { start_ = end_ = t; }
    constexpr bool Empty() const { return start_ > end_; }
    constexpr bool InInterval(TimeValue t) const { return t >= start_ && t <= end_; }
    /// Intersection.
    constexpr Interval& operator&=(const Interval& o) {
        start_ = start_ > o.start_ ? start_ : o.start_;
        end_ = end_ < o.end_ ? end_ : o.end_;
        if (start_ > end_) SetEmpty();
        return *this;
    }
    friend constexpr bool operator==(const Interval&, const Interval&) = default;

private:
    TimeValue start_ = TIME_PosInfinity;
    TimeValue end_ = TIME_NegInfinity;
};

constexpr Interval operator&(Interval a, const Interval& b) {
    return a &= b;
}
inline constexpr Interval FOREVER{TIME_NegInfinity, TIME_PosInfinity};
inline constexpr Interval NEVER{};
