#include "core/message_boxes.h"

namespace host {

bool MessageBoxes::Show(const std::string& text, const std::string& title, MessageBoxKind kind) {
    bool yes = false;
    if (kind == MB_QUESTION && !answers_.empty()) {
        yes = answers_.front();
        answers_.pop_front();
    }
    shown_.push_back({text, title, kind, yes});
    return yes;
}

void MessageBoxes::Clear() {
    answers_.clear();
    shown_.clear();
}

} // namespace host
