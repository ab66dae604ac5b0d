#pragma once
// A shadow map's compact form: one flat array of samples, and where each pixel's begin.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "HRendBuf/HRendBucket.h"

class CompactShadowMap {
public:
    /// Takes over the fragments of a shadow pass's bucket. False, and nothing held, when memory is exhausted.
    bool Build(const HRendBucket& bucket);
    bool IsBuilt() const { return samples_ != nullptr; }
    void Clear();

    /// The samples of a pixel, front to back.
    const ShadowSample* Begin(size_t pixel) const { return samples_.get() + index_[pixel]; }
    const ShadowSample* End(size_t pixel) const { return samples_.get() + index_[pixel + 1]; }
    /// Bytes of both arrays.
    size_t Memory() const;

private:
    size_t pixels_ = 0;
    std::unique_ptr<int32_t[]> index_; ///< pixels + 1 entries; entry 0 is 0
    std::unique_ptr<ShadowSample[]> samples_;
};
