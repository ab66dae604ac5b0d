#include "render/pixel_centres.h"

#include <cmath>

namespace host {

namespace {

bool ColorsDiffer(const Color& a, const Color& b) {
    for (int i = 0; i < 3; ++i) {
        if (std::fabs(a[i] - b[i]) > 0.1f * std::max(a[i], b[i]) + 0.005f) return true;
    }
    return false;
}

bool Differ(const SurfaceSample& a, const SurfaceSample& b) {
    if (a.first.instance != b.first.instance || a.first.materialId != b.first.materialId) return true;
    if (a.first.instance >= 0 && DotProd(a.first.normal, b.first.normal) < 0.9f) return true;
    return ColorsDiffer(a.flat, b.flat);
}

} // namespace

// Every pair of neighbours once: a pixel with the one before it and the three above.
void PixelCentres::MarkEdges() {
    const size_t width = size_t(x1_ - x0_);
    edges_.assign(all_.size(), 0);
    const auto compare = [&](size_t a, size_t b) {
        if ((!edges_[a] || !edges_[b]) && Differ(all_[a], all_[b])) edges_[a] = edges_[b] = 1;
    };
    for (size_t i = 0; i < all_.size(); ++i) {
        const size_t x = i % width;
        if (x > 0) compare(i, i - 1);
        if (i < width) continue;
        if (x > 0) compare(i, i - width - 1);
        compare(i, i - width);
        if (x + 1 < width) compare(i, i - width + 1);
    }
}

} // namespace host
