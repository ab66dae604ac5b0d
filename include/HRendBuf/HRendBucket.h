#pragma once
// One rectangle of a view with the fragment lists of its pixels.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "HRendBuf/FragmentReader.h"
#include "HRendBuf/TileStore.h"

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

    // A bucket's fragments are linked, for callers that insert single samples, or packed, as the ordered path leaves
    // them.

    /// Makes the linked form's lists, all empty, and their pool; once.
    void CreateLists();
    bool HasLists() const { return pool_ != nullptr; }
    /// The pixels' lists; a bucket has one of the two. Null without lists.
    HairFragment** ImageHeads() { return imageHeads_.empty() ? nullptr : imageHeads_.data(); }
    ShadowFragment** ShadowHeads() { return shadowHeads_.empty() ? nullptr : shadowHeads_.data(); }
    FragmentAllocator* Pool() { return pool_.get(); }
    /// Takes over packed tiles, of which one store has the bucket's kind.
    void TakeTiles(TileStore<HairFragment>& image, TileStore<ShadowFragment>& shadow);

    /// The fragments of an image pixel inside the bucket, from its front or from a place that a reader has named.
    FragmentReader<HairFragment> ReadImage(int x, int y, const void* from = nullptr) const {
        return Read(imageHeads_, imageTiles_, x, y, from);
    }
    FragmentReader<ShadowFragment> ReadShadow(int x, int y) const {
        return Read(shadowHeads_, shadowTiles_, x, y, nullptr);
    }
    HRendMode Mode() const { return mode_; }
    size_t FragmentCount() const;

    /// Frees all fragments: the shadow map's compact form has taken over.
    void Compacted();
    /// Bytes of the pool or the tiles, and eight a pixel; a compacted bucket has none.
    size_t Memory() const;

    /// Notes a use at tick `now` in milliseconds; kNever makes the bucket one that was never used.
    void Touch(uint32_t now);
    /// True when the bucket was used, and that is more than `timeout` milliseconds ago.
    bool IsIdle(uint32_t now, uint32_t timeout);
    /// Largest gap seen between two uses, in milliseconds.
    uint32_t MaxIdle();

private:
    template <class Fragment>
    FragmentReader<Fragment> Read(const std::vector<Fragment*>& heads, const TileStore<Fragment>& tiles, int x, int y,
                                  const void* from) const;

    HRendMode mode_;
    bool compacted_ = false;
    PixelRect rect_;
    std::mutex lock_; ///< guards the two fields below against other writers
    std::atomic<uint32_t> lastUse_{kNever};
    uint32_t maxIdle_ = 0;
    std::vector<HairFragment*> imageHeads_;
    std::vector<ShadowFragment*> shadowHeads_;
    std::unique_ptr<FragmentAllocator> pool_;
    TileStore<HairFragment> imageTiles_;
    TileStore<ShadowFragment> shadowTiles_;
};

template <class Fragment>
FragmentReader<Fragment> HRendBucket::Read(const std::vector<Fragment*>& heads, const TileStore<Fragment>& tiles, int x,
                                           int y, const void* from) const {
    if (!heads.empty())
        return FragmentReader<Fragment>(from ? static_cast<const Fragment*>(from) : heads[PixelIndex(x, y)]);
    if (tiles.IsEmpty()) return {};
    const TileGrid& grid = tiles.Grid();
    const int lx = x - rect_.x0, ly = y - rect_.y0;
    const PackedTile<Fragment>& tile = tiles.Tile(grid.TileOf(lx, ly));
    if (tile.IsEmpty()) return {};
    const uint32_t pixel = grid.PixelOf(lx, ly);
    const size_t begin =
        from ? size_t(static_cast<const PackedFragment<Fragment>*>(from) - tile.Rests()) : tile.PixelBegin(pixel);
    return {tile, begin, tile.PixelEnd(pixel)};
}
