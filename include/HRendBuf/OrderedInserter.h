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
//     each thread t: take the next unit u; BeginUnit(t, u); draw it into Writer(t); stop taking when any Full(i)
//     barrier
//     each thread t: MergeTiles(t, ...)
//     barrier
//     one thread: EndBatch(number of the next unit)

#include <atomic>
#include <memory>
#include <vector>

#include "HRendBuf/SampleRuns.h"

class OrderedInserter {
public:
    /// Most threads that can take part.
    static constexpr int kMaxThreads = FragmentPool::kSlots;

    /// Prepares for a bucket; the first unit is number 0. A thread is Full from `bytesPerThread` bytes of samples on;
    /// it exceeds that by what its last unit draws.
    void Setup(const PixelRect& bucket, int threads, size_t bytesPerThread);
    int ThreadCount() const { return int(writers_.size()); }
    SampleWriter& Writer(int thread) { return *writers_[size_t(thread)]; }

    /// `thread` begins to draw `unit`, which is above its last one and in reach of the batch (see Full).
    void BeginUnit(int thread, uint32_t unit) { Writer(thread).SetUnit(unit - firstUnit_); }
    /// True when the batch should end: this thread's runs have reached their bound, or unit numbers run out.
    bool Full(int thread, uint32_t nextUnit) const {
        return writers_[size_t(thread)]->BytesInUse() >= bytesPerThread_ ||
               nextUnit - firstUnit_ >= kMaxBatchUnits - kMaxThreads;
    }
    /// Merges tiles into `heads` (row-major over the bucket) until none is left. Every thread calls it once a batch,
    /// all drawing being done; fragments come from the slot in `store`.
    template <class Fragment>
    void MergeTiles(Fragment** heads, const FragmentStore& store);
    /// Forgets the batch's samples after all threads have merged. `nextUnit` is the first number of the next batch.
    void EndBatch(uint32_t nextUnit);
    /// Bytes of samples held now, over all threads.
    size_t BytesInUse() const;

private:
    TileGrid grid_;
    std::vector<std::unique_ptr<SampleWriter>> writers_;
    size_t bytesPerThread_ = 0;
    uint32_t firstUnit_ = 0;
    std::atomic<int> nextTile_{0};
};
