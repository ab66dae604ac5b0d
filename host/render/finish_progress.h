#pragma once
// Progress of render effects and image filters, as the watcher of a render sees it.

#include <string>
#include <utility>

#include "core/core.h"
#include "sdk/filter.h"
#include "sdk/progress.h"

namespace host {

/// Passes on what an effect says to its callback, or a filter to its window: the object is the title or text, the steps
/// are the effect's own. Until it says something, the object is called `name`. Whoever wants to stop asks the core.
class FinishProgress : public RendProgressCallback, public IFilterWindow {
public:
    /// `progress` may be null.
    FinishProgress(Core& core, IProgressIndicator* progress, std::string name)
        : core_(core), progress_(progress), title_(std::move(name)) {}

    // For effects.
    void SetTitle(const char* title) override {
        title_ = title ? title : "";
        total_ = -1;
    }
    int Progress(int done, int total) override {
        if (progress_) {
            if (total != total_) progress_->SetObject(title_, total_ = total);
            progress_->SetObjectProgress(done);
        }
        return Cancelled() ? 0 : 1;
    }
    bool Cancelled() override { return core_.CheckForRenderAbort(); }

    // For filters.
    void SendMessage(unsigned message, intptr_t first, intptr_t second) override {
        if (message == FLT_TEXT) SetTitle(reinterpret_cast<const char*>(second));
        if (message == FLT_PROGRESS) Progress(int(first), int(second));
        if (message == FLT_CHECKABORT) *reinterpret_cast<int*>(second) = Cancelled() ? 1 : 0;
    }

private:
    Core& core_;
    IProgressIndicator* progress_;
    std::string title_;
    int total_ = -1; ///< what the watcher was told last; -1: nothing since the title
};

} // namespace host
