#pragma once
// What is seen at the centres of pixels, and where it changes.

#include <algorithm>
#include <vector>

#include "render/camera_sampler.h"
#include "render/frame.h"

namespace host {

/// What is nearest at the centres of a rectangle of pixels, line by line from the top. Keeps the last lines only, and
/// serves one rectangle after the other.
class PixelCentres {
public:
    /// Begins columns x0 .. x1 - 1 and lines y0 .. y1 - 1, cut off at the picture's border; the last `keep` lines stay
    /// known.
    void Begin(const FrameSettings& settings, int x0, int x1, int y0, int y1, int keep) {
        x0_ = std::max(x0, 0), x1_ = std::min(x1, settings.width);
        next_ = y0_ = std::max(y0, 0), y1_ = std::min(y1, settings.height);
        marks_ = settings.samples > 1;
        keep_ = std::max(std::min(keep, y1_ - y0_), 1);
        all_.resize(size_t(x1_ - x0_) * size_t(keep_));
        edges_.resize(all_.size());
    }
    /// Looks through the centres down to line `last`. `stop` is asked before every line: false when it said so.
    template <class F>
    bool LookDownTo(int last, CameraSampler& sampler, F&& stop) {
        for (; next_ <= last && next_ < y1_; ++next_) {
            if (stop()) return false;
            SurfaceSample* const line = &all_[Index(x0_, next_)];
            for (int x = x0_; x < x1_; ++x) line[x - x0_] = sampler.Surfaces(float(x) + 0.5f, float(next_) + 0.5f);
            if (marks_) MarkEdges();
        }
        return true;
    }
    const SurfaceSample& At(int x, int y) const { return all_[Index(x, y)]; }
    /// Whether a pixel differs from one of those around it, once the line below it is known; beyond the rectangle
    /// nothing differs. Only where pixels take several samples.
    bool Edge(int x, int y) const { return edges_[Index(x, y)] != 0; }

private:
    size_t Index(int x, int y) const { return size_t((y - y0_) % keep_) * size_t(x1_ - x0_) + size_t(x - x0_); }
    void MarkEdges();

    int x0_ = 0, x1_ = 0, y0_ = 0, y1_ = 0, next_ = 0, keep_ = 1;
    bool marks_ = false;
    std::vector<SurfaceSample> all_;
    std::vector<unsigned char> edges_;
};

} // namespace host
