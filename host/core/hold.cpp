// Undo and redo.

#include "sdk/hold.h"

#include <iterator>

#include "sdk/notify.h"

Hold theHold;

namespace {
thread_local int gSuspended = 0;
}

// While records are restored or deleted nothing is recorded.
class Hold::Quiet {
public:
    explicit Quiet(Hold& hold) : hold_(hold), former_(hold.restoring_) { hold.restoring_ = true; }
    ~Quiet() { hold_.restoring_ = former_; }

private:
    HoldSuspend suspend_;
    Hold& hold_;
    bool former_;
};

bool Hold::Holding() const {
    return depth_.load(std::memory_order_acquire) > 0 && gSuspended == 0 && thread_ == std::this_thread::get_id();
}

void Hold::Suspend() {
    ++gSuspended;
}

void Hold::Resume() {
    if (gSuspended > 0) --gSuspended;
}

bool Hold::IsSuspended() const {
    return gSuspended > 0;
}

void Hold::Begin() {
    if (open_.empty()) thread_ = std::this_thread::get_id();
    open_.push_back({{}, ++lastSerial_});
    depth_.store(int(open_.size()), std::memory_order_release);
}

void Hold::Put(RestoreObj* record) {
    std::unique_ptr<RestoreObj> owned(record);
    if (Holding() && record) open_.back().records.push_back(std::move(owned));
}

namespace {

template <class Records>
void Append(Records& to, Records from) {
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

} // namespace

void Hold::Accept(const TSTR& name) {
    if (open_.empty()) return;
    Records records = std::move(open_.back().records);
    open_.pop_back();
    depth_.store(int(open_.size()), std::memory_order_release);
    if (!open_.empty()) return Append(open_.back().records, std::move(records));
    for (const auto& r : records) r->EndHold();
    if (!super_.empty()) return Append(super_.back().records, std::move(records));
    Commit(name, std::move(records));
}

void Hold::TakeBack(Records& records) {
    const Quiet quiet(*this);
    while (!records.empty()) {
        const auto record = std::move(records.back());
        records.pop_back();
        record->Restore(0);
    }
}

void Hold::Restore() {
    if (open_.empty()) return;
    Records records = std::move(open_.back().records);
    open_.back().records.clear();
    open_.back().serial = ++lastSerial_;
    TakeBack(records);
}

void Hold::Cancel() {
    if (open_.empty()) return;
    Restore();
    open_.pop_back();
    depth_.store(int(open_.size()), std::memory_order_release);
}

void Hold::SuperBegin() {
    super_.emplace_back();
}

void Hold::SuperAccept(const TSTR& name) {
    if (super_.empty()) return;
    Records records = std::move(super_.back().records);
    super_.pop_back();
    if (!super_.empty()) return Append(super_.back().records, std::move(records));
    Commit(name, std::move(records));
}

void Hold::SuperCancel() {
    if (super_.empty()) return;
    Records records = std::move(super_.back().records);
    super_.pop_back();
    TakeBack(records);
}

void Hold::Commit(const TSTR& name, Records records) {
    if (records.empty()) return;
    const Quiet quiet(*this);
    redo_.clear();
    undo_.push_back({name, std::move(records)});
    Trim();
}

void Hold::Trim() {
    while (int(undo_.size()) > limit_) undo_.erase(undo_.begin());
}

bool Hold::Move(std::vector<Step>& from, std::vector<Step>& to, bool undo) {
    if (from.empty() || !open_.empty() || !super_.empty() || restoring_) return false;
    Step step = std::move(from.back());
    from.pop_back();
    {
        const Quiet quiet(*this);
        if (undo)
            for (auto it = step.records.rbegin(); it != step.records.rend(); ++it) (*it)->Restore(1);
        else
            for (const auto& r : step.records) r->Redo();
    }
    const TSTR name = step.name;
    to.push_back(std::move(step));
    BroadcastNotification(undo ? NOTIFY_SCENE_POST_UNDO : NOTIFY_SCENE_POST_REDO, const_cast<char*>(name.c_str()));
    return true;
}

bool Hold::Undo() {
    return Move(undo_, redo_, true);
}

bool Hold::Redo() {
    return Move(redo_, undo_, false);
}

TSTR Hold::NameOf(const std::vector<Step>& steps, int i) {
    return i >= 0 && size_t(i) < steps.size() ? steps[steps.size() - 1 - size_t(i)].name : TSTR();
}

void Hold::SetUndoLimit(int steps) {
    const Quiet quiet(*this);
    limit_ = steps > 0 ? steps : 0;
    Trim();
}

void Hold::Flush() {
    const Quiet quiet(*this);
    redo_.clear();
    // Younger records may hold what older ones refer to.
    while (!undo_.empty()) undo_.pop_back();
    for (Level& level : super_) level.records.clear();
    for (Level& level : open_) level.records.clear(), level.serial = ++lastSerial_;
}

bool HoldOnce(uint64_t& mark) {
    if (!theHold.Holding() || mark == theHold.Serial()) return false;
    mark = theHold.Serial();
    return true;
}
