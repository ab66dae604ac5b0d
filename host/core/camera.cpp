#include "core/camera.h"

#include "core/param_builder.h"

namespace host {

namespace {

class CameraDesc : public ClassDesc2 {
public:
    CameraDesc(const char* name, const char* internalName, Class_ID id, CameraObject* (*make)())
        : name_(name), internalName_(internalName), id_(id), make_(make) {
        block_.intName = "cameraParams";
        block_.title = "Camera";
        block_.classDesc = this;
        block_.flags = P_AUTO_CONSTRUCT;
        block_.params = {FloatParam(kCamFov, "fov", 0.785398f, 0.001f, 3.1f),
                         FloatParam(kCamTargetDist, "targetDistance", 100, 0, kHuge),
                         BoolParam(kCamOrtho, "orthographic", false),
                         BoolParam(kCamManualClip, "manualClip", false),
                         FloatParam(kCamHither, "hither", 1, 0, kHuge),
                         FloatParam(kCamYon, "yon", 1000, 0, kHuge),
                         FloatParam(kCamNearRange, "nearRange", 0, 0, kHuge),
                         FloatParam(kCamFarRange, "farRange", 1000, 0, kHuge),
                         FloatParam(kCamRoll, "roll", 0, -kHuge, kHuge)};
        AddParamBlockDesc(&block_);
    }
    int IsPublic() override { return 1; }
    void* Create(bool) override { return make_(); }
    const char* ClassName() override { return name_; }
    SClass_ID SuperClassID() override { return CAMERA_CLASS_ID; }
    Class_ID ClassID() override { return id_; }
    const char* Category() override { return "Host"; }
    const char* InternalName() override { return internalName_; }

private:
    const char *name_, *internalName_;
    Class_ID id_;
    CameraObject* (*make_)();
    ParamBlockDesc2 block_;
};

} // namespace

ClassDesc2* TargetCameraDesc() {
    static CameraDesc desc("Target Camera", "TargetCamera", LOOKAT_CAM_CLASS_ID,
                           []() -> CameraObject* { return new TargetCamera; });
    return &desc;
}

ClassDesc2* FreeCameraDesc() {
    static CameraDesc desc("Free Camera", "FreeCamera", SIMPLE_CAM_CLASS_ID,
                           []() -> CameraObject* { return new FreeCamera; });
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
