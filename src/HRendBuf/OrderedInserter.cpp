#include "HRendBuf/OrderedInserter.h"

#include <algorithm>

void OrderedInserter::Setup(const PixelRect& bucket, int threads, size_t bytesPerThread) {
    grid_ = TileGrid(bucket);
    leastBound_ = bound_ = bytesPerThread * size_t(threads);
    batchBytes_ = 0;
    firstUnit_ = 0;
    nextTile_ = 0;
    writers_.clear();
    for (int i = 0; i < threads; ++i) {
        writers_.push_back(std::make_unique<SampleWriter>());
        writers_.back()->Setup(grid_);
    }
    image_.Setup(grid_, threads);
    shadow_.Setup(grid_, threads);
}

void OrderedInserter::ReleaseSamples() {
    writers_.clear();
    image_.ReleaseWorkers();
    shadow_.ReleaseWorkers();
}

void OrderedInserter::Release() {
    writers_.clear();
    image_.Release();
    shadow_.Release();
}

bool OrderedInserter::Full(int thread, uint32_t nextUnit) {
    const size_t more = writers_[size_t(thread)]->NewBytes();
    return batchBytes_.fetch_add(more, std::memory_order_relaxed) + more >= bound_ ||
           nextUnit - firstUnit_ >= kMaxBatchUnits - kMaxThreads;
}

template <class Fragment>
void OrderedInserter::MergeTiles(int thread, Fragment** heads, const FragmentStore& store) {
    constexpr const Fragment* kKind = nullptr;
    auto& tiles = Tiles(kKind);
    typename TileStore<Fragment>::Reader readers[kMaxThreads];
    for (int tile; (tile = NextTile()) >= 0;) {
        int count = 0;
        for (const auto& writer : writers_) {
            readers[count] = {writer->Runs(kKind), tile};
            if (!readers[count].Done()) ++count;
        }
        tiles.Merge(tile, thread, readers, count, heads, store);
    }
}

template <class Fragment>
void OrderedInserter::ToLists(Fragment** heads, const FragmentStore& store) {
    auto& tiles = Tiles(static_cast<const Fragment*>(nullptr));
    for (int tile; (tile = NextTile()) >= 0;) tiles.ToLists(tile, heads, store);
}

template void OrderedInserter::MergeTiles(int, HairFragment**, const FragmentStore&);
template void OrderedInserter::MergeTiles(int, ShadowFragment**, const FragmentStore&);
template void OrderedInserter::ToLists(HairFragment**, const FragmentStore&);
template void OrderedInserter::ToLists(ShadowFragment**, const FragmentStore&);

void OrderedInserter::EndBatch(uint32_t nextUnit) {
    for (auto& writer : writers_) writer->Reset();
    firstUnit_ = nextUnit;
    nextTile_ = 0;
    bound_ = std::max(leastBound_, FragmentBytes() / 4);
    batchBytes_ = 0;
}

size_t OrderedInserter::SampleBytes() const {
    size_t bytes = 0;
    for (const auto& writer : writers_) bytes += writer->BytesInUse();
    return bytes;
}
