#pragma once
// The dialog surface: controls by id, neutral to any toolkit.

#include <string>
#include <vector>

// Buttons that every dialog may have.
inline constexpr int IDOK = 1, IDCANCEL = 2;

/// Place of a window's upper left corner on the screen, pixels.
struct WindowPosition {
    int x = 0, y = 0;
    friend bool operator==(const WindowPosition&, const WindowPosition&) = default;
};

enum class WindowState { kNormal, kMinimised, kMaximised };

/// One open dialog or rollout. Control ids are the dialog template's. Values may be set from any thread; what the user
/// does arrives on the thread that opened the dialog.
class IDialog {
public:
    virtual ~IDialog() = default;
    virtual void SetText(int control, const std::string& text) = 0;
    virtual std::string GetText(int control) = 0;
    virtual void SetFloat(int control, float value, float low, float high, float step) = 0;
    virtual float GetFloat(int control) = 0;
    /// The value of a spinner or the position of a bar, with its range.
    virtual void SetInt(int control, int value, int low, int high) = 0;
    virtual int GetInt(int control) = 0;
    virtual void SetCheck(int control, bool on) = 0;
    virtual bool GetCheck(int control) = 0;
    virtual void SetItems(int control, const std::vector<std::string>& items, int selected) = 0;
    virtual int GetSelected(int control) = 0;
    virtual void Enable(int control, bool on) = 0;
    virtual void Show(int control, bool on) = 0;
    virtual void Close() = 0;

    // The window around the controls; rollouts have none.
    virtual void SetTitle(const std::string& title) {}
    virtual WindowPosition Position() { return {}; }
    virtual void MoveTo(WindowPosition position) {}
    /// Centres the window on the host's main window.
    virtual void Center() {}
    virtual WindowState State() { return WindowState::kNormal; }
    /// Hands what the user did since the last call to the dialog's procedure; on the thread that opened the dialog.
    virtual void DispatchMessages() {}
};

/// What happens in a dialog reaches its owner here.
class IDialogProc {
public:
    virtual ~IDialogProc() = default;
    virtual void OnOpen(IDialog& dialog) {}
    virtual void OnCommand(IDialog& dialog, int control) {}
    virtual void OnValue(IDialog& dialog, int control) {}
    virtual void OnMove(IDialog& dialog) {}
    virtual void OnClose(IDialog& dialog) {}
};
