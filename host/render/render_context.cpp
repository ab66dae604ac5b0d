#include "render/render_context.h"

#include <algorithm>

#include "render/surface_context.h"

namespace host {

void AtmosphereChain::Shade(ShadeContext& sc, const Point3& p0, const Point3& p1, Color& col, Color& trans,
                            bool isBackground) {
    for (size_t i = effects_.size(); i-- > 0;) effects_[i]->Shade(sc, p0, p1, col, trans, isBackground);
}

RenderContext::RenderContext(Core& core, const FrameSettings& settings, const CameraView& view)
    : core_(core), view_(view) {
    Interval valid = FOREVER;
    time = settings.time;
    projType = view.projType;
    devWidth = settings.width;
    devHeight = settings.height;
    devAspect = settings.pixelAspect;
    xscale = view.xscale, yscale = view.yscale, xc = view.xc, yc = view.yc;
    camToWorld = view.camToWorld;
    worldToCam = view.worldToCam;
    renderer = core.GetCurrentRenderer();
    envMap = core.GetEnvironmentMap();
    globalLightLevel = core.GetLightTint(time);
    antialias = settings.samples > 1;
    atmos = &chain_;
    ambient_ = core.GetAmbient(time, valid);
    background_ = core.GetBackGround(time, valid);
    for (Node* const node : core.AllNodes()) AddInstance(node);
    for (const auto& instance : instances_) instance->AddTo(rays_);
    rays_.Commit();
    nearRange = view_.nearRange;
    farRange = view_.farRange;
}

RenderContext::~RenderContext() {
    for (const auto& instance : instances_) instance->node->SetRenderID(0xffff);
}

RenderInstance* RenderContext::GetRenderInstance(int i) {
    return i >= 0 && i < NumRenderInstances() ? instances_[size_t(i)].get() : nullptr;
}

ObjLightDesc* RenderContext::GetLight(int i) {
    return i >= 0 && i < NumLights() ? lights_[size_t(i)].get() : nullptr;
}

void RenderContext::AddInstance(INode* node) {
    if (node->IsNodeHidden() || !node->Renderable() || !(node->GetVisibility(time) > 0.0f)) return;
    Object* const object = node->EvalWorldState(time).obj;
    if (!object || !object->IsRenderable()) return;
    Interval valid = FOREVER;
    bool needDelete = false;
    TriObject* const tri = GetTriObjectFromNode(node, time, valid, needDelete);
    if (!tri) return;
    if (tri->mesh.getNumFaces() > 0) {
        instances_.push_back(std::make_unique<MeshInstance>(node, tri->mesh, time, worldToCam));
        instances_.back()->nodeID = NumRenderInstances() - 1;
        node->SetRenderID(uint32_t(NumRenderInstances() - 1));
    }
    if (needDelete) tri->DeleteThis();
}

void RenderContext::AddLights() {
    for (Node* const node : core_.AllNodes()) {
        Object* const object = node->EvalWorldState(time).obj;
        if (!object || object->SuperClassID() != LIGHT_CLASS_ID) continue;
        auto* const light = static_cast<LightObject*>(object);
        LightState state;
        Interval valid = FOREVER;
        if (light->EvalLightState(time, valid, &state) != REF_SUCCEED || !state.on) continue;
        if (ObjLightDesc* const desc = light->CreateLightDesc(node)) lights_.emplace_back(desc);
    }
    for (const auto& light : lights_) {
        light->Update(time, this);
        light->UpdateViewDepParams(worldToCam);
    }
    for (const auto& instance : instances_)
        for (const auto& light : lights_)
            if (light->Illuminates(instance->node)) instance->lights.push_back(light.get());
}

Color RenderContext::Transparency(const RayHit& hit, const Point3& from, const Point3& direction) {
    const MeshInstance& instance = Instance(hit.id);
    Color light;
    if (instance.mtl) {
        SurfaceContext sc(*this);
        sc.mode = SCMODE_SHADOW;
        sc.SetSurface(instance, hit, Normalize(direction));
        light = instance.mtl->ShadowTransparency(sc);
    }
    // What is half there throws half a shadow.
    return Color(1, 1, 1) + (light - Color(1, 1, 1)) * instance.visibility;
}

} // namespace host
