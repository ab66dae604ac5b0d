#pragma once
// Pictures made ready to be looked up in smaller sizes.

#include <cstddef>
#include <vector>

#include "image/load_image.h"
#include "sdk/point2.h"

namespace host {

/// How a picture goes on beyond its sides (MapWrap).
struct ImageWrap {
    int u = 0, v = 0;
};

/// The colour at (u, v), v upwards, between pixel centres linearly interpolated.
AColor Bilinear(const Image& image, float u, float v, const ImageWrap& wrap);

/// A picture and its halves, quarters ... down to one pixel; the picture itself is the caller's.
class ImagePyramid {
public:
    /// Every smaller level is made of means of 2 x 2 pixels (3 where a side is odd, weighted by area).
    explicit ImagePyramid(const Image& image);
    /// The colour of a region of that width around (u, v): linear between the two levels whose pixels are next in size
    /// to the region's longer side.
    AColor At(const Image& image, float u, float v, const Point2& across, const ImageWrap& wrap) const;
    int Levels() const { return 1 + int(levels_.size()); }

private:
    struct Level {
        int width = 0, height = 0;
        std::vector<AColor> pixels;
        int Width() const { return width; }
        int Height() const { return height; }
        const AColor& At(int x, int y) const { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    };
    template <class Source>
    static Level Half(const Source& source);
    AColor AtLevel(const Image& image, int level, float u, float v, const ImageWrap& wrap) const;

    std::vector<Level> levels_; ///< from half size on
};

} // namespace host
