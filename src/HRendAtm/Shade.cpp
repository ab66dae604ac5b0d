// Answering camera segments: preparing the pixel, compositing, the samplers.

#include <algorithm>
#include <cmath>

#include "Base/CreateHair/WorkerPool.h"
#include "DebugTools/CrashReport.h"
#include "DebugTools/Tracer.h"
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
    const diag::ScopedLock guard(frameLock_);
    return frame_;
}

void HairRender::StoreFrame(std::shared_ptr<CameraFrame> frame) {
    const diag::ScopedLock guard(frameLock_);
    frame_.swap(frame); // the former frame goes after the lock does
}

void HairRender::SetUpFrame(CameraFrame& frame) {
    Interface* host = GetCOREInterface();
    RendProgressCallback* callback = host ? host->GetRenderProgress() : nullptr;
    frame.hostWatches = callback != nullptr;
    frame.hostProgress = EffectProgInd(callback);
    frame.buffer = std::make_unique<HRendBuf>(*this);
}

/// Who is told about a bucket: the host when it watches, else the renderer's own window.
IProgressIndicator* HairRender::ProgressFor(CameraFrame& frame) {
    if (!useProgress_) return nullptr;
    return frame.hostWatches ? static_cast<IProgressIndicator*>(&frame.hostProgress) : &progress_;
}

std::shared_ptr<CameraFrame> HairRender::CurrentFrame(ShadeContext& sc) {
    // Nearly every sample finds its frame ready.
    if (sc.globContext && !inactive_)
        if (auto current = LoadFrame(); current && SameContextView(*current, *sc.globContext)) return current;
    diag::ScopedLock lock(prepareLock_);
    if (inactive_) return nullptr;
    std::shared_ptr<CameraFrame> frame = sc.globContext ? FrameFromContext(*sc.globContext) : FrameFromViewport(sc);
    if (frame && !frame->buffer) SetUpFrame(*frame);
    if (frame) StoreFrame(frame);
    return frame;
}

void HairRender::RenderPixelBucket(CameraFrame& frame, const IPoint2& pixel) {
    DrawnBucket drawn;
    const int elapsed = frame.buffer->RenderBucket(HRM_IMAGE, time_, frame.image, frame.view, pixel.x, pixel.y,
                                                   ProgressFor(frame), nullptr, frame.context, &drawn);
    if (elapsed == 0) return;
    stats_.strands += drawn.strands;
    const int bytes = int(std::min<size_t>(frame.buffer->MemoryInUse(), 0x7fffffff));
    for (int peak = stats_.hairBytes; bytes > peak && !stats_.hairBytes.compare_exchange_weak(peak, bytes);) continue;
    stats_.hairMs += elapsed;
    stats_.fragments += drawn.fragments;
}

bool HairRender::PreparePixel(ShadeContext& sc, Point3& p0, Point3& p1, IPoint2& pixel,
                              std::shared_ptr<CameraFrame>& frame) {
    frame = CurrentFrame(sc);
    if (!frame) return false;
    p0 = p0 * frame->view.worldToCam;
    p1 = p1 * frame->view.worldToCam;
    pixel = sc.ScreenCoord();
    if (pixel.x < 0 || pixel.y < 0 || pixel.x >= frame->image.width || pixel.y >= frame->image.height) return false;
    if (!IsCameraSegment(frame->view.projType == PROJ_PERSPECTIVE, p0, p1)) return false;
    RenderPixelBucket(*frame, pixel);
    return true;
}

void HairRender::ShadeSegment(ShadeContext& sc, Point3 p0, Point3 p1, Color& col, Color& trans,
                              std::shared_ptr<CameraFrame>& frame) {
    IPoint2 pixel;
    if (!PreparePixel(sc, p0, p1, pixel, frame)) return;
    Color hair;
    float transmittance = 1.0f;
    frame->buffer->Composite(pixel.x, pixel.y, p0.z, p1.z, hair, transmittance);
    col = hair + col * transmittance;
    trans = trans * transmittance;
}

void HairRender::Shade(ShadeContext& sc, const Point3& p0, const Point3& p1, Color& col, Color& trans, bool) {
    if (blender_ || Refuses(sc)) return;
    TRACE_SCOPE("HairRender::Shade");
    const Color colBefore = col, transBefore = trans;
    // Out here, because a fault leaves the objects inside undestroyed: a frame's buffer must not stay behind.
    std::shared_ptr<CameraFrame> frame;
    if (diag::Guarded(
            "in HairRender::Shade", [&] { ShadeSegment(sc, p0, p1, col, trans, frame); },
            diag::GuardReports::kOncePerPlace))
        return;
    col = colBefore;
    trans = transBefore;
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
    std::shared_ptr<CameraFrame> frame;
    const auto prepare = [&] {
        Point3 p0 = r.p0, p1 = r.p1;
        IPoint2 pixel;
        if (PreparePixel(*r.sc, p0, p1, pixel, frame)) r.x = pixel.x, r.y = pixel.y;
    };
    diag::Guarded("in HairRender::Shade", prepare, diag::GuardReports::kOncePerPlace);
}

void HairRender::Reset(SamplerRecord& r) {
    if (!inactive_) r.current = nullptr;
}

void HairRender::Sample(SamplerRecord& r, void (HRendBuf::*ask)(int, int, SamplerRecord&)) {
    const auto sample = [&] {
        HRendBuf* buffer = CameraBuffer();
        if (!inactive_ && buffer) (buffer->*ask)(r.x, r.y, r);
    };
    if (!diag::Guarded("in velmar Renderer", sample, diag::GuardReports::kOncePerPlace)) r.hit = 0;
}

void HairRender::SampleFirst(SamplerRecord& r) {
    Sample(r, &HRendBuf::SampleRay);
}

void HairRender::SampleNext(SamplerRecord& r) {
    Sample(r, &HRendBuf::SampleVolume);
}
