#include "HRendBuf/OrderedInserter.h"

#include <type_traits>

namespace {

/// One tile of a bucket's lists.
template <class Fragment>
class TileMerger {
public:
    TileMerger(const TileGrid& grid, int tile, Fragment** heads, const FragmentStore& store)
        : store_(store), stride_(grid.bucket.Width()), shift_(grid.shift) {
        const int tx = tile % grid.columns, ty = tile / grid.columns;
        heads_ = heads + (ptrdiff_t(ty) << shift_) * stride_ + (ptrdiff_t(tx) << shift_);
    }

    template <class Record>
    void Insert(const Record& record) {
        const uint32_t pixel = record.Pixel();
        const uint32_t mask = (1u << shift_) - 1;
        InsertPoint(heads_[ptrdiff_t(pixel >> shift_) * stride_ + (pixel & mask)], record.point, store_);
    }

    /// Inserts the rest of one run.
    template <class Reader>
    void InsertAll(Reader& reader) {
        for (; !reader.Done(); reader.Next()) Insert(reader.Get());
    }

    /// Inserts the samples of the unit that the run stands at.
    template <class Reader>
    void InsertUnit(Reader& reader) {
        const uint32_t unit = reader.Get().Unit();
        for (; !reader.Done() && reader.Get().Unit() == unit; reader.Next()) Insert(reader.Get());
    }

private:
    FragmentStore store_;
    Fragment** heads_;
    ptrdiff_t stride_;
    int shift_;
};

/// Merges the runs of several threads by rising unit; `count` runs, none of them done.
template <class Merger, class Reader>
void MergeByUnit(Merger& merger, Reader* readers, int count) {
    while (count > 1) {
        int best = 0;
        for (int i = 1; i < count; ++i)
            if (readers[i].Get().Unit() < readers[best].Get().Unit()) best = i;
        merger.InsertUnit(readers[best]);
        if (readers[best].Done()) readers[best] = readers[--count];
    }
    if (count == 1) merger.InsertAll(readers[0]);
}

} // namespace

void OrderedInserter::Setup(const PixelRect& bucket, int threads, size_t bytesPerThread) {
    grid_ = TileGrid(bucket);
    bytesPerThread_ = bytesPerThread;
    firstUnit_ = 0;
    nextTile_ = 0;
    writers_.resize(size_t(threads));
    for (auto& writer : writers_) {
        if (!writer) writer = std::make_unique<SampleWriter>();
        writer->Setup(grid_);
    }
}

template <class Fragment>
void OrderedInserter::MergeTiles(Fragment** heads, const FragmentStore& store) {
    using Runs = std::remove_cvref_t<decltype(writers_[0]->Runs(static_cast<Fragment*>(nullptr)))>;
    using Reader = typename Runs::Reader;
    for (int tile; (tile = nextTile_.fetch_add(1, std::memory_order_relaxed)) < grid_.Count();) {
        Reader readers[kMaxThreads];
        int count = 0;
        for (const auto& writer : writers_) {
            readers[count] = Reader(writer->Runs(static_cast<Fragment*>(nullptr)), tile);
            if (!readers[count].Done()) ++count;
        }
        TileMerger<Fragment> merger(grid_, tile, heads, store);
        MergeByUnit(merger, readers, count);
    }
}

template void OrderedInserter::MergeTiles(HairFragment**, const FragmentStore&);
template void OrderedInserter::MergeTiles(ShadowFragment**, const FragmentStore&);

void OrderedInserter::EndBatch(uint32_t nextUnit) {
    for (auto& writer : writers_) writer->Reset();
    firstUnit_ = nextUnit;
    nextTile_ = 0;
}

size_t OrderedInserter::BytesInUse() const {
    size_t bytes = 0;
    for (const auto& writer : writers_) bytes += writer->BytesInUse();
    return bytes;
}
