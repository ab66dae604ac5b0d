#include "import/record_welder.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace host {

int RecordWelder::Number(const uint32_t* record, bool& added) {
    size_t slot = SlotOf(record);
    added = slots_[slot] < 0;
    if (!added) return slots_[slot];
    if (size_t(count_) * 2 >= slots_.size()) {
        Grow();
        slot = SlotOf(record);
    }
    words_.insert(words_.end(), record, record + width_);
    return slots_[slot] = count_++;
}

// Adding zero makes a negative zero positive: equal numbers have the same bits.
void RecordWelder::PutWords(const Point3& p, uint32_t words[3]) {
    for (int k = 0; k < 3; ++k) words[k] = std::bit_cast<uint32_t>(p[k] + 0.0f);
}

// Where the record is, or the free place where it belongs.
size_t RecordWelder::SlotOf(const uint32_t* record) const {
    uint64_t hash = 0;
    for (size_t i = 0; i < width_; ++i) {
        hash = (hash ^ record[i]) * 0x9E3779B97F4A7C15ull;
        hash ^= hash >> 29;
    }
    const size_t mask = slots_.size() - 1;
    for (size_t slot = size_t(hash) & mask;; slot = (slot + 1) & mask) {
        const int i = slots_[slot];
        if (i < 0 || std::equal(record, record + width_, &words_[size_t(i) * width_])) return slot;
    }
}

void RecordWelder::Grow() {
    slots_.assign(slots_.size() * 2, -1);
    for (int i = 0; i < count_; ++i) slots_[SlotOf(&words_[size_t(i) * width_])] = i;
}

int PointWelder::Number(const Point3& p) {
    uint32_t words[3];
    RecordWelder::PutWords(p, words);
    bool added = false;
    const int number = welder_.Number(words, added);
    if (added) points.push_back(p);
    return number;
}

Point3 FiniteOrZero(Point3 p) {
    for (int k = 0; k < 3; ++k)
        if (!std::isfinite(p[k])) p[k] = 0;
    return p;
}

} // namespace host
