#include "render/pixel_filter.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

double Mitchell(double x) {
    if (x < 1) return (7 * x * x * x - 12 * x * x + 16.0 / 3) / 6;
    return (-7.0 / 3 * x * x * x + 12 * x * x - 20 * x + 32.0 / 3) / 6;
}

/// Weight at `d` radii from the centre, 0 <= d < 1.
double WeightAt(FilterKind kind, double d) {
    switch (kind) {
    case FilterKind::kGaussian:
        return std::exp(-2 * d * d) - std::exp(-2.0);
    case FilterKind::kMitchell:
        return Mitchell(2 * d);
    case FilterKind::kBox:
        break;
    }
    return 1;
}

} // namespace

PixelFilter::PixelFilter(FilterKind kind, float width, int samples)
    : plain_(kind == FilterKind::kBox && width == 1.0f), samples_(samples) {
    const double radius = double(width) / 2;
    margin_ = plain_ ? 0 : std::max(0, int(std::ceil(radius - 0.5)));
    for (int i = -margin_ * samples; i < (margin_ + 1) * samples; ++i) {
        const double d = std::fabs((i + 0.5) / samples - 0.5) / radius;
        weights_.push_back(d < 1 ? WeightAt(kind, d) : 0);
    }
}

PixelFilter::Taps PixelFilter::TapsOf(int at, int pixels) const {
    const int low = std::max(at - margin_, 0), high = std::min(at + margin_ + 1, pixels);
    const size_t begin = size_t((low - (at - margin_)) * samples_), count = size_t((high - low) * samples_);
    double sum = 0;
    for (size_t i = 0; i < count; ++i) sum += weights_[begin + i];
    Taps taps{low * samples_, {}};
    for (size_t i = 0; i < count; ++i) taps.weights.push_back(float(weights_[begin + i] / sum));
    return taps;
}

} // namespace host
