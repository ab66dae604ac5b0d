#pragma once
// The pixels of a segment of the wide method, as many at a time as a vector has lanes.
//
// Every value of a pixel is computed from the segment and the pixel alone, never from a neighbour, and every lane is
// the scalar expression: a pixel gets the same sample whatever the bucket and the processor are.

#include <cstdint>

#include "Base/HUtil/Simd.h"
#include "HRB_Thick/WideSegment.h"

namespace RasterDetail {

// Edge integrals. Arguments at or beyond the radius give any number that is not used.

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
    template <class Lanes>
    [[gnu::always_inline]] Lanes operator()(Lanes e) const {
        return filter.Lookup(e);
    }
};

/// Four neighbouring pixels of row m, from n on, of which the first `left` (or all) may be drawn.
struct Quads {
    static constexpr int kMost = 48, kSpill = 16; ///< kSpill: room behind the last one that may be written
    int count = 0;
    float m[kMost + kSpill], n[kMost + kSpill], left[kMost + kSpill];
};

/// Goes through a segment's rows.
template <class Lanes>
class RowWalk {
public:
    [[gnu::always_inline]] explicit RowWalk(const WideRows& rows) : rows_(rows), m_(rows.from) {}
    /// True when there may be more.
    [[gnu::always_inline]] bool More() const { return open_ || m_ <= rows_.to; }
    /// The next quads of rows, of which there may be none.
    [[gnu::always_inline]] void Next(Quads& quads) {
        int count = 0;
        while (More() && count <= Quads::kMost - Lanes::kCount) {
            if (!open_) Enter();
            // Which rows have any is as good as random, so there is no branch for each.
            StoreFlagged(rowM_, open_, quads.m + count);
            StoreFlagged(n0_, open_, quads.n + count);
            StoreFlagged(end_ - n0_, open_, quads.left + count);
            count += __builtin_popcount(unsigned(open_));
            n0_ = n0_ + Lanes(4.0f);
            open_ = LanesLess(n0_, end_);
        }
        quads.count = count;
    }

private:
    [[gnu::always_inline]] void Enter() {
        const WideRows& s = rows_;
        rowM_ = Lanes(float(m_)) + Lanes::Ramp();
        const Lanes centre = Lanes(s.aN) + (rowM_ - Lanes(s.aM)) * Lanes(s.slope);
        Lanes low = centre - Lanes(s.reach), high = centre + Lanes(s.reach);
        s.start.Cut(rowM_, low, high);
        s.end.Cut(rowM_, low, high);
        n0_ = MinOr(MaxOr(Ceil(low), Lanes(s.low)), Lanes(s.high + 1.0f));
        const Lanes last = MinOr(MaxOr(Floor(high), Lanes(s.low - 1.0f)), Lanes(s.high));
        // Rows behind the last one have nothing.
        end_ = SelectLess(rowM_, Lanes(float(s.to) + 0.5f), last + Lanes(1.0f), n0_);
        open_ = LanesLess(n0_, end_);
        m_ += Lanes::kCount;
    }

    const WideRows& rows_;
    int m_;
    int open_ = 0;                               ///< rows entered that have pixels left, as flags
    Lanes rowM_ = 0.0f, n0_ = 0.0f, end_ = 0.0f; ///< of these, the pixels from n0_ on and before end_
};

/// What the exact test and the coverage need of some pixels.
template <class Lanes>
struct WidePixels {
    Lanes t;    ///< along the segment, 0 to 1
    Lanes d, h; ///< distance from the centre line, positive on one side, and half the width there
    Lanes fromStart, fromEnd;

    [[gnu::always_inline]] WidePixels(const WideRows& s, Lanes m, Lanes n) {
        const Lanes zero = 0.0f, one = 1.0f, half = 0.5f;
        const Lanes pm = m - Lanes(s.aM), pn = n - Lanes(s.aN), dM = s.dM, dN = s.dN;
        const Lanes centreM = m + half, centreN = n + half;
        fromStart = s.start.Distance(centreM, centreN);
        fromEnd = s.end.Distance(centreM, centreN);
        const Lanes place = (dM * pm + dN * pn) * Lanes(s.perLength2);
        t = MaxOr(MinOr(place, one), zero);
        d = (dM * pn - dN * pm) / Lanes(s.length);
        h = Lanes(s.halfWidth) + t * Lanes(s.widthStep) * half;
    }

    /// Flags of the pixels inside. One exactly on a joint belongs to the segment that starts there.
    [[gnu::always_inline]] unsigned Inside(const WideRows& s) const {
        const Lanes zero = 0.0f, outside = -s.radius;
        int inside = LanesLess(Abs(d), h + Lanes(s.radius));
        inside &= s.first ? ~LanesLess(fromStart, outside) : ~LanesLess(fromStart, zero);
        inside &= s.last ? ~LanesLess(fromEnd, outside) : LanesLess(zero, fromEnd);
        return unsigned(inside);
    }

    /// intended: one end factor a pixel, the root's before the tip's.
    template <class Edge>
    [[gnu::always_inline]] Lanes Coverage(const WideRows& s, const Edge& edge) const {
        const Lanes radius = s.radius, zero = 0.0f, one = 1.0f;
        const Lanes inner = h - d, outer = zero - d - h;
        Lanes k = SelectLess(inner, radius, edge(inner), one);
        k = SelectLess(zero - radius, outer, k - edge(outer), k);
        if (s.first) {
            const Lanes faded = k * edge(fromStart);
            const Lanes other = s.last ? SelectLess(fromEnd, radius, k * edge(fromEnd), k) : k;
            k = SelectLess(fromStart, radius, faded, other);
        } else if (s.last) {
            k = SelectLess(fromEnd, radius, k * edge(fromEnd), k);
        }
        return MinOr(MaxOr(k, zero), one);
    }
};

} // namespace RasterDetail
