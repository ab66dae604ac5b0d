#include "render/band_renderer.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "render/effect_progress.h"

namespace host {

namespace {

/// Lines of a band: a few bands for every thread, but two more lines are looked at, so higher bands waste less.
int BandLines(int lines, int threads) {
    return std::clamp(lines / (8 * threads), 16, 64);
}

/// Adds a weighted sample, but for its depth.
void Add(PixelSample& sum, const PixelSample& s, float weight) {
    sum.color += s.color * weight;
    sum.background += s.background * weight;
    sum.alpha += s.alpha * weight;
}

} // namespace

/// What a thread keeps from band to band.
struct BandRenderer::Worker {
    explicit Worker(RenderContext& render) : sampler(render) {}
    CameraSampler sampler;
    PixelCentres centres;
    std::vector<PixelSample> rows, line; ///< see RenderFiltered, FilterRows
};

BandRenderer::BandRenderer(Core& core, RenderContext& render, const FrameSettings& settings, int threads, Picture& out,
                           IProgressIndicator* progress, int parity)
    : core_(core), render_(render), settings_(settings), region_(RegionOf(settings)),
      filter_(settings.filter, settings.filterWidth, settings.samples), threads_(threads),
      bandLines_(BandLines(region_.y1 - region_.y0, threads)), out_(out), progress_(progress), parity_(parity),
      channels_(core, render, out), effects_(core, progress, mutex_, linesDone_, region_.y1 - region_.y0) {
    if (filter_.Plain()) return;
    for (int x = region_.x0; x < region_.x1; ++x) columns_.push_back(filter_.TapsOf(x, settings.width));
}

bool BandRenderer::Run() {
    std::vector<std::thread> others;
    for (int i = 1; i < threads_; ++i) others.emplace_back([this] { Work(); });
    Work();
    for (std::thread& t : others) t.join();
    if (error_) std::rethrow_exception(error_);
    return !Aborted();
}

bool BandRenderer::Aborted() {
    if (core_.CheckForRenderAbort()) stop_ = true;
    return stop_.load(std::memory_order_relaxed);
}

void BandRenderer::Work() {
    const int bands = (region_.y1 - region_.y0 + bandLines_ - 1) / bandLines_;
    Worker worker(render_);
    try {
        for (int band = nextBand_++; band < bands && RenderBand(worker, band); band = nextBand_++) {
        }
    } catch (...) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!error_) error_ = std::current_exception();
        stop_ = true;
    }
    segments_ += worker.sampler.Segments();
}

bool BandRenderer::RenderBand(Worker& worker, int band) {
    const int first = region_.y0 + band * bandLines_, end = std::min(first + bandLines_, region_.y1);
    if (!(filter_.Plain() ? RenderPlain(worker, first, end) : RenderFiltered(worker, first, end))) return false;
    BandDone(end - first);
    return true;
}

// Looks through the centres down to line `last`; false when the render was aborted.
bool BandRenderer::Look(Worker& worker, int last) {
    return worker.centres.LookDownTo(last, worker.sampler, [this] { return Aborted(); });
}

bool BandRenderer::RenderPlain(Worker& worker, int first, int end) {
    const int m = settings_.samples > 1 ? 1 : 0; // edges need the pixels around
    worker.centres.Begin(settings_, region_.x0 - m, region_.x1 + m, first - m, end + m, 1 + 2 * m);
    CameraSampler& sampler = worker.sampler;
    const PixelCentres& centres = worker.centres;
    uint64_t samples = 0;
    for (int y = first; y < end; ++y) {
        if (!Look(worker, y + m)) return false;
        if (!InField(y)) continue;
        if (Aborted()) return false;
        for (int x = region_.x0; x < region_.x1; ++x) {
            const bool edge = settings_.samples > 1 && centres.Edge(x, y);
            const SurfaceSample& centre = centres.At(x, y);
            Put(x, y, edge ? Supersample(worker, x, y) : sampler.Shade(float(x) + 0.5f, float(y) + 0.5f, centre),
                centre);
            samples += edge ? uint64_t(settings_.samples) * uint64_t(settings_.samples) : 1u;
        }
    }
    samples_ += samples;
    return true;
}

// Sample (i, j) of a pixel's grid; the middle one of odd grids is known.
PixelSample BandRenderer::GridSample(Worker& worker, int x, int y, int i, int j) {
    const int n = settings_.samples;
    if (2 * i + 1 == n && 2 * j + 1 == n)
        return worker.sampler.Shade(float(x) + 0.5f, float(y) + 0.5f, worker.centres.At(x, y));
    return worker.sampler.Shade(float(x) + (float(i) + 0.5f) / float(n), float(y) + (float(j) + 0.5f) / float(n));
}

PixelSample BandRenderer::Supersample(Worker& worker, int x, int y) {
    const int n = settings_.samples;
    PixelSample sum;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const PixelSample s = GridSample(worker, x, y, i, j);
            Add(sum, s, 1.0f);
            sum.z = std::max(sum.z, s.z);
        }
    const float weight = 1.0f / float(n * n);
    sum.color *= weight;
    sum.background *= weight;
    sum.alpha *= weight;
    return sum;
}

// The n lines of a pixel's samples, `step` apart; a pixel that is no edge has the same one everywhere. Returns how many
// were taken.
uint64_t BandRenderer::SampleBlock(Worker& worker, int x, int y, PixelSample* block, size_t step) {
    const int n = settings_.samples;
    const bool edge = n > 1 && worker.centres.Edge(x, y);
    PixelSample centre;
    if (!edge) centre = worker.sampler.Shade(float(x) + 0.5f, float(y) + 0.5f, worker.centres.At(x, y));
    for (int j = 0; j < n; ++j, block += step)
        for (int i = 0; i < n; ++i) block[i] = edge ? GridSample(worker, x, y, i, j) : centre;
    return edge ? uint64_t(n) * uint64_t(n) : 1u;
}

bool BandRenderer::RenderFiltered(Worker& worker, int first, int end) {
    const int m = filter_.Margin(), w = region_.x1 - region_.x0, n = settings_.samples;
    const int looked = end - first + 2 * (m + 1);
    worker.centres.Begin(settings_, region_.x0 - m - 1, region_.x1 + m + 1, first - m - 1, end + m + 1, looked);
    if (!Look(worker, end + m)) return false;
    const PixelCentres& centres = worker.centres;
    const int top = std::max(first - m, 0), bottom = std::min(end + m, settings_.height);
    std::vector<PixelSample>& rows = worker.rows;
    rows.assign(size_t(bottom - top) * size_t(n) * size_t(w), PixelSample());
    for (int y = top; y < bottom; ++y) {
        if (Aborted()) return false;
        FilterRows(worker, y, y >= first && y < end, &rows[size_t(y - top) * size_t(n) * size_t(w)]);
    }
    for (int y = first; y < end; ++y) {
        if (!InField(y)) continue;
        const PixelFilter::Taps taps = filter_.TapsOf(y, settings_.height);
        for (int x = 0; x < w; ++x) {
            PixelSample sum;
            for (size_t i = 0; i < taps.weights.size(); ++i)
                Add(sum, rows[(size_t(taps.first - top * n) + i) * size_t(w) + size_t(x)], taps.weights[i]);
            // A filter with negative weights leaves the range beside strong edges.
            sum.alpha = std::clamp(sum.alpha, 0.0f, 1.0f);
            for (int i = 0; i < 3; ++i) sum.background[i] = std::max(sum.background[i], 0.0f);
            for (int j = 0; j < n; ++j)
                sum.z = std::max(sum.z, rows[size_t((y - top) * n + j) * size_t(w) + size_t(x)].z);
            Put(region_.x0 + x, y, sum, centres.At(region_.x0 + x, y));
        }
    }
    return true;
}

// The n lines of samples of picture line `y`, filtered along the line; `own`: not for another band's sake.
void BandRenderer::FilterRows(Worker& worker, int y, bool own, PixelSample* rows) {
    const int m = filter_.Margin(), n = settings_.samples;
    const int left = std::max(region_.x0 - m, 0), right = std::min(region_.x1 + m, settings_.width);
    const size_t step = size_t(right - left) * size_t(n); // from one line of samples to the next
    worker.line.resize(step * size_t(n));
    uint64_t samples = 0;
    for (int x = left; x < right; ++x)
        samples += SampleBlock(worker, x, y, &worker.line[size_t(x - left) * size_t(n)], step);
    if (own) samples_ += samples;
    for (int j = 0; j < n; ++j) {
        const PixelSample* const line = &worker.line[size_t(j) * step];
        for (size_t c = 0; c < columns_.size(); ++c, ++rows) {
            const PixelSample* const from = line + (columns_[c].first - left * n);
            const std::vector<float>& weights = columns_[c].weights;
            for (size_t i = 0; i < weights.size(); ++i) Add(*rows, from[i], weights[i]);
            const PixelSample* const mine = line + (size_t(region_.x0 - left) + c) * size_t(n);
            for (int i = 0; i < n; ++i) rows->z = std::max(rows->z, mine[i].z);
        }
    }
}

void BandRenderer::Put(int x, int y, const PixelSample& s, const SurfaceSample& centre) {
    const auto own = [&](int i) { return std::max(s.color[i] - s.background[i], 0.0f); };
    out_.PutPixel(x, y, {own(0), own(1), own(2), s.alpha});
    if (out_.HasBackground()) out_.PutBackground(x, y, s.background);
    const size_t index = size_t(y) * size_t(settings_.width) + size_t(x);
    out_.Z()[index] = s.z;
    channels_.Put(x, y, centre, s.alpha);
}

void BandRenderer::BandDone(int lines) {
    const std::lock_guard<std::mutex> lock(mutex_);
    linesDone_ += lines;
    if (!progress_) return;
    progress_->SetObject("Rendering", region_.y1 - region_.y0);
    progress_->SetObjectProgress(linesDone_);
}

} // namespace host
