#pragma once
// Dialogs without a screen.

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sdk/dialog.h"

namespace host {

/// Where a core's dialogs come from.
class DialogSource {
public:
    virtual ~DialogSource() = default;
    /// Opens the modeless dialog of a template. It lives at least until it is closed. Null when it cannot be shown.
    virtual IDialog* Open(int templateId, IDialogProc& proc) = 0;
    virtual void EnableMainWindow(bool on) = 0;
};

/// A dialog in memory. Any thread may look at it and act as its user.
class MemoryDialog : public IDialog {
public:
    /// What a control holds, and how often its text or number was set.
    struct Control {
        std::string text;
        double value = 0, low = 0, high = 0;
        bool checked = false, enabled = true, shown = true;
        std::vector<std::string> items;
        int selected = -1;
        int updates = 0;
    };

    MemoryDialog(int templateId, IDialogProc& proc) : templateId_(templateId), proc_(&proc) {}

    void SetText(int control, const std::string& text) override;
    std::string GetText(int control) override { return Get(control).text; }
    void SetFloat(int control, float value, float low, float high, float step) override;
    float GetFloat(int control) override { return float(Get(control).value); }
    void SetInt(int control, int value, int low, int high) override;
    int GetInt(int control) override { return int(Get(control).value); }
    void SetCheck(int control, bool on) override;
    bool GetCheck(int control) override { return Get(control).checked; }
    void SetItems(int control, const std::vector<std::string>& items, int selected) override;
    int GetSelected(int control) override { return Get(control).selected; }
    void Enable(int control, bool on) override;
    void Show(int control, bool on) override;
    /// Calls the procedure's OnClose. Closing again does nothing.
    void Close() override;
    void SetTitle(const std::string& title) override;
    WindowPosition Position() override;
    void MoveTo(WindowPosition position) override;
    void Center() override;
    WindowState State() override;
    void DispatchMessages() override;

    // Acting as the user: done at the next DispatchMessages.
    void Click(int control);
    void Drag(WindowPosition position, WindowState state = WindowState::kNormal);

    int TemplateId() const { return templateId_; }
    Control Get(int control) const;
    std::string Title() const;
    bool Centered() const;
    bool IsOpen() const;

private:
    struct Event {
        bool moved;
        int control;
        WindowPosition position;
        WindowState state;
    };

    const int templateId_;
    mutable std::mutex mutex_; ///< guards all below; never held while the procedure is called
    IDialogProc* proc_;        ///< null once closed
    std::map<int, Control> controls_;
    std::string title_;
    WindowPosition position_;
    WindowState state_ = WindowState::kNormal;
    bool centered_ = false;
    std::vector<Event> events_;
};

/// Makes dialogs in memory and keeps them, closed ones too.
class MemoryDialogs : public DialogSource {
public:
    IDialog* Open(int templateId, IDialogProc& proc) override;
    void EnableMainWindow(bool on) override;

    /// Number of dialogs opened so far.
    size_t Count() const;
    MemoryDialog& At(size_t i);
    bool MainWindowEnabled() const;

private:
    mutable std::mutex mutex_;
    std::vector<std::unique_ptr<MemoryDialog>> dialogs_;
    bool mainWindow_ = true;
};

} // namespace host
