// Buckets that suit the host's current renderer, so that hair is rendered in the order in which the host asks for it.

#include <algorithm>

#include "HRendAtm/HairRender.h"
#include "sdk/core.h"

namespace {

constexpr int kStripes = 1, kSquares = 2;

// The host renderers that tell their bucket size.
constexpr Class_ID kMentalRay{0x58f67d6c, 0x4fcf3bc3};
constexpr Class_ID kShiftedSize{0x0cf12ab7, 0x03762873};
constexpr Class_ID kFourSizes{0x52ad1c02, 0x112d2fbc};
constexpr Class_ID kFiveSizes{0x05b120fc, 0x1c48538e};
constexpr Class_ID kRegions{0x73bab286, 0x77f8fd0c};

int TaskSize(Interface& host, int fallback) {
    int n = 0;
    return host.EvalScriptInt("renderers.current.tasksize", n) && n >= 1 ? n : fallback;
}

int ShiftedSize(Interface& host, int fallback) {
    int n = 0;
    if (!host.EvalScriptInt("renderers.current.bucketSize", n) || n < 0) return fallback;
    return n > 20 ? 10000 : 16 << n;
}

int OneOfFour(Interface& host, int fallback) {
    int n = 0;
    if (!host.EvalScriptInt("renderers.current.bucket_size", n)) return fallback;
    return 16 << std::clamp(n, 0, 3);
}

int OneOfFive(Interface& host, int fallback) {
    static constexpr int kSizes[] = {16, 24, 32, 48, 64};
    int n = 0;
    if (!host.EvalScriptInt("trackViewNodes.Brazil_r_s[renderers.current.renderer_no+1]."
                            "system_options_parameter_block_holder.bucket_size",
                            n))
        return fallback;
    return kSizes[std::clamp(n, 0, 4)];
}

int RegionSize(Interface& host, int fallback) {
    int x = 0, y = 0, meaning = 0;
    if (!host.EvalScriptInt("renderers.current.system_region_x", x) ||
        !host.EvalScriptInt("renderers.current.system_region_y", y) ||
        !host.EvalScriptInt("renderers.current.system_region_meaning", meaning))
        return fallback;
    return x >= 0 && y >= 0 && x == y && meaning == 0 ? std::max(x, y) : fallback;
}

} // namespace

BucketChoice ChooseBucketsFor(Renderer* renderer, Interface& host, int bucketSize) {
    const Class_ID id = renderer ? renderer->ClassID() : Class_ID();
    BucketChoice c{kSquares, bucketSize};
    if (id == SREND_CLASS_ID)
        c.type = kStripes;
    else if (id == kMentalRay)
        c.size = TaskSize(host, bucketSize);
    else if (id == kShiftedSize)
        c.size = ShiftedSize(host, bucketSize);
    else if (id == kFourSizes)
        c.size = OneOfFour(host, bucketSize);
    else if (id == kFiveSizes)
        c.size = OneOfFive(host, bucketSize);
    else if (id == kRegions)
        c.size = RegionSize(host, bucketSize);
    c.size = std::clamp(c.size, 10, 10000);
    return c;
}
