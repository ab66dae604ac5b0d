#pragma once
// Exact means of a picture over rectangles.

#include <array>
#include <vector>

#include "image/load_image.h"
#include "materials/image_pyramid.h"

namespace host {

/// Sums of all pixels above and left of every pixel corner. (F. Crow, "Summed-area tables for texture mapping", 1984.)
class SummedArea {
public:
    /// Most pixels of a picture: the table takes 32 bytes for each.
    static constexpr int64_t kMostPixels = int64_t(1) << 24;
    explicit SummedArea(const Image& image);
    /// Mean colour of the rectangle of width `across` around (u, v), the picture going on as `wrap` says. A rectangle
    /// is at least one pixel wide each way, which makes it linear between pixel centres; at most kWidest.
    AColor At(float u, float v, const Point2& across, const ImageWrap& wrap) const;
    static constexpr float kWidest = 64; ///< repetitions

private:
    using Sum = std::array<double, 4>;
    Sum UpTo(double x, double y) const;
    Sum UpTo(double x, double y, const ImageWrap& wrap) const;

    int width_, height_;
    std::vector<Sum> sums_; ///< (width + 1) x (height + 1)
};

} // namespace host
