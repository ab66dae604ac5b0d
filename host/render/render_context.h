#pragma once
// The picture being rendered, as plug-ins and the host's own shading see it.

#include <memory>
#include <vector>

#include "core/core.h"
#include "render/camera_view.h"
#include "render/frame.h"
#include "render/mesh_instance.h"
#include "render/node_color_mtl.h"
#include "render/ray_scene.h"

namespace host {

/// All active atmospheric effects as one: Shade asks them from the last to the first.
class AtmosphereChain : public Atmospheric {
public:
    void Add(Atmospheric* a) { effects_.push_back(a); }
    const std::vector<Atmospheric*>& Effects() const { return effects_; }
    void Shade(ShadeContext& sc, const Point3& p0, const Point3& p1, Color& col, Color& trans,
               bool isBackground) override;

private:
    std::vector<Atmospheric*> effects_;
};

/// Everything a frame needs: instances, lights, rays, view. Complete before threads ask.
class RenderContext : public RenderGlobalContext, public ShadowFilter {
public:
    /// Gathers nodes and environment at the settings' time. Lights are added by AddLights.
    RenderContext(Core& core, const FrameSettings& settings, const CameraView& view);
    ~RenderContext() override;

    int NumRenderInstances() override { return int(instances_.size()); }
    RenderInstance* GetRenderInstance(int i) override;
    int NumLights() override { return int(lights_.size()); }
    ObjLightDesc* GetLight(int i) override;

    /// Makes the descriptors of the lights that are on, hands every instance its lights, and updates them (which may
    /// render shadow maps). The effects stand by then.
    void AddLights();
    AtmosphereChain& Atmosphere() { return chain_; }

    const CameraView& View() const { return view_; }
    const RayScene& Rays() const { return rays_; }
    MeshInstance& Instance(int i) const { return *instances_[size_t(i)]; }
    /// The material that shades an instance: the node's, or a plain one in the node's colour.
    Mtl& MaterialOf(const MeshInstance& instance) { return instance.mtl ? *instance.mtl : plain_; }
    const Color& AmbientLight() const { return ambient_; }
    const Color& BackgroundColor() const { return background_; }
    Color Transparency(const RayHit& hit, const Point3& from, const Point3& direction) override;

private:
    void AddInstance(INode* node);

    Core& core_;
    CameraView view_;
    RayScene rays_;
    std::vector<std::unique_ptr<MeshInstance>> instances_;
    std::vector<std::unique_ptr<ObjLightDesc>> lights_;
    AtmosphereChain chain_;
    NodeColorMtl plain_;
    Color ambient_, background_;
};

} // namespace host
