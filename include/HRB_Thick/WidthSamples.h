#pragma once
// Opacity and colour across a strand: looking them up in a segment's rows of width samples.

#include "HRB_Thick/WideKernel.h"

namespace RasterDetail {

/// Where a pixel lies in a row of W samples: at one place, or over a footprint of one pixel.
class WidthFootprint {
public:
    /// `u` is the signed distance from the centre line and `width` the strand's, in pixels. W is at least 2.
    WidthFootprint(float u, float width, int samples, bool filtered) : last_(samples - 1), filtered_(filtered) {
        if (filtered) {
            Split(Place(u - 0.5f, width), i0_, g0_);
            Split(Place(u + 0.5f, width), i1_, g1_);
        } else {
            Split(Place(u, width), i0_, g0_);
        }
    }

    /// The row's value; `sample(i)` answers its i-th sample.
    template <class Value, class Get>
    Value Evaluate(const Get& sample) const {
        if (!filtered_) return Mix(sample(i0_), sample(i0_ + 1), g0_);
        const float extent = float(i1_ - i0_) + g1_ - g0_;
        if (!(extent >= 0.001f)) return sample(i1_ == 0 ? 0 : last_);
        Value sum = Value();
        if (i1_ > i0_) {
            sum = 0.5f * sample(i0_);
            for (int i = i0_ + 1; i < i1_; ++i) sum += sample(i);
            sum += 0.5f * sample(i1_);
        }
        sum -= Part<Value>(sample, i0_, g0_);
        sum += Part<Value>(sample, i1_, g1_);
        return sum / extent;
    }

private:
    /// Integral of the interpolated row from sample i to i + g.
    template <class Value, class Get>
    static Value Part(const Get& sample, int i, float g) {
        return ((2.0f - g) * sample(i) + g * sample(i + 1)) * g / 2.0f;
    }
    float Place(float u, float width) const {
        const float middle = float(last_) * 0.5f;
        const float f = width > 0.0f ? u * float(last_) / width + middle : middle;
        const float top = float(last_) + 1.0f - 1.01f;
        return f > 0.0f ? (f < top ? f : top) : 0.0f;
    }
    static void Split(float f, int& i, float& g) {
        i = int(f);
        g = f - float(i);
    }

    int last_;
    bool filtered_;
    int i0_ = 0, i1_ = 0;
    float g0_ = 0, g1_ = 0;
};

/// Opacity and colour of the segment from `a` to `b` at (t, u); t in 0..1.
struct WidthSampler {
    int samples = 1; ///< W, 1 .. kMaxWidthSamples
    bool filtered = false;
    WideKernel kernel = BestWideKernel(); ///< for one sample

    template <PixelOperation Op>
    void Look(const StrandVertex& a, const StrandVertex& b, float t, float u, float width, float& opacity,
              Point3& color) const {
        const auto opacityAt = [&](int i) { return Mix(a.opacity[i], b.opacity[i], t); };
        const auto colorAt = [&](int i) { return Mix(a.color[i], b.color[i], t); };
        if (samples < 2) {
            opacity = opacityAt(0);
            if constexpr (Op == PixelOperation::Image) color = colorAt(0);
            return;
        }
        const WidthFootprint footprint(u, width, samples, filtered);
        opacity = footprint.Evaluate<float>(opacityAt);
        if constexpr (Op == PixelOperation::Image) color = footprint.Evaluate<Point3>(colorAt);
    }
};

} // namespace RasterDetail
