#include "HRendBuf/CompactShadowMap.h"

#include <climits>
#include <new>

namespace {

/// Counts fragments into running ends; false when there are more than an index can name.
bool CountInto(int32_t* index, ShadowFragment* const* heads, size_t pixels) {
    int64_t count = 0;
    index[0] = 0;
    for (size_t i = 0; i < pixels; ++i) {
        for (const ShadowFragment* f = heads[i]; f; f = f->next) ++count;
        if (count > INT32_MAX) return false;
        index[i + 1] = int32_t(count);
    }
    return true;
}

} // namespace

bool CompactShadowMap::Build(ShadowFragment* const* heads, size_t pixels) {
    Clear();
    index_.reset(new (std::nothrow) int32_t[pixels + 1]);
    if (!index_ || !CountInto(index_.get(), heads, pixels)) {
        Clear();
        return false;
    }
    samples_.reset(new (std::nothrow) ShadowSample[size_t(index_[pixels])]);
    if (!samples_) {
        Clear();
        return false;
    }
    pixels_ = pixels;
    ShadowSample* out = samples_.get();
    for (size_t i = 0; i < pixels; ++i)
        for (const ShadowFragment* f = heads[i]; f; f = f->next)
            *out++ = {f->zMax, f->zMin, UnpackFraction(f->opacity) * UnpackFraction(f->coverage)};
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
