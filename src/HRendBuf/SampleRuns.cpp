#include "HRendBuf/SampleRuns.h"

#include <new>

TileGrid::TileGrid(const PixelRect& rect) : bucket(rect) {
    constexpr int kManyTiles = 2048;
    for (shift = 5;; ++shift) {
        const int size = 1 << shift;
        columns = (rect.Width() + size - 1) >> shift;
        rows = (rect.Height() + size - 1) >> shift;
        if (Count() <= kManyTiles || shift * 2 == kPixelBits) return;
    }
}

template <class Point>
void TileRuns<Point>::Setup(int tiles) {
    cursors_.assign(size_t(tiles), Cursor());
    touched_.clear();
    usedChunks_ = 0;
}

template <class Point>
void TileRuns<Point>::Reset() {
    for (int tile : touched_) cursors_[size_t(tile)] = Cursor();
    touched_.clear();
    usedChunks_ = 0;
}

template <class Point>
void TileRuns<Point>::Grow(Cursor& c, int tile) {
    // All that may fail for want of memory comes before the run changes.
    if (!c.last) touched_.push_back(tile);
    const size_t slab = usedChunks_ / kSlabChunks;
    if (slab == slabs_.size()) {
        diag::SharedArray<Chunk> chunks = SHARED_ARRAY(Chunk, kSlabChunks);
        if (!chunks) throw std::bad_alloc();
        slabs_.push_back(std::move(chunks));
    }
    Chunk* chunk = &slabs_[slab][usedChunks_ % kSlabChunks];
    ++usedChunks_;
    chunk->next = nullptr;
    if (c.last)
        c.last->next = chunk;
    else
        c.first = chunk;
    c.last = chunk;
    c.pos = chunk->records;
    c.end = chunk->records + kChunkRecords;
}

template class TileRuns<ImagePoint>;
template class TileRuns<ShadowPoint>;

void SampleWriter::Setup(const TileGrid& grid) {
    grid_ = grid;
    unitTag_ = 0;
    countedBytes_ = 0;
    image_.Setup(grid.Count());
    shadow_.Setup(grid.Count());
}

void SampleWriter::Reset() {
    countedBytes_ = 0;
    image_.Reset();
    shadow_.Reset();
}
