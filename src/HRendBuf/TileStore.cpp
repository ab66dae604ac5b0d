#include "HRendBuf/TileStore.h"

#include <algorithm>

namespace {

/// Visits the records of several threads' runs by rising unit; within a unit as they were written.
template <class Reader, class Visit>
void VisitByUnit(Reader* readers, int count, const Visit& visit) {
    while (count > 1) {
        int best = 0;
        for (int i = 1; i < count; ++i)
            if (readers[i].Get().Unit() < readers[best].Get().Unit()) best = i;
        Reader& reader = readers[best];
        const uint32_t unit = reader.Get().Unit();
        for (; !reader.Done() && reader.Get().Unit() == unit; reader.Next()) visit(reader.Get());
        if (reader.Done()) reader = readers[--count];
    }
    for (; count == 1 && !readers[0].Done(); readers[0].Next()) visit(readers[0].Get());
}

} // namespace

template <class Fragment>
void TileStore<Fragment>::Setup(const TileGrid& grid, int threads) {
    Release();
    grid_ = grid;
    tiles_.resize(size_t(grid.Count()));
    inLists_.assign(size_t(grid.Count()), 0);
    for (int i = 0; i < threads; ++i) workers_.push_back(std::make_unique<OpenTile<Fragment>>());
}

template <class Fragment>
void TileStore<Fragment>::Release() {
    std::vector<PackedTile<Fragment>>().swap(tiles_);
    inLists_.clear();
    workers_.clear();
}

template <class Fragment>
size_t TileStore<Fragment>::Count() const {
    size_t count = 0;
    for (const auto& tile : tiles_) count += tile.Count();
    return count;
}

/// Visits the pixels of a tile that lie in the bucket, with their number in the tile and in the bucket.
template <class Fragment>
template <class Visit>
void TileStore<Fragment>::ForEachPixel(int tile, const Visit& visit) const {
    const int size = 1 << grid_.shift, width = grid_.bucket.Width();
    const int x0 = (tile % grid_.columns) << grid_.shift, y0 = (tile / grid_.columns) << grid_.shift;
    const int x1 = std::min(x0 + size, width), y1 = std::min(y0 + size, grid_.bucket.Height());
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) visit(size_t(grid_.PixelOf(x, y)), size_t(y) * size_t(width) + size_t(x));
}

template <class Fragment>
void TileStore<Fragment>::Merge(int tile, int thread, Reader* readers, int count, Fragment** heads,
                                const FragmentStore& store) {
    if (count == 0) return;
    if (inLists_[size_t(tile)]) FetchFromLists(tile, heads, store);
    OpenTile<Fragment>& open = *workers_[size_t(thread)];
    open.Open(tiles_[size_t(tile)], PixelsOfTile(), store.depthTolerance);
    VisitByUnit(readers, count, [&](const auto& r) { open.Insert(r.Pixel(), r.point); });
    open.Close(tiles_[size_t(tile)]);
}

template <class Fragment>
void TileStore<Fragment>::FetchFromLists(int tile, Fragment** heads, const FragmentStore& store) {
    size_t total = 0;
    ForEachPixel(tile, [&](size_t, size_t pixel) {
        for (const Fragment* f = heads[pixel]; f; f = f->next) ++total;
    });
    PackedTile<Fragment>& packed = tiles_[size_t(tile)];
    inLists_[size_t(tile)] = 0;
    if (total == 0 || !packed.Resize(PixelsOfTile(), total)) return;
    size_t at = 0;
    ForEachPixel(tile, [&](size_t inTile, size_t pixel) {
        for (Fragment* f = heads[pixel]; f;) {
            packed.Depths()[at] = f->zMax;
            packed.Rests()[at++] = Pack(*f);
            Fragment* next = f->next;
            store.pool->Free(f, store.slot);
            f = next;
        }
        heads[pixel] = nullptr;
        packed.SetPixelEnd(inTile, at);
    });
    // Pixels of the tile outside the bucket are empty.
    for (size_t p = 1; p < PixelsOfTile(); ++p)
        packed.SetPixelEnd(p, std::max(packed.PixelEnd(p), packed.PixelEnd(p - 1)));
}

template <class Fragment>
void TileStore<Fragment>::ToLists(int tile, Fragment** heads, const FragmentStore& store) {
    PackedTile<Fragment>& packed = tiles_[size_t(tile)];
    if (inLists_[size_t(tile)]) return;
    inLists_[size_t(tile)] = 1;
    if (packed.IsEmpty()) return;
    ForEachPixel(tile, [&](size_t inTile, size_t pixel) {
        Fragment** link = &heads[pixel];
        for (size_t i = packed.PixelBegin(inTile); i < packed.PixelEnd(inTile); ++i) {
            void* block = store.pool->Alloc(store.slot);
            if (!block) break;
            *link = new (block) Fragment(Unpack<Fragment>(packed.Depths()[i], packed.Rests()[i]));
            link = &(*link)->next;
        }
        *link = nullptr;
    });
    packed.Clear();
}

template class TileStore<HairFragment>;
template class TileStore<ShadowFragment>;
