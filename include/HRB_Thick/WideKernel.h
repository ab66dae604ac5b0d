#pragma once
// Segments with a tabulated filter and one width sample, which most strands of a picture have: their samples are made
// by a kernel that uses the widest vectors of the processor. All kernels make the same samples, bit for bit.

#include "HRB_Thick/WidePixels.h"
#include "HRendBuf/SampleLanes.h"

namespace RasterDetail {

/// What a sample's pixels look like at both ends of a segment: depth, opacity, colour.
struct WideLook {
    float z[2];
    float opacity[2];
    float color[3][2];
    WideLook(const StrandVertex& a, const StrandVertex& b)
        : z{a.z, b.z}, opacity{a.opacity[0], b.opacity[0]},
          color{{a.color[0].x, b.color[0].x}, {a.color[0].y, b.color[0].y}, {a.color[0].z, b.color[0].z}} {}
};

/// Samples of four neighbouring pixels of row m, from n on.
struct WideQuad {
    float m, n;
    unsigned flags; ///< which of them there are
    SampleLane samples[4];
};

/// Gives the samples of a segment, `take(context, quads, count)` being called as often as needed.
using WideKernel = void (*)(const WideRows&, const WideLook&, const LineFilterTable&, void* context,
                            void (*take)(void* context, const WideQuad* quads, int count));

/// The kernels of so many lanes, which are null where the processor or the build has none.
WideKernel WideKernel4();
WideKernel WideKernel8();
WideKernel WideKernel16();
/// The fastest one.
WideKernel BestWideKernel();

} // namespace RasterDetail
