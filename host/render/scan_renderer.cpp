#include "render/scan_renderer.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <thread>

#include "core/render_evaluation.h"
#include "materials/bitmap_map.h"
#include "render/band_renderer.h"
#include "render/process_usage.h"

namespace host {

namespace {

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
    explicit RunningEffects(TimeValue t) : time_(t) {}
    ~RunningEffects() {
        for (Atmospheric* const a : begun_) a->RenderEnd(time_);
    }
    RunningEffects(const RunningEffects&) = delete;
    RunningEffects& operator=(const RunningEffects&) = delete;
    /// RenderBegin of all active effects, then Update of all.
    void Begin(Core& core, AtmosphereChain& chain) {
        for (int i = 0; i < core.NumAtmospheric(); ++i) {
            Atmospheric* const a = core.GetAtmospheric(i);
            if (!a->Active(time_)) continue;
            begun_.push_back(a);
            a->RenderBegin(time_);
            chain.Add(a);
        }
        for (Atmospheric* const a : begun_) {
            Interval valid = FOREVER;
            a->Update(time_, valid);
        }
    }

private:
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
    for (int field = 0; field < 2; ++field) {
        info.xscale[field] = render.xscale;
        info.yscale[field] = render.yscale;
        info.camToWorld[field] = render.camToWorld;
        info.worldToCam[field] = render.worldToCam;
    }
    out.SetRenderInfo(info);
}

void TellRenderParams(Core& core, const FrameSettings& settings, int threads) {
    RendParams& params = core.RenderParams();
    params.width = settings.width;
    params.height = settings.height;
    params.devAspect = settings.pixelAspect;
    params.maxThreads = threads;
}

} // namespace

int ThreadCount(int requested) {
    const int processors = std::max(1, int(std::thread::hardware_concurrency()));
    return std::clamp(requested > 0 ? requested : processors, 1, 256);
}

FrameResult ScanRenderer::Render(Core& core, const FrameSettings& settings, IProgressIndicator* progress, Picture& out,
                                 FrameStats& stats) {
    const auto start = std::chrono::steady_clock::now();
    const double cpuStart = ProcessCpuSeconds();
    stats = FrameStats();
    stats.threads = ThreadCount(settings.threads);
    TellRenderParams(core, settings, stats.threads);
    INode* const camera = FindCamera(core, settings.camera);
    const RenderEvaluation evaluation;
    const ViewportCamera viewport(core, camera);
    UpdateLooks(core, settings.time);

    RenderContext render(core, settings,
                         MakeCameraView(camera, settings.time, settings.width, settings.height, settings.pixelAspect));
    SetUpPicture(core, settings, render, out);
    bool done = false;
    {
        BandRenderer bands(core, render, settings, stats.threads, out, progress);
        RunningEffects effects(settings.time);
        effects.Begin(core, render.Atmosphere());
        if (!core.CheckForRenderAbort()) render.AddLights();
        done = bands.Run();
        stats.cameraSamples = bands.Samples();
        stats.atmosphereSegments = bands.Segments();
    }
    stats.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    stats.cpuSeconds = ProcessCpuSeconds() - cpuStart;
    stats.peakRssBytes = ProcessPeakRssBytes();
    return done ? FrameResult::kDone : FrameResult::kAborted;
}

} // namespace host
