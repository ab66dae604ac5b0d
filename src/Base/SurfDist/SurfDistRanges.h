#pragma once
// Ranges of a surface distribution's numbers.

#include <algorithm>

struct SurfDistRange {
    int low, high;
    constexpr int Clamp(int v) const { return std::clamp(v, low, high); }
};

inline constexpr SurfDistRange kSurfDistSources{0, 2}, kSurfDistSubMtls{0, 65535}, kSurfDistChannelTypes{0, 6},
    kSurfDistChannels{0, 99}, kSurfDistComponents{0, 4};
