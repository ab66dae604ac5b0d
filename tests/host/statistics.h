#pragma once
// Range, mean and variance of samples.

#include <algorithm>

namespace test {

struct Statistics {
    double low = 1e9, high = -1e9, sum = 0, squares = 0;
    int count = 0;
    void Add(float v) {
        low = std::min(low, double(v)), high = std::max(high, double(v));
        sum += double(v), squares += double(v) * double(v);
        ++count;
    }
    double Mean() const { return sum / count; }
    double Variance() const { return squares / count - Mean() * Mean(); }
};

} // namespace test
