#pragma once
// One camera sample: surfaces along a ray, and the air between them.

#include <array>
#include <cstdint>

#include "render/render_context.h"
#include "render/surface_context.h"

namespace host {

/// A shaded surface on a camera ray.
struct SurfaceLayer {
    Color color, transparency;
    Point3 p, normal;     ///< camera space
    int instance = -1;    ///< -1: nothing there
    bool skipped = false; ///< the material says that there is no surface here
    int materialId = 0;
};

/// A camera sample's surfaces without the air: the nearest one, and the colour of all of them over the background, cut
/// to 0..1.
struct SurfaceSample {
    SurfaceLayer first;
    bool more = false; ///< something shows through the first surface: another surface, or the background
    Color flat;
};

/// A camera sample's end: colour with the background, the part of it that is background, and alpha.
struct PixelSample {
    Color color, background;
    float alpha = 0;
    float z = kEmptyDepth; ///< camera-space z of the nearest surface
};

/// Takes camera samples for one thread. The atmospheric effects are all there by then.
class CameraSampler {
public:
    explicit CameraSampler(RenderContext& render);

    /// Surfaces at the screen position (x, y).
    SurfaceSample Surfaces(float x, float y);
    /// The whole sample: every layer from the farthest to the nearest, and before each of them the air in front of what
    /// lies behind.
    PixelSample Shade(float x, float y);
    /// The same from known surfaces.
    PixelSample Shade(float x, float y, const SurfaceSample& known);
    uint64_t Segments() const { return segments_; }

private:
    static constexpr int kMostLayers = 32; ///< surfaces seen through one another
    struct View {
        Point3 from, direction, unit;
        IPoint2 pixel;
        Point2 screen;
    };
    View ViewThrough(float x, float y) const;
    int Trace(const View& view);
    bool ShadeNearest(const View& view, float near, SurfaceLayer& layer, float& depth);
    Color Behind(const View& view);
    PixelSample Compose(const View& view, const SurfaceLayer* layers, int count);
    void Air(const View& view, const SurfaceLayer* nearer, const Point3& far, bool background, PixelSample& s,
             Color& transparency);
    Point3 FarPoint(const View& view) const;

    RenderContext& render_;
    const size_t effects_; ///< number of atmospheric effects
    // Kept from sample to sample: clearing them takes longer than a question.
    SurfaceContext sc_;
    std::array<SurfaceLayer, size_t(kMostLayers)> layers_;
    uint64_t segments_ = 0;
};

} // namespace host
