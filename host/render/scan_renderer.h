#pragma once
// The host's own renderer.

#include "render/frame.h"
#include "sdk/render.h"

namespace host {

/// Traces camera samples, shades surfaces, and asks the atmospheric effects about every camera segment.
class ScanRenderer : public Renderer {
public:
    Class_ID ClassID() override { return SREND_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Scan Renderer"; }
    RefTargetHandle Clone(RemapDir&) override { return new ScanRenderer; }
    /// One frame; see RenderFrame, which checks the settings.
    FrameResult Render(Core& core, const FrameSettings& settings, IProgressIndicator* progress, Picture& out,
                       FrameStats& stats);
};

/// Number of threads that `requested` (0: as many as there are processors) stands for, 1..256.
int ThreadCount(int requested);

} // namespace host
