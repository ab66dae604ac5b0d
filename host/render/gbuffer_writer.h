#pragma once
// The G-buffer channels of a render.

#include <vector>

#include "render/camera_sampler.h"
#include "render/frame.h"

namespace host {

/// Fills a picture's channels from what is nearest at the pixels' centres. Different pixels may be put from different
/// threads. What lies in the channels, where something is seen:
///   material, node and render id   of the surface
///   coverage                       the pixel's alpha, 255 for 1
///   colour, transparency           of the surface, 255 for 1
///   real pixel                     the surface's colour as RealPixel
///   UV                             two floats of mapping channel 1
///   normal                         camera space, see image/packed_normal.h
///   velocity                       two floats: how far the point moves on the picture until the next frame, in pixels,
///                                  right and down; the mesh's and the camera's movement together
class GBufferWriter {
public:
    /// For channels that `out` has. Evaluates the scene at the next frame when velocities are asked for.
    GBufferWriter(Core& core, RenderContext& render, Picture& out);
    void Put(int x, int y, const SurfaceSample& centre, float alpha) const;

private:
    template <class T>
    T* Channel(uint32_t channel);
    bool Hit(int x, int y, const SurfaceLayer& surface, RayHit& hit) const;
    void PutHit(int x, int y, size_t index, const SurfaceLayer& surface) const;
    void MakeNextPlaces(Core& core);

    RenderContext& render_;
    Picture& out_;
    uint8_t *material_, *coverage_, *color_, *transparency_;
    uint16_t *node_, *renderId_;
    RealPixel* real_;
    uint32_t* normal_;
    Point2 *uv_, *velocity_;
    CameraView next_;                             ///< a frame later
    std::vector<std::vector<Point3>> nextPlaces_; ///< of the instances' vertices, in that camera's space
};

} // namespace host
