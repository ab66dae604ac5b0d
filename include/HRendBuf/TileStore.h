#pragma once
// The packed tiles of a bucket, and how batches of samples are merged into them.

#include <memory>
#include <vector>

#include "HRendBuf/OpenTile.h"
#include "HRendBuf/SampleRuns.h"

/// A bucket's tiles for one kind of fragment. A tile is worked on by one thread at a time.
template <class Fragment>
class TileStore {
public:
    using Point = typename PointOf<Fragment>::Type;
    using Runs = TileRuns<Point>;
    using Reader = typename Runs::Reader;

    /// Starts with empty tiles.
    void Setup(const TileGrid& grid, int threads);
    /// Frees what merging needs; the tiles stay.
    void ReleaseWorkers() { workers_.clear(); }
    /// Frees all memory.
    void Release();
    /// Inserts the runs of several threads into a tile, in the order of their units. `heads` are the bucket's lists,
    /// from which the tile is fetched when it is there.
    void Merge(int tile, int thread, Reader* readers, int count, Fragment** heads, const FragmentStore& store);
    /// Turns a tile into the bucket's lists. Fragments that the pool cannot give are left out.
    void ToLists(int tile, Fragment** heads, const FragmentStore& store);

    bool IsEmpty() const { return tiles_.empty(); }
    const TileGrid& Grid() const { return grid_; }
    const PackedTile<Fragment>& Tile(int tile) const { return tiles_[size_t(tile)]; }
    /// All packed fragments, and their bytes.
    size_t Count() const;
    size_t Bytes() const { return Count() * (sizeof(float) + sizeof(PackedFragment<Fragment>)); }

private:
    size_t PixelsOfTile() const { return size_t(1) << (2 * grid_.shift); }
    void FetchFromLists(int tile, Fragment** heads, const FragmentStore& store);
    template <class Visit>
    void ForEachPixel(int tile, const Visit& visit) const;

    TileGrid grid_;
    std::vector<PackedTile<Fragment>> tiles_;
    std::vector<uint8_t> inLists_; ///< a tile's fragments are in the bucket's lists
    std::vector<std::unique_ptr<OpenTile<Fragment>>> workers_;
};
