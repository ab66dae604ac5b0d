#pragma once
// The ordered path into a bucket's fragment lists: no lock for a sample, and lists that do not depend on threads.
//
// Work comes as units with rising numbers (runs of consecutive strands of one face); one thread draws a whole unit, and
// any thread's units rise. A batch holds every unit from its first to its last. Then all threads merge: a tile has one
// owner at a time, which inserts the samples of all threads in the order of their units. So a pixel's list is exactly
// what one thread that draws all units in order would make, whatever the threads, tiles, batches and bucket borders
// are.
//
//   Setup(bucket, threads, bytes)
//   repeat
//     each thread t: take the next unit u; BeginUnit(t, u); draw it into Writer(t); stop taking when anyone is Full
//     barrier
//     each thread t: MergeTiles(t, ...)
//     barrier
//     one thread: EndBatch(number of the next unit)
//
// What comes out are packed tiles (PackedTile), which the finished bucket takes over, or which ToLists turns into
// linked lists. A batch may grow with them, to a quarter of their size, so that rebuilding tiles costs a bounded share
// of the time.

#include <atomic>

#include "HRendBuf/TileStore.h"

class OrderedInserter {
public:
    /// Most threads that can take part.
    static constexpr int kMaxThreads = FragmentPool::kSlots;

    /// Prepares for a bucket; the first unit is number 0. A batch is Full from `bytesPerThread` bytes of samples for
    /// each thread on (or more, see above); it exceeds that by what the last units draw.
    void Setup(const PixelRect& bucket, int threads, size_t bytesPerThread);
    /// Frees the storage of samples; no batch may follow before the next Setup.
    void ReleaseSamples();
    /// Frees all memory.
    void Release();
    /// The bucket's tiles; of both kinds, one is empty.
    TileStore<HairFragment>& ImageTiles() { return image_; }
    TileStore<ShadowFragment>& ShadowTiles() { return shadow_; }
    int ThreadCount() const { return int(writers_.size()); }
    SampleWriter& Writer(int thread) { return *writers_[size_t(thread)]; }

    /// `thread` begins to draw `unit`, which is above its last one.
    void BeginUnit(int thread, uint32_t unit) { Writer(thread).SetUnit(unit - firstUnit_); }
    /// True when the batch should end: the samples of all threads have reached their bound, or `nextUnit` comes close
    /// to the kMaxBatchUnits that a batch can tell apart. `thread` asks after each of its units.
    bool Full(int thread, uint32_t nextUnit);
    /// Merges tiles until none is left. Every thread calls it once a batch, all drawing being done. `heads` are the
    /// bucket's lists, row-major; what they hold is fetched into the tiles. They may be null as long as there was no
    /// ToLists. The store's slot is the thread's own.
    template <class Fragment>
    void MergeTiles(int thread, Fragment** heads, const FragmentStore& store);
    /// Forgets the batch's samples after all threads have merged. `nextUnit` is the first number of the next batch.
    void EndBatch(uint32_t nextUnit);
    /// Turns tiles into the bucket's lists until none is left. Any number of threads call it once, no batch being open.
    template <class Fragment>
    void ToLists(Fragment** heads, const FragmentStore& store);
    /// To be called after ToLists is done.
    void EndToLists() { nextTile_ = 0; }

    /// Bytes of samples of the open batch.
    size_t SampleBytes() const;
    /// Bytes of packed fragments.
    size_t FragmentBytes() const { return image_.Bytes() + shadow_.Bytes(); }

private:
    TileStore<HairFragment>& Tiles(const HairFragment*) { return image_; }
    TileStore<ShadowFragment>& Tiles(const ShadowFragment*) { return shadow_; }
    int NextTile() {
        const int tile = nextTile_.fetch_add(1, std::memory_order_relaxed);
        return tile < grid_.Count() ? tile : -1;
    }

    TileGrid grid_;
    std::vector<std::unique_ptr<SampleWriter>> writers_;
    TileStore<HairFragment> image_;
    TileStore<ShadowFragment> shadow_;
    size_t leastBound_ = 0, bound_ = 0; ///< bytes of samples of all threads
    std::atomic<size_t> batchBytes_{0}; ///< of samples that Full has seen
    uint32_t firstUnit_ = 0;
    std::atomic<int> nextTile_{0};
};
