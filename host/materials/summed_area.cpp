#include "materials/summed_area.h"

#include <algorithm>
#include <cmath>

#include "materials/map_wrap.h"

namespace host {

namespace {

/// The integral from 0 to c of a side that goes on beyond 0..1, as integrals inside it: sum of weight x (0 to place).
struct Extent {
    double weight[2] = {0, 0}, place[2] = {0, 0};
};
Extent ExtentUpTo(double c, int n, int wrap) {
    if (wrap == kWrapClamp) {
        // The border's pixel goes on.
        if (c < 0) return {{c * n, 0}, {1.0 / n, 0}};
        if (c > 1) return {{1 + (c - 1) * n, -(c - 1) * n}, {1, 1.0 - 1.0 / n}};
        return {{1, 0}, {c, 0}};
    }
    if (wrap == kWrapRepeat) {
        const double whole = std::floor(c);
        return {{whole, 1}, {1, c - whole}};
    }
    const double pairs = std::floor(c / 2), rest = c - 2 * pairs;
    if (rest <= 1) return {{2 * pairs, 1}, {1, rest}};
    return {{2 * pairs + 2, -1}, {1, 2 - rest}};
}

} // namespace

SummedArea::SummedArea(const Image& image)
    : width_(image.Width()), height_(image.Height()), sums_(size_t(width_ + 1) * size_t(height_ + 1), Sum{}) {
    for (int y = 0; y < height_; ++y) {
        Sum line{};
        for (int x = 0; x < width_; ++x) {
            const AColor c = image.At(x, y);
            const double values[4] = {double(c.r), double(c.g), double(c.b), double(c.a)};
            const size_t below = size_t(y + 1) * size_t(width_ + 1) + size_t(x + 1);
            for (size_t k = 0; k < 4; ++k) {
                line[k] += values[k];
                sums_[below][k] = sums_[below - size_t(width_ + 1)][k] + line[k];
            }
        }
    }
}

// Integral over [0, x] x [0, y] of the picture as the unit square, both inside 0..1, y downwards.
SummedArea::Sum SummedArea::UpTo(double x, double y) const {
    const double px = std::clamp(x, 0.0, 1.0) * width_, py = std::clamp(y, 0.0, 1.0) * height_;
    const int i = std::min(int(px), width_ - 1), j = std::min(int(py), height_ - 1);
    const double fx = px - i, fy = py - j;
    const size_t at = size_t(j) * size_t(width_ + 1) + size_t(i), under = at + size_t(width_ + 1);
    Sum out;
    for (size_t k = 0; k < 4; ++k) {
        const double above = sums_[at][k] + (sums_[at + 1][k] - sums_[at][k]) * fx;
        const double below = sums_[under][k] + (sums_[under + 1][k] - sums_[under][k]) * fx;
        out[k] = (above + (below - above) * fy) / (double(width_) * height_);
    }
    return out;
}

SummedArea::Sum SummedArea::UpTo(double x, double y, const ImageWrap& wrap) const {
    const Extent h = ExtentUpTo(x, width_, wrap.u), v = ExtentUpTo(y, height_, wrap.v);
    Sum out{};
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            const double w = h.weight[i] * v.weight[j];
            if (w == 0) continue;
            const Sum part = UpTo(h.place[i], v.place[j]);
            for (size_t k = 0; k < 4; ++k) out[k] += w * part[k];
        }
    return out;
}

AColor SummedArea::At(float u, float v, const Point2& across, const ImageWrap& wrap) const {
    // Whole pairs of repetitions make no difference but to precision.
    const auto near = [](float c, int w) {
        if (!std::isfinite(c)) return 0.0;
        return w == kWrapClamp ? std::clamp(double(c), -100.0, 100.0) : double(c) - 2 * std::floor(double(c) / 2);
    };
    // Also what is no number is a pixel wide.
    const auto wide = [](float c, int n) {
        return double(c) > 1.0 / n ? std::min(double(c), double(kWidest)) : 1.0 / n;
    };
    const double w = wide(across.x, width_), h = wide(across.y, height_);
    const double x = near(u, wrap.u) - w / 2, y = 1 - near(v, wrap.v) - h / 2;
    const Sum a = UpTo(x, y, wrap), b = UpTo(x + w, y, wrap), c = UpTo(x, y + h, wrap), d = UpTo(x + w, y + h, wrap);
    float mean[4];
    for (size_t k = 0; k < 4; ++k) mean[k] = float((d[k] - c[k] - b[k] + a[k]) / (w * h));
    return {mean[0], mean[1], mean[2], mean[3]};
}

} // namespace host
