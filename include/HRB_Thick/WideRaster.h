#pragma once
// The wide method: a line whose coverage comes from the line filter and whose colour varies across.
//
// Every value of a pixel is computed from the segment and the pixel alone, never from a neighbour, so that a pixel gets
// the same sample whatever the bucket is.

#include <algorithm>
#include <bit>

#include "Base/HUtil/Simd.h"
#include "HRB_Thick/WidthSamples.h"

namespace RasterDetail {

// Edge integrals, four at a time. Arguments at or beyond the radius give any number that is not used.

/// A filter of radius 0: a pixel is inside or it is not, and nothing is ever evaluated.
struct HardEdge {
    Float4 operator()(Float4) const { return 1.0f; }
};
struct BoxEdge {
    const LineFilterBox& filter;
    Float4 operator()(Float4 e) const {
        return Float4(filter.Area(e[0]), filter.Area(e[1]), filter.Area(e[2]), filter.Area(e[3]));
    }
};
struct TableEdge {
    const LineFilterTable& filter;
    Float4 operator()(Float4 e) const { return filter.Lookup(e); }
};

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

/// Draws the pixels of one segment. Along the major axis run columns m, across it pixels n.
template <bool XMajor, PixelOperation Op, class Edge, class Sink>
class WideDrawer {
public:
    WideDrawer(const WideSegment& s, const PixelSpan& span, const WidthSampler& sampler, const Edge& edge, Sink& sink)
        : s_(s), span_(span), sampler_(sampler), edge_(edge), sink_(sink), ax_(s.a.x - 0.5f), ay_(s.a.y - 0.5f),
          perLength2_(1.0f / (s.length * s.length)), rowA_(Row(s.a)), rowB_(Row(s.b)) {}

    void Draw() {
        const float major = XMajor ? s_.dx : s_.dy, minor = XMajor ? s_.dy : s_.dx;
        const float aMajor = XMajor ? ax_ : ay_, aMinor = XMajor ? ay_ : ax_;
        const float cosine = std::fabs(major) / s_.length, sine = std::fabs(minor) / s_.length;
        // Half the extent across; where the filter is larger than a pixel, all of its radius.
        const float e = (s_.width + std::max(s_.radius + 1.0f, 2.0f * s_.radius)) / 2.0f;
        const float along = e * cosine + e * sine, slope = minor / major;
        const float half = (s_.width / 2.0f + s_.radius) / cosine + kStripMargin;
        const int lo = XMajor ? span_.x0 : span_.y0, hi = XMajor ? span_.x1 : span_.y1;
        const int from = ClampToInt(std::floor(std::min(aMajor, aMajor + major) - along), lo, hi + 1);
        const int to = ClampToInt(std::ceil(std::max(aMajor, aMajor + major) + along), lo - 1, hi);
        const Float4 nLo = float(XMajor ? span_.y0 : span_.x0), nHi = float(XMajor ? span_.y1 : span_.x1);
        const HalfPlane start(s_.start, s_.first ? -s_.radius : 0.0f), end(s_.end, s_.last ? -s_.radius : 0.0f);
        // The rows' bounds are worked out for four rows at a time.
        for (int m = from; m <= to; m += 4) {
            const Float4 rows = Float4(float(m)) + Float4(0.0f, 1.0f, 2.0f, 3.0f);
            const Float4 centre = Float4(aMinor) + (rows - Float4(aMajor)) * Float4(slope);
            Float4 low = centre - Float4(half), high = centre + Float4(half);
            start.Cut(rows, low, high);
            end.Cut(rows, low, high);
            const Int4 n0 = ToInts(MinOr(MaxOr(Ceil(low), nLo), nHi + Float4(1.0f)));
            const Int4 n1 = ToInts(MinOr(MaxOr(Floor(high), nLo - Float4(1.0f)), nHi));
            const int count = std::min(4, to - m + 1);
            for (int i = 0; i < count; ++i)
                for (int n = n0[i]; n <= n1[i]; n += 4) Pixels(m + i, n, n1[i] - n + 1);
        }
    }

private:
    // The bounds of a row only save looking at pixels that the exact test would drop, so they are generous by a
    // fraction of a pixel, and do not depend on the bucket. Edge lines may cross a row at a small angle, where rounding
    // counts for more.
    static constexpr float kMargin = 0.25f, kStripMargin = 0.03125f;

    /// An edge line as such a bound.
    class HalfPlane {
    public:
        HalfPlane(const EdgeLine& line, float limit)
            : alongM_(XMajor ? line.a : line.b), alongN_(XMajor ? line.b : line.a),
              offset_((line.a + line.b) * 0.5f + line.c - limit), perN_(1.0f / alongN_) {}
        /// Narrows low..high; where nothing of the row can be inside, to nothing.
        void Cut(Float4 m, Float4& low, Float4& high) const {
            constexpr float kSteep = 0.05f;
            const Float4 atZero = Float4(alongM_) * m + Float4(offset_), margin = kMargin;
            if (alongN_ > kSteep) {
                low = MaxOr(Float4(0.0f) - atZero * Float4(perN_) - margin, low);
            } else if (alongN_ < -kSteep) {
                high = MinOr(Float4(0.0f) - atZero * Float4(perN_) + margin, high);
            } else {
                const Float4 slope = alongN_, best = MaxOr(atZero + slope * low, atZero + slope * high);
                high = SelectLess(best, Float4(-kMargin), low - Float4(1.0f), high);
            }
        }

    private:
        float alongM_, alongN_, offset_, perN_;
    };

    // Four pixels of a row at once, of which the first `count` (or all) are drawn. Every lane is the scalar expression.
    void Pixels(int m, int n, int count) {
        const Float4 rowM = float(m), rowN = Float4(float(n)) + Float4(0.0f, 1.0f, 2.0f, 3.0f);
        const Float4 x = XMajor ? rowM : rowN, y = XMajor ? rowN : rowM;
        const Float4 px = x - Float4(ax_), py = y - Float4(ay_);
        const Float4 dx = s_.dx, dy = s_.dy, zero = 0.0f, one = 1.0f, radius = s_.radius;
        const Float4 cx = x + Float4(0.5f), cy = y + Float4(0.5f);
        const auto distance = [&](const EdgeLine& l) { return Float4(l.a) * cx + Float4(l.b) * cy + Float4(l.c); };
        const Float4 fromStart = distance(s_.start), fromEnd = distance(s_.end);
        const Float4 place = (dx * px + dy * py) * Float4(perLength2_);
        const Float4 t = MaxOr(MinOr(place, one), zero);
        const Float4 d = (dx * py - dy * px) / Float4(s_.length);
        const Float4 h = Float4(s_.a.width / 2.0f) + t * Float4(s_.b.width - s_.a.width) * Float4(0.5f);
        // A pixel exactly on a joint belongs to the segment that starts there.
        int inside = LanesLess(Abs(d), h + radius);
        inside &= s_.first ? ~LanesLess(fromStart, zero - radius) : ~LanesLess(fromStart, zero);
        inside &= s_.last ? ~LanesLess(fromEnd, zero - radius) : LanesLess(zero, fromEnd);
        inside &= (1 << std::min(count, 4)) - 1;
        if (inside) Emit(XMajor ? m : n, XMajor ? n : m, inside, t, d, h, Coverage(d, h, fromStart, fromEnd));
    }

    /// intended: one end factor a pixel, the root's before the tip's.
    Float4 Coverage(Float4 d, Float4 h, Float4 fromStart, Float4 fromEnd) const {
        const Float4 radius = s_.radius, zero = 0.0f, one = 1.0f;
        const Float4 inner = h - d, outer = zero - d - h;
        Float4 k = SelectLess(inner, radius, edge_(inner), one);
        k = SelectLess(zero - radius, outer, k - edge_(outer), k);
        if (s_.first) {
            const Float4 faded = k * edge_(fromStart);
            const Float4 other = s_.last ? SelectLess(fromEnd, radius, k * edge_(fromEnd), k) : k;
            k = SelectLess(fromStart, radius, faded, other);
        } else if (s_.last) {
            k = SelectLess(fromEnd, radius, k * edge_(fromEnd), k);
        }
        return MinOr(MaxOr(k, zero), one);
    }

    /// Hands over the flagged ones of four pixels from (x, y) on.
    void Emit(int x, int y, int inside, Float4 t4, Float4 d4, Float4 h4, Float4 coverage4) {
        float t[4], d[4], h[4], z[4], coverage[4];
        t4.Store(t);
        d4.Store(d);
        h4.Store(h);
        ((Float4(1.0f) - t4) * Float4(s_.a.z) + t4 * Float4(s_.b.z)).Store(z);
        coverage4.Store(coverage);
        for (; inside; inside &= inside - 1) {
            const int i = std::countr_zero(unsigned(inside));
            EmitOne(XMajor ? x : x + i, XMajor ? y + i : y, t[i], d[i], 2.0f * h[i], z[i], coverage[i]);
        }
    }

    void EmitOne(int x, int y, float t, float d, float width, float z, float coverage) {
        if constexpr (Op == PixelOperation::Image && requires { sink_.InsertRow(x, y, z, coverage, rowA_); }) {
            if (sampler_.samples < 2)
                return sink_.InsertRow(x, y, z, coverage, Float4(1.0f - t) * rowA_ + Float4(t) * rowB_);
        }
        float opacity;
        Point3 color;
        sampler_.Look<Op>(s_.a, s_.b, t, d, width, opacity, color);
        if constexpr (Op == PixelOperation::Shadow) {
            sink_.InsertShadow(x, y, z, opacity, coverage);
        } else {
            Point2 velocity;
            if constexpr (Sink::kWantsVelocity) velocity = Mix(s_.a.velocity, s_.b.velocity, t);
            sink_.InsertImage(x, y, z, color, coverage, opacity, velocity);
        }
    }

    static Float4 Row(const StrandVertex& v) { return Float4(v.opacity[0], v.color[0].x, v.color[0].y, v.color[0].z); }

    const WideSegment& s_;
    const PixelSpan& span_;
    const WidthSampler& sampler_;
    const Edge& edge_;
    Sink& sink_;
    float ax_, ay_;
    float perLength2_;
    Float4 rowA_, rowB_; ///< opacity and colour at both ends, of strands with one width sample
};

template <PixelOperation Op, class Edge, class Sink>
inline void DrawWideWith(const WideSegment& s, const PixelRect& bucket, const WidthSampler& sampler, const Edge& edge,
                         Sink& sink) {
    const PixelSpan span(s, bucket);
    if (span.Empty()) return;
    if (std::fabs(s.dx) > std::fabs(s.dy))
        WideDrawer<true, Op, Edge, Sink>(s, span, sampler, edge, sink).Draw();
    else
        WideDrawer<false, Op, Edge, Sink>(s, span, sampler, edge, sink).Draw();
}

/// Draws one segment with the filter that the target and the segment's width ask for.
template <PixelOperation Op, class Sink>
inline void DrawWide(WideSegment& s, const RasterTarget& target, const WidthSampler& sampler, Sink& sink) {
    if (!s.Measure()) return;
    if (!target.filter) {
        // A fresh box for every segment, so that it never has an earlier segment's terms; and the larger component
        // first, so that its edge integral is the true area. A component of exactly 0 would make the terms infinite.
        LineFilterBox box(target.boxSize);
        const float x = std::fabs(s.dx) / s.length, y = std::fabs(s.dy) / s.length;
        box.Setup(std::max(x, y), std::max(std::min(x, y), 1e-6f), s.width);
        s.radius = box.HalfSize() * 1.4142137f;
        DrawWideWith<Op>(s, target.bucket, sampler, BoxEdge{box}, sink);
    } else if (target.filter->GetType() == 2) {
        const auto* cone = static_cast<const LineFilterTable*>(target.filter);
        if (s.width < 0.15f && cone->Size() > 1.0f && target.fallback) cone = target.fallback;
        s.radius = cone->Size();
        DrawWideWith<Op>(s, target.bucket, sampler, TableEdge{*cone}, sink);
    } else {
        s.radius = 0.0f;
        DrawWideWith<Op>(s, target.bucket, sampler, HardEdge{}, sink);
    }
}

} // namespace RasterDetail
