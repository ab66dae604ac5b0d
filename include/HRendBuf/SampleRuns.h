#pragma once
// Sample runs: what one thread rasterises during a batch, kept per tile until the batch is merged.
//
// A bucket is cut into square tiles. Every thread appends its samples to runs of its own, one run a tile, each sample
// tagged with its pixel inside the tile and with the unit of work it belongs to. Storage is chunked and reused from
// batch to batch, so that appending is a compare, a copy and an add.

#include <bit>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "Base/HUtil/ThreadVector.h"
#include "DebugTools/SharedArray.h"
#include "HRendBuf/FragmentList.h"
#include "HRendBuf/PixelRect.h"
#include "HRendBuf/SampleLanes.h"
#include "sdk/point2.h"
#include "sdk/point3.h"

/// How a bucket is cut into tiles.
struct TileGrid {
    PixelRect bucket;
    int shift = 5; ///< a tile is 2^shift pixels wide and high
    int columns = 0, rows = 0;

    /// Tiles of 32 x 32 pixels, or of 64 x 64 for buckets that would have very many.
    explicit TileGrid(const PixelRect& rect = {});
    int Count() const { return columns * rows; }
    int TileOf(int lx, int ly) const { return (ly >> shift) * columns + (lx >> shift); }
    /// Pixel number inside its tile.
    uint32_t PixelOf(int lx, int ly) const {
        const int mask = (1 << shift) - 1;
        return uint32_t((ly & mask) << shift | (lx & mask));
    }
};

// A tag holds the pixel in its lower bits and the unit, counted from the batch's first, above them.
inline constexpr int kPixelBits = 12;
/// Units that one batch can tell apart.
inline constexpr uint32_t kMaxBatchUnits = 1u << (32 - kPixelBits);

/// A point with its tag.
template <class Point>
struct TaggedPoint {
    uint32_t tag;
    Point point;
    uint32_t Unit() const { return tag >> kPixelBits; }
    uint32_t Pixel() const { return tag & ((1u << kPixelBits) - 1); }
};

/// The runs of one thread, one a tile.
template <class Point>
class TileRuns {
public:
    using Record = TaggedPoint<Point>;
    static constexpr int kChunkRecords = 64;
    struct Chunk {
        Chunk* next;
        Record records[kChunkRecords];
        uint64_t spill; ///< what a block written over the last record ends in
    };

    /// Empties the runs for a bucket of `tiles` tiles.
    void Setup(int tiles);
    /// The place of the next record of `tile`. Storage grows by slabs; throws std::bad_alloc when
    /// memory is exhausted.
    Record& Append(int tile) {
        Cursor& c = cursors_[tile];
        if (c.pos == c.end) Grow(c, tile);
        return *c.pos++;
    }
    /// The places of the next `count` records of `tile`, or null where they do not lie side by side. Taken says how
    /// many of them were used.
    Record* Room(int tile, int count) {
        Cursor& c = cursors_[tile];
        return c.end - c.pos >= count ? c.pos : nullptr;
    }
    void Taken(int tile, Record* next) { cursors_[tile].pos = next; }
    /// Bytes of records in use since the last Reset, in whole chunks.
    size_t BytesInUse() const { return usedChunks_ * sizeof(Chunk); }
    /// Forgets all records; the storage stays.
    void Reset();

    /// Reads a tile's run in the order it was written.
    class Reader {
    public:
        Reader() = default;
        Reader(const TileRuns& runs, int tile) : end_(runs.cursors_[tile].pos), chunk_(runs.cursors_[tile].first) {
            if (chunk_) EnterChunk();
        }
        bool Done() const { return pos_ == stop_; }
        const Record& Get() const { return *pos_; }
        void Next() {
            if (++pos_ == stop_ && chunk_->next) {
                chunk_ = chunk_->next;
                EnterChunk();
            }
        }

    private:
        void EnterChunk() {
            pos_ = chunk_->records;
            stop_ = chunk_->next ? chunk_->records + kChunkRecords : end_;
        }
        const Record* end_ = nullptr;
        const Chunk* chunk_ = nullptr;
        const Record* pos_ = nullptr;
        const Record* stop_ = nullptr;
    };

private:
    struct Cursor {
        Record* pos = nullptr;
        Record* end = nullptr;
        Chunk* first = nullptr;
        Chunk* last = nullptr;
    };
    static constexpr size_t kSlabChunks = 128;

    void Grow(Cursor& c, int tile);

    ThreadVector<Cursor> cursors_;
    std::vector<int> touched_; ///< tiles with a run
    std::vector<diag::SharedArray<Chunk>> slabs_;
    size_t usedChunks_ = 0;
};

/// What one thread's rasteriser draws into: the runs of both passes, of which a bucket uses one.
class alignas(kThreadAlignment) SampleWriter {
public:
    /// The image pass needs no velocity; a sink that does sets this.
    static constexpr bool kWantsVelocity = false;

    void Setup(const TileGrid& grid);
    /// Samples from here on belong to this unit, counted from the batch's first one; below kMaxBatchUnits.
    void SetUnit(uint32_t unitInBatch) { unitTag_ = unitInBatch << kPixelBits; }
    void Reset();
    size_t BytesInUse() const { return image_.BytesInUse() + shadow_.BytesInUse(); }
    /// By how much that has grown since NewBytes was last called, or since Reset.
    size_t NewBytes() {
        const size_t bytes = BytesInUse();
        return bytes - std::exchange(countedBytes_, bytes);
    }

    /// A sample of the image pass at a pixel inside the bucket.
    void InsertImage(int x, int y, float z, const Point3& color, float coverage, float opacity, Point2) {
        Store(image_, x, y) = {z, opacity, coverage, Color(color)};
    }
    /// The same for the flagged ones of four pixels, of which the first is (x, y) and each next one lies a column, or a
    /// row, further on. Those that are not flagged may lie outside the bucket.
    template <bool InColumn>
    void InsertLanes(int x, int y, unsigned flags, const SampleLane* s) {
        if (!flags) return;
        const int first = std::countr_zero(flags), last = std::bit_width(flags) - 1;
        const int lx = x - grid_.bucket.x0 + (InColumn ? 0 : first), ly = y - grid_.bucket.y0 + (InColumn ? first : 0);
        const int along = InColumn ? ly : lx, tile = grid_.TileOf(lx, ly);
        auto* record = (along ^ (along + last - first)) >> grid_.shift ? nullptr : image_.Room(tile, 4);
        if (!record) return InsertOneByOne<InColumn>(x, y, flags, s);
        const uint32_t step = InColumn ? 1u << grid_.shift : 1;
        uint32_t tag = (unitTag_ | grid_.PixelOf(lx, ly)) - unsigned(first) * step;
        // Every one is written, and overwritten when it is not flagged: which are is as good as random.
        for (int i = 0; i < 4; ++i, tag += step) {
            record->tag = tag;
            std::memcpy(static_cast<void*>(&record->point), &s[i], sizeof s[i]);
            record += flags >> i & 1;
        }
        image_.Taken(tile, record);
    }
    /// The same for the shadow pass.
    void InsertShadow(int x, int y, float z, float opacity, float coverage) {
        Store(shadow_, x, y) = {z, opacity, coverage};
    }

    const TileRuns<ImagePoint>& Runs(const HairFragment*) const { return image_; }
    const TileRuns<ShadowPoint>& Runs(const ShadowFragment*) const { return shadow_; }

private:
    template <bool InColumn>
    void InsertOneByOne(int x, int y, unsigned flags, const SampleLane* s) {
        for (; flags; flags &= flags - 1) {
            const int i = std::countr_zero(flags);
            Store(image_, InColumn ? x : x + i, InColumn ? y + i : y) = s[i].Point();
        }
    }
    template <class Point>
    Point& Store(TileRuns<Point>& runs, int x, int y) {
        const int lx = x - grid_.bucket.x0, ly = y - grid_.bucket.y0;
        auto& record = runs.Append(grid_.TileOf(lx, ly));
        record.tag = unitTag_ | grid_.PixelOf(lx, ly);
        return record.point;
    }

    TileGrid grid_;
    uint32_t unitTag_ = 0;
    size_t countedBytes_ = 0;
    TileRuns<ImagePoint> image_;
    TileRuns<ShadowPoint> shadow_;
};
