#pragma once
// Rays against triangle meshes.

#include <vector>

#include "sdk/color.h"
#include "sdk/point3.h"

namespace host {

// What kind of ray sees a mesh (bit set).
inline constexpr unsigned kCameraRays = 1, kShadowRays = 2;

/// Where a ray hit: mesh id, triangle, weights of its second and third corner, distance in units of the direction.
struct RayHit {
    int id = -1, face = -1;
    float u = 0, v = 0, t = 0;
};

/// Says how much light a triangle lets through; asked for meshes that were added as clear.
class ShadowFilter {
public:
    virtual ~ShadowFilter() = default;
    virtual Color Transparency(const RayHit& hit, const Point3& from, const Point3& direction) = 0;
};

/// A set of triangle meshes to shoot rays at. The same rays give the same answers on every x86-64 machine and for any
/// number of threads: the tree is built by one thread and without fused arithmetic. Filled by one thread, then asked by
/// any number of them.
class RayScene {
public:
    RayScene();
    ~RayScene();
    RayScene(const RayScene&) = delete;
    RayScene& operator=(const RayScene&) = delete;

    /// Adds a mesh: three corner indices a triangle; triangles with indices out of range or corners that are no numbers
    /// are never hit. `id` is what hits report. `clear` meshes ask the shadow filter.
    void AddMesh(int id, const std::vector<Point3>& points, const std::vector<int>& corners, unsigned rays, bool clear);
    /// Builds the tree; afterwards nothing may be added. Throws Error when memory runs out.
    void Commit();

    /// The nearest hit with near < t < far among meshes that `rays` see; false when there is none.
    bool Nearest(const Point3& from, const Point3& direction, float near, float far, unsigned rays, RayHit& hit) const;
    /// Light that passes from t = near to t = far: white when nothing is in the way, black behind an opaque triangle.
    /// Without a filter clear meshes are opaque.
    Color Transmission(const Point3& from, const Point3& direction, float near, float far, ShadowFilter* filter) const;

private:
    struct Impl;
    Impl* impl_;
};

} // namespace host
