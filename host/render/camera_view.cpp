#include "render/camera_view.h"

#include <algorithm>
#include <cmath>

#include "core/error.h"
#include "core/nearest_name.h"

namespace host {

namespace {

std::vector<INode*> Cameras(Core& core) {
    std::vector<INode*> cameras;
    for (Node* const node : core.AllNodes())
        if (node->GetObjectRef() && node->GetObjectRef()->SuperClassID() == CAMERA_CLASS_ID) cameras.push_back(node);
    return cameras;
}

std::vector<std::string> Names(const std::vector<INode*>& nodes) {
    std::vector<std::string> names;
    for (INode* const node : nodes) names.emplace_back(node->GetName());
    return names;
}

/// Distance of the node's target where it has one, else what the camera says.
float TargetDistance(INode* node, TimeValue t, const CameraState& state) {
    auto* const own = dynamic_cast<Node*>(node);
    if (!own || !own->GetTarget()) return state.tdist;
    return Length(own->GetTarget()->GetNodeTM(t).GetTrans() - node->GetNodeTM(t).GetTrans());
}

/// The node's place and directions as a rigid transform: axes made orthogonal, keeping -Z.
Matrix3 Rigid(const Matrix3& tm) {
    const Point3 z = Normalize(tm.GetRow(2));
    const Point3 x = Normalize(CrossProd(tm.GetRow(1), z));
    if (z == Point3() || x == Point3()) return TransMatrix(tm.GetTrans());
    return {x, CrossProd(z, x), z, tm.GetTrans()};
}

/// Turned about its own view axis.
Matrix3 Rolled(const Matrix3& tm, float roll) {
    if (roll == 0.0f) return tm;
    const float c = std::cos(roll), s = std::sin(roll);
    const Point3 x = tm.GetRow(0), y = tm.GetRow(1);
    return {x * c - y * s, x * s + y * c, tm.GetRow(2), tm.GetTrans()};
}

// The depth range: the clip range when it is set by hand, else the environment ranges.
void SetClip(const CameraState& state, CameraView& view) {
    if (state.manualClip && state.yon > state.hither) {
        view.hither = std::max(state.hither, 0.0f);
        view.yon = state.yon;
        view.nearRange = view.hither;
        view.farRange = view.yon;
    } else if (state.farRange > state.nearRange) {
        view.nearRange = state.nearRange;
        view.farRange = state.farRange;
    }
}

} // namespace

INode* FindCamera(Core& core, const std::string& name) {
    const std::vector<INode*> cameras = Cameras(core);
    if (name.empty()) {
        ViewExp* const viewport = core.GetActiveViewport();
        INode* const camera = viewport->GetViewCamera();
        core.ReleaseViewport(viewport);
        if (camera) return camera;
        if (cameras.size() == 1) return cameras[0];
        if (cameras.empty()) throw Error("the scene has no camera, expected one");
        throw Error("the scene has several cameras, expected the name of one: " + NearestNames("", Names(cameras)));
    }
    for (INode* const node : cameras)
        if (node->GetName() == name) return node;
    const std::string near = NearestNames(name, Names(cameras));
    throw Error("there is no camera '" + name + "'" + (near.empty() ? "" : ", expected one of " + near));
}

CameraView MakeCameraView(INode* node, TimeValue t, int width, int height, float aspect) {
    CameraState state;
    Interval valid = FOREVER;
    const ObjectState& os = node->EvalWorldState(t);
    if (os.obj && os.obj->SuperClassID() == CAMERA_CLASS_ID)
        static_cast<CameraObject*>(os.obj)->EvalCameraState(t, valid, &state);
    CameraView view;
    view.node = node;
    view.camToWorld = Rolled(Rigid(node->GetObjectTM(t)), state.roll);
    view.worldToCam = Inverse(view.camToWorld);
    view.xc = float(width) / 2.0f;
    view.yc = float(height) / 2.0f;
    const float slope = std::tan(state.fov * 0.5f);
    if (state.isOrtho) {
        view.projType = PROJ_PARALLEL;
        view.xscale = float(width) / (2.0f * std::max(TargetDistance(node, t, state), 1e-6f) * slope);
    } else {
        view.xscale = -(1.0f / slope) * view.xc;
    }
    view.yscale = -aspect * view.xscale;
    SetClip(state, view);
    return view;
}

} // namespace host
