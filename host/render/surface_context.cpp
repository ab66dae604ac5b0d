#include "render/surface_context.h"

#include <algorithm>
#include <cmath>

#include "render/render_context.h"

namespace host {

namespace {

/// Where a pixel's edge sees a surface on edge, the surface is taken to be seen up to this multiple of its depth.
constexpr float kFarthestFootprint = 100;

} // namespace

SurfaceContext::SurfaceContext(RenderContext& render) : render_(render) {
    globContext = &render;
    Begin({0, 0}, {0.5f, 0.5f});
}

void SurfaceContext::Begin(const IPoint2& pixel, const Point2& screen) {
    pixel_ = pixel;
    screen_ = screen;
    mode = SCMODE_NORMAL;
    doMaps = filterMaps = 1;
    ambientLight = render_.AmbientLight();
    rayLevel = xshadeID = 0;
    atmosSkipLight = nullptr;
}

void SurfaceContext::SetSurface(const MeshInstance& instance, const RayHit& hit, const Point3& view) {
    instance_ = &instance;
    hit_ = hit;
    const MeshInstance::Place at = instance.PlaceAt(hit.face, hit.u, hit.v);
    p_ = at.p;
    faceNormal_ = at.faceNormal;
    normal_ = at.normal;
    backFace = DotProd(faceNormal_, view) > 0.0f;
    if (backFace) {
        faceNormal_ = -faceNormal_;
        normal_ = -normal_;
    }
    origNormal_ = normal_;
    view_ = origView_ = view;
    mtlNum = instance.MaterialId(hit.face);
    nLights = int(instance.lights.size());
    shadow = instance.receivesShadows;
    out.Reset();
}

void SurfaceContext::SetBackground(const Point3& p, const Point3& view) {
    instance_ = nullptr;
    hit_ = RayHit();
    p_ = p;
    faceNormal_ = normal_ = origNormal_ = -view;
    view_ = origView_ = view;
    backFace = mtlNum = nLights = shadow = 0;
    out.Reset();
}

Color SurfaceContext::Background() {
    return render_.envMap ? EvalEnvironMap(render_.envMap, view_) : render_.BackgroundColor();
}

LightDesc* SurfaceContext::Light(int n) {
    return instance_ && n >= 0 && n < nLights ? instance_->lights[size_t(n)] : nullptr;
}

TimeValue SurfaceContext::CurTime() {
    return render_.time;
}

int SurfaceContext::ProjType() {
    return render_.projType;
}

Point3 SurfaceContext::RefractVector(float ior) {
    const float eta = backFace ? ior : ior == 0.0f ? 1.0f : 1.0f / ior;
    const float c = -DotProd(view_, normal_);
    const float k = 1.0f - eta * eta * (1.0f - c * c);
    // Total reflection.
    return k > 0.0f ? view_ * eta + normal_ * (eta * c - std::sqrt(k)) : ReflectVector();
}

Point3 SurfaceContext::PObjRelBox() {
    if (!instance_) return {0, 0, 0};
    const Box3& box = instance_->ObjectBox();
    const Point3 p = PObj(), width = box.Width();
    Point3 out;
    for (int i = 0; i < 3; ++i) out[i] = width[i] > 0.0f ? (p[i] - box.pmin[i]) * 2.0f / width[i] - 1.0f : 0.0f;
    return out;
}

void SurfaceContext::ScreenUV(Point2& uv, Point2& duv) {
    const float w = float(render_.devWidth), h = float(render_.devHeight);
    uv = {screen_.x / w, 1.0f - screen_.y / h};
    duv = {1.0f / w, 1.0f / h};
}

Point3 SurfaceContext::UVW(int channel) {
    return instance_ ? instance_->MappingAt(channel, hit_.face, hit_.u, hit_.v) : Point3();
}

Point3 SurfaceContext::DUVW(int channel) {
    if (!instance_) return {0, 0, 0};
    Point3 out;
    for (const Point2& step : {Point2(1, 0), Point2(0, 1)}) {
        // Where the next pixel's ray meets the face's plane.
        Point3 from, direction;
        render_.View().RayThrough(screen_.x + step.x, screen_.y + step.y, from, direction);
        const float slope = DotProd(direction, faceNormal_);
        // A ray along the plane never meets it: far away is as good as endless.
        const float most = kFarthestFootprint * std::fabs(p_.z);
        const float t = std::fabs(slope) > 1e-6f ? DotProd(p_ - from, faceNormal_) / slope : most;
        const Point3 d = from + direction * (t > 0.0f ? std::min(t, most) : most) - p_;
        const Point3 change = instance_->MappingChange(channel, hit_.face, d);
        for (int i = 0; i < 3; ++i) out[i] = std::max(out[i], std::fabs(change[i]));
    }
    return out;
}

void SurfaceContext::DPdUVW(Point3 dP[3], int channel) {
    dP[0] = dP[1] = dP[2] = Point3();
    if (instance_) instance_->TangentsAt(channel, hit_.face, dP);
}

Point3 SurfaceContext::PointTo(const Point3& p, RefFrame frame) {
    if (frame == REF_WORLD) return p * render_.camToWorld;
    return frame == REF_OBJECT && instance_ ? p * instance_->CamToObj() : p;
}

Point3 SurfaceContext::PointFrom(const Point3& p, RefFrame frame) {
    if (frame == REF_WORLD) return p * render_.worldToCam;
    return frame == REF_OBJECT && instance_ ? p * instance_->objToCam : p;
}

Point3 SurfaceContext::VectorTo(const Point3& v, RefFrame frame) {
    if (frame == REF_WORLD) return VectorTransform(v, render_.camToWorld);
    return frame == REF_OBJECT && instance_ ? VectorTransform(v, instance_->CamToObj()) : v;
}

Point3 SurfaceContext::VectorFrom(const Point3& v, RefFrame frame) {
    if (frame == REF_WORLD) return VectorTransform(v, render_.worldToCam);
    return frame == REF_OBJECT && instance_ ? VectorTransform(v, instance_->objToCam) : v;
}

Color SurfaceContext::EvalEnvironMap(Texmap* map, const Point3& view) {
    const Point3 kept = view_;
    view_ = view;
    const Color color = map ? Color(map->EvalColor(*this)) : Color();
    view_ = kept;
    return color;
}

void SurfaceContext::GetBGColor(Color& bg, Color& transparency, bool) {
    bg = Background();
    transparency = {1, 1, 1};
}

} // namespace host
