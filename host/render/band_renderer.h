#pragma once
// A picture by bands of lines, on several threads.

#include <atomic>
#include <exception>
#include <mutex>
#include <vector>

#include "render/camera_sampler.h"
#include "render/effect_progress.h"
#include "render/frame.h"
#include "render/gbuffer_writer.h"
#include "render/pixel_centres.h"

namespace host {

/// Renders the pixels of a picture's region, or those of one field. Bands are taken from the top by whichever thread is
/// free, so that all threads ask effects about the same region; every pixel depends on itself and its neighbours only,
/// so the picture does not depend on the threads, nor a pixel on the region.
///
/// A pixel takes one camera sample at its centre. Where the centres of the 3 x 3 pixels around it differ in node,
/// material id, direction (cosine below 0.9) or colour (more than a tenth), it takes samples x samples on a regular
/// grid instead. The reconstruction filter weighs them, and those of the pixels around; the plain one averages a
/// pixel's own.
///
/// Effects find somebody to tell their progress as long as it lives.
class BandRenderer {
public:
    /// `parity`: only even (0) or odd (1) lines; -1 for all.
    BandRenderer(Core& core, RenderContext& render, const FrameSettings& settings, int threads, Picture& out,
                 IProgressIndicator* progress, int parity = -1);
    /// False when the render was aborted. Rethrows what a thread threw.
    bool Run();
    uint64_t Samples() const { return samples_; }
    uint64_t Segments() const { return segments_; }

private:
    struct Worker;
    void Work();
    bool RenderBand(Worker& worker, int band);
    bool Look(Worker& worker, int last);
    bool RenderPlain(Worker& worker, int first, int end);
    bool RenderFiltered(Worker& worker, int first, int end);
    void FilterRows(Worker& worker, int y, bool own, PixelSample* rows);
    bool InField(int y) const { return parity_ < 0 || (y & 1) == parity_; }
    PixelSample GridSample(Worker& worker, int x, int y, int i, int j);
    PixelSample Supersample(Worker& worker, int x, int y);
    uint64_t SampleBlock(Worker& worker, int x, int y, PixelSample* block, size_t step);
    void Put(int x, int y, const PixelSample& s, const SurfaceSample& centre);
    bool Aborted();
    void BandDone(int lines);

    Core& core_;
    RenderContext& render_;
    const FrameSettings& settings_;
    const PictureRegion region_;
    const PixelFilter filter_;
    std::vector<PixelFilter::Taps> columns_; ///< of the region's columns, when the filter is not plain
    const int threads_, bandLines_;
    Picture& out_;
    IProgressIndicator* progress_;
    const int parity_;
    const GBufferWriter channels_;
    std::atomic<int> nextBand_{0};
    std::atomic<bool> stop_{false};
    std::atomic<uint64_t> samples_{0}, segments_{0};
    std::mutex mutex_; ///< guards what follows and the progress
    std::exception_ptr error_;
    std::atomic<int> linesDone_{0};
    EffectProgress effects_;
};

} // namespace host
