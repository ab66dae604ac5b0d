#include "core/camera.h"

#include "core/block_class.h"

namespace host {

namespace {

std::vector<ParamDef> CameraParams() {
    return {FloatParam(kCamFov, "fov", 0.785398f, 0.001f, 3.1f),
            FloatParam(kCamTargetDist, "targetDistance", 100, 0, kHuge),
            BoolParam(kCamOrtho, "orthographic", false),
            BoolParam(kCamManualClip, "manualClip", false),
            FloatParam(kCamHither, "hither", 1, 0, kHuge),
            FloatParam(kCamYon, "yon", 1000, 0, kHuge),
            FloatParam(kCamNearRange, "nearRange", 0, 0, kHuge),
            FloatParam(kCamFarRange, "farRange", 1000, 0, kHuge),
            FloatParam(kCamRoll, "roll", 0, -kHuge, kHuge)};
}

} // namespace

ClassDesc2* TargetCameraDesc() {
    static BlockClassDesc<TargetCamera> desc("Target Camera", "TargetCamera", CAMERA_CLASS_ID, LOOKAT_CAM_CLASS_ID,
                                             CameraParams());
    return &desc;
}

ClassDesc2* FreeCameraDesc() {
    static BlockClassDesc<FreeCamera> desc("Free Camera", "FreeCamera", CAMERA_CLASS_ID, SIMPLE_CAM_CLASS_ID,
                                           CameraParams());
    return &desc;
}

void TargetCamera::SetReference(int i, RefTargetHandle target) {
    if (i == 0) block_ = static_cast<IParamBlock2*>(target);
}

RefResult TargetCamera::EvalCameraState(TimeValue t, Interval& valid, CameraState* cs) {
    cs->isOrtho = block_->GetInt(kCamOrtho, t, valid) != 0;
    cs->fov = block_->GetFloat(kCamFov, t, valid);
    cs->tdist = block_->GetFloat(kCamTargetDist, t, valid);
    cs->manualClip = block_->GetInt(kCamManualClip, t, valid) != 0;
    cs->hither = block_->GetFloat(kCamHither, t, valid);
    cs->yon = block_->GetFloat(kCamYon, t, valid);
    cs->nearRange = block_->GetFloat(kCamNearRange, t, valid);
    cs->farRange = block_->GetFloat(kCamFarRange, t, valid);
    cs->roll = block_->GetFloat(kCamRoll, t, valid);
    return REF_SUCCEED;
}

Interval TargetCamera::ObjectValidity(TimeValue t) {
    Interval valid = FOREVER;
    CameraState cs;
    EvalCameraState(t, valid, &cs);
    return valid;
}

RefTargetHandle TargetCamera::Clone(RemapDir& remap) {
    auto* const copy = New();
    copy->ReplaceReference(0, remap.CloneRef(block_));
    return copy;
}

} // namespace host
