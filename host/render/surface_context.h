#pragma once
// The shading question at a point of a mesh, and at the background.

#include "render/mesh_instance.h"
#include "sdk/shadecontext.h"

namespace host {

class RenderContext;

/// A point to shade in a pixel: on a mesh after SetSurface, at the background after SetBackground. Belongs to one
/// thread and serves one question after the other; positions and directions are camera space.
class SurfaceContext final : public ShadeContext {
public:
    /// In the upper left pixel.
    explicit SurfaceContext(RenderContext& render);
    /// A new question, at the place `screen` of a pixel; takes back what the last one changed of the settings.
    void Begin(const IPoint2& pixel, const Point2& screen);

    /// A hit of the unit direction `view`. Normals turn to the viewer; backFace tells that they were turned.
    void SetSurface(const MeshInstance& instance, const RayHit& hit, const Point3& view);
    /// Nothing, seen along the unit direction `view`, at the far point `p`.
    void SetBackground(const Point3& p, const Point3& view);
    /// What is seen behind everything along the view: the environment map, else the background colour.
    Color Background();

    LightDesc* Light(int n) override;
    TimeValue CurTime() override;
    int NodeID() override { return instance_ ? instance_->nodeID : -1; }
    INode* Node() override { return instance_ ? instance_->node : nullptr; }
    Point3 BarycentricCoords() override { return {1.0f - hit_.u - hit_.v, hit_.u, hit_.v}; }
    int FaceNumber() override { return hit_.face; }
    int ProjType() override;
    Point3 Normal() override { return normal_; }
    void SetNormal(const Point3& n) override { normal_ = n; }
    Point3 OrigNormal() override { return origNormal_; }
    Point3 GNormal() override { return faceNormal_; }
    Point3 V() override { return view_; }
    void SetView(const Point3& v) override { view_ = v; }
    Point3 OrigView() override { return origView_; }
    Point3 RefractVector(float ior) override;
    Point3 P() override { return p_; }
    Point3 PObj() override { return PointTo(p_, REF_OBJECT); }
    Box3 ObjectBox() override { return instance_ ? instance_->ObjectBox() : Box3(); }
    Point3 PObjRelBox() override;
    void ScreenUV(Point2& uv, Point2& duv) override;
    IPoint2 ScreenCoord() override { return pixel_; }
    Point3 UVW(int channel = 1) override;
    /// How far the coordinates run over a pixel: the larger one of a step right and a step down the picture.
    Point3 DUVW(int channel = 1) override;
    void DPdUVW(Point3 dP[3], int channel = 1) override;
    Point3 PointTo(const Point3& p, RefFrame frame) override;
    Point3 PointFrom(const Point3& p, RefFrame frame) override;
    Point3 VectorTo(const Point3& v, RefFrame frame) override;
    Point3 VectorFrom(const Point3& v, RefFrame frame) override;
    Color EvalEnvironMap(Texmap* map, const Point3& view) override;
    void GetBGColor(Color& bg, Color& transparency, bool withFog = true) override;

private:
    RenderContext& render_;
    const MeshInstance* instance_ = nullptr;
    RayHit hit_;
    Point3 p_, normal_, origNormal_, faceNormal_, view_, origView_;
    IPoint2 pixel_;
    Point2 screen_;
};

} // namespace host
