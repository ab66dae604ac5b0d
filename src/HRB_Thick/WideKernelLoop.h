#pragma once
// The loop of all kernels. Whoever includes this may be compiled for another processor than the rest: nothing in here
// leaves a function behind that other files could share.

#include "HRB_Thick/WideKernel.h"

namespace RasterDetail {

/// Writes the samples of Lanes::kQuads quads.
template <class Lanes>
[[gnu::always_inline]] inline void SampleQuads(const WideRows& rows, const WideLook& look, const LineFilterTable& filter,
                                               const Quads& quads, int at, WideQuad* out) {
    const Lanes m = Lanes::PerQuad(quads.m + at), n = Lanes::PerQuad(quads.n + at) + Lanes::RampOfQuad();
    const WidePixels<Lanes> pixels(rows, m, n);
    const Lanes t = pixels.t, back = Lanes(1.0f) - t;
    const auto mixed = [&](const float (&v)[2]) __attribute__((always_inline)) {
        return back * Lanes(v[0]) + t * Lanes(v[1]);
    };
    Lanes z = mixed(look.z), opacity = mixed(look.opacity), coverage = pixels.Coverage(rows, TableEdge{filter});
    Lanes red = mixed(look.color[0]), green = mixed(look.color[1]), blue = mixed(look.color[2]), b1 = blue, b2 = blue;
    Transpose(z, opacity, coverage, red);
    Transpose(green, blue, b1, b2);
    const Lanes head[4] = {z, opacity, coverage, red}, tail[4] = {green, blue, b1, b2};
    unsigned inside = pixels.Inside(rows) & unsigned(LanesLess(Lanes::RampOfQuad(), Lanes::PerQuad(quads.left + at)));
    for (int q = 0; q < Lanes::kQuads; ++q, inside >>= 4) {
        WideQuad& quad = out[q];
        quad.m = quads.m[at + q];
        quad.n = quads.n[at + q];
        quad.flags = inside & 15u;
        for (int i = 0; i < 4; ++i) {
            float* const to = quad.samples[i].values;
            head[i].StoreQuad(q, to);
            tail[i].StoreQuad(q, to + 4);
        }
    }
}

template <class Lanes>
void RunWideKernel(const WideRows& rows, const WideLook& look, const LineFilterTable& filter, void* context,
                   void (*take)(void* context, const WideQuad* quads, int count)) {
    Quads quads;
    WideQuad out[Quads::kMost + Lanes::kQuads];
    RowWalk<Lanes> walk(rows);
    while (walk.More()) {
        walk.Next(quads);
        for (int i = quads.count; i < quads.count + Lanes::kQuads - 1; ++i)
            quads.m[i] = quads.n[i] = quads.left[i] = 0.0f;
        for (int i = 0; i < quads.count; i += Lanes::kQuads)
            SampleQuads<Lanes>(rows, look, filter, quads, i, out + i);
        take(context, out, quads.count);
    }
}

} // namespace RasterDetail
