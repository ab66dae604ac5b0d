// The indicator with a window of its own.

#include <algorithm>
#include <cstdio>

#include "Base/ProgressInd.h"
#include "DebugTools/Assert.h"
#include "HairDLL/StringTable.h"
#include "sdk/core.h"

namespace {

// Dialog templates by kind of window, and their controls.
constexpr int kTemplates[] = {1058, 161, 1059};
constexpr int kObjectBar = 1045, kObjectName = 1046, kTaskName = 1043, kTaskBar = 1047;
constexpr int kElapsed = 1237, kRemaining = 1238;
constexpr int kBarSteps = 1000;

constexpr int kIdleText = 40347;
constexpr uint32_t kUpdateMs = 1000;   // between two updates of the window
constexpr uint32_t kEstimateMs = 2000; // before which no remaining time is shown
constexpr uint32_t kSleepMs = 10;      // between two looks at the window's messages

// One window at a time, so these are the process's.
std::atomic<bool> stopWindow{false};
diag::CriticalSection positionSection;
std::optional<WindowPosition> lastPosition;

std::string TimeText(uint32_t milliseconds) {
    const uint32_t seconds = milliseconds / 1000;
    char text[32];
    std::snprintf(text, sizeof text, "%u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return text;
}

bool IsKind(int kind) {
    return kind >= StandaloneProgInd::kObject && kind <= StandaloneProgInd::kTaskWithCancel;
}

} // namespace

StandaloneProgInd::StandaloneProgInd(int kind, bool disableHost, Clock clock)
    : kind_(kind), disableHost_(disableHost), clock_(clock) {}

StandaloneProgInd::~StandaloneProgInd() {
    StandaloneProgInd::End();
    StandaloneProgInd::DestroyWindow();
}

void StandaloneProgInd::ForgetPosition() {
    diag::ScopedLock lock(positionSection);
    lastPosition.reset();
}

bool StandaloneProgInd::Start() {
    End();
    stopWindow = false;
    cancelled_ = false;
    return thread_.Start([this] { RunWindow(); });
}

bool StandaloneProgInd::End() {
    if (!thread_.Joinable()) return false;
    stopWindow = true;
    thread_.Join();
    return true;
}

void StandaloneProgInd::RunWindow() {
    try {
        ServeWindow();
    } catch (...) {
        diag::ReportException("in progress window");
        DestroyWindow();
    }
}

void StandaloneProgInd::ServeWindow() {
    if (!CreateWindow()) return;
    IDialog* const dialog = dialog_; // only this thread closes it
    while (!stopWindow) {
        dialog->DispatchMessages();
        diag::SleepMs(kSleepMs);
    }
    DestroyWindow();
}

bool StandaloneProgInd::CreateWindow() {
    SASSERT_ONCE(IsKind(kind_));
    Interface* const host = GetCOREInterface();
    if (!IsKind(kind_) || !host) return false;
    IDialog* const dialog = host->OpenDialog(kTemplates[kind_ - kObject], *this);
    if (!dialog) return false;
    if (disableHost_) host->EnableMainWindow(false);
    return true;
}

void StandaloneProgInd::DestroyWindow() {
    IDialog* dialog;
    {
        diag::ScopedLock lock(section_);
        dialog = std::exchange(dialog_, nullptr);
    }
    if (!dialog) return;
    dialog->Close();
    Interface* const host = GetCOREInterface();
    if (disableHost_ && host) host->EnableMainWindow(true);
}

void StandaloneProgInd::SetTitle(const std::string& title) {
    diag::ScopedLock lock(section_);
    title_ = title;
    if (dialog_) dialog_->SetTitle(title);
}

void StandaloneProgInd::SetTask(const std::string& name, int objectCount) {
    diag::ScopedLock lock(section_);
    StoreTask(name, objectCount);
    if (dialog_) ShowTask(*dialog_);
}

void StandaloneProgInd::SetIdle() {
    SetTask(FindString(kIdleText), 0);
}

void StandaloneProgInd::SetTaskProgress(int objectIndex) {
    diag::ScopedLock lock(section_);
    objectIndex_ = objectIndex;
    if (dialog_ && ShowsTask()) dialog_->SetInt(kTaskBar, objectIndex, 0, objectCount_ - 1);
}

void StandaloneProgInd::SetObject(const std::string& name, int stepTotal) {
    diag::ScopedLock lock(section_);
    const uint32_t now = clock_();
    if (objectIndex_ > 0) {
        finishedMs_ += now - objectStart_;
    } else {
        firstStart_ = now;
        finishedMs_ = 0;
    }
    objectStart_ = lastUpdate_ = now;
    lastStep_ = 0;
    objectShown_ = false;
    StoreObject(name, stepTotal);
    if (dialog_) ShowObject(*dialog_);
    ++objectIndex_;
}

// The first call for an object shows where it starts from, later ones wait for their second.
void StandaloneProgInd::SetObjectProgress(int step) {
    diag::ScopedLock lock(section_);
    step_ = step;
    const uint32_t now = clock_();
    if (objectShown_ && now - lastUpdate_ <= kUpdateMs) return;
    if (dialog_) ShowTimes(*dialog_, now);
    objectShown_ = true;
    lastUpdate_ = now;
    lastStep_ = step;
}

void StandaloneProgInd::ShowTask(IDialog& dialog) const {
    if (ShowsTask()) {
        dialog.SetText(kTaskName, taskName_);
        dialog.SetInt(kTaskBar, 0, 0, objectCount_ - 1);
    }
    dialog.SetText(kObjectName, "");
    dialog.SetInt(kObjectBar, 0, 0, kBarSteps);
}

void StandaloneProgInd::ShowObject(IDialog& dialog) const {
    if (ShowsTask()) dialog.SetInt(kTaskBar, objectIndex_, 0, objectCount_ - 1);
    dialog.SetText(kObjectName, objectName_);
    dialog.SetInt(kObjectBar, 0, 0, kBarSteps);
}

void StandaloneProgInd::ShowTimes(IDialog& dialog, uint32_t now) const {
    const int64_t position = stepTotal_ > 0 ? int64_t(step_) * kBarSteps / stepTotal_ : 0;
    dialog.SetInt(kObjectBar, int(std::clamp<int64_t>(position, 0, kBarSteps)), 0, kBarSteps);
    dialog.SetText(kElapsed, TimeText(now - firstStart_));
    dialog.SetText(kRemaining, TimeText(Remaining(now)));
}

// Milliseconds the current object still takes at the rate of the last interval; 0 when that tells nothing.
uint32_t StandaloneProgInd::Remaining(uint32_t now) const {
    const int64_t advanced = int64_t(step_) - lastStep_, left = int64_t(stepTotal_) - step_;
    if (advanced < 1 || left < 0 || now - firstStart_ <= kEstimateMs) return 0;
    return uint32_t(std::min<int64_t>(int64_t(now - lastUpdate_) * left / advanced, UINT32_MAX));
}

void StandaloneProgInd::OnOpen(IDialog& dialog) {
    {
        diag::ScopedLock lock(section_);
        dialog_ = &dialog;
        dialog.SetTitle(title_);
        dialog.SetText(kElapsed, "00:00:00");
        dialog.SetText(kRemaining, "00:00:00");
        // What was said before the window was there.
        ShowTask(dialog);
        if (!objectName_.empty()) dialog.SetText(kObjectName, objectName_);
    }
    diag::ScopedLock lock(positionSection);
    if (lastPosition)
        dialog.MoveTo(*lastPosition);
    else
        dialog.Center();
}

void StandaloneProgInd::OnCommand(IDialog&, int control) {
    if (control == IDCANCEL) cancelled_ = true;
}

void StandaloneProgInd::OnMove(IDialog& dialog) {
    if (dialog.State() != WindowState::kNormal) return;
    diag::ScopedLock lock(positionSection);
    lastPosition = dialog.Position();
}

void StandaloneProgInd::OnClose(IDialog&) {
    diag::ScopedLock lock(section_);
    dialog_ = nullptr;
}
