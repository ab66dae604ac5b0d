#pragma once
// One rectangle of a view with the fragment lists of its pixels.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "HRendBuf/SampleRuns.h"

/// Kind of a render pass.
enum HRendMode {
    HRM_IMAGE = 1,  ///< camera picture, fragments with colour
    HRM_SHADOW = 2, ///< a light's view, fragments without colour
    HRM_GBUFFER = 3 ///< channels of a finished picture
};

/// A rendered (or just being rendered) bucket.
class HRendBucket {
public:
    /// No tick: never used.
    static constexpr uint32_t kNever = 0xFFFFFFFF;
    /// Fragments a chunk of the pool.
    static constexpr size_t kPoolBlocks = 16384;

    HRendBucket(HRendMode mode, const PixelRect& rect);

    const PixelRect& Rect() const { return rect_; }
    int PixelCount() const { return rect_.Width() * rect_.Height(); }
    /// Number of an image pixel inside the bucket, row-major.
    size_t PixelIndex(int x, int y) const {
        return size_t(y - rect_.y0) * size_t(rect_.Width()) + size_t(x - rect_.x0);
    }
    /// The pixels' lists; a bucket has one of the two. Null after Compacted.
    HairFragment** ImageHeads() { return imageHeads_.empty() ? nullptr : imageHeads_.data(); }
    ShadowFragment** ShadowHeads() { return shadowHeads_.empty() ? nullptr : shadowHeads_.data(); }
    FragmentAllocator* Pool() { return pool_.get(); }

    /// Frees pool and lists: the shadow map's compact form has taken over.
    void Compacted();
    /// Bytes of pool and lists; a compacted bucket has none.
    size_t Memory() const;

    /// Notes a use at tick `now` in milliseconds; kNever makes the bucket one that was never used.
    void Touch(uint32_t now);
    /// True when the bucket was used, and that is more than `timeout` milliseconds ago.
    bool IsIdle(uint32_t now, uint32_t timeout);
    /// Largest gap seen between two uses, in milliseconds.
    uint32_t MaxIdle();

private:
    PixelRect rect_;
    std::mutex lock_; ///< guards the two fields below against other writers
    std::atomic<uint32_t> lastUse_{kNever};
    uint32_t maxIdle_ = 0;
    std::vector<HairFragment*> imageHeads_;
    std::vector<ShadowFragment*> shadowHeads_;
    std::unique_ptr<FragmentAllocator> pool_;
};
