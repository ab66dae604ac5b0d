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
    inLists_.assign(size_t(grid.Count()), 1);
    for (int i = 0; i < threads; ++i) workers_.push_back(std::make_unique<Worker>());
}

template <class Fragment>
void TileStore<Fragment>::Release() {
    std::vector<PackedTile<Fragment>>().swap(tiles_);
    inLists_.clear();
    workers_.clear();
    bytes_ = 0;
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
bool TileStore<Fragment>::Sort(Sorted& sorted, const Reader* readers, int count) const {
    const size_t pixels = PixelsOfTile();
    sorted.begin.assign(pixels + 1, 0);
    for (int i = 0; i < count; ++i)
        for (Reader r = readers[i]; !r.Done(); r.Next()) ++sorted.begin[r.Get().Pixel() + 1];
    for (size_t p = 0; p < pixels; ++p) sorted.begin[p + 1] += sorted.begin[p];
    const size_t total = sorted.begin[pixels];
    if (total > sorted.capacity) {
        sorted.capacity = 0;
        sorted.points.reset(new (std::nothrow) Point[total + total / 4]);
        if (!sorted.points) return false;
        sorted.capacity = total + total / 4;
    }
    // Scattering moves every pixel's beginning to its end, which is the beginning of the next one.
    Reader rest[FragmentPool::kSlots];
    std::copy_n(readers, count, rest);
    VisitByUnit(rest, count, [&](const auto& r) { sorted.points[sorted.begin[r.Pixel()]++] = r.point; });
    for (size_t p = pixels; p > 0; --p) sorted.begin[p] = sorted.begin[p - 1];
    sorted.begin[0] = 0;
    return true;
}

template <class Fragment>
void TileStore<Fragment>::Assign(PackedTile<Fragment>& tile, const PackedScratch<Fragment>& scratch) {
    const size_t before = tile.Bytes();
    if (tile.Assign(scratch)) bytes_.fetch_add(tile.Bytes() - before, std::memory_order_relaxed);
}

template <class Fragment>
void TileStore<Fragment>::Rebuild(PackedTile<Fragment>& tile, Worker& worker, float tolerance) {
    const Sorted& sorted = worker.sorted;
    PackedScratch<Fragment>& out = worker.scratch;
    const size_t pixels = PixelsOfTile();
    if (!out.Start(tile.Count() + sorted.begin[pixels], pixels)) return;
    for (size_t p = 0; p < pixels;) {
        size_t q = p;
        while (q < pixels && sorted.begin[q + 1] == sorted.begin[q]) ++q;
        if (q > p) tile.AppendTo(out, p, q); // a stretch without new samples
        if (q == pixels) break;
        const size_t begin = out.count;
        tile.AppendTo(out, q, q + 1);
        PackedList<Fragment> list(out.zMax.get() + begin, out.rest.get() + begin, uint32_t(out.count - begin),
                                  tolerance);
        for (uint32_t i = sorted.begin[q]; i < sorted.begin[q + 1]; ++i) list.Insert(sorted.points[i]);
        out.count = begin + list.Count();
        out.ends[q] = uint32_t(out.count);
        p = q + 1;
    }
    Assign(tile, out);
}

template <class Fragment>
void TileStore<Fragment>::Merge(int tile, int thread, const Reader* readers, int count, Fragment** heads,
                                const FragmentStore& store) {
    if (count == 0) return;
    Worker& worker = *workers_[size_t(thread)];
    if (inLists_[size_t(tile)]) FetchFromLists(tile, worker, heads, store);
    if (Sort(worker.sorted, readers, count)) Rebuild(tiles_[size_t(tile)], worker, store.depthTolerance);
}

template <class Fragment>
void TileStore<Fragment>::FetchFromLists(int tile, Worker& worker, Fragment** heads, const FragmentStore& store) {
    size_t total = 0;
    ForEachPixel(tile, [&](size_t, size_t pixel) {
        for (const Fragment* f = heads[pixel]; f; f = f->next) ++total;
    });
    inLists_[size_t(tile)] = 0;
    if (total == 0) return;
    PackedScratch<Fragment>& out = worker.scratch;
    if (!out.Start(total, PixelsOfTile())) return;
    std::fill(out.ends.begin(), out.ends.end(), 0);
    ForEachPixel(tile, [&](size_t inTile, size_t pixel) {
        for (Fragment* f = heads[pixel]; f;) {
            out.zMax[out.count] = f->zMax;
            auto& packed = out.rest[out.count++];
            packed.zMin = f->zMin;
            packed.opacity = f->opacity;
            packed.coverage = f->coverage;
            CopyColor(packed, *f);
            Fragment* next = f->next;
            store.pool->Free(f, store.slot);
            f = next;
        }
        heads[pixel] = nullptr;
        out.ends[inTile] = uint32_t(out.count);
    });
    // Pixels of the tile outside the bucket are empty.
    for (size_t p = 1; p < out.ends.size(); ++p) out.ends[p] = std::max(out.ends[p], out.ends[p - 1]);
    Assign(tiles_[size_t(tile)], out);
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
            auto* f = static_cast<Fragment*>(store.pool->Alloc(store.slot));
            if (!f) break;
            packed.Write(i, *f);
            *link = f;
            link = &f->next;
        }
        *link = nullptr;
    });
    bytes_.fetch_sub(packed.Bytes(), std::memory_order_relaxed);
    packed.Clear();
}

template class TileStore<HairFragment>;
template class TileStore<ShadowFragment>;
