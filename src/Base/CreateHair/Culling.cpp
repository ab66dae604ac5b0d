#include "Base/CreateHair/Culling.h"

#include <algorithm>
#include <cmath>

#include "HRendBuf/HairImageInfo.h"

namespace {

// Points nearer than this to the camera plane are not projected: the segment is kept, and the hand-off decides.
constexpr float kNearestDepth = -0.001f;

Box3 SegmentBox(const StrandContext& c, int segment) {
    const OutputStrands& s = c.run->strands;
    Box3 box;
    for (const int v : c.vertex)
        for (int k = 3 * segment; k <= 3 * segment + 3; ++k) box += Point3(s.X(v)[k], s.Y(v)[k], s.Z(v)[k]);
    return box;
}

// How far strands may leave the convex hull of their corner strands: weights run from -d to 1 + d and sum to one.
void EnlargeForRandomness(const HairParams& p, Box3& box) {
    const float d = p.Float(pid_dirRand);
    const Point3 extent = box.Width() * (3.0f * d);
    box.pmin -= extent;
    box.pmax += extent;
    if (p.On(pid_useCurliness)) box.EnlargeBy(p.Float(pid_curlRadius) * 1.001f);
}

// Largest width on screen, in pixels, of a strand whose nearest depth is `z`.
float LargestWidth(const GenerationRun& run, float z) {
    const float thickness = run.params->Float(pid_thickness) * std::max(run.profileMax, 0.0f);
    return std::fabs(run.request.image->MapCamToScreen(Point3(thickness, 0.0f, z)).x - run.request.image->centreX);
}

bool BoxTouches(const GenerationRun& run, const Box3& box, const ScreenRegion& region) {
    if (run.request.perspective && box.pmax.z > kNearestDepth) return true;
    float x0 = 1e30f, y0 = 1e30f, x1 = -1e30f, y1 = -1e30f;
    for (int i = 0; i < 8; ++i) {
        const Point2 p = run.request.image->MapCamToScreen(box.Corner(i));
        x0 = std::min(x0, p.x), x1 = std::max(x1, p.x);
        y0 = std::min(y0, p.y), y1 = std::max(y1, p.y);
    }
    // A drawn segment reaches beyond its line by its half extent along both axes, and overlaps its neighbour as far
    // again.
    const float reach = 2.0f * (LargestWidth(run, box.pmax.z) + region.filterRadius + 1.0f) + 2.0f;
    return x1 + reach >= float(region.x0) && x0 - reach <= float(region.x1) && y1 + reach >= float(region.y0) &&
           y0 - reach <= float(region.y1);
}

} // namespace

bool CullFace(StrandContext& c) {
    const GenerationRun& run = *c.run;
    const ScreenRegion* region = run.request.region;
    if (!region) return true;
    const int n = run.knots - 1;
    bool any = false;
    c.cullScratch.assign(size_t(n) + 2, 0);
    for (int s = 0; s < n; ++s) {
        Box3 box = SegmentBox(c, s);
        EnlargeForRandomness(*run.params, box);
        const bool touches = BoxTouches(run, box, *region);
        c.cullScratch[size_t(s) + 1] = touches;
        any = any || touches;
    }
    for (int s = 0; s < n; ++s) {
        const char* at = c.cullScratch.data() + s;
        c.segmentVisible[size_t(s)] = at[0] || at[1] || at[2];
    }
    return any;
}
