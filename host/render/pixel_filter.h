#pragma once
// Reconstruction filters: how camera samples make pixels.

#include <vector>

namespace host {

/// Shapes of reconstruction filters. Over the distance d from the pixel's centre and the radius r, half the width:
///   box       1 for d < r
///   Gaussian  exp(-2 (d / r)^2) - exp(-2) for d < r
///   Mitchell  the piecewise cubic with B = C = 1/3 over 2 d / r (Mitchell and Netravali, 1988); it goes below zero
enum class FilterKind { kBox, kGaussian, kMitchell };

/// Widest filter, in pixels.
inline constexpr float kMaxFilterWidth = 16;

/// Weights of samples along one axis. Every pixel has `samples` samples at equal distances; the weights of a pixel add
/// up to 1, and at the border of the picture those inside count alone.
class PixelFilter {
public:
    PixelFilter() = default;
    /// `width` in pixels, 1..kMaxFilterWidth; `samples` 1..16.
    PixelFilter(FilterKind kind, float width, int samples);

    /// True when a pixel is the plain mean of its own samples.
    bool Plain() const { return plain_; }
    /// How many pixels beside a pixel its samples come from.
    int Margin() const { return margin_; }

    /// The samples of a pixel: number of the first one, counted over the whole line, and weights.
    struct Taps {
        int first = 0;
        std::vector<float> weights;
    };
    /// Those of pixel `at` of a line of `pixels` pixels.
    Taps TapsOf(int at, int pixels) const;

private:
    bool plain_ = true;
    int samples_ = 1, margin_ = 0;
    std::vector<double> weights_; ///< of the samples of pixels -margin_ .. margin_
};

} // namespace host
