#include "materials/map_wrap.h"

#include <algorithm>
#include <cmath>

namespace host {

float Wrapped(float c, int wrap) {
    if (!std::isfinite(c)) return 0;
    if (wrap == kWrapClamp) return std::clamp(c, 0.0f, 1.0f);
    if (wrap == kWrapRepeat) return c - std::floor(c);
    const float two = c - 2.0f * std::floor(0.5f * c);
    return two > 1.0f ? 2.0f - two : two;
}

int WrappedPixel(int i, int n, int wrap) {
    if (i >= 0 && i < n) return i;
    if (wrap != kWrapRepeat) return std::clamp(i, 0, n - 1); // a mirror image shows its border pixel twice
    return ((i % n) + n) % n;
}

} // namespace host
