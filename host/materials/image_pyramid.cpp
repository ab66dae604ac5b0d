#include "materials/image_pyramid.h"

#include <algorithm>
#include <cmath>

#include "materials/map_wrap.h"

namespace host {

namespace {

AColor Mix(const AColor& a, const AColor& b, float w) {
    return {a.r + (b.r - a.r) * w, a.g + (b.g - a.g) * w, a.b + (b.b - a.b) * w, a.a + (b.a - a.a) * w};
}

/// The two pixels around a coordinate (0..1) of a side of `n`, and the weight of the second.
struct Neighbours {
    int a, b;
    float weight;
};
Neighbours Around(float c, int n, int wrap) {
    const float at = Wrapped(c, wrap) * float(n) - 0.5f, low = std::floor(at);
    const int a = int(low);
    return {WrappedPixel(a, n, wrap), WrappedPixel(a + 1, n, wrap), at - low};
}

template <class Source>
AColor Interpolated(const Source& image, float u, float v, const ImageWrap& wrap) {
    const Neighbours x = Around(u, image.Width(), wrap.u);
    // Lines run down, v runs up; the fraction of 1 - v is exact enough once whole repetitions are off.
    const Neighbours y = Around(1.0f - Wrapped(v, wrap.v), image.Height(), wrap.v);
    return Mix(Mix(image.At(x.a, y.a), image.At(x.b, y.a), x.weight),
               Mix(image.At(x.a, y.b), image.At(x.b, y.b), x.weight), y.weight);
}

/// Pixels of a side of `n` below pixel `i` of the half side, with their weights: the stretch [i, i + 1) * n / half.
struct Share {
    int first = 0, count = 0;
    float weights[4] = {};
};
Share Below(int i, int n, int half) {
    const double from = double(i) * n / half, to = double(i + 1) * n / half;
    Share share;
    share.first = int(from);
    for (int k = share.first; k < n && double(k) < to && share.count < 4; ++k) {
        const double part = std::min(to, double(k + 1)) - std::max(from, double(k));
        share.weights[share.count++] = float(part / (to - from));
    }
    return share;
}

} // namespace

AColor Bilinear(const Image& image, float u, float v, const ImageWrap& wrap) {
    return Interpolated(image, u, v, wrap);
}

template <class Source>
ImagePyramid::Level ImagePyramid::Half(const Source& source) {
    Level out;
    out.width = std::max(1, source.Width() / 2);
    out.height = std::max(1, source.Height() / 2);
    out.pixels.resize(size_t(out.width) * size_t(out.height), AColor(0, 0, 0, 0));
    for (int y = 0; y < out.height; ++y) {
        const Share down = Below(y, source.Height(), out.height);
        for (int x = 0; x < out.width; ++x) {
            const Share along = Below(x, source.Width(), out.width);
            AColor& sum = out.pixels[size_t(y) * size_t(out.width) + size_t(x)];
            for (int j = 0; j < down.count; ++j)
                for (int i = 0; i < along.count; ++i) {
                    const AColor c = source.At(along.first + i, down.first + j);
                    const float w = down.weights[j] * along.weights[i];
                    sum.r += c.r * w, sum.g += c.g * w, sum.b += c.b * w, sum.a += c.a * w;
                }
        }
    }
    return out;
}

ImagePyramid::ImagePyramid(const Image& image) {
    if (image.Width() <= 1 && image.Height() <= 1) return;
    levels_.push_back(Half(image));
    while (levels_.back().width > 1 || levels_.back().height > 1) levels_.push_back(Half(levels_.back()));
}

AColor ImagePyramid::AtLevel(const Image& image, int level, float u, float v, const ImageWrap& wrap) const {
    return level == 0 ? Interpolated(image, u, v, wrap) : Interpolated(levels_[size_t(level - 1)], u, v, wrap);
}

AColor ImagePyramid::At(const Image& image, float u, float v, const Point2& across, const ImageWrap& wrap) const {
    const float pixels = std::max(across.x * float(image.Width()), across.y * float(image.Height()));
    if (!(pixels > 1.0f)) return Interpolated(image, u, v, wrap);
    const float level = std::min(std::log2(pixels), float(Levels() - 1));
    const int lower = int(level);
    const AColor fine = AtLevel(image, lower, u, v, wrap);
    if (lower + 1 >= Levels()) return fine;
    return Mix(fine, AtLevel(image, lower + 1, u, v, wrap), level - float(lower));
}

} // namespace host
