#pragma once
// The camera of a render and its projection.

#include <string>

#include "core/core.h"
#include "sdk/render.h"

namespace host {

/// How a camera node sees at a time, and how that falls on a picture. The camera looks down -Z; screen y points down.
///   perspective: xscale = -(1 / tan(fov / 2)) * xc, screen x = xc + xscale * x / z
///   parallel:    xscale = width / (2 * d * tan(fov / 2)), screen x = xc + xscale * x; d is the distance of the target
/// and yscale = -aspect * xscale in both. Only the camera's place and direction count, not its node's scale.
struct CameraView {
    INode* node = nullptr;
    int projType = PROJ_PERSPECTIVE;
    Matrix3 camToWorld, worldToCam;
    float xscale = 1, yscale = 1, xc = 0, yc = 0;
    float hither = 0, yon = 1e30f;        ///< surfaces nearer or farther than this are not seen
    float nearRange = 0, farRange = 1000; ///< scale of depths: what is told apart is a share of its length

    /// Start and direction of the ray through a screen position, camera space; the direction's z is -1, so that
    /// distances in its units are depths.
    void RayThrough(float x, float y, Point3& from, Point3& direction) const {
        if (projType == PROJ_PARALLEL) {
            from = {(x - xc) / xscale, (y - yc) / yscale, 0};
            direction = {0, 0, -1};
        } else {
            from = {0, 0, 0};
            direction = {-(x - xc) / xscale, -(y - yc) / yscale, -1};
        }
    }
};

/// The node of the camera: of that name, or (name empty) the viewport's camera, else the scene's only one. Throws
/// Error.
INode* FindCamera(Core& core, const std::string& name);

/// The view of camera `node` at `t` on a picture.
CameraView MakeCameraView(INode* node, TimeValue t, int width, int height, float aspect);

} // namespace host
