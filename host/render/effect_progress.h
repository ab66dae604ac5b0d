#pragma once
// Progress of an effect that works long inside a sample, shown beside the lines that are done.

#include <atomic>
#include <mutex>
#include <string>

#include "core/core.h"
#include "render/frame.h"

namespace host {

/// What the core hands to effects while it lives, when somebody watches (Interface::GetRenderProgress). Effects on
/// several threads may tell their progress at a time; the title is the last one's.
class EffectProgress : public RendProgressCallback {
public:
    /// `linesDone` and `lines` give the picture's own progress; `progress` may be null and is called under `mutex`.
    EffectProgress(Core& core, IProgressIndicator* progress, std::mutex& mutex, const std::atomic<int>& linesDone,
                   int lines)
        : core_(core), progress_(progress), mutex_(mutex), linesDone_(linesDone), lines_(lines) {
        if (progress_) core_.SetRenderProgress(this);
    }
    ~EffectProgress() override { core_.SetRenderProgress(nullptr); }
    EffectProgress(const EffectProgress&) = delete;
    EffectProgress& operator=(const EffectProgress&) = delete;

    void SetTitle(const char* title) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        title_ = title ? title : "";
    }
    int Progress(int done, int total) override {
        if (progress_ && total > 0) {
            const int percent = int(100.0 * double(done) / double(total));
            const std::lock_guard<std::mutex> lock(mutex_);
            progress_->SetObject(title_ + " " + std::to_string(percent) + " %", lines_);
            progress_->SetObjectProgress(linesDone_);
        }
        return Cancelled() ? 0 : 1;
    }
    bool Cancelled() override { return core_.CheckForRenderAbort(); }

private:
    Core& core_;
    IProgressIndicator* progress_;
    std::mutex& mutex_;
    const std::atomic<int>& linesDone_;
    int lines_;
    std::string title_; ///< guarded by the mutex
};

} // namespace host
