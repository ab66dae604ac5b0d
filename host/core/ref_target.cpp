// Reference targets: dependents, notification, deletion.

#include <algorithm>
#include <unordered_map>

#include "core/target_owner.h"
#include "core/undo_records.h"
#include "sdk/hold.h"
#include "sdk/ref.h"

ReferenceTarget::~ReferenceTarget() {
    TellDependentsOfDeletion();
    for (TargetWatch* w = watches_; w; w = w->outer_) {
        w->deleted_ = true;
        w->target_ = nullptr;
    }
    if (owner_) owner_->Forget(this);
    // Here, where the object still counts as a target.
    keeps_ = 0;
    orphaned_ = false;
    ReleaseHandles();
}

void ReferenceTarget::DeleteThis() {
    if (dying_) return;
    if (owner_ && theHold.Holding()) return host::DeleteUndoably(this);
    TellDependentsOfDeletion();
    delete this;
}

void ReferenceTarget::TellDependentsOfDeletion() {
    dying_ = true;
    while (!dependents_.empty()) {
        ReferenceMaker* const maker = dependents_.back();
        maker->TargetDeleted(this);
    }
}

void ReferenceTarget::DeleteIfOrphaned() {
    if (dying_ || !autoDelete_ || HasRealDependents()) return;
    orphaned_ = true;
    if (!watches_ && keeps_ == 0) DeleteThis();
}

bool ReferenceTarget::HasRealDependents() {
    return std::any_of(dependents_.begin(), dependents_.end(),
                       [this](ReferenceMaker* m) { return m->IsRealDependency(this); });
}

// Entries of one maker stand together, so that a notification finds repetitions by looking at the entry before.
void ReferenceTarget::AddDependent(ReferenceMaker* maker) {
    size_t pos = dependents_.size();
    if (maker->IsLinked(this)) {
        const auto last = std::find(dependents_.rbegin(), dependents_.rend(), maker);
        pos = size_t(last.base() - dependents_.begin());
    }
    dependents_.insert(dependents_.begin() + std::ptrdiff_t(pos), maker);
    if (orphaned_ && maker->IsRealDependency(this)) orphaned_ = false;
    for (TargetWatch* w = watches_; w; w = w->outer_) {
        if (pos < w->next_) ++w->next_;
        if (pos < w->end_) ++w->end_;
    }
}

void ReferenceTarget::RemoveDependent(ReferenceMaker* maker) {
    const auto last = std::find(dependents_.rbegin(), dependents_.rend(), maker);
    if (last == dependents_.rend()) return;
    const size_t pos = size_t(last.base() - dependents_.begin()) - 1;
    dependents_.erase(dependents_.begin() + std::ptrdiff_t(pos));
    for (TargetWatch* w = watches_; w; w = w->outer_) {
        if (pos < w->next_) --w->next_;
        if (pos < w->end_) --w->end_;
    }
}

// Dependents may drop their reference, add one, or be deleted while they are told; even the target itself may go.
// Dependents that come meanwhile are not told of this change.
RefResult ReferenceTarget::NotifyDependents(const Interval& changeInt, PartID partID, RefMessage message) {
    TargetWatch run(this);
    run.end_ = dependents_.size();
    const ReferenceMaker* previous = nullptr;
    while (!run.deleted_ && run.next_ < run.end_) {
        ReferenceMaker* const maker = dependents_[run.next_++];
        if (maker == previous) continue;
        previous = maker;
        const RefTargetHandle further = maker->IsRefTarget() ? static_cast<RefTargetHandle>(maker) : nullptr;
        TargetWatch alive(further);
        PartID part = partID;
        const RefResult result = maker->NotifyRefChanged(changeInt, this, part, message);
        if (result != REF_STOP && further && !alive.Deleted()) further->NotifyDependents(changeInt, part, message);
    }
    return REF_SUCCEED;
}

void ReferenceTarget::TransferReferences(RefTargetHandle old) {
    if (!old || old == this) return;
    const TargetWatch keepOld(old), keepThis(this);
    const std::vector<ReferenceMaker*> makers = old->dependents_;
    for (ReferenceMaker* const m : makers) {
        if (keepOld.Deleted() || keepThis.Deleted()) return;
        const auto& left = old->dependents_;
        if (std::find(left.begin(), left.end(), m) == left.end()) continue;
        const int which = m->FindRef(old);
        if (which >= 0) m->ReplaceReference(which, this);
    }
}

namespace {

// Counts how many dependents on the way up are still to be shown before each maker (an order where nobody comes before
// what it depends on).
class DependentWalk {
public:
    explicit DependentWalk(DependentEnumProc* proc) : proc_(proc) {}
    bool Run(RefTargetHandle start) {
        Count(start);
        std::vector<ReferenceMaker*> ready{start};
        reached_[start] = true;
        while (!ready.empty()) {
            ReferenceMaker* const maker = ready.back();
            ready.pop_back();
            bool shown = reached_[maker];
            if (shown) {
                const int answer = proc_->proc(maker);
                if (answer == DEP_ENUM_HALT) return false;
                shown = answer != DEP_ENUM_SKIP;
            }
            if (!maker->IsRefTarget()) continue;
            const auto& further = static_cast<RefTargetHandle>(maker)->Dependents();
            for (auto it = further.rbegin(); it != further.rend(); ++it) {
                if (shown) reached_[*it] = true;
                if (--waiting_[*it] == 0) ready.push_back(*it);
            }
        }
        return true;
    }

private:
    void Count(RefTargetHandle target) {
        std::vector<RefTargetHandle> open{target};
        while (!open.empty()) {
            const RefTargetHandle t = open.back();
            open.pop_back();
            for (ReferenceMaker* const m : t->Dependents())
                if (waiting_[m]++ == 0 && m->IsRefTarget()) open.push_back(static_cast<RefTargetHandle>(m));
        }
    }

    DependentEnumProc* proc_;
    std::unordered_map<ReferenceMaker*, int> waiting_;
    std::unordered_map<ReferenceMaker*, bool> reached_;
};

} // namespace

bool ReferenceTarget::DoEnumDependents(DependentEnumProc* proc) {
    return !proc || DependentWalk(proc).Run(this);
}

TargetWatch::TargetWatch(RefTargetHandle target) : target_(target) {
    if (!target_) return;
    outer_ = target_->watches_;
    target_->watches_ = this;
}

TargetWatch::~TargetWatch() {
    if (!target_) return;
    target_->watches_ = outer_;
    if (!outer_ && target_->orphaned_) target_->DeleteIfOrphaned();
}
