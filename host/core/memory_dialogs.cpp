#include "core/memory_dialogs.h"

namespace host {

using Lock = std::lock_guard<std::mutex>;

void MemoryDialog::SetText(int control, const std::string& text) {
    const Lock lock(mutex_);
    Control& c = controls_[control];
    c.text = text;
    ++c.updates;
}

void MemoryDialog::SetFloat(int control, float value, float low, float high, float) {
    const Lock lock(mutex_);
    Control& c = controls_[control];
    c.value = value, c.low = low, c.high = high;
    ++c.updates;
}

void MemoryDialog::SetInt(int control, int value, int low, int high) {
    const Lock lock(mutex_);
    Control& c = controls_[control];
    c.value = value, c.low = low, c.high = high;
    ++c.updates;
}

void MemoryDialog::SetCheck(int control, bool on) {
    const Lock lock(mutex_);
    controls_[control].checked = on;
}

void MemoryDialog::SetItems(int control, const std::vector<std::string>& items, int selected) {
    const Lock lock(mutex_);
    controls_[control].items = items;
    controls_[control].selected = selected;
}

void MemoryDialog::Enable(int control, bool on) {
    const Lock lock(mutex_);
    controls_[control].enabled = on;
}

void MemoryDialog::Show(int control, bool on) {
    const Lock lock(mutex_);
    controls_[control].shown = on;
}

void MemoryDialog::Close() {
    IDialogProc* proc;
    {
        const Lock lock(mutex_);
        proc = proc_;
        proc_ = nullptr;
    }
    if (proc) proc->OnClose(*this);
}

void MemoryDialog::SetTitle(const std::string& title) {
    const Lock lock(mutex_);
    title_ = title;
}

WindowPosition MemoryDialog::Position() {
    const Lock lock(mutex_);
    return position_;
}

void MemoryDialog::MoveTo(WindowPosition position) {
    const Lock lock(mutex_);
    position_ = position;
    centered_ = false;
}

void MemoryDialog::Center() {
    const Lock lock(mutex_);
    centered_ = true;
}

WindowState MemoryDialog::State() {
    const Lock lock(mutex_);
    return state_;
}

void MemoryDialog::DispatchMessages() {
    std::vector<Event> events;
    IDialogProc* proc;
    {
        const Lock lock(mutex_);
        events.swap(events_);
        proc = proc_;
    }
    for (const Event& event : events) {
        if (!proc) return;
        if (!event.moved) {
            proc->OnCommand(*this, event.control);
            continue;
        }
        {
            const Lock lock(mutex_);
            position_ = event.position;
            state_ = event.state;
        }
        proc->OnMove(*this);
    }
}

void MemoryDialog::Click(int control) {
    const Lock lock(mutex_);
    events_.push_back({false, control, {}, WindowState::kNormal});
}

void MemoryDialog::Drag(WindowPosition position, WindowState state) {
    const Lock lock(mutex_);
    events_.push_back({true, 0, position, state});
}

MemoryDialog::Control MemoryDialog::Get(int control) const {
    const Lock lock(mutex_);
    const auto at = controls_.find(control);
    return at == controls_.end() ? Control() : at->second;
}

std::string MemoryDialog::Title() const {
    const Lock lock(mutex_);
    return title_;
}

bool MemoryDialog::Centered() const {
    const Lock lock(mutex_);
    return centered_;
}

bool MemoryDialog::IsOpen() const {
    const Lock lock(mutex_);
    return proc_ != nullptr;
}

IDialog* MemoryDialogs::Open(int templateId, IDialogProc& proc) {
    auto dialog = std::make_unique<MemoryDialog>(templateId, proc);
    MemoryDialog* const raw = dialog.get();
    proc.OnOpen(*raw);
    const Lock lock(mutex_);
    dialogs_.push_back(std::move(dialog));
    return raw;
}

void MemoryDialogs::EnableMainWindow(bool on) {
    const Lock lock(mutex_);
    mainWindow_ = on;
}

size_t MemoryDialogs::Count() const {
    const Lock lock(mutex_);
    return dialogs_.size();
}

MemoryDialog& MemoryDialogs::At(size_t i) {
    const Lock lock(mutex_);
    return *dialogs_.at(i);
}

bool MemoryDialogs::MainWindowEnabled() const {
    const Lock lock(mutex_);
    return mainWindow_;
}

} // namespace host
