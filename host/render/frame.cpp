#include "render/frame.h"

#include <cmath>

#include "core/host_classes.h"
#include "core/light.h"
#include "core/notify_scope.h"
#include "materials/bitmap_map.h"
#include "materials/checker_map.h"
#include "materials/gradient_map.h"
#include "materials/multi_mtl.h"
#include "materials/noise_map.h"
#include "materials/shaders.h"
#include "materials/std_mtl.h"
#include "materials/vertex_color_map.h"
#include "render/camera_view.h"
#include "render/effects/blur.h"
#include "render/effects/color_effects.h"
#include "render/effects/negative_filter.h"
#include "render/frame_log.h"
#include "render/light_desc.h"
#include "render/scan_renderer.h"

namespace host {

namespace {

ClassDesc* ScanRendererDesc() {
    static SimpleClassDesc<ScanRenderer> desc("Scan Renderer", RENDERER_CLASS_ID, SREND_CLASS_ID);
    return &desc;
}

ObjLightDesc* MakeLightDesc(Light* light, INode* node) {
    return new HostLightDesc(light, node);
}

/// The scene's renderer; made when the scene has none.
ScanRenderer& CurrentRenderer(Core& core) {
    if (!core.GetCurrentRenderer()) core.SetCurrentRenderer(core.Adopt(new ScanRenderer));
    auto* const renderer = dynamic_cast<ScanRenderer*>(core.GetCurrentRenderer());
    if (!renderer) throw Error("the scene's renderer is not the host's own and cannot make pictures here");
    return *renderer;
}

} // namespace

void RegisterRenderClasses(Core& core) {
    Light::SetDescFactory(MakeLightDesc);
    for (ClassDesc* const desc :
         {ScanRendererDesc(), StdMtlDesc(), MultiMtlDesc(), BlinnShaderDesc(), PhongShaderDesc(), BitmapMapDesc(),
          CheckerMapDesc(), NoiseMapDesc(), GradientMapDesc(), VertexColorMapDesc(),
          static_cast<ClassDesc*>(&BrightnessContrast::Desc()), static_cast<ClassDesc*>(&ColorBalance::Desc()),
          static_cast<ClassDesc*>(&DepthFog::Desc()), static_cast<ClassDesc*>(&Blur::Desc()), NegativeFilterDesc()})
        core.Classes().Register(desc);
}

PictureRegion RegionOf(const FrameSettings& settings) {
    return settings.crop.Empty() ? PictureRegion{0, 0, settings.width, settings.height} : settings.crop;
}

void CheckFrameSettings(Core& core, const FrameSettings& settings) {
    const auto inside = [](int side) { return side >= 1 && side <= kMaxPictureSide; };
    if (!inside(settings.width) || !inside(settings.height))
        throw Error("cannot render a picture of " + std::to_string(settings.width) + " x " +
                    std::to_string(settings.height) + " pixels, expected 1 to " + std::to_string(kMaxPictureSide) +
                    " a side");
    if (!(settings.pixelAspect > 0.0f) || !std::isfinite(settings.pixelAspect))
        throw Error("wrong pixel aspect " + std::to_string(settings.pixelAspect) + ", expected a number above 0");
    if (settings.threads < 0 || settings.threads > 256)
        throw Error("cannot render with " + std::to_string(settings.threads) +
                    " threads, expected 0 (as many as there are processors) to 256");
    if (settings.samples < 1 || settings.samples > 16)
        throw Error("wrong number of samples " + std::to_string(settings.samples) + ", expected 1 to 16");
    if (!(settings.filterWidth >= 1.0f && settings.filterWidth <= kMaxFilterWidth))
        throw Error("wrong filter width " + std::to_string(settings.filterWidth) + ", expected 1 to " +
                    std::to_string(int(kMaxFilterWidth)) + " pixels");
    const PictureRegion& c = settings.crop;
    if (!c.Empty() && (c.x0 < 0 || c.y0 < 0 || c.x1 > settings.width || c.y1 > settings.height))
        throw Error("the region " + std::to_string(c.x0) + "," + std::to_string(c.y0) + "," + std::to_string(c.x1) +
                    "," + std::to_string(c.y1) + " leaves the picture of " + std::to_string(settings.width) + " x " +
                    std::to_string(settings.height) + " pixels, expected a part of it");
    FindCamera(core, settings.camera);
}

FrameResult RenderFrame(Core& core, const FrameSettings& settings, IProgressIndicator* progress, Picture& out,
                        FrameStats& stats) {
    CheckFrameSettings(core, settings);
    const Core::Scope current(core);
    TimeValue time = settings.time;
    const NotifyScope frame(core, NOTIFY_PRE_RENDERFRAME, NOTIFY_POST_RENDERFRAME, &time);
    const FrameResult result = CurrentRenderer(core).Render(core, settings, progress, out, stats);
    if (result == FrameResult::kDone)
        core.Log()->LogEntry(SYSLOG_INFO, false, nullptr, FrameLogLine(core, settings, stats).c_str());
    return result;
}

} // namespace host
