#pragma once
// A random distribution shaped by a curve.

#include <cmath>
#include <cstdint>
#include <vector>

#include "Base/HUtil/HairRandom.h"
#include "CurveCtl/CurveShape.h"

/// Draws values in 0..1 that are dense where the curve is high. Inactive (empty) without a curve: it then answers 1.
/// Built before generation threads start, only read by them.
class RandDist {
public:
    /// Number of table entries of a strand's distributions.
    static constexpr int kEntries = 256;

    /// Tabulates `curve` at i / (n - 1). A null curve, one without knots, n < 1, or a curve whose values sum to nothing
    /// gives an inactive distribution.
    void Build(const CurveShape* curve, int n = kEntries) {
        Clear();
        if (!curve || curve->knots.empty() || n < 1) return;
        const auto at = [&](int i) { return curve->Eval(n > 1 ? float(i) / float(n - 1) : 0.0f); };
        float sum = 0.0f;
        for (int i = 0; i < n; ++i) sum += at(i);
        if (!(sum > 0.0f) || !std::isfinite(sum)) return;
        table_.reserve(size_t(n));
        float acc = 0.0f;
        for (int i = 0; i < n; ++i) {
            acc += at(i);
            table_.push_back(int32_t(std::floor(32767.0f * acc / sum + 0.5f)));
        }
        BuildLookup();
    }
    void Clear() {
        table_.clear();
        lookup_.clear();
        values_.clear();
    }
    bool Active() const { return !table_.empty(); }
    int Count() const { return int(table_.size()); }
    /// Cumulative weights scaled to 0..32767.
    const std::vector<int32_t>& Table() const { return table_; }

    /// A value in 0..1. One draw.
    float Sample(HairRandom& random) const {
        const int r = random.Draw();
        if (table_.empty()) return 1.0f;
        return lookup_.empty() ? Search(r) : values_[lookup_[size_t(r)]];
    }
    /// The value that output `r` (0..32767) of the generator stands for.
    float Search(int r) const {
        if (table_.empty() || table_.back() <= r) return 1.0f;
        if (table_.front() >= r) return 0.0f;
        return Value(SearchIndex(r));
    }
    /// Draws and discards: what a distribution does that is linked to another. One draw.
    static void Skip(HairRandom& random) { random.Draw(); }

private:
    static constexpr int kLargestIndex = 255;

    // The last entry (value 1) when none lies above r; else the entry that halving finds.
    int SearchIndex(int r) const {
        const int n = Count();
        if (table_[size_t(n) - 1] <= r) return n - 1;
        if (table_[0] >= r) return 0;
        int lo = 0, hi = n - 1;
        while (lo < hi - 1) {
            const int mid = (lo + hi) / 2;
            const int32_t entry = table_[size_t(mid)];
            if (entry < r) {
                lo = mid;
            } else {
                hi = mid;
                if (entry == r) break;
            }
        }
        return hi;
    }
    float Value(int index) const { return float(index) / float(Count() - 1); }
    // Answers by output, so that sampling is one look-up: between two entries the answer is the upper one, at an entry
    // it is whatever the search finds.
    void BuildLookup() {
        const int n = Count();
        if (n < 2 || n - 1 > kLargestIndex) return;
        lookup_.resize(size_t(HairRandom::kMax) + 1);
        int r = 0;
        for (int i = 0; i < n; ++i) {
            for (; r < table_[size_t(i)]; ++r) lookup_[size_t(r)] = uint8_t(i);
            if (r <= HairRandom::kMax && r == table_[size_t(i)])
                lookup_[size_t(r++)] = uint8_t(SearchIndex(table_[size_t(i)]));
        }
        for (; r <= HairRandom::kMax; ++r) lookup_[size_t(r)] = uint8_t(n - 1);
        values_.resize(size_t(n));
        for (int i = 0; i < n; ++i) values_[size_t(i)] = Value(i);
    }

    std::vector<int32_t> table_;
    std::vector<uint8_t> lookup_; ///< index by output
    std::vector<float> values_;   ///< value by index
};
