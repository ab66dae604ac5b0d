#include "render/band_renderer.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "render/effect_progress.h"

namespace host {

namespace {

/// Lines of a band; two more are looked at, so higher bands waste less.
constexpr int kBandLines = 16;

bool ColorsDiffer(const Color& a, const Color& b) {
    for (int i = 0; i < 3; ++i) {
        const float x = std::clamp(a[i], 0.0f, 1.0f), y = std::clamp(b[i], 0.0f, 1.0f);
        if (std::fabs(x - y) > 0.1f * std::max(x, y) + 0.005f) return true;
    }
    return false;
}

bool Differ(const SurfaceSample& a, const SurfaceSample& b) {
    if (a.first.instance != b.first.instance || a.first.materialId != b.first.materialId) return true;
    if (a.first.instance >= 0 && DotProd(a.first.normal, b.first.normal) < 0.9f) return true;
    return ColorsDiffer(a.flat, b.flat);
}

/// Adds a weighted sample, but for its depth.
void Add(PixelSample& sum, const PixelSample& s, float weight) {
    sum.color += s.color * weight;
    sum.background += s.background * weight;
    sum.alpha += s.alpha * weight;
}

} // namespace

/// What is nearest at the centres of a rectangle of pixels, cut off at the picture's border.
class BandRenderer::Centres {
public:
    Centres(int x0, int x1, int y0, int y1, const FrameSettings& settings)
        : x0_(std::max(x0, 0)), x1_(std::min(x1, settings.width)), y0_(std::max(y0, 0)),
          y1_(std::min(y1, settings.height)), all_(size_t(x1_ - x0_) * size_t(y1_ - y0_)) {}
    /// False when `stop` said so.
    template <class F>
    bool Fill(CameraSampler& sampler, F&& stop) {
        for (int y = y0_; y < y1_; ++y) {
            if (stop()) return false;
            SurfaceSample* const line = &all_[Index(x0_, y)];
            for (int x = x0_; x < x1_; ++x) line[x - x0_] = sampler.Surfaces(float(x) + 0.5f, float(y) + 0.5f);
        }
        return true;
    }
    const SurfaceSample& At(int x, int y) const { return all_[Index(x, y)]; }
    /// Whether a pixel differs from one of those around it; beyond the picture's border nothing does.
    bool Edge(int x, int y) const {
        const SurfaceSample& centre = At(x, y);
        for (int k = std::max(x - 1, x0_); k <= std::min(x + 1, x1_ - 1); ++k)
            for (int j = std::max(y - 1, y0_); j <= std::min(y + 1, y1_ - 1); ++j)
                if ((j != y || k != x) && Differ(centre, At(k, j))) return true;
        return false;
    }

private:
    size_t Index(int x, int y) const { return size_t(y - y0_) * size_t(x1_ - x0_) + size_t(x - x0_); }
    int x0_, x1_, y0_, y1_;
    std::vector<SurfaceSample> all_;
};

BandRenderer::BandRenderer(Core& core, RenderContext& render, const FrameSettings& settings, int threads, Picture& out,
                           IProgressIndicator* progress, int parity)
    : core_(core), render_(render), settings_(settings), region_(RegionOf(settings)),
      filter_(settings.filter, settings.filterWidth, settings.samples), threads_(threads), out_(out),
      progress_(progress), parity_(parity), channels_(core, render, out),
      effects_(core, progress, mutex_, linesDone_, region_.y1 - region_.y0) {
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
    const int bands = (region_.y1 - region_.y0 + kBandLines - 1) / kBandLines;
    CameraSampler sampler(render_);
    try {
        for (int band = nextBand_++; band < bands && RenderBand(sampler, band); band = nextBand_++) {
        }
    } catch (...) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!error_) error_ = std::current_exception();
        stop_ = true;
    }
    segments_ += sampler.Segments();
}

bool BandRenderer::RenderBand(CameraSampler& sampler, int band) {
    const int first = region_.y0 + band * kBandLines, end = std::min(first + kBandLines, region_.y1);
    if (!(filter_.Plain() ? RenderPlain(sampler, first, end) : RenderFiltered(sampler, first, end))) return false;
    BandDone(end - first);
    return true;
}

bool BandRenderer::RenderPlain(CameraSampler& sampler, int first, int end) {
    Centres centres(region_.x0 - 1, region_.x1 + 1, first - 1, end + 1, settings_);
    if (!centres.Fill(sampler, [this] { return Aborted(); })) return false;
    uint64_t samples = 0;
    for (int y = first; y < end; ++y) {
        if (Aborted()) return false;
        if (!InField(y)) continue;
        for (int x = region_.x0; x < region_.x1; ++x) {
            const bool edge = settings_.samples > 1 && centres.Edge(x, y);
            const SurfaceSample& centre = centres.At(x, y);
            Put(x, y, edge ? Supersample(sampler, x, y) : sampler.Shade(float(x) + 0.5f, float(y) + 0.5f, centre),
                centre);
            samples += edge ? uint64_t(settings_.samples) * uint64_t(settings_.samples) : 1u;
        }
    }
    samples_ += samples;
    return true;
}

PixelSample BandRenderer::Supersample(CameraSampler& sampler, int x, int y) {
    const int n = settings_.samples;
    PixelSample sum;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const PixelSample s =
                sampler.Shade(float(x) + (float(i) + 0.5f) / float(n), float(y) + (float(j) + 0.5f) / float(n));
            sum.color += s.color;
            sum.background += s.background;
            sum.alpha += s.alpha;
            sum.z = std::max(sum.z, s.z);
        }
    const float weight = 1.0f / float(n * n);
    sum.color *= weight;
    sum.background *= weight;
    sum.alpha *= weight;
    return sum;
}

// The samples of one pixel, line by line; a pixel that is no edge has the same one everywhere.
void BandRenderer::SampleBlock(CameraSampler& sampler, int x, int y, PixelSample* block) {
    const int n = settings_.samples;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            *block++ = sampler.Shade(float(x) + (float(i) + 0.5f) / float(n), float(y) + (float(j) + 0.5f) / float(n));
}

bool BandRenderer::RenderFiltered(CameraSampler& sampler, int first, int end) {
    const int m = filter_.Margin(), w = region_.x1 - region_.x0, n = settings_.samples;
    Centres centres(region_.x0 - m - 1, region_.x1 + m + 1, first - m - 1, end + m + 1, settings_);
    if (!centres.Fill(sampler, [this] { return Aborted(); })) return false;
    const int top = std::max(first - m, 0), bottom = std::min(end + m, settings_.height);
    std::vector<PixelSample> rows(size_t(bottom - top) * size_t(n) * size_t(w));
    for (int y = top; y < bottom; ++y) {
        if (Aborted()) return false;
        FilterRows(sampler, centres, y, y >= first && y < end, &rows[size_t(y - top) * size_t(n) * size_t(w)]);
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
void BandRenderer::FilterRows(CameraSampler& sampler, const Centres& centres, int y, bool own, PixelSample* rows) {
    const int m = filter_.Margin(), n = settings_.samples;
    const int left = std::max(region_.x0 - m, 0), right = std::min(region_.x1 + m, settings_.width);
    const size_t block = size_t(n) * size_t(n);
    std::vector<PixelSample> line(size_t(right - left) * block);
    uint64_t samples = 0;
    for (int x = left; x < right; ++x) {
        PixelSample* const at = &line[size_t(x - left) * block];
        const bool edge = n > 1 && centres.Edge(x, y);
        if (edge)
            SampleBlock(sampler, x, y, at);
        else
            std::fill_n(at, block, sampler.Shade(float(x) + 0.5f, float(y) + 0.5f, centres.At(x, y)));
        samples += edge ? block : 1u;
    }
    if (own) samples_ += samples;
    for (int j = 0; j < n; ++j)
        for (size_t c = 0; c < columns_.size(); ++c, ++rows) {
            for (size_t i = 0; i < columns_[c].weights.size(); ++i) {
                const int k = columns_[c].first + int(i) - left * n;
                Add(*rows, line[size_t(k / n) * block + size_t(j * n + k % n)], columns_[c].weights[i]);
            }
            const PixelSample* const mine = &line[(size_t(region_.x0 - left) + c) * block + size_t(j * n)];
            for (int i = 0; i < n; ++i) rows->z = std::max(rows->z, mine[i].z);
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
