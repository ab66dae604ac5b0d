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
        table_.clear();
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
    }
    void Clear() { table_.clear(); }
    bool Active() const { return !table_.empty(); }
    int Count() const { return int(table_.size()); }
    /// Cumulative weights scaled to 0..32767.
    const std::vector<int32_t>& Table() const { return table_; }

    /// A value in 0..1. One draw.
    float Sample(HairRandom& random) const {
        const int r = random.Draw();
        const int n = Count();
        if (n == 0 || table_[size_t(n) - 1] <= r) return 1.0f;
        if (table_[0] >= r) return 0.0f;
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
        return float(hi) / float(n - 1);
    }
    /// Draws and discards: what a distribution does that is linked to another. One draw.
    static void Skip(HairRandom& random) { random.Draw(); }

private:
    std::vector<int32_t> table_;
};
