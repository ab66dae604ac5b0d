#pragma once
// The fragment lists of one tile while its bucket is drawn: packed arrays instead of links.
//
// A pixel's fragments lie side by side, front to back, so that finding a depth is a binary search in a few cache lines.
// What they hold is, fragment by fragment, what the linked lists would hold; when the bucket is complete they become
// them.

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "HRendBuf/FragmentList.h"

/// A fragment without its near end, which is the key it is found by.
template <class Fragment>
struct PackedFragment;
template <>
struct PackedFragment<HairFragment> {
    float zMin;
    uint16_t opacity, coverage;
    RealPixel color;
};
template <>
struct PackedFragment<ShadowFragment> {
    float zMin;
    uint16_t opacity, coverage;
};

inline void CopyColor(PackedFragment<HairFragment>& to, const HairFragment& from) {
    to.color = from.color;
}
inline void CopyColor(HairFragment& to, const PackedFragment<HairFragment>& from) {
    to.color = from.color;
}
inline void CopyColor(PackedFragment<ShadowFragment>&, const ShadowFragment&) {}
inline void CopyColor(ShadowFragment&, const PackedFragment<ShadowFragment>&) {}

/// One pixel's fragments at the end of growing arrays that have room for one more.
template <class Fragment>
class PackedList {
public:
    using Packed = PackedFragment<Fragment>;
    PackedList(float* zMax, Packed* rest, uint32_t count, float tolerance)
        : zMax_(zMax), rest_(rest), count_(count), tolerance_(tolerance) {}
    uint32_t Count() const { return count_; }

    /// The same rules as InsertPoint for links.
    template <class Point>
    void Insert(const Point& s) {
        const float z = s.z;
        if (count_ == 0 || z > zMax_[0]) {
            if (count_ != 0 && z - zMax_[0] <= tolerance_ && Depth(0) <= kMaxFragmentDepth) {
                zMax_[0] = z;
                Merge(0, s);
            } else {
                Place(0, s);
            }
            return;
        }
        const uint32_t next = CountNotBehind(z), prev = next - 1;
        if (rest_[prev].zMin - z < tolerance_ && Depth(prev) < kMaxFragmentDepth) {
            if (z < rest_[prev].zMin) rest_[prev].zMin = z;
            Merge(prev, s);
        } else if (next < count_ && z - zMax_[next] < tolerance_ && Depth(next) < kMaxFragmentDepth) {
            zMax_[next] = z;
            Merge(next, s);
        } else {
            Place(next, s);
        }
    }

private:
    float Depth(uint32_t i) const { return zMax_[i] - rest_[i].zMin; }
    /// How many fragments have a near end of at least z; the first one has.
    uint32_t CountNotBehind(float z) const {
        uint32_t base = 0;
        for (uint32_t length = count_; length > 1;) {
            const uint32_t half = length / 2;
            base += zMax_[base + half] >= z ? half : 0;
            length -= half;
        }
        return base + 1;
    }
    template <class Point>
    void Merge(uint32_t i, const Point& s) {
        MergeInto(rest_[i], s);
        CutBehind(i);
    }
    template <class Point>
    void Place(uint32_t i, const Point& s) {
        std::memmove(zMax_ + i + 1, zMax_ + i, (count_ - i) * sizeof(float));
        std::memmove(rest_ + i + 1, rest_ + i, (count_ - i) * sizeof(Packed));
        ++count_;
        zMax_[i] = s.z;
        rest_[i].zMin = s.z;
        rest_[i].opacity = PackFraction(s.opacity);
        rest_[i].coverage = PackFraction(s.coverage);
        SetColor(rest_[i], s);
        CutBehind(i);
    }
    void CutBehind(uint32_t i) {
        if (IsOpaque(rest_[i])) count_ = i + 1;
    }

    float* zMax_;
    Packed* rest_;
    uint32_t count_;
    float tolerance_;
};

/// Arrays that tiles are built in; one a thread.
template <class Fragment>
struct PackedScratch {
    using Packed = PackedFragment<Fragment>;
    std::unique_ptr<float[]> zMax;
    std::unique_ptr<Packed[]> rest;
    std::vector<uint32_t> ends;
    size_t count = 0;

    /// Empties the arrays and makes room for `capacity` fragments; false when memory is exhausted.
    bool Start(size_t capacity, size_t pixels) {
        count = 0;
        ends.resize(pixels);
        if (capacity <= capacity_) return true;
        const size_t size = capacity + capacity / 4;
        capacity_ = 0;
        zMax.reset(new (std::nothrow) float[size]);
        rest.reset(new (std::nothrow) Packed[size]);
        if (!zMax || !rest) return false;
        capacity_ = size;
        return true;
    }

private:
    size_t capacity_ = 0;
};

/// The packed fragments of one tile.
template <class Fragment>
class PackedTile {
public:
    using Packed = PackedFragment<Fragment>;
    using Scratch = PackedScratch<Fragment>;

    bool IsEmpty() const { return !memory_; }
    size_t Count() const { return count_; }
    size_t Bytes() const { return count_ * (sizeof(float) + sizeof(Packed)); }
    size_t PixelBegin(size_t pixel) const { return pixel == 0 ? 0 : ends_[pixel - 1]; }
    size_t PixelEnd(size_t pixel) const { return ends_[pixel]; }

    /// Appends the fragments of the pixels from..to-1 to the scratch.
    void AppendTo(Scratch& scratch, size_t from, size_t to) const {
        if (!memory_) {
            for (size_t p = from; p < to; ++p) scratch.ends[p] = uint32_t(scratch.count);
            return;
        }
        const size_t begin = PixelBegin(from), end = PixelBegin(to), shift = scratch.count - begin;
        std::memcpy(scratch.zMax.get() + scratch.count, Depths() + begin, (end - begin) * sizeof(float));
        std::memcpy(scratch.rest.get() + scratch.count, Rests() + begin, (end - begin) * sizeof(Packed));
        for (size_t p = from; p < to; ++p) scratch.ends[p] = uint32_t(ends_[p] + shift);
        scratch.count += end - begin;
    }
    /// Becomes what the scratch holds. False, and unchanged, when memory is exhausted.
    bool Assign(const Scratch& scratch) {
        std::unique_ptr<std::byte[]> memory(new (std::nothrow)
                                                std::byte[scratch.count * (sizeof(float) + sizeof(Packed)) + 1]);
        if (!memory) return false;
        memory_ = std::move(memory);
        count_ = scratch.count;
        ends_ = scratch.ends;
        std::memcpy(memory_.get(), scratch.zMax.get(), count_ * sizeof(float));
        std::memcpy(memory_.get() + count_ * sizeof(float), scratch.rest.get(), count_ * sizeof(Packed));
        return true;
    }
    void Clear() {
        memory_.reset();
        std::vector<uint32_t>().swap(ends_);
        count_ = 0;
    }
    /// Writes fragment `i` into a linked one; its link stays.
    void Write(size_t i, Fragment& out) const {
        const Packed& packed = Rests()[i];
        out.zMax = Depths()[i];
        out.zMin = packed.zMin;
        out.opacity = packed.opacity;
        out.coverage = packed.coverage;
        CopyColor(out, packed);
    }

private:
    const float* Depths() const { return reinterpret_cast<const float*>(memory_.get()); }
    const Packed* Rests() const { return reinterpret_cast<const Packed*>(memory_.get() + count_ * sizeof(float)); }

    std::unique_ptr<std::byte[]> memory_; ///< all near ends, then all the rest
    std::vector<uint32_t> ends_;          ///< of each pixel's fragments
    size_t count_ = 0;
};
