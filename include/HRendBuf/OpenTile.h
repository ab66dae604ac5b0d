#pragma once
// A tile while samples are inserted: its pixels' fragments in arrays with room to grow.
//
// A pixel is fetched from the packed tile when its first sample comes. Samples that follow each other belong to
// neighbouring pixels, so that the processor can work on several of them at a time.

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

#include "Base/HUtil/ThreadVector.h"
#include "HRendBuf/MergeKernel.h"
#include "HRendBuf/PackedTile.h"

/// Copies a few elements. Up to a block behind the last one is read and written too.
template <class T>
inline void CopyBlocks(T* to, const T* from, size_t count) {
    constexpr size_t kBlock = 32;
    static_assert(kBlock <= PackedTile<HairFragment>::kPadding);
    auto* out = reinterpret_cast<std::byte*>(to);
    const auto* in = reinterpret_cast<const std::byte*>(from);
    for (size_t i = 0; i < count * sizeof(T); i += kBlock) std::memcpy(out + i, in + i, kBlock);
}

template <class Fragment>
class alignas(kThreadAlignment) OpenTile {
public:
    using Packed = PackedFragment<Fragment>;
    using Point = typename PointOf<Fragment>::Type;

    /// Begins with what `tile` holds. The tile stays as it is until Close.
    void Open(const PackedTile<Fragment>& tile, size_t pixels, float tolerance) {
        tile_ = &tile;
        tolerance_ = tolerance;
        used_ = 0;
        slots_.assign(pixels, Slot());
    }
    /// The same rules as InsertPoint for links. A sample is dropped when memory is exhausted. `s` has to stay where it
    /// is until Close.
    void Insert(uint32_t pixel, const Point& s);
    /// Writes everything into `tile`, which may be the one it was opened from. False, and nothing changed, when memory
    /// is exhausted.
    bool Close(PackedTile<Fragment>& tile);

private:
    // Room grows in steps of this many, and depths are searched that many at a time. Unused room is infinitely far.
    static constexpr uint32_t kStep = 16;
    struct Slot {
        uint32_t begin = 0, count = 0, capacity = 0; ///< capacity 0: still in the packed tile
        uint32_t waiting = 0;                        ///< number of the batch that has a sample of the pixel
    };

    bool Reserve(Slot& slot, uint32_t capacity, const float* zMax, const Packed* rest);
    bool Fetch(Slot& slot, uint32_t pixel) {
        const size_t begin = tile_->PixelBegin(pixel);
        slot.count = uint32_t(tile_->PixelEnd(pixel) - begin);
        return Reserve(slot, (slot.count + kStep) / kStep * kStep, tile_->Depths() + begin, tile_->Rests() + begin);
    }
    static uint32_t CountNotBehind(const float* zMax, uint32_t count, float z);
    void Flush();
    void Place(Slot& slot, uint32_t i, const Point& s);
    void CutBehind(Slot& slot, uint32_t i) {
        if (!IsOpaque(rest_[slot.begin + i])) return;
        std::fill(zMax_.get() + slot.begin + i + 1, zMax_.get() + slot.begin + slot.count, kFar);
        slot.count = i + 1;
    }

    static constexpr float kFar = -std::numeric_limits<float>::infinity();
    const PackedTile<Fragment>* tile_ = nullptr;
    float tolerance_ = 0;
    ThreadVector<Slot> slots_; ///< by pixel
    diag::SharedArray<float> zMax_;
    diag::SharedArray<Packed> rest_;
    size_t used_ = 0, size_ = 0; ///< of both arrays

    // Samples whose fragment is found, and that wait until there are so many, for different pixels.
    uint32_t pixel_[kMergeSamples];
    uint32_t at_[kMergeSamples]; ///< the fragment's place in the arrays
    const Point* point_[kMergeSamples];
    int waiting_ = 0;
    uint32_t batch_ = 1; ///< number of the waiting ones, which slots refer to
    MergeKernel kernel_ = BestMergeKernel();
};

/// Room for `capacity` fragments, of which the first `slot.count` are copied from the given arrays.
template <class Fragment>
bool OpenTile<Fragment>::Reserve(Slot& slot, uint32_t capacity, const float* zMax, const Packed* rest) {
    const size_t end = used_ + capacity;
    diag::SharedArray<float> oldDepths; // `zMax` and `rest` may point into what grows
    diag::SharedArray<Packed> oldRests;
    if (end > size_) {
        const size_t size = end + end / 2 + 4096;
        constexpr size_t kPadding = PackedTile<Fragment>::kPadding;
        diag::SharedArray<float> depths = SHARED_ARRAY(float, size + kPadding);
        diag::SharedArray<Packed> rests = SHARED_ARRAY(Packed, size + kPadding);
        if (!depths || !rests) {
            if (slot.capacity == 0) slot.count = 0;
            return false;
        }
        std::copy_n(zMax_.get(), used_, depths.get());
        std::copy_n(rest_.get(), used_, rests.get());
        oldDepths = std::exchange(zMax_, std::move(depths));
        oldRests = std::exchange(rest_, std::move(rests));
        size_ = size;
    }
    CopyBlocks(zMax_.get() + used_, zMax, slot.count);
    for (uint32_t i = slot.count; i < capacity; ++i) zMax_[used_ + i] = kFar;
    CopyBlocks(rest_.get() + used_, rest, slot.count);
    slot.begin = uint32_t(used_);
    slot.capacity = capacity;
    used_ = end;
    return true;
}

/// How many of `count` falling depths are at least z.
template <class Fragment>
inline uint32_t OpenTile<Fragment>::CountNotBehind(const float* zMax, uint32_t count, float z) {
    uint32_t base = 0;
    while (count > kStep) {
        const uint32_t half = (count / 2 + kStep - 1) / kStep * kStep;
        const bool beyond = zMax[base + half] >= z;
        base += beyond ? half : 0;
        count = beyond ? count - half : half;
    }
    return base + uint32_t(CountAtLeast16(zMax + base, z));
}

template <class Fragment>
inline void OpenTile<Fragment>::Insert(uint32_t pixel, const Point& s) {
    Slot& slot = slots_[pixel];
    if (slot.waiting == batch_) Flush();
    if (slot.capacity == 0 && !Fetch(slot, pixel)) return;
    float* zMax = zMax_.get() + slot.begin;
    Packed* rest = rest_.get() + slot.begin;
    const float z = s.z;
    const uint32_t next = CountNotBehind(zMax, slot.count, z), isHead = next == 0, prev = next - 1 + isHead;
    // Which of both takes the sample is as good as random, so it is decided without a branch.
    const float behind = rest[prev].zMin - z, ahead = z - zMax[next];
    const float depth = zMax[prev] - rest[prev].zMin, nextDepth = zMax[next] - rest[next].zMin;
    const uint32_t toPrev = uint32_t(behind < tolerance_) & uint32_t(depth < kMaxFragmentDepth) & (1 - isHead);
    // intended: the head takes a merge up to and including the limits, everything behind it only below them.
    const uint32_t toNext =
        (uint32_t(ahead < tolerance_) | (isHead & uint32_t(ahead == tolerance_))) &
        (uint32_t(nextDepth < kMaxFragmentDepth) | (isHead & uint32_t(nextDepth == kMaxFragmentDepth))) &
        uint32_t(next < slot.count);
    if (!(toPrev | toNext)) return Place(slot, next, s);
    const uint32_t i = next - toPrev;
    zMax[i] = LargerOr(z, zMax[i]);
    rest[i].zMin = SmallerOr(z, rest[i].zMin);
    slot.waiting = batch_;
    pixel_[waiting_] = pixel;
    at_[waiting_] = slot.begin + i;
    point_[waiting_] = &s;
    if (++waiting_ == kMergeSamples) Flush();
}

/// Merges the waiting samples.
template <class Fragment>
void OpenTile<Fragment>::Flush() {
    unsigned opaque = 0;
    if constexpr (std::is_same_v<Fragment, HairFragment>)
        if (waiting_ == kMergeSamples) {
            opaque = kernel_(rest_.get(), at_, point_);
            waiting_ = 0;
        }
    for (int i = 0; i < waiting_; ++i) {
        MergeInto(rest_[at_[i]], *point_[i]);
        opaque |= 1u << i;
    }
    for (; opaque; opaque &= opaque - 1) {
        const int i = std::countr_zero(opaque);
        Slot& slot = slots_[pixel_[i]];
        CutBehind(slot, at_[i] - slot.begin);
    }
    waiting_ = 0;
    ++batch_;
}

template <class Fragment>
void OpenTile<Fragment>::Place(Slot& slot, uint32_t i, const Point& s) {
    // One more than there are: depths are looked at up to the first unused one.
    if (slot.count + 1 >= slot.capacity &&
        !Reserve(slot, 2 * slot.capacity, zMax_.get() + slot.begin, rest_.get() + slot.begin))
        return;
    float* zMax = zMax_.get() + slot.begin;
    Packed* rest = rest_.get() + slot.begin;
    std::copy_backward(zMax + i, zMax + slot.count, zMax + slot.count + 1);
    std::copy_backward(rest + i, rest + slot.count, rest + slot.count + 1);
    ++slot.count;
    zMax[i] = s.z;
    rest[i].zMin = s.z;
    rest[i].opacity = PackFraction(s.opacity);
    rest[i].coverage = PackFraction(s.coverage);
    SetColor(rest[i], s);
    CutBehind(slot, i);
}

template <class Fragment>
bool OpenTile<Fragment>::Close(PackedTile<Fragment>& tile) {
    Flush();
    const size_t pixels = slots_.size();
    size_t total = 0;
    for (size_t p = 0; p < pixels; ++p)
        total += slots_[p].capacity ? slots_[p].count : tile_->PixelEnd(p) - tile_->PixelBegin(p);
    PackedTile<Fragment> closed;
    if (!closed.Resize(pixels, total)) return false;
    // A block copied too far is overwritten by what follows, or lands in the padding.
    size_t at = 0;
    for (size_t p = 0; p < pixels;) {
        const Slot& slot = slots_[p];
        if (slot.capacity) {
            CopyBlocks(closed.Depths() + at, zMax_.get() + slot.begin, slot.count);
            CopyBlocks(closed.Rests() + at, rest_.get() + slot.begin, slot.count);
            at += slot.count;
            closed.SetPixelEnd(p++, at);
            continue;
        }
        const size_t begin = tile_->PixelBegin(p), shift = at - begin; // a stretch of pixels without samples
        for (; p < pixels && !slots_[p].capacity; ++p) {
            at = tile_->PixelEnd(p) + shift;
            closed.SetPixelEnd(p, at);
        }
        const size_t count = at - shift - begin;
        std::copy_n(tile_->Depths() + begin, count, closed.Depths() + begin + shift);
        std::copy_n(tile_->Rests() + begin, count, closed.Rests() + begin + shift);
    }
    tile = std::move(closed);
    return true;
}
