#pragma once
// Progress indicators: a window of their own, the host's filter window, a render's callback.

#include <atomic>
#include <optional>

#include "DebugTools/Platform.h"
#include "sdk/dialog.h"
#include "sdk/filter.h"
#include "sdk/progress.h"
#include "sdk/render.h"

/// Shows progress in a modeless window that a thread of its own serves, so that it stays responsive while the calling
/// thread computes. One at a time in the process.
class StandaloneProgInd : public IProgressIndicator, private IDialogProc {
public:
    /// Kinds of window. Another number opens none and raises the assertion once.
    enum Kind {
        kObject = 2,        ///< object bar, object name, cancel button
        kTask = 3,          ///< task name and bar besides, no cancel button
        kTaskWithCancel = 4 ///< all of them
    };
    /// Milliseconds of the system timer.
    using Clock = uint32_t (*)();

    /// With `disableHost` the host's main window is disabled while the indicator is shown.
    explicit StandaloneProgInd(int kind, bool disableHost = false, Clock clock = diag::TickMs);
    ~StandaloneProgInd() override;

    /// Starts the thread; false when there is none to be had.
    bool Start() override;
    /// Stops the thread and waits until its window is closed.
    bool End() override;
    void SetTask(const std::string& name, int objectCount) override;
    void SetTaskProgress(int objectIndex) override;
    void SetObject(const std::string& name, int stepTotal) override;
    /// Updates the window at most once a second.
    void SetObjectProgress(int step) override;
    void SetIdle() override;
    bool IsCancelled() override { return cancelled_; }

    /// Opens the window on the calling thread, whose part it then is to dispatch its messages. False without a host
    /// that shows dialogs.
    virtual bool CreateWindow();
    virtual void DestroyWindow();
    virtual void SetTitle(const std::string& title);

    /// Forgets where the last window was: the next one is centred.
    static void ForgetPosition();

private:
    void OnOpen(IDialog& dialog) override;
    void OnCommand(IDialog& dialog, int control) override;
    void OnMove(IDialog& dialog) override;
    void OnClose(IDialog& dialog) override;

    bool ShowsTask() const { return kind_ >= kTask; }
    void RunWindow();
    void ServeWindow();
    void ShowTask(IDialog& dialog) const;
    void ShowObject(IDialog& dialog) const;
    void ShowTimes(IDialog& dialog, uint32_t now) const;
    uint32_t Remaining(uint32_t now) const;

    const int kind_;
    const bool disableHost_;
    const Clock clock_;
    diag::Thread thread_;
    std::atomic<bool> cancelled_{false};

    // Shared by the two threads.
    diag::CriticalSection section_;
    IDialog* dialog_ = nullptr;
    std::string title_;
    uint32_t firstStart_ = 0;  ///< tick the first object started at
    uint32_t objectStart_ = 0; ///< tick the current object started at
    uint32_t finishedMs_ = 0;  ///< spent on finished objects
    uint32_t lastUpdate_ = 0;  ///< tick of the last update of the window, or of the object's start
    int lastStep_ = 0;         ///< step at that time
    bool objectShown_ = false; ///< the current object's progress was shown at least once
};

/// Reports to the host's image filter window.
class FilterProgInd : public IProgressIndicator {
public:
    explicit FilterProgInd(IFilterWindow& window) : window_(window) {}
    void SetTask(const std::string& name, int objectCount) override;
    void SetTaskProgress(int objectIndex) override { objectIndex_ = objectIndex; }
    void SetObject(const std::string& name, int stepTotal) override;
    /// intended: reports the raw step against 1000, whatever the object's total.
    void SetObjectProgress(int step) override;
    bool IsCancelled() override;

private:
    void SendText(const std::string& text);
    void SendProgress(int step);
    IFilterWindow& window_;
};

/// Reports to a render's callback, which may be null: then to nobody.
class EffectProgInd : public IProgressIndicator {
public:
    explicit EffectProgInd(RendProgressCallback* callback) : callback_(callback) {}
    void SetTask(const std::string& name, int objectCount) override;
    void SetTaskProgress(int objectIndex) override { objectIndex_ = objectIndex; }
    /// The callback is titled with the object's name.
    void SetObject(const std::string& name, int stepTotal) override;
    void SetObjectProgress(int step) override;
    bool IsCancelled() override;

private:
    RendProgressCallback* callback_;
    bool stopped_ = false; ///< the callback answered so
};
