// Reference targets: dependents, notification, deletion.

#include <algorithm>

#include "core/target_owner.h"
#include "sdk/ref.h"

ReferenceTarget::~ReferenceTarget() {
    TellDependentsOfDeletion();
    for (TargetWatch* w = watches_; w; w = w->outer_) {
        w->deleted_ = true;
        w->target_ = nullptr;
    }
    if (owner_) owner_->Forget(this);
}

void ReferenceTarget::DeleteThis() {
    if (dying_) return;
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
    if (!dependents_.empty() || dying_ || !autoDelete_) return;
    orphaned_ = true;
    if (!watches_) DeleteThis();
}

// Entries of one maker stand together, so that a notification finds repetitions by looking at the entry before.
void ReferenceTarget::AddDependent(ReferenceMaker* maker) {
    size_t pos = dependents_.size();
    if (maker->IsLinked(this)) {
        const auto last = std::find(dependents_.rbegin(), dependents_.rend(), maker);
        pos = size_t(last.base() - dependents_.begin());
    }
    dependents_.insert(dependents_.begin() + std::ptrdiff_t(pos), maker);
    orphaned_ = false;
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
