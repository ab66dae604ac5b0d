#include "HRendBuf/HairImageInfo.h"

#include <cstdint>

#include "Base/HairMath.h"
#include "sdk/bitmap.h"
#include "sdk/core.h"

namespace {

// Extensions that some renderers' contexts answer.
constexpr int kHasCamToScreen = 0x1b5c;
constexpr int kCamToScreen = 0x1b64;

} // namespace

void HairImageInfo::StoreSize(int w, int h, float pixelAspect) {
    width = w;
    height = h;
    widthF = float(w);
    heightF = float(h);
    aspect = pixelAspect;
    centreX = widthF * 0.5f;
    centreY = heightF * 0.5f;
}

bool HairImageInfo::SetFromContext(RenderGlobalContext* context, int camera) {
    const int oldWidth = width, oldHeight = height;
    const float oldAspect = aspect;
    renderGlobalContext = context;
    renderInfo = nullptr;
    hasCustomProjection = false;
    if (context) {
        StoreSize(context->devWidth, context->devHeight, context->devAspect);
        centreX = context->xc;
        centreY = context->yc;
        cameraIndex = camera;
        hasCustomProjection = context->Execute(kHasCamToScreen) != nullptr;
    } else if (Interface* core = GetCOREInterface()) {
        const RendParams& params = core->GetRendParams();
        StoreSize(params.width, params.height, params.devAspect);
    }
    return width != oldWidth || height != oldHeight || aspect != oldAspect;
}

bool HairImageInfo::SetFromBitmap(Bitmap& bitmap) {
    RenderInfo* info = bitmap.GetRenderInfo();
    if (!info) return false;
    SetSize(bitmap.Width(), bitmap.Height(), bitmap.Aspect());
    renderInfo = info;
    return true;
}

void HairImageInfo::SetSize(int w, int h, float pixelAspect) {
    StoreSize(w, h, pixelAspect);
    renderGlobalContext = nullptr;
    renderInfo = nullptr;
    hasCustomProjection = false;
}

void HairImageInfo::ComputeScales(const ViewParams& view) {
    if (renderGlobalContext) {
        projType = renderGlobalContext->projType;
        scaleX = renderGlobalContext->xscale;
        scaleY = renderGlobalContext->yscale;
    } else if (renderInfo) {
        projType = renderInfo->projType;
        scaleX = renderInfo->xscale[0];
        scaleY = renderInfo->yscale[0];
    } else {
        projType = view.projType;
        if (projType == PROJ_PERSPECTIVE)
            scaleX = -(1.0f / HairMath::Tan(view.fov * 0.5f)) * centreX;
        else
            scaleX = widthF / (view.zoom * 400.0f);
        scaleY = -aspect * scaleX;
    }
}

Point2 HairImageInfo::MapByContext(const Point3& p) const {
    RenderGlobalContext& context = *renderGlobalContext;
    if (hasCustomProjection) {
        Point2 out;
        Point3 in = p;
        if (context.Execute(kCamToScreen, &out, &in, reinterpret_cast<void*>(intptr_t(cameraIndex)))) return out;
    }
    Point2 screen = context.MapToScreen(p);
    if (context.fieldRender) screen.y *= 2.0f;
    return screen;
}

Point2 HairImageInfo::MapCamToScreen(const Point3& p) const {
    if (renderGlobalContext) return MapByContext(p);
    if (renderInfo) return renderInfo->MapCamToScreen(p);
    if (projType == PROJ_PARALLEL) return {centreX + scaleX * p.x, centreY + scaleY * p.y};
    if (p.z >= 0.0f) return {0, 0};
    return {centreX + scaleX * p.x / p.z, centreY + scaleY * p.y / p.z};
}

Point2 HairImageInfo::ClampToImage(Point2 p) const {
    if (p.x < 0.0f) p.x = 0.0f;
    if (p.y < 0.0f) p.y = 0.0f;
    if (p.x >= widthF) p.x = widthF - 1.0f;
    if (p.y >= heightF) p.y = heightF - 1.0f;
    return p;
}
