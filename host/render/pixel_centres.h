#pragma once
// What is seen at the centres of pixels, and where it changes.

#include <algorithm>
#include <vector>

#include "render/camera_sampler.h"
#include "render/frame.h"

namespace host {

/// What is nearest at the centres of a rectangle of pixels, cut off at the picture's border. Serves one rectangle after
/// the other.
class PixelCentres {
public:
    /// Looks through the centres of columns x0 .. x1 - 1 and lines y0 .. y1 - 1. `stop` is asked before every line:
    /// false when it said so.
    template <class F>
    bool Fill(CameraSampler& sampler, const FrameSettings& settings, int x0, int x1, int y0, int y1, F&& stop) {
        x0_ = std::max(x0, 0), x1_ = std::min(x1, settings.width);
        y0_ = std::max(y0, 0), y1_ = std::min(y1, settings.height);
        all_.resize(size_t(x1_ - x0_) * size_t(y1_ - y0_));
        for (int y = y0_; y < y1_; ++y) {
            if (stop()) return false;
            SurfaceSample* const line = &all_[Index(x0_, y)];
            for (int x = x0_; x < x1_; ++x) line[x - x0_] = sampler.Surfaces(float(x) + 0.5f, float(y) + 0.5f);
        }
        if (settings.samples > 1) MarkEdges();
        return true;
    }
    const SurfaceSample& At(int x, int y) const { return all_[Index(x, y)]; }
    /// Whether a pixel differs from one of those around it; beyond the rectangle nothing does. Only where pixels take
    /// several samples.
    bool Edge(int x, int y) const { return edges_[Index(x, y)] != 0; }

private:
    size_t Index(int x, int y) const { return size_t(y - y0_) * size_t(x1_ - x0_) + size_t(x - x0_); }
    void MarkEdges();

    int x0_ = 0, x1_ = 0, y0_ = 0, y1_ = 0;
    std::vector<SurfaceSample> all_;
    std::vector<unsigned char> edges_;
};

} // namespace host
