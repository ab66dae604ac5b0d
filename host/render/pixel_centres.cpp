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

// Every pair of neighbours once: the new line's pixels with the one before and the three above.
void PixelCentres::MarkEdges() {
    const size_t width = size_t(x1_ - x0_), line = Index(x0_, next_);
    std::fill_n(edges_.begin() + std::ptrdiff_t(line), width, 0);
    const auto compare = [&](size_t a, size_t b) {
        if ((!edges_[a] || !edges_[b]) && Differ(all_[a], all_[b])) edges_[a] = edges_[b] = 1;
    };
    for (size_t x = 1; x < width; ++x) compare(line + x, line + x - 1);
    if (next_ == y0_) return;
    const size_t above = Index(x0_, next_ - 1);
    for (size_t x = 0; x < width; ++x)
        for (size_t other = x > 0 ? x - 1 : 0; other <= std::min(x + 1, width - 1); ++other)
            compare(line + x, above + other);
}

} // namespace host
