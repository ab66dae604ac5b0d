#pragma once
// Message boxes without a screen.

#include <deque>
#include <string>
#include <vector>

#include "sdk/core.h"

namespace host {

/// Records every message box and answers it from a list made beforehand.
class MessageBoxes {
public:
    struct Record {
        std::string text, title;
        MessageBoxKind kind;
        bool answer;
    };
    /// Shows a box: takes the next prepared answer (false when there is none). Only a question can be answered Yes;
    /// other kinds use up no answer.
    bool Show(const std::string& text, const std::string& title, MessageBoxKind kind);
    void PrepareAnswer(bool yes) { answers_.push_back(yes); }
    const std::vector<Record>& Shown() const { return shown_; }
    void Clear();

private:
    std::deque<bool> answers_;
    std::vector<Record> shown_;
};

} // namespace host
