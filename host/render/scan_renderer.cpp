#include "render/scan_renderer.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "core/render_evaluation.h"
#include "materials/bitmap_map.h"
#include "render/band_renderer.h"
#include "render/picture_finish.h"
#include "render/process_usage.h"

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Brings a material or map to the frame's time, and finds pictures below it that could not be read.
void UpdateLook(MtlBase* base, TimeValue t, std::set<MtlBase*>& seen) {
    if (!base || !seen.insert(base).second) return;
    Interval valid = FOREVER;
    base->Update(t, valid);
    if (auto* const bitmap = dynamic_cast<BitmapMap*>(base); bitmap && !bitmap->LoadError().empty())
        throw Error(bitmap->LoadError());
    for (int i = 0; i < base->NumSubTexmaps(); ++i) UpdateLook(base->GetSubTexmap(i), t, seen);
    if (base->SuperClassID() != MATERIAL_CLASS_ID) return;
    auto* const material = static_cast<Mtl*>(base);
    for (int i = 0; i < material->NumSubMtls(); ++i) UpdateLook(material->GetSubMtl(i), t, seen);
}

/// All materials and maps that the scene owns or shows: effects use some that no node has.
void UpdateLooks(Core& core, TimeValue t) {
    std::set<MtlBase*> seen;
    UpdateLook(core.GetEnvironmentMap(), t, seen);
    for (Node* const node : core.AllNodes()) UpdateLook(node->GetMtl(), t, seen);
    const std::vector<ReferenceTarget*> owned = core.Owner().Targets();
    for (ReferenceTarget* const target : owned)
        if (target->SuperClassID() == MATERIAL_CLASS_ID || target->SuperClassID() == TEXMAP_CLASS_ID)
            UpdateLook(static_cast<MtlBase*>(target), t, seen);
}

/// Begins the effects of a frame and ends them, whatever happens between.
class RunningEffects {
public:
    RunningEffects(Core& core, TimeValue t) : time_(t) {
        for (int i = 0; i < core.NumAtmospheric(); ++i)
            if (core.GetAtmospheric(i)->Active(t)) Begin(core.GetAtmospheric(i));
    }
    ~RunningEffects() {
        for (Atmospheric* const a : begun_) a->RenderEnd(time_);
    }
    RunningEffects(const RunningEffects&) = delete;
    RunningEffects& operator=(const RunningEffects&) = delete;
    /// Brings the effects to a time, for the samples of a pass.
    void Update(TimeValue t, AtmosphereChain& chain) {
        for (Atmospheric* const a : begun_) {
            Interval valid = FOREVER;
            a->Update(t, valid);
            chain.Add(a);
        }
    }

private:
    void Begin(Atmospheric* a) {
        begun_.push_back(a);
        a->RenderBegin(time_);
    }
    TimeValue time_;
    std::vector<Atmospheric*> begun_;
};

/// The viewport looks through the render's camera meanwhile: effects ask it.
class ViewportCamera {
public:
    ViewportCamera(Core& core, INode* camera) : core_(core) {
        ViewExp* const view = core.GetActiveViewport();
        former_ = view->GetViewCamera();
        core.ReleaseViewport(view);
        core.SetViewportCamera(camera);
    }
    ~ViewportCamera() { core_.SetViewportCamera(former_); }
    ViewportCamera(const ViewportCamera&) = delete;
    ViewportCamera& operator=(const ViewportCamera&) = delete;

private:
    Core& core_;
    INode* former_;
};

void SetUpPicture(Core& core, const FrameSettings& settings, RenderContext& render, Picture& out) {
    out.Reset(settings.width, settings.height, settings.pixelAspect);
    out.AddChannels(BMM_CHAN_Z | core.GetRendParams().gbufChannels);
    if (render.envMap || !(render.BackgroundColor() == Color())) out.AddBackground();
    out.framesPerSecond = core.GetFrameRate();
    RenderInfo info;
    info.projType = render.projType;
    info.xc = render.xc, info.yc = render.yc;
    info.fieldRender = settings.fields != FieldMode::kNone;
    out.SetRenderInfo(info);
}

/// Where the view of a field stands; a picture without fields has the same one twice.
void TellView(const CameraView& view, int field, Picture& out) {
    RenderInfo info = *out.GetRenderInfo();
    for (int i = field; i < 2; ++i) {
        info.xscale[i] = view.xscale;
        info.yscale[i] = view.yscale;
        info.camToWorld[i] = view.camToWorld;
        info.worldToCam[i] = view.worldToCam;
    }
    out.SetRenderInfo(info);
}

/// One pass over a picture: all of it, or a field.
struct Pass {
    int field = -1;  ///< -1: all lines; 0, 1: the first, the second field
    int parity = -1; ///< of the lines, see BandRenderer
};

std::vector<Pass> PassesOf(const FrameSettings& settings) {
    switch (settings.fields) {
    case FieldMode::kEvenFirst:
        return {{0, 0}, {1, 1}};
    case FieldMode::kOddFirst:
        return {{0, 1}, {1, 0}};
    default:
        return {{}};
    }
}

/// Tells effects which field is made. A field's own lines lie twice as far apart: the context counts those.
void TellField(Core& core, const FrameSettings& settings, const Pass& pass, RenderContext& render) {
    RendParams& params = core.RenderParams();
    params.fieldRender = pass.field >= 0;
    params.fieldOrder = settings.fields == FieldMode::kOddFirst ? 1 : 0;
    params.currentField = pass.field == 0 ? 1 : 0;
    if (pass.field < 0) return;
    render.fieldRender = true;
    render.first_field = pass.field == 0;
    render.field_order = params.fieldOrder != 0;
    render.yscale *= 0.5f;
    render.yc *= 0.5f;
}

void TellRenderParams(Core& core, const FrameSettings& settings, int threads) {
    RendParams& params = core.RenderParams();
    params.width = settings.width;
    params.height = settings.height;
    params.devAspect = settings.pixelAspect;
    params.maxThreads = threads;
}

/// One frame on its way.
class FrameRender {
public:
    FrameRender(Core& core, const FrameSettings& settings, IProgressIndicator* progress, Picture& out,
                FrameStats& stats)
        : core_(core), settings_(settings), progress_(progress), out_(out), stats_(stats),
          camera_(FindCamera(core, settings.camera)), viewport_(core, camera_) {
        UpdateLooks(core, settings.time);
        finish_ = std::make_unique<PictureFinish>(core, settings);
    }
    /// False when the user wanted to stop.
    bool Run() {
        bool done = true;
        for (const Pass& pass : PassesOf(settings_)) done = RunPass(pass) && done;
        const auto start = Clock::now();
        done = done && finish_->Run(out_, *render_, progress_);
        stats_.effectSeconds = SecondsSince(start);
        effects_.reset();
        return done;
    }

private:
    bool RunPass(const Pass& pass) {
        settingsOf_.push_back(std::make_unique<FrameSettings>(settings_));
        FrameSettings& now = *settingsOf_.back();
        if (pass.field == 1) now.time += core_.GetTicksPerFrame() / 2;
        render_.reset(); // a node has one number at a time
        const CameraView view = MakeCameraView(camera_, now.time, now.width, now.height, now.pixelAspect);
        render_ = std::make_unique<RenderContext>(core_, now, view);
        if (pass.field <= 0) SetUpPicture(core_, settings_, *render_, out_);
        TellView(view, std::max(pass.field, 0), out_);
        TellField(core_, settings_, pass, *render_);
        if (!effects_) effects_ = std::make_unique<RunningEffects>(core_, settings_.time);
        effects_->Update(now.time, render_->Atmosphere());
        if (!core_.CheckForRenderAbort()) render_->AddLights();
        passes_.push_back(
            std::make_unique<BandRenderer>(core_, *render_, now, stats_.threads, out_, progress_, pass.parity));
        BandRenderer& bands = *passes_.back();
        const bool done = bands.Run();
        stats_.cameraSamples += bands.Samples();
        stats_.atmosphereSegments += bands.Segments();
        return done;
    }

    Core& core_;
    const FrameSettings& settings_;
    IProgressIndicator* progress_;
    Picture& out_;
    FrameStats& stats_;
    INode* const camera_;
    const RenderEvaluation evaluation_;
    const ViewportCamera viewport_;
    std::unique_ptr<PictureFinish> finish_;
    std::unique_ptr<RenderContext> render_;
    std::vector<std::unique_ptr<FrameSettings>> settingsOf_;
    std::vector<std::unique_ptr<BandRenderer>> passes_; // effects may tell them their progress until they end
    std::unique_ptr<RunningEffects> effects_;           // ends while the last context stands
};

} // namespace

int ThreadCount(int requested) {
    const int processors = std::max(1, int(std::thread::hardware_concurrency()));
    return std::clamp(requested > 0 ? requested : processors, 1, 256);
}

FrameResult ScanRenderer::Render(Core& core, const FrameSettings& settings, IProgressIndicator* progress, Picture& out,
                                 FrameStats& stats) {
    const auto start = Clock::now();
    const double cpuStart = ProcessCpuSeconds();
    stats = FrameStats();
    stats.threads = ThreadCount(settings.threads);
    TellRenderParams(core, settings, stats.threads);
    const bool done = FrameRender(core, settings, progress, out, stats).Run();
    stats.wallSeconds = SecondsSince(start);
    stats.cpuSeconds = ProcessCpuSeconds() - cpuStart;
    stats.peakRssBytes = ProcessPeakRssBytes();
    return done ? FrameResult::kDone : FrameResult::kAborted;
}

} // namespace host
