#pragma once
// The finished fragment lists of one tile: packed arrays instead of links.
//
// A pixel's fragments lie side by side, front to back. What they hold is, fragment by fragment, what linked lists would
// hold, in two thirds of the memory.

#include <memory>
#include <vector>

#include "HRendBuf/PackedFragment.h"

template <class Fragment>
class PackedTile {
public:
    using Packed = PackedFragment<Fragment>;

    /// Bytes behind each array that copies in blocks may read and write.
    static constexpr size_t kPadding = 64;

    /// Empties the tile and makes room. False, and unchanged, when memory is exhausted.
    bool Resize(size_t pixels, size_t fragments) {
        const size_t bytes = fragments * (sizeof(float) + sizeof(Packed)) + 2 * kPadding;
        std::unique_ptr<std::byte[]> memory(new (std::nothrow) std::byte[bytes]);
        if (!memory) return false;
        memory_ = std::move(memory);
        count_ = fragments;
        ends_.assign(pixels, 0);
        return true;
    }
    void Clear() {
        memory_.reset();
        std::vector<uint32_t>().swap(ends_);
        count_ = 0;
    }

    bool IsEmpty() const { return !memory_; }
    size_t Count() const { return count_; }
    size_t Bytes() const { return count_ * (sizeof(float) + sizeof(Packed)); }
    /// Where a pixel's fragments begin and end; both 0 in an empty tile.
    size_t PixelBegin(size_t pixel) const { return pixel == 0 || ends_.empty() ? 0 : ends_[pixel - 1]; }
    size_t PixelEnd(size_t pixel) const { return ends_.empty() ? 0 : ends_[pixel]; }
    void SetPixelEnd(size_t pixel, size_t end) { ends_[pixel] = uint32_t(end); }

    /// Near ends, and what belongs to them, of all fragments.
    const float* Depths() const { return reinterpret_cast<const float*>(memory_.get()); }
    const Packed* Rests() const {
        return reinterpret_cast<const Packed*>(memory_ ? memory_.get() + RestsOffset() : nullptr);
    }
    float* Depths() { return reinterpret_cast<float*>(memory_.get()); }
    Packed* Rests() { return reinterpret_cast<Packed*>(memory_ ? memory_.get() + RestsOffset() : nullptr); }

private:
    size_t RestsOffset() const { return count_ * sizeof(float) + kPadding; }

    std::unique_ptr<std::byte[]> memory_; ///< all near ends, then all the rest
    std::vector<uint32_t> ends_;          ///< of each pixel's fragments
    size_t count_ = 0;
};
