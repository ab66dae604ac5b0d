#pragma once
// Progress of an effect that works long inside a sample, shown beside the lines that are done.

#include <string>

#include "core/core.h"
#include "render/frame.h"

namespace host {

/// What the core hands to effects while it lives (Interface::GetRenderProgress).
class EffectProgress : public RendProgressCallback {
public:
    /// `linesDone` and `lines` give the picture's own progress; `progress` may be null.
    EffectProgress(Core& core, RenderProgress* progress, const std::atomic<int>& linesDone, int lines)
        : core_(core), progress_(progress), linesDone_(linesDone), lines_(lines) {
        core_.SetRenderProgress(this);
    }
    ~EffectProgress() override { core_.SetRenderProgress(nullptr); }
    EffectProgress(const EffectProgress&) = delete;
    EffectProgress& operator=(const EffectProgress&) = delete;

    void SetTitle(const char* title) override { title_ = title ? title : ""; }
    int Progress(int done, int total) override {
        if (progress_ && total > 0) {
            const int percent = int(100.0 * double(done) / double(total));
            progress_->Report((title_ + " " + std::to_string(percent) + " %").c_str(), linesDone_, lines_);
        }
        return core_.CheckForRenderAbort() ? 0 : 1;
    }

private:
    Core& core_;
    RenderProgress* progress_;
    const std::atomic<int>& linesDone_;
    int lines_;
    std::string title_;
};

} // namespace host
