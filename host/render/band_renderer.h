#pragma once
// A picture by bands of lines, on several threads.

#include <atomic>
#include <exception>
#include <mutex>
#include <vector>

#include "render/camera_sampler.h"
#include "render/effect_progress.h"
#include "render/frame.h"

namespace host {

/// Renders all pixels of a picture. Bands are taken from the top by whichever thread is free, so that all threads ask
/// effects about the same region; every pixel depends on itself and its neighbours only, so the picture does not depend
/// on the threads.
///
/// A pixel takes one camera sample at its centre. Where the centres of the 3 x 3 pixels around it differ in node,
/// material id, direction (cosine below 0.9) or colour (more than a tenth), it takes samples x samples on a regular
/// grid instead and averages.
///
/// Effects find somebody to tell their progress as long as it lives.
class BandRenderer {
public:
    BandRenderer(Core& core, RenderContext& render, const FrameSettings& settings, int threads, Picture& out,
                 IProgressIndicator* progress);
    /// False when the render was aborted. Rethrows what a thread threw.
    bool Run();
    uint64_t Samples() const { return samples_; }
    uint64_t Segments() const { return segments_; }

private:
    void Work();
    bool RenderBand(CameraSampler& sampler, int band);
    void RenderLine(CameraSampler& sampler, int y, const SurfaceSample* above, const SurfaceSample* line,
                    const SurfaceSample* below);
    PixelSample Supersample(CameraSampler& sampler, int x, int y);
    void Put(int x, int y, const PixelSample& s, const SurfaceSample& centre);
    bool Aborted();
    void BandDone(int lines);

    Core& core_;
    RenderContext& render_;
    const FrameSettings& settings_;
    int threads_;
    Picture& out_;
    IProgressIndicator* progress_;
    std::atomic<int> nextBand_{0};
    std::atomic<bool> stop_{false};
    std::atomic<uint64_t> samples_{0}, segments_{0};
    std::mutex mutex_; ///< guards what follows and the progress
    std::exception_ptr error_;
    std::atomic<int> linesDone_{0};
    EffectProgress effects_;
};

} // namespace host
