#include "HRendBuf/ViewParamsEx.h"

#include "sdk/bitmap.h"
#include "sdk/core.h"

namespace {

/// Unit axes at right angles: the view axis z keeps its direction, then y, then x with the matrix's own handedness.
Matrix3 Orthonormal(const Matrix3& m) {
    const Point3 z = Normalize(m.GetRow(2));
    const Point3 y = Normalize(m.GetRow(1) - DotProd(m.GetRow(1), z) * z);
    Point3 x = CrossProd(y, z);
    if (DotProd(x, m.GetRow(0)) < 0.0f) x = -x;
    return {x, y, z, m.GetTrans()};
}

} // namespace

void ViewParamsEx::SetCamera(INode* node, const Matrix3& toWorld) {
    cameraNode = node;
    camToWorld = toWorld;
    worldToCam = Inverse(toWorld);
    affineTM = worldToCam;
    camToWorldN = Orthonormal(toWorld);
    isSet_ = true;
}

void ViewParamsEx::SetRange(float nearEnd, float farEnd) {
    const bool usable = farEnd > nearEnd;
    nearRange = usable ? nearEnd : 0.0f;
    farRange = usable ? farEnd : 1000.0f;
}

bool ViewParamsEx::SetFromContext(const RenderGlobalContext& context) {
    if (isSet_ && camToWorld == context.camToWorld) return false;
    SetCamera(nullptr, context.camToWorld);
    projType = context.projType;
    SetRange(context.nearRange, context.farRange);
    return true;
}

bool ViewParamsEx::SetFromViewport(TimeValue t) {
    Interface* core = GetCOREInterface();
    ViewExp* viewport = core ? core->GetActiveViewport() : nullptr;
    if (!viewport) return false;
    INode* node = viewport->GetViewCamera();
    Object* object = node ? node->EvalWorldState(t).obj : nullptr;
    const bool usable = object && object->SuperClassID() == CAMERA_CLASS_ID;
    if (usable) {
        CameraState state;
        Interval valid = FOREVER;
        static_cast<CameraObject*>(object)->EvalCameraState(t, valid, &state);
        projType = state.isOrtho ? PROJ_PARALLEL : PROJ_PERSPECTIVE;
        fov = state.fov;
        if (state.manualClip)
            SetRange(state.hither, state.yon);
        else
            SetRange(state.nearRange, state.farRange);
        SetCamera(node, node->GetObjectTM(t));
    }
    core->ReleaseViewport(viewport);
    return usable;
}

bool ViewParamsEx::SetFromRenderInfo(Bitmap& bitmap, int field) {
    const RenderInfo* info = bitmap.GetRenderInfo();
    if (!info) return false;
    projType = info->projType == PROJ_PARALLEL ? PROJ_PARALLEL : PROJ_PERSPECTIVE;
    SetCamera(nullptr, info->camToWorld[field]);
    return true;
}

void ViewParamsEx::SetLight(int lightProjType, const Matrix3& lightToWorld, float lightNear, float lightFar,
                            float width, float lightFov) {
    projType = lightProjType;
    zoom = width;
    fov = lightFov;
    SetRange(lightNear, lightFar);
    SetCamera(nullptr, lightToWorld);
}

void ViewParamsEx::SetNodeMatrix(const Matrix3* source) {
    hasNodeMatrix = source != nullptr;
    if (source) nodeMatrix = *source;
}
