#pragma once
// The host's own renderer.

#include "render/frame.h"
#include "sdk/render.h"

namespace host {

/// Traces camera samples, shades surfaces, and asks the atmospheric effects about every camera segment.
class ScanRenderer : public Renderer {
public:
    /// Effects adapt to the class of the renderer; another one can be claimed to try that.
    explicit ScanRenderer(Class_ID shownAs = SREND_CLASS_ID) : classId_(shownAs) {}
    Class_ID ClassID() override { return classId_; }
    void GetClassName(TSTR& s) override { s = "Scan Renderer"; }
    RefTargetHandle Clone(RemapDir&) override { return new ScanRenderer(classId_); }
    /// One frame; see RenderFrame, which checks the settings.
    FrameResult Render(Core& core, const FrameSettings& settings, IProgressIndicator* progress, Picture& out,
                       FrameStats& stats);

private:
    Class_ID classId_;
};

/// Number of threads that `requested` (0: as many as there are processors) stands for, 1..256.
int ThreadCount(int requested);

} // namespace host
