#pragma once
// What the rasteriser is given: a strand's projected vertices.

#include <cmath>

#include "HRendBuf/LineFilter.h"
#include "HRendBuf/PixelRect.h"
#include "sdk/point2.h"
#include "sdk/point3.h"

inline constexpr int kMaxWidthSamples = 100;

/// A line: s = a x + b y + c is the signed distance of (x, y) from it, (a, b) being its unit normal.
struct EdgeLine {
    float a = 0, b = 0, c = 0;
    /// The line through `p` with a normal along `n`; without a usable normal, one that everything is far inside of.
    static EdgeLine Through(Point2 p, Point2 n) {
        const float length = Length(n);
        if (!(length > 0.0f)) return {0, 0, 1e30f};
        const float a = n.x / length, b = n.y / length;
        return {a, b, -(a * p.x + b * p.y)};
    }
    EdgeLine operator-() const { return {-a, -b, -c}; }
    float Distance(float x, float y) const { return a * x + b * y + c; }
};

/// A vertex of the wide method. Only the first W opacity and colour samples are read, W being the rasteriser's.
struct StrandVertex {
    float x = 0, y = 0; ///< screen position in pixels, pixel centres at +0.5
    float z = 0;        ///< camera-space depth
    float width = 0;    ///< pixels
    EdgeLine line;      ///< set by the rasteriser
    Point2 velocity;    ///< passed through to sinks that want it
    float opacity[kMaxWidthSamples];
    Point3 color[kMaxWidthSamples];
};

/// A vertex of the thin method.
struct ThinVertex {
    float x = 0, y = 0, z = 0;
    float width = 0, opacity = 0;
    Point2 velocity;
    Point3 color;
};

/// What a pass draws.
enum class PixelOperation { Image, Shadow };

/// Where a rasteriser draws, and with which filter.
struct RasterTarget {
    PixelRect bucket;
    const LineFilter* filter = nullptr;       ///< null: a box of radius boxSize
    float boxSize = 1.5f;                     ///< Filter_Size
    const LineFilterCone* fallback = nullptr; ///< cone of radius 1 for very thin strands; needed with a larger cone
};

/// How far from a segment's bounding box, in pixels, the wide method may draw: half the larger end width, the filter's
/// radius, and one pixel. Whoever rejects strands at a bucket's border has to leave them this much.
inline float RasterReach(float width, float filterRadius) {
    return width * 0.5f + filterRadius + 1.0f;
}

/// Largest radius the target's filter can have.
inline float MaxFilterRadius(const RasterTarget& target) {
    if (!target.filter) return (target.boxSize > 0.5f ? target.boxSize : 0.5f) * 1.4142137f;
    return target.filter->GetType() == 2 ? target.filter->Size() : 0.0f;
}

namespace RasterDetail {

/// Linear interpolation; exact at both ends.
template <class T>
inline T Mix(const T& a, const T& b, float t) {
    return (1.0f - t) * a + t * b;
}

/// Positions and widths that the pixel grid can take; anything else, not-a-number included, is not drawn.
template <class Vertex>
inline bool IsDrawable(const Vertex& v) {
    constexpr float kLimit = 1073741824.0f;
    return std::fabs(v.x) < kLimit && std::fabs(v.y) < kLimit && std::fabs(v.width) < kLimit && std::isfinite(v.z);
}

/// `v` as an integer within lo..hi; a value between integers is cut towards zero.
inline int ClampToInt(float v, int lo, int hi) {
    return v <= float(lo) ? lo : v >= float(hi) ? hi : int(v);
}

} // namespace RasterDetail
