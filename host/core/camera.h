#pragma once
// The target camera.

#include "sdk/object.h"
#include "sdk/plugapi.h"

namespace host {

// Parameters of a camera; angles in radians, lengths in world units.
enum CameraParam : ParamID {
    kCamFov,        ///< horizontal, 0.001..3.1
    kCamTargetDist, ///< distance to the target
    kCamOrtho,
    kCamManualClip,
    kCamHither, ///< clip range, used when kCamManualClip is on
    kCamYon,
    kCamNearRange, ///< environment ranges
    kCamFarRange,
};

/// A camera that looks down its node's -Z axis; a node with a target node turns it there (Node::SetTarget).
class TargetCamera : public CameraObject {
public:
    TargetCamera();
    ~TargetCamera() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return LOOKAT_CAM_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Target Camera"; }
    const char* GetObjectName() override { return "Target Camera"; }
    RefResult EvalCameraState(TimeValue t, Interval& valid, CameraState* cs) override;
    Interval ObjectValidity(TimeValue t) override;
    IParamBlock2* Params() { return block_; }

    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? block_ : nullptr; }
    void SetReference(int i, RefTargetHandle target) override;
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return GetReference(i); }
    TSTR SubAnimName(int) override { return "Parameters"; }
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? block_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? block_ : nullptr; }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    IParamBlock2* block_ = nullptr;
};

ClassDesc* TargetCameraDesc();

} // namespace host
