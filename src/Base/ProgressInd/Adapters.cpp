// Indicators that report to somebody else's progress.

#include "Base/ProgressInd.h"

namespace {

constexpr int kFilterSteps = 1000;

} // namespace

void FilterProgInd::SendText(const std::string& text) {
    window_.SendMessage(FLT_TEXT, 0, reinterpret_cast<intptr_t>(text.c_str()));
}

void FilterProgInd::SendProgress(int step) {
    window_.SendMessage(FLT_PROGRESS, step, kFilterSteps);
}

void FilterProgInd::SetTask(const std::string& name, int objectCount) {
    StoreTask(name, objectCount);
    SendText(name);
}

void FilterProgInd::SetObject(const std::string& name, int stepTotal) {
    StoreObject(name, stepTotal);
    SendText(taskName_ + ": " + name);
    SendProgress(0);
}

void FilterProgInd::SetObjectProgress(int step) {
    step_ = step;
    SendProgress(step);
}

bool FilterProgInd::IsCancelled() {
    int cancelled = 0;
    window_.SendMessage(FLT_CHECKABORT, 0, reinterpret_cast<intptr_t>(&cancelled));
    return cancelled != 0;
}

void EffectProgInd::SetTask(const std::string& name, int objectCount) {
    StoreTask(name, objectCount);
}

void EffectProgInd::SetObject(const std::string& name, int stepTotal) {
    StoreObject(name, stepTotal);
    if (callback_) callback_->SetTitle(name.c_str());
}

void EffectProgInd::SetObjectProgress(int step) {
    step_ = step;
    if (callback_ && callback_->Progress(step, stepTotal_) == 0) stopped_ = true;
}

bool EffectProgInd::IsCancelled() {
    return stopped_ || (callback_ && callback_->Cancelled());
}
