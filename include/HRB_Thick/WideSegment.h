#pragma once
// A segment of the wide method: its ends, the pixels it may draw, and the terms that all of its pixels share.

#include <algorithm>
#include <cmath>

#include "HRB_Thick/StrandVertex.h"

namespace RasterDetail {

/// A segment between two vertices, each with its edge line facing the segment.
struct WideSegment {
    const StrandVertex& a;
    const StrandVertex& b;
    EdgeLine start, end;
    bool first, last; ///< the strand's root or tip, which is to fade
    // Set by Measure:
    float dx = 0, dy = 0, length = 0;
    float width = 0;  ///< the larger of both ends
    float radius = 0; ///< of the filter

    /// False when the segment draws nothing anywhere.
    bool Measure() {
        if (!IsDrawable(a) || !IsDrawable(b)) return false;
        dx = b.x - a.x;
        dy = b.y - a.y;
        length = std::sqrt(dx * dx + dy * dy);
        width = std::max(a.width, b.width);
        if (!(length > 0.0f)) return false;
        const bool samePixel = std::floor(a.x) == std::floor(b.x) && std::floor(a.y) == std::floor(b.y);
        return !(samePixel && width < 1.0f && length * width < 0.01f);
    }
    bool IsXMajor() const { return std::fabs(dx) > std::fabs(dy); }
};

/// The pixels that a segment may draw: its bounding box with the reach, cut with the bucket. Bounds are inclusive.
struct PixelSpan {
    int x0, x1, y0, y1;
    PixelSpan(const WideSegment& s, const PixelRect& r) {
        const float reach = RasterReach(s.width, s.radius) - 0.5f, back = RasterReach(s.width, s.radius) + 0.5f;
        x0 = ClampToInt(std::ceil(std::min(s.a.x, s.b.x) - back), r.x0, r.x1);
        y0 = ClampToInt(std::ceil(std::min(s.a.y, s.b.y) - back), r.y0, r.y1);
        x1 = ClampToInt(std::floor(std::max(s.a.x, s.b.x) + reach), r.x0 - 1, r.x1 - 1);
        y1 = ClampToInt(std::floor(std::max(s.a.y, s.b.y) + reach), r.y0 - 1, r.y1 - 1);
    }
    bool Empty() const { return x0 > x1 || y0 > y1; }
};

/// An edge line in rows m and pixels n, and the bound it gives to a row's pixels. Such bounds only save looking at
/// pixels that the exact test would drop, so they are generous by a fraction of a pixel, and do not depend on the
/// bucket. Edge lines may cross a row at a small angle, where rounding counts for more.
struct RowEdge {
    float alongM, alongN, c;
    float offset, perN;

    RowEdge(float alongM, float alongN, const EdgeLine& line, float limit)
        : alongM(alongM), alongN(alongN), c(line.c), offset((line.a + line.b) * 0.5f + line.c - limit),
          perN(1.0f / alongN) {}
    template <class Lanes>
    [[gnu::always_inline]] Lanes Distance(Lanes centreM, Lanes centreN) const {
        return Lanes(alongM) * centreM + Lanes(alongN) * centreN + Lanes(c);
    }
    /// Narrows low..high; where nothing of the row can be inside, to nothing.
    template <class Lanes>
    [[gnu::always_inline]] void Cut(Lanes m, Lanes& low, Lanes& high) const {
        constexpr float kMargin = 0.25f, kSteep = 0.05f;
        const Lanes atZero = Lanes(alongM) * m + Lanes(offset), margin = kMargin;
        if (alongN > kSteep) {
            low = MaxOr(Lanes(0.0f) - atZero * Lanes(perN) - margin, low);
        } else if (alongN < -kSteep) {
            high = MinOr(Lanes(0.0f) - atZero * Lanes(perN) + margin, high);
        } else {
            const Lanes slope = alongN, best = MaxOr(atZero + slope * low, atZero + slope * high);
            high = SelectLess(best, Lanes(-kMargin), low - Lanes(1.0f), high);
        }
    }
};

/// What the pixels of a segment share. Along the major axis run rows m (columns, where that is x), across it pixels n.
struct WideRows {
    float aM, aN, dM, dN;            ///< first vertex less half a pixel, and the way to the second
    float length;                    ///< negative where rows are rows of y: turning the axes turns the side
    float perLength2;
    float halfWidth, widthStep;      ///< half the first width, and by how much the second is wider
    float radius;                    ///< of the filter
    bool first, last;                ///< the ends that fade
    RowEdge start, end;
    float slope, reach;              ///< of the centre line, and how far from it a row's pixels lie
    int from, to;                    ///< rows
    float low, high;                 ///< pixels of the bucket

    WideRows(const WideSegment& s, const PixelSpan& span) : WideRows(s, span, s.IsXMajor()) {}

private:
    static constexpr float kStripMargin = 0.03125f;

    WideRows(const WideSegment& s, const PixelSpan& span, bool x)
        : aM((x ? s.a.x : s.a.y) - 0.5f), aN((x ? s.a.y : s.a.x) - 0.5f), dM(x ? s.dx : s.dy), dN(x ? s.dy : s.dx),
          length(x ? s.length : -s.length), perLength2(1.0f / (s.length * s.length)), halfWidth(s.a.width / 2.0f),
          widthStep(s.b.width - s.a.width), radius(s.radius), first(s.first), last(s.last),
          start(x ? s.start.a : s.start.b, x ? s.start.b : s.start.a, s.start, s.first ? -s.radius : 0.0f),
          end(x ? s.end.a : s.end.b, x ? s.end.b : s.end.a, s.end, s.last ? -s.radius : 0.0f), slope(dN / dM),
          low(float(x ? span.y0 : span.x0)), high(float(x ? span.y1 : span.x1)) {
        const float cosine = std::fabs(dM) / s.length, sine = std::fabs(dN) / s.length;
        // Half the extent across; where the filter is larger than a pixel, all of its radius.
        const float e = (s.width + std::max(s.radius + 1.0f, 2.0f * s.radius)) / 2.0f;
        const float along = e * cosine + e * sine;
        reach = (s.width / 2.0f + s.radius) / cosine + kStripMargin;
        const int lo = x ? span.x0 : span.y0, hi = x ? span.x1 : span.y1;
        from = ClampToInt(std::floor(std::min(aM, aM + dM) - along), lo, hi + 1);
        to = ClampToInt(std::ceil(std::max(aM, aM + dM) + along), lo - 1, hi);
    }
};

} // namespace RasterDetail
