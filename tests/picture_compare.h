#pragma once
// Golden pictures: how close a picture must be to the one that was looked at.

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "image/load_image.h"

namespace golden {

/// Differences of two picture files' pixels as the files have them, in 1/255.
struct Comparison {
    int pixels = 0, beyond2 = 0, largest = 0;
    /// 99.9 % of the pixels within 2/255, every pixel within 8/255.
    bool Close() const { return pixels > 0 && beyond2 * 1000 <= pixels && largest <= 8; }
};

inline std::ostream& operator<<(std::ostream& out, const Comparison& c) {
    return out << c.beyond2 << " of " << c.pixels << " pixels beyond 2/255, largest " << c.largest;
}

/// Nothing is close when the sizes differ.
inline Comparison Compare(const std::string& file, const std::string& golden) {
    const host::Image a = host::LoadImage(file, true), b = host::LoadImage(golden, true);
    Comparison c;
    EXPECT_EQ(a.Width(), b.Width());
    EXPECT_EQ(a.Height(), b.Height());
    if (a.Width() != b.Width() || a.Height() != b.Height()) return c;
    c.pixels = a.Width() * a.Height();
    for (int y = 0; y < a.Height(); ++y)
        for (int x = 0; x < a.Width(); ++x) {
            const AColor p = a.At(x, y), q = b.At(x, y);
            const float d =
                std::max({std::fabs(p.r - q.r), std::fabs(p.g - q.g), std::fabs(p.b - q.b), std::fabs(p.a - q.a)});
            const int difference = int(std::lround(d * 255.0f));
            c.beyond2 += difference > 2;
            c.largest = std::max(c.largest, difference);
        }
    return c;
}

} // namespace golden
