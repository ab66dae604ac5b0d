#include "Base/HairShadeContext.h"

#include <cmath>

HairShadeContext::HairShadeContext() {
    nLights = 1; // the stand-by light
}

void HairShadeContext::SetTransforms(const Matrix3* objToWorld, const Matrix3* worldToCam, const Matrix3* objToCam,
                                     const Matrix3* camToWorld, const Matrix3* worldToObj, const Matrix3* camToObj) {
    objToWorld_ = worldToCam_ = objToCam_ = camToWorld_ = worldToObj_ = camToObj_ = nullptr;
    if (!objToWorld || !worldToCam) return;
    const auto given = [&](int slot, const Matrix3* m, const auto& compute) {
        if (m) return m;
        stored_[slot] = compute();
        return static_cast<const Matrix3*>(&stored_[slot]);
    };
    objToWorld_ = objToWorld;
    worldToCam_ = worldToCam;
    objToCam_ = given(0, objToCam, [&] { return *objToWorld * *worldToCam; });
    camToWorld_ = given(1, camToWorld, [&] { return Inverse(*worldToCam); });
    worldToObj_ = given(2, worldToObj, [&] { return Inverse(*objToWorld); });
    camToObj_ = given(3, camToObj, [&] { return Inverse(*objToCam_); });
}

void HairShadeContext::SetPoint(const Point3& p, const Point3& pObj, const Point3& normal, const Point3& bary,
                                const Point3* uvw, int firstChannel, int channelCount, const Point2& screen, int mtl,
                                int face, bool back) {
    p_ = p;
    pObj_ = pObj;
    v_ = ProjType() == PROJ_PERSPECTIVE ? Normalize(p) : Point3(0, 0, 1);
    normal_ = origNormal_ = gNormal_ = normal;
    bary_ = bary;
    uvw_ = uvw;
    firstChannel_ = firstChannel;
    channelCount_ = channelCount;
    screen_ = screen;
    mtlNum = mtl;
    faceNumber_ = face;
    backFace = back;
    pixel_ = {int(screen.x + 0.5f), int(screen.y + 0.5f)};
    if (pixel_.x < 0) pixel_.x = 0;
    if (pixel_.y < 0) pixel_.y = 0;
    if (globContext && pixel_.x >= globContext->devWidth) pixel_.x = globContext->devWidth - 1;
    if (globContext && pixel_.y >= globContext->devHeight) pixel_.y = globContext->devHeight - 1;
}

void HairShadeContext::SetLights(int count, LightDesc* const* lights) {
    nLights = count;
    lights_ = lights;
    hasLights_ = true;
}

LightDesc* HairShadeContext::Light(int n) {
    if (!hasLights_) return n == 0 ? &defaultLight_ : nullptr;
    return n >= 0 && n < nLights ? lights_[n] : nullptr;
}

int HairShadeContext::NodeID() {
    if (!globContext) return -1;
    for (int i = globContext->NumRenderInstances() - 1; i >= 0; --i)
        if (const RenderInstance* r = globContext->GetRenderInstance(i); r && r->node == node_) return i;
    return -1;
}

int HairShadeContext::ProjType() {
    return globContext && globContext->projType == PROJ_PARALLEL ? 1 : 0;
}

Point3 HairShadeContext::ReflectVector() {
    const Point3 n = Normal();
    return v_ - 2.0f * DotProd(v_, n) * n;
}

Point3 HairShadeContext::RefractVector(float ior) {
    const float eta = backFace ? ior : ior == 0.0f ? 1.0f : 1.0f / ior;
    const Point3 n = Normal();
    const float c = -DotProd(v_, n);
    const float k = 1.0f - eta * eta * (1.0f - c * c);
    return k > 0.0f ? v_ * eta + n * (eta * c - std::sqrt(k)) : ReflectVector();
}

Point3 HairShadeContext::PObjRelBox() {
    const Point3 size = objectBox_.pmax - objectBox_.pmin;
    const auto axis = [](float p, float low, float extent) { return (p - low) * 2.0f / extent - 1.0f; };
    return {axis(pObj_.x, objectBox_.pmin.x, size.x), axis(pObj_.y, objectBox_.pmin.y, size.y),
            axis(pObj_.z, objectBox_.pmin.z, size.z)};
}

void HairShadeContext::ScreenUV(Point2& uv, Point2& duv) {
    const float w = 2.0f * halfWidth_;
    uv.x = (((screen_.x - w / 2.0f) + 0.5f) / halfWidth_ + 1.0f) * 0.5f;
    uv.y = (-screen_.y / halfHeight_ + 1.0f) * 0.5f;
    duv = {0.5f / halfWidth_, 0.5f / halfHeight_};
}

Point3 HairShadeContext::UVW(int channel) {
    const int i = channel - firstChannel_;
    if (!uvw_ || i < 0 || i >= channelCount_) return Point3();
    if (!around_ || !aroundMask_[i]) return uvw_[i];
    return {around_->Around(), uvw_[i].y, uvw_[i].z};
}

Point3 HairShadeContext::DUVW(int channel) {
    const int i = channel - firstChannel_;
    return duvw_ && i >= 0 && i < channelCount_ ? duvw_[i] : Point3();
}

Point3 HairShadeContext::UVWNormal(int channel) {
    const int i = channel - firstChannel_;
    return uvwNormal_ && i >= 0 && i < channelCount_ ? uvwNormal_[i] : ShadeContext::UVWNormal(channel);
}

namespace {

Point3 Through(const Point3& p, const Matrix3* m) {
    return m ? p * *m : p;
}

Point3 VectorThrough(const Point3& v, const Matrix3* m) {
    return m ? VectorTransform(v, *m) : v;
}

} // namespace

Point3 HairShadeContext::PointTo(const Point3& p, RefFrame frame) {
    return frame == REF_WORLD ? Through(p, camToWorld_) : frame == REF_OBJECT ? Through(p, camToObj_) : p;
}

Point3 HairShadeContext::PointFrom(const Point3& p, RefFrame frame) {
    return frame == REF_WORLD ? Through(p, worldToCam_) : frame == REF_OBJECT ? Through(p, objToCam_) : p;
}

Point3 HairShadeContext::VectorTo(const Point3& v, RefFrame frame) {
    return frame == REF_WORLD ? VectorThrough(v, camToWorld_) : frame == REF_OBJECT ? VectorThrough(v, camToObj_) : v;
}

Point3 HairShadeContext::VectorFrom(const Point3& v, RefFrame frame) {
    return frame == REF_WORLD ? VectorThrough(v, worldToCam_) : frame == REF_OBJECT ? VectorThrough(v, objToCam_) : v;
}

Color HairShadeContext::EvalEnvironMap(Texmap* map, const Point3& view) {
    const Point3 before = v_;
    v_ = view;
    const Color c = map ? Color(map->EvalColor(*this)) : Color();
    v_ = before;
    return c;
}

int HairShadeContext::NRenderElements() {
    IRenderElementMgr* manager = globContext ? globContext->GetRenderElementMgr() : nullptr;
    return manager ? manager->NumRenderElements() : 0;
}

IRenderElement* HairShadeContext::GetRenderElement(int n) {
    IRenderElementMgr* manager = globContext ? globContext->GetRenderElementMgr() : nullptr;
    return manager ? manager->GetRenderElement(n) : nullptr;
}
