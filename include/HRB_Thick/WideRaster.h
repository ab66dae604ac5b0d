#pragma once
// The wide method: a line whose coverage comes from the line filter and whose colour varies across.

#include <algorithm>
#include <bit>
#include <type_traits>

#include "HRB_Thick/WideKernel.h"
#include "HRB_Thick/WidthSamples.h"

namespace RasterDetail {

/// Draws the pixels of one segment.
template <bool XMajor, PixelOperation Op, class Edge, class Sink>
class WideDrawer {
public:
    WideDrawer(const WideSegment& s, const WidthSampler& sampler, const Edge& edge, Sink& sink)
        : s_(s), sampler_(sampler), edge_(edge), sink_(sink) {}

    void Draw(const WideRows& rows) {
        Quads quads;
        RowWalk<Float4> walk(rows);
        while (walk.More()) {
            walk.Next(quads);
            for (int i = 0; i < quads.count; ++i) {
                const WidePixels<Float4> pixels(rows, quads.m[i], Float4(quads.n[i]) + Float4::Ramp());
                const int drawn = LanesLess(Float4::Ramp(), Float4(quads.left[i]));
                const unsigned inside = pixels.Inside(rows) & unsigned(drawn);
                if (inside) Emit(int(quads.m[i]), int(quads.n[i]), inside, pixels, pixels.Coverage(rows, edge_));
            }
        }
    }

private:
    /// Hands over the flagged ones of four pixels of row m from n on.
    void Emit(int m, int n, unsigned inside, const WidePixels<Float4>& pixels, Float4 coverage4) {
        const Float4 z4 = (Float4(1.0f) - pixels.t) * Float4(s_.a.z) + pixels.t * Float4(s_.b.z);
        float t[4], d[4], h[4], z[4], coverage[4];
        pixels.t.Store(t);
        pixels.d.Store(d);
        pixels.h.Store(h);
        z4.Store(z);
        coverage4.Store(coverage);
        for (; inside; inside &= inside - 1) {
            const int i = std::countr_zero(inside);
            EmitOne(XMajor ? m : n + i, XMajor ? n + i : m, t[i], d[i], 2.0f * h[i], z[i], coverage[i]);
        }
    }

    void EmitOne(int x, int y, float t, float d, float width, float z, float coverage) {
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

    const WideSegment& s_;
    const WidthSampler& sampler_;
    const Edge& edge_;
    Sink& sink_;
};

/// Sinks that take the samples of a kernel.
template <class Sink>
inline constexpr bool kTakesQuads = requires(Sink& sink, const SampleLane* s) {
    sink.template InsertLanes<true>(0, 0, 0u, s);
};

template <bool XMajor, class Sink>
inline void TakeQuads(void* sink, const WideQuad* quads, int count) {
    for (const WideQuad* q = quads; q != quads + count; ++q) {
        const int m = int(q->m), n = int(q->n);
        static_cast<Sink*>(sink)->template InsertLanes<XMajor>(XMajor ? m : n, XMajor ? n : m, q->flags, q->samples);
    }
}

template <PixelOperation Op, class Edge, class Sink>
inline void DrawWideWith(const WideSegment& s, const PixelRect& bucket, const WidthSampler& sampler, const Edge& edge,
                         Sink& sink) {
    const PixelSpan span(s, bucket);
    if (span.Empty()) return;
    const WideRows rows(s, span);
    if constexpr (Op == PixelOperation::Image && std::is_same_v<Edge, TableEdge> && kTakesQuads<Sink>) {
        if (sampler.samples < 2) {
            const auto take = s.IsXMajor() ? TakeQuads<true, Sink> : TakeQuads<false, Sink>;
            return sampler.kernel(rows, WideLook(s.a, s.b), edge.filter, &sink, take);
        }
    }
    if (s.IsXMajor())
        WideDrawer<true, Op, Edge, Sink>(s, sampler, edge, sink).Draw(rows);
    else
        WideDrawer<false, Op, Edge, Sink>(s, sampler, edge, sink).Draw(rows);
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
