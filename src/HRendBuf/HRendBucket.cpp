#include "HRendBuf/HRendBucket.h"

HRendBucket::HRendBucket(HRendMode mode, const PixelRect& rect) : mode_(mode), rect_(rect) {}

void HRendBucket::CreateLists() {
    if (mode_ == HRM_SHADOW) {
        shadowHeads_.assign(size_t(PixelCount()), nullptr);
        pool_ = std::make_unique<FragmentAllocator>(sizeof(ShadowFragment), kPoolBlocks);
    } else {
        imageHeads_.assign(size_t(PixelCount()), nullptr);
        pool_ = std::make_unique<FragmentAllocator>(sizeof(HairFragment), kPoolBlocks);
    }
}

void HRendBucket::TakeTiles(TileStore<HairFragment>& image, TileStore<ShadowFragment>& shadow) {
    if (mode_ == HRM_SHADOW)
        shadowTiles_ = std::move(shadow);
    else
        imageTiles_ = std::move(image);
}

size_t HRendBucket::FragmentCount() const {
    size_t count = imageTiles_.Count() + shadowTiles_.Count();
    for (const HairFragment* f : imageHeads_)
        for (; f; f = f->next) ++count;
    for (const ShadowFragment* f : shadowHeads_)
        for (; f; f = f->next) ++count;
    return count;
}

void HRendBucket::Compacted() {
    compacted_ = true;
    pool_.reset();
    std::vector<HairFragment*>().swap(imageHeads_);
    std::vector<ShadowFragment*>().swap(shadowHeads_);
    imageTiles_.Release();
    shadowTiles_.Release();
}

size_t HRendBucket::Memory() const {
    if (compacted_) return 0;
    return (pool_ ? pool_->GetSize() : imageTiles_.Bytes() + shadowTiles_.Bytes()) + 8 * size_t(PixelCount());
}

void HRendBucket::Touch(uint32_t now) {
    // Every sample of a picture comes by here, most of them within a tick of the last one: nothing to note then.
    if (lastUse_.load(std::memory_order_relaxed) == now) return;
    const std::lock_guard guard(lock_);
    const uint32_t last = lastUse_.load(std::memory_order_relaxed);
    if (last != kNever && now != kNever) {
        // Another thread may have read the clock later and come here earlier.
        const uint32_t gap = now - last;
        if (int32_t(gap) < 0) return;
        if (gap > maxIdle_) maxIdle_ = gap;
    }
    lastUse_.store(now, std::memory_order_relaxed);
}

bool HRendBucket::IsIdle(uint32_t now, uint32_t timeout) {
    const uint32_t last = lastUse_.load(std::memory_order_relaxed);
    return last != kNever && int32_t(now - last) > 0 && now - last > timeout;
}

uint32_t HRendBucket::MaxIdle() {
    const std::lock_guard guard(lock_);
    return maxIdle_;
}
