#include "HRendBuf/CompactShadowMap.h"

#include <climits>
#include <new>

namespace {

/// Visits the fragments of a bucket's pixels in row-major order.
template <class Visit, class EndPixel>
void ForEachFragment(const HRendBucket& bucket, const Visit& visit, const EndPixel& endPixel) {
    const PixelRect& r = bucket.Rect();
    for (int y = r.y0; y < r.y1; ++y)
        for (int x = r.x0; x < r.x1; ++x) {
            for (auto f = bucket.ReadShadow(x, y); !f.Done(); f.Next()) visit(f.Get());
            endPixel();
        }
}

} // namespace

bool CompactShadowMap::Build(const HRendBucket& bucket) {
    Clear();
    const size_t pixels = size_t(bucket.PixelCount()), count = bucket.FragmentCount();
    if (count > INT32_MAX) return false; // more than an index can name
    index_.reset(new (std::nothrow) int32_t[pixels + 1]);
    samples_.reset(new (std::nothrow) ShadowSample[count]);
    if (!index_ || !samples_) {
        Clear();
        return false;
    }
    pixels_ = pixels;
    int32_t* end = index_.get();
    *end = 0;
    ShadowSample* out = samples_.get();
    ForEachFragment(
        bucket,
        [&](const ShadowFragment& f) {
            *out++ = {f.zMax, f.zMin, UnpackFraction(f.opacity) * UnpackFraction(f.coverage)};
        },
        [&] { *++end = int32_t(out - samples_.get()); });
    return true;
}

void CompactShadowMap::Clear() {
    pixels_ = 0;
    index_.reset();
    samples_.reset();
}

size_t CompactShadowMap::Memory() const {
    if (!IsBuilt()) return 0;
    return 4 * (pixels_ + 1) + 12 * size_t(index_[pixels_]);
}
