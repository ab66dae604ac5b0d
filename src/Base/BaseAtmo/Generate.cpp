// Generation: drawing the strands, and estimating them as geometry.

#include <algorithm>

#include "Base/BaseAtmo.h"
#include "Base/CreateHair/RenderDriver.h"
#include "Base/CreateHair/WorkUnits.h"
#include "DebugTools/CrashReport.h"
#include "DebugTools/Log.h"
#include "HRendBuf/HRendBuf.h"
#include "sdk/core.h"

namespace {

constexpr int kAllStrandsPerUnit = 1 << 30;

int PassOf(HRendMode mode) {
    switch (mode) {
    case HRM_SHADOW:
        return PASS_SHADOW;
    case HRM_GBUFFER:
        return PASS_OTHER;
    default:
        return PASS_COLOR;
    }
}

/// The bucket being drawn, with the largest radius any strand's filter may have in it.
ScreenRegion RegionOf(HRendBuf& buffer) {
    const PixelRect& rect = buffer.Bucket();
    const HRendSettings& settings = buffer.Settings();
    const RasterTarget target{rect, settings.filter, settings.filterSize, nullptr};
    // Very thin strands take a cone of radius 1 whatever the filter is.
    return {rect.x0, rect.y0, rect.x1, rect.y1, std::max(MaxFilterRadius(target), 1.0f)};
}

/// The lights of the render that reach `node`; none without a render context.
std::vector<LightDesc*> LightsFor(INode* node, RenderGlobalContext* context) {
    std::vector<LightDesc*> lights;
    for (int i = 0; context && i < context->NumLights(); ++i) {
        ObjLightDesc* light = context->GetLight(i);
        if (light && light->Illuminates(node)) lights.push_back(light);
    }
    return lights;
}

Color SceneAmbient(TimeValue t) {
    Interface* host = GetCOREInterface();
    Interval valid = FOREVER;
    return host ? host->GetAmbient(t, valid) : Color();
}

/// Lends lights and camera of a render to an emitter's distributions for a scope.
class LentLights {
public:
    LentLights(NodeSurfaces& surfaces, std::vector<LightDesc*> lights, const Matrix3& worldToCam)
        : surfaces_(surfaces) {
        surfaces_.lights = std::move(lights);
        surfaces_.worldToCam = worldToCam;
    }
    ~LentLights() {
        surfaces_.lights.clear();
        surfaces_.worldToCam = Matrix3();
    }
    LentLights(const LentLights&) = delete;
    LentLights& operator=(const LentLights&) = delete;

private:
    NodeSurfaces& surfaces_;
};

/// Counts strands as geometry of `sides` sides.
class Counter {
public:
    Counter(GeometryEstimate& sum, int sides) : sum_(sum), sides_(sides) {}
    bool Aborted() const { return false; }
    void OnStrand(StrandContext& c) {
        const int64_t n = c.run->maxPoints, s = sides_;
        ++sum_.strands;
        sum_.points += n;
        sum_.vertices += s == 0 ? n : s <= 2 ? 2 * n : s * n + 2;
        sum_.faces += s == 0 ? n - 1 : s == 1 ? 2 * n - 2 : s == 2 ? 4 * n - 4 : 2 * s * n;
        sum_.mappingVertices += s == 0 ? n : s == 1 ? 2 * n : s == 2 ? 3 * n : s * n + 2 + n;
    }

private:
    GeometryEstimate& sum_;
    int sides_;
};

} // namespace

bool BaseAtmo::GetStrandsAt(TimeValue t) {
    diag::ScopedLock lock(lock_);
    Interval valid = FOREVER;
    UpdateAtTime(t, valid);
    if (params_.Int(pid_dyn_useDyn) != 0) {
        static std::atomic<bool> told{false};
        if (!told.exchange(true))
            LogWrite(LogDefault(), "dynamics are not part of this version: strands stand at rest", kLogEndLine);
    }
    return std::any_of(emitters_.begin(), emitters_.end(), [](const auto& e) { return e && e->usable; });
}

bool BaseAtmo::ShowsInPass(const EmitterRecord& e, int pass) const {
    if (!e.usable || e.node->IsNodeHidden() || !e.node->Renderable()) return false;
    return pass == PASS_SHADOW ? e.node->CastShadows() : e.node->GetPrimaryVisibility();
}

int BaseAtmo::RenderEmitter(EmitterRecord& e, HRendBuf& buffer, int pass, uint32_t& unit) {
    const ViewParamsEx& view = buffer.View();
    const ScreenRegion region = RegionOf(buffer);
    std::vector<LightDesc*> lights = LightsFor(e.node, buffer.Context());
    const LentLights lent(e.surfaces, lights, view.worldToCam);

    RunRequest request;
    request.pass = pass;
    request.shading = buffer.Settings().shadeMiddle && params_.On(pid_shadeMidStrands);
    request.params = &params_;
    request.control = &e.control;
    request.worldToOutput = view.worldToCam;
    request.image = &buffer.Image();
    request.perspective = view.projType == PROJ_PERSPECTIVE;
    request.region = &region;
    GenerationRun run;
    if (!run.Prepare(request)) return 0;

    ShadingSetup shading;
    shading.material = material_ ? material_ : defaultMaterial_.get();
    shading.lights = std::move(lights);
    shading.useLights = buffer.Context() != nullptr;
    shading.context = buffer.Context();
    shading.image = &buffer.Image();
    shading.view = &view;
    shading.ambient = SceneAmbient(params_.time);
    shading.node = e.node;
    shading.time = params_.time;
    shading.visibility = e.node->GetVisibility(params_.time);
    shading.objectTM = run.objectTM;
    Interface* host = GetCOREInterface();
    return int(RenderHair(run, shading, buffer, host ? &host->RenderAbortFlag() : nullptr, unit).strands);
}

int BaseAtmo::RenderStrands(HRendBuf& buffer) {
    diag::ScopedLock lock(lock_);
    if (!GetStrandsAt(buffer.Time())) return 0;
    const int pass = PassOf(buffer.Mode());
    int strands = 0;
    uint32_t unit = 0;
    for (const auto& e : emitters_)
        if (e && ShowsInPass(*e, pass) && !buffer.Aborted()) strands += RenderEmitter(*e, buffer, pass, unit);
    return strands;
}

bool BaseAtmo::PrepareEstimate(EmitterRecord& e, GenerationRun& run) const {
    RunRequest request;
    request.mode = GEN_ESTIMATE;
    request.params = &params_;
    request.control = &e.control;
    return run.Prepare(request);
}

void BaseAtmo::EstimateEmitter(EmitterRecord& e, GeometryEstimate& sum) {
    GenerationRun run;
    if (!PrepareEstimate(e, run)) return;
    StrandContext context(run, 0);
    DrawStrandCounts(run, context);
    Counter counter(sum, params_.Int(pid_geomSides));
    for (const WorkUnit& unit : MakeWorkUnits(run, kAllStrandsPerUnit)) BuildUnit(context, unit, counter);
}

GeometryEstimate BaseAtmo::EstimateGeometry(TimeValue t, int emitter) {
    diag::ScopedLock lock(lock_);
    GeometryEstimate sum;
    const auto estimate = [&] {
        if (!GetStrandsAt(t)) return;
        for (int i = 0; i < EmitterCount(); ++i) {
            EmitterRecord* e = Emitter(i);
            if (e && (emitter < 0 || emitter == i) && ShowsInPass(*e, PASS_COLOR)) EstimateEmitter(*e, sum);
        }
    };
    return diag::Guarded("in EstimateGeometry", estimate) ? sum : GeometryEstimate{};
}

bool BaseAtmo::Source::Update(TimeValue t) {
    diag::ScopedLock lock(owner_.lock_);
    if (!owner_.GetStrandsAt(t)) return false;
    return std::any_of(owner_.emitters_.begin(), owner_.emitters_.end(), [this](const auto& e) {
        return e && (owner_.ShowsInPass(*e, PASS_COLOR) || owner_.ShowsInPass(*e, PASS_SHADOW));
    });
}

// Expected strands, before rounding and culling: enough for a progress bar, and cheap.
int BaseAtmo::Source::StrandCount() {
    diag::ScopedLock lock(owner_.lock_);
    if (owner_.strandCount_ >= 0) return owner_.strandCount_;
    double expected = 0;
    for (const auto& e : owner_.emitters_) {
        if (!e || !owner_.ShowsInPass(*e, PASS_COLOR)) continue;
        GenerationRun run;
        if (!owner_.PrepareEstimate(*e, run)) continue;
        for (const EmitterFace& f : run.faces)
            if (e->control.FaceSelected(f.face)) expected += double(f.strandCount);
    }
    owner_.strandCount_ = int(std::min(expected, 2147483647.0));
    return owner_.strandCount_;
}

float BaseAtmo::Source::MinHairDist() {
    diag::ScopedLock lock(owner_.lock_);
    return owner_.params_.Float(pid_minHairDist);
}
