#pragma once
// The dialog surface: controls by id, neutral to any toolkit.

#include <string>
#include <vector>

/// One open dialog or rollout. Control ids are the dialog template's.
class IDialog {
public:
    virtual ~IDialog() = default;
    virtual void SetText(int control, const std::string& text) = 0;
    virtual std::string GetText(int control) = 0;
    virtual void SetFloat(int control, float value, float low, float high, float step) = 0;
    virtual float GetFloat(int control) = 0;
    virtual void SetInt(int control, int value, int low, int high) = 0;
    virtual int GetInt(int control) = 0;
    virtual void SetCheck(int control, bool on) = 0;
    virtual bool GetCheck(int control) = 0;
    virtual void SetItems(int control, const std::vector<std::string>& items, int selected) = 0;
    virtual int GetSelected(int control) = 0;
    virtual void Enable(int control, bool on) = 0;
    virtual void Show(int control, bool on) = 0;
    virtual void Close() = 0;
};

/// What happens in a dialog reaches its owner here.
class IDialogProc {
public:
    virtual ~IDialogProc() = default;
    virtual void OnOpen(IDialog& dialog) {}
    virtual void OnCommand(IDialog& dialog, int control) {}
    virtual void OnValue(IDialog& dialog, int control) {}
    virtual void OnClose(IDialog& dialog) {}
};
