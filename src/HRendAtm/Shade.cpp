// Answering camera segments: preparing the pixel, compositing, the samplers.

#include <algorithm>
#include <cmath>

#include "Base/CreateHair/WorkerPool.h"
#include "DebugTools/Assert.h"
#include "HRendAtm/HairRender.h"
#include "HairDLL/LibGlobals.h"
#include "sdk/core.h"

namespace {

// How far the camera of a sample may lie from the viewport's, summed over the components.
constexpr float kSameCamera = 0.01f;
constexpr int kNoContextMessage = 40436;

bool SameImage(const HairImageInfo& a, const HairImageInfo& b) {
    return a.width == b.width && a.height == b.height && a.aspect == b.aspect;
}

bool SameContextView(const CameraFrame& f, const RenderGlobalContext& c) {
    return f.context == &c && f.view.camToWorld == c.camToWorld && f.view.projType == c.projType &&
           f.image.width == c.devWidth && f.image.height == c.devHeight && f.image.aspect == c.devAspect;
}

} // namespace

// Calls that get no hair whatever the scene is: foreign phases, the library's own threads, shadow samples.
bool HairRender::Refuses(const ShadeContext& sc) const {
    return inactive_ || ::IsHairWorkerThread() || (sc.mode == SCMODE_SHADOW && sc.atmosSkipLight);
}

std::shared_ptr<CameraFrame> HairRender::FrameFromContext(RenderGlobalContext& context) {
    if (auto current = LoadFrame(); current && SameContextView(*current, context)) return current;
    auto frame = std::make_shared<CameraFrame>();
    frame->context = &context;
    frame->view.SetFromContext(context);
    frame->image.SetFromContext(&context, 0);
    frame->image.ComputeScales(frame->view);
    return frame;
}

std::shared_ptr<CameraFrame> HairRender::FrameFromViewport(ShadeContext& sc) {
    auto frame = std::make_shared<CameraFrame>();
    if (!frame->view.SetFromViewport(time_)) {
        if (const char* text = GetString(kNoContextMessage)) ShowMessage(text, MSG_ERROR);
        inactive_ = true;
        return nullptr;
    }
    const Point3 away = sc.CamPos() - cameraPosition_;
    if (std::fabs(away.x) + std::fabs(away.y) + std::fabs(away.z) > kSameCamera) return nullptr;
    frame->image.SetFromContext(nullptr, 0);
    frame->image.ComputeScales(frame->view);
    const std::shared_ptr<CameraFrame> current = LoadFrame();
    const bool same = current && !current->context && current->view.camToWorld == frame->view.camToWorld &&
                      SameImage(current->image, frame->image);
    return same ? current : frame;
}

std::shared_ptr<CameraFrame> HairRender::LoadFrame() const {
    const std::lock_guard guard(frameLock_);
    return frame_;
}

void HairRender::StoreFrame(std::shared_ptr<CameraFrame> frame) {
    const std::lock_guard guard(frameLock_);
    frame_.swap(frame); // the former frame goes after the lock does
}

std::shared_ptr<CameraFrame> HairRender::CurrentFrame(ShadeContext& sc) {
    // Nearly every sample finds its frame ready.
    if (sc.globContext && !inactive_)
        if (auto current = LoadFrame(); current && SameContextView(*current, *sc.globContext)) return current;
    diag::ScopedLock lock(prepareLock_);
    if (inactive_) return nullptr;
    std::shared_ptr<CameraFrame> frame = sc.globContext ? FrameFromContext(*sc.globContext) : FrameFromViewport(sc);
    if (frame && !frame->buffer) frame->buffer = std::make_unique<HRendBuf>(*this);
    if (frame) StoreFrame(frame);
    return frame;
}

void HairRender::RenderPixelBucket(CameraFrame& frame, const IPoint2& pixel) {
    Interface* host = GetCOREInterface();
    RendProgressCallback* progress = host && useProgress_ ? host->GetRenderProgress() : nullptr;
    const int elapsed = frame.buffer->RenderBucket(HRM_IMAGE, time_, frame.image, frame.view, pixel.x, pixel.y,
                                                   progress, nullptr, frame.context);
    if (elapsed == 0) return;
    stats_.strands += frame.buffer->RenderedStrands();
    const int bytes = int(std::min<size_t>(frame.buffer->MemoryInUse(), 0x7fffffff));
    if (bytes > stats_.hairBytes) stats_.hairBytes = bytes;
    stats_.hairMs += elapsed;
    stats_.fragments += frame.buffer->MadeFragments();
}

std::shared_ptr<CameraFrame> HairRender::PreparePixel(ShadeContext& sc, Point3& p0, Point3& p1, IPoint2& pixel) {
    std::shared_ptr<CameraFrame> frame = CurrentFrame(sc);
    if (!frame) return nullptr;
    p0 = p0 * frame->view.worldToCam;
    p1 = p1 * frame->view.worldToCam;
    pixel = sc.ScreenCoord();
    if (pixel.x < 0 || pixel.y < 0 || pixel.x >= frame->image.width || pixel.y >= frame->image.height) return nullptr;
    if (!IsCameraSegment(frame->view.projType == PROJ_PERSPECTIVE, p0, p1)) return nullptr;
    RenderPixelBucket(*frame, pixel);
    return frame;
}

void HairRender::ShadeSegment(ShadeContext& sc, Point3 p0, Point3 p1, Color& col, Color& trans) {
    IPoint2 pixel;
    const std::shared_ptr<CameraFrame> frame = PreparePixel(sc, p0, p1, pixel);
    if (!frame) return;
    Color hair;
    float transmittance = 1.0f;
    frame->buffer->Composite(pixel.x, pixel.y, p0.z, p1.z, hair, transmittance);
    col = hair + col * transmittance;
    trans = trans * transmittance;
}

void HairRender::Shade(ShadeContext& sc, const Point3& p0, const Point3& p1, Color& col, Color& trans, bool) {
    if (blender_ || Refuses(sc)) return;
    try {
        ShadeSegment(sc, p0, p1, col, trans);
    } catch (...) {
        diag::ReportException("in HairRender::Shade");
    }
}

bool HairRender::Attach(void* blender) {
    if (!useAtmosBlender_) return false;
    blender_ = blender;
    return true;
}

void HairRender::Begin(SamplerRecord& r) {
    r.current = nullptr;
    r.x = r.y = -1;
    if (!r.sc || Refuses(*r.sc)) return;
    try {
        Point3 p0 = r.p0, p1 = r.p1;
        IPoint2 pixel;
        if (PreparePixel(*r.sc, p0, p1, pixel)) r.x = pixel.x, r.y = pixel.y;
    } catch (...) {
        diag::ReportException("in HairRender::Shade");
    }
}

void HairRender::Reset(SamplerRecord& r) {
    if (!inactive_) r.current = nullptr;
}

void HairRender::SampleFirst(SamplerRecord& r) {
    HRendBuf* buffer = CameraBuffer();
    if (!inactive_ && buffer) buffer->SampleRay(r.x, r.y, r);
}

void HairRender::SampleNext(SamplerRecord& r) {
    HRendBuf* buffer = CameraBuffer();
    if (!inactive_ && buffer) buffer->SampleVolume(r.x, r.y, r);
}
