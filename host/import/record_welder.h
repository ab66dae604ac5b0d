#pragma once
// Equal things become one.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "sdk/point3.h"

namespace host {

/// Equal records of words have the same number.
class RecordWelder {
public:
    explicit RecordWelder(size_t width) : width_(width), slots_(64, -1) {}
    /// The number of the record, from 0; `added` tells whether it is new.
    int Number(const uint32_t* record, bool& added);
    /// Writes the words of a point; equal points have equal words.
    static void PutWords(const Point3& p, uint32_t words[3]);

private:
    size_t SlotOf(const uint32_t* record) const;
    void Grow();
    size_t width_;
    std::vector<uint32_t> words_;
    std::vector<int> slots_; ///< a power of two of them, at most half full; -1: free
    int count_ = 0;
};

/// Equal points have the same number: their place in `points`.
class PointWelder {
public:
    std::vector<Point3> points;
    int Number(const Point3& p);

private:
    RecordWelder welder_{3};
};

/// Coordinates that are no finite numbers become 0.
Point3 FiniteOrZero(Point3 p);

} // namespace host
