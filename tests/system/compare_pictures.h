#pragma once
// Pictures beside golden ones: 99.9 % of the pixels within 2/255, every pixel within 8/255.

#include <algorithm>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "image/load_image.h"

namespace system_test {

/// Largest difference of a pixel's colour as the file has it, in 1/255.
inline int Difference(const host::Image& a, const host::Image& b, int x, int y) {
    const AColor p = a.At(x, y), q = b.At(x, y);
    const float d = std::max({std::fabs(p.r - q.r), std::fabs(p.g - q.g), std::fabs(p.b - q.b), std::fabs(p.a - q.a)});
    return int(std::lround(d * 255.0f));
}

struct Comparison {
    int pixels = 0, beyond2 = 0, largest = 0;
    bool Close() const { return pixels > 0 && beyond2 * 1000 <= pixels && largest <= 8; }
};

inline Comparison Compare(const std::string& file, const std::string& golden) {
    const host::Image a = host::LoadImage(file, true), b = host::LoadImage(golden, true);
    Comparison c;
    EXPECT_EQ(a.Width(), b.Width());
    EXPECT_EQ(a.Height(), b.Height());
    if (a.Width() != b.Width() || a.Height() != b.Height()) return c;
    c.pixels = a.Width() * a.Height();
    for (int y = 0; y < a.Height(); ++y)
        for (int x = 0; x < a.Width(); ++x) {
            const int d = Difference(a, b, x, y);
            c.beyond2 += d > 2;
            c.largest = std::max(c.largest, d);
        }
    return c;
}

} // namespace system_test
