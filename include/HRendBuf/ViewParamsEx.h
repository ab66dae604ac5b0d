#pragma once
// The view of a hair pass: projection, clip range and camera matrices.

#include "sdk/render.h"

class INode;

/// The host's view parameters with the camera's matrices.
class ViewParamsEx : public ViewParams {
public:
    INode* cameraNode = nullptr;
    Matrix3 camToWorld;
    Matrix3 worldToCam;  ///< inverse of camToWorld
    Matrix3 camToWorldN; ///< camToWorld with orthogonal unit axes; its view axis keeps its direction
    Matrix3 nodeMatrix;  ///< valid when hasNodeMatrix is set
    bool hasNodeMatrix = false;

    /// Takes over the context's camera. True when it differs from the stored one (a first call always does); false
    /// leaves everything as it is.
    bool SetFromContext(const RenderGlobalContext& context);
    /// Takes over the camera of the active viewport at `t`. False when there is no host, no viewport or no camera node.
    bool SetFromViewport(TimeValue t);
    /// Takes over the camera that `bitmap` was rendered with; `field` is 0 or 1. False without render information.
    bool SetFromRenderInfo(Bitmap& bitmap, int field);
    /// A light's view. `width` is the width of a parallel view in units of 400, `fov` the cone angle in radians.
    void SetLight(int lightProjType, const Matrix3& lightToWorld, float lightNear, float lightFar, float width,
                  float lightFov);
    /// Stores a node matrix; null forgets it.
    void SetNodeMatrix(const Matrix3* source);

private:
    void SetCamera(INode* node, const Matrix3& toWorld);
    /// A range whose far end is not behind the near one becomes 0 .. 1000.
    void SetRange(float nearEnd, float farEnd);

    bool isSet_ = false;
};
