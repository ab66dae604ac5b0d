#pragma once
// The packed tiles of a bucket, and how batches of samples are merged into them.

#include <atomic>
#include <memory>
#include <vector>

#include "HRendBuf/PackedTile.h"
#include "HRendBuf/SampleRuns.h"

template <class Fragment>
struct PointOf;
template <>
struct PointOf<HairFragment> {
    using Type = ImagePoint;
};
template <>
struct PointOf<ShadowFragment> {
    using Type = ShadowPoint;
};

/// A bucket's tiles for one kind of fragment. A tile is worked on by one thread at a time.
template <class Fragment>
class TileStore {
public:
    using Point = typename PointOf<Fragment>::Type;
    using Runs = TileRuns<Point>;
    using Reader = typename Runs::Reader;

    /// Starts with every tile in the bucket's lists.
    void Setup(const TileGrid& grid, int threads);
    /// Frees all memory.
    void Release();
    /// Inserts the runs of several threads into a tile, in the order of their units. `heads` are the bucket's lists,
    /// from which the tile is fetched when it is there.
    void Merge(int tile, int thread, const Reader* readers, int count, Fragment** heads, const FragmentStore& store);
    /// Turns a tile into the bucket's lists. Fragments that the pool cannot give are left out.
    void ToLists(int tile, Fragment** heads, const FragmentStore& store);
    /// Bytes of all packed fragments.
    size_t Bytes() const { return bytes_.load(std::memory_order_relaxed); }

private:
    /// One thread's samples of a tile, sorted by pixel, in order inside a pixel.
    struct Sorted {
        std::unique_ptr<Point[]> points;
        size_t capacity = 0;
        std::vector<uint32_t> begin; ///< of each pixel's; one entry more than there are pixels
    };
    struct Worker {
        Sorted sorted;
        PackedScratch<Fragment> scratch;
    };

    size_t PixelsOfTile() const { return size_t(1) << (2 * grid_.shift); }
    bool Sort(Sorted& sorted, const Reader* readers, int count) const;
    void FetchFromLists(int tile, Worker& worker, Fragment** heads, const FragmentStore& store);
    void Rebuild(PackedTile<Fragment>& tile, Worker& worker, float tolerance);
    void Assign(PackedTile<Fragment>& tile, const PackedScratch<Fragment>& scratch);
    template <class Visit>
    void ForEachPixel(int tile, const Visit& visit) const;

    TileGrid grid_;
    std::vector<PackedTile<Fragment>> tiles_;
    std::vector<uint8_t> inLists_; ///< a tile's fragments are in the bucket's lists
    std::vector<std::unique_ptr<Worker>> workers_;
    std::atomic<size_t> bytes_{0};
};
