#include "render/band_renderer.h"

#include <algorithm>
#include <cmath>
#include <thread>

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

/// Gives the picture the channels that node and material ids go to.
template <class T>
void PutId(Picture& out, uint32_t channel, size_t index, int id) {
    ChannelType type;
    if (void* const data = out.GetChannel(channel, type)) static_cast<T*>(data)[index] = T(id);
}

} // namespace

BandRenderer::BandRenderer(Core& core, RenderContext& render, const FrameSettings& settings, int threads, Picture& out,
                           IProgressIndicator* progress)
    : core_(core), render_(render), settings_(settings), threads_(threads), out_(out), progress_(progress),
      effects_(core, progress, mutex_, linesDone_, settings.height) {}

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
    const int bands = (settings_.height + kBandLines - 1) / kBandLines;
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
    const int first = band * kBandLines, end = std::min(first + kBandLines, settings_.height), w = settings_.width;
    // The centres of the band's lines and of one line around it.
    std::vector<SurfaceSample> centres(size_t(w) * size_t(end - first + 2));
    const auto line = [&](int y) { return &centres[size_t(y - first + 1) * size_t(w)]; };
    for (int y = first - 1; y <= end; ++y) {
        if (Aborted()) return false;
        // Beyond the picture's border nothing differs from the border itself.
        const int at = std::clamp(y, 0, settings_.height - 1);
        for (int x = 0; x < w; ++x) line(y)[x] = sampler.Surfaces(float(x) + 0.5f, float(at) + 0.5f);
    }
    for (int y = first; y < end; ++y) {
        if (Aborted()) return false;
        RenderLine(sampler, y, line(y - 1), line(y), line(y + 1));
    }
    BandDone(end - first);
    return true;
}

void BandRenderer::RenderLine(CameraSampler& sampler, int y, const SurfaceSample* above, const SurfaceSample* line,
                              const SurfaceSample* below) {
    const int w = settings_.width;
    uint64_t samples = 0;
    for (int x = 0; x < w; ++x) {
        bool edge = false;
        for (int k = std::max(x - 1, 0); settings_.samples > 1 && k <= std::min(x + 1, w - 1); ++k)
            edge = edge || Differ(line[x], above[k]) || Differ(line[x], line[k]) || Differ(line[x], below[k]);
        const PixelSample s =
            edge ? Supersample(sampler, x, y) : sampler.Shade(float(x) + 0.5f, float(y) + 0.5f, line[x]);
        samples += edge ? uint64_t(settings_.samples) * uint64_t(settings_.samples) : 1u;
        Put(x, y, s, line[x]);
    }
    samples_ += samples;
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

void BandRenderer::Put(int x, int y, const PixelSample& s, const SurfaceSample& centre) {
    const auto own = [&](int i) { return std::max(s.color[i] - s.background[i], 0.0f); };
    out_.PutPixel(x, y, {own(0), own(1), own(2), s.alpha});
    if (out_.HasBackground()) out_.PutBackground(x, y, s.background);
    const size_t index = size_t(y) * size_t(settings_.width) + size_t(x);
    out_.Z()[index] = s.z;
    if (centre.first.instance < 0) return;
    MeshInstance& instance = render_.Instance(centre.first.instance);
    PutId<uint8_t>(out_, BMM_CHAN_MTL_ID, index, centre.first.materialId);
    PutId<uint16_t>(out_, BMM_CHAN_NODE_ID, index, instance.node->GetGBufID());
    PutId<uint16_t>(out_, BMM_CHAN_NODE_RENDER_ID, index, instance.nodeID);
}

void BandRenderer::BandDone(int lines) {
    const std::lock_guard<std::mutex> lock(mutex_);
    linesDone_ += lines;
    if (!progress_) return;
    progress_->SetObject("Rendering", settings_.height);
    progress_->SetObjectProgress(linesDone_);
}

} // namespace host
