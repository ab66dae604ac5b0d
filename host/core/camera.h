#pragma once
// Cameras: with a target, and free ones.

#include "sdk/object.h"
#include "sdk/plugapi.h"

namespace host {

ClassDesc2* TargetCameraDesc();
ClassDesc2* FreeCameraDesc();

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
    kCamRoll, ///< turn about the view axis in radians, clockwise as the camera sees itself: the picture turns the other
              ///< way
};

/// A camera that looks down its node's -Z axis; a node with a target node turns it there (Node::SetTarget).
class TargetCamera : public CameraObject {
public:
    TargetCamera() : TargetCamera(TargetCameraDesc()) {}
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

protected:
    /// With the parameter block of that class.
    explicit TargetCamera(ClassDesc2* desc) { desc->MakeAutoParamBlocks(this); }
    virtual TargetCamera* New() const { return new TargetCamera; }

private:
    IParamBlock2* block_ = nullptr;
};

/// A camera that looks where its node is turned to. Its target distance is only a length: orthographic views are as
/// wide as what a perspective view shows there.
class FreeCamera : public TargetCamera {
public:
    FreeCamera() : TargetCamera(FreeCameraDesc()) {}
    Class_ID ClassID() override { return SIMPLE_CAM_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Free Camera"; }
    const char* GetObjectName() override { return "Free Camera"; }

protected:
    TargetCamera* New() const override { return new FreeCamera; }
};

} // namespace host
