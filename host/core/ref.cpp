// References: slots, back references, circles, handles.

#include "sdk/ref.h"

#include <algorithm>
#include <unordered_set>

#include "core/undo_records.h"
#include "sdk/hold.h"

ReferenceMaker::~ReferenceMaker() {
    // Classes that forgot DeleteAllRefs must not leave dangling back references behind.
    while (!targets_.empty()) Unlink(targets_.back());
    ReleaseHandles();
}

void ReferenceMaker::ReleaseHandles() {
    while (handles_) handles_->Set(nullptr);
}

bool ReferenceMaker::IsLinked(RefTargetHandle target) const {
    return std::find(targets_.begin(), targets_.end(), target) != targets_.end();
}

void ReferenceMaker::Link(RefTargetHandle target) {
    target->AddDependent(this);
    targets_.push_back(target);
}

// Takes one reference away; that may delete the target.
void ReferenceMaker::Unlink(RefTargetHandle target) {
    const auto it = std::find(targets_.begin(), targets_.end(), target);
    if (it == targets_.end()) return;
    targets_.erase(it);
    target->RemoveDependent(this);
    target->DeleteIfOrphaned();
}

RefResult ReferenceMaker::ReplaceReference(int which, RefTargetHandle target) {
    if (which < 0 || which >= NumRefs()) return REF_FAIL;
    const RefTargetHandle old = GetReference(which);
    if (old == target) {
        // The class stored the pointer itself beforehand: only the back reference is missing.
        if (target && !IsLinked(target)) Link(target);
        return REF_SUCCEED;
    }
    if (target) {
        if (target == this || DependsOn(target, IsRefTarget() ? static_cast<RefTargetHandle>(this) : nullptr))
            return REF_FAIL;
    }
    SetReference(which, target);
    const RefTargetHandle stored = GetReference(which);
    if (stored != old) {
        if (theHold.Holding()) theHold.Put(new host::RefRestore(this, which, old));
        if (stored) Link(stored);
        if (old) Unlink(old);
    }
    return stored == target ? REF_SUCCEED : REF_FAIL;
}

int ReferenceMaker::FindRef(RefTargetHandle target) {
    for (int i = 0; i < NumRefs(); ++i)
        if (GetReference(i) == target) return i;
    return -1;
}

void ReferenceMaker::ReferenceRestored(int which) {
    const RefTargetHandle target = GetReference(which);
    const MakerHandle self(this);
    PartID part = PART_ALL;
    if (target && NotifyRefChanged(FOREVER, target, part, REFMSG_CHANGE) == REF_STOP) return;
    if (const RefTargetHandle me = self.Target()) me->NotifyDependents(FOREVER, part, REFMSG_CHANGE);
}

void ReferenceMaker::DeleteAllRefs() {
    const HoldSuspend unrecorded;
    for (int i = NumRefs() - 1; i >= 0; --i)
        if (i < NumRefs() && GetReference(i)) ReplaceReference(i, nullptr);
    while (!targets_.empty()) Unlink(targets_.back());
}

void ReferenceMaker::TargetDeleted(RefTargetHandle target) {
    for (int i = 0; i < NumRefs(); ++i)
        if (GetReference(i) == target) SetReference(i, nullptr);
    while (IsLinked(target)) Unlink(target);
    PartID part = PART_ALL;
    NotifyRefChanged(FOREVER, target, part, REFMSG_TARGET_DELETED);
}

bool DependsOn(ReferenceMaker* maker, RefTargetHandle target) {
    // Nothing refers to a target without dependents.
    if (!maker || !target || !target->HasDependents()) return false;
    std::vector<ReferenceMaker*> open{maker};
    std::unordered_set<ReferenceMaker*> seen;
    while (!open.empty()) {
        ReferenceMaker* const m = open.back();
        open.pop_back();
        for (const RefTargetHandle t : m->targets_) {
            if (t == target) return true;
            if (seen.insert(t).second) open.push_back(t);
        }
    }
    return false;
}

MakerHandle::MakerHandle(ReferenceMaker* maker, bool keep) : keep_(keep) {
    Set(maker);
}

RefTargetHandle MakerHandle::Target() const {
    return maker_ && maker_->IsRefTarget() ? static_cast<RefTargetHandle>(maker_) : nullptr;
}

void MakerHandle::Set(ReferenceMaker* maker) {
    if (maker == maker_) return;
    const RefTargetHandle left = Target();
    if (maker_) {
        (previous_ ? previous_->next_ : maker_->handles_) = next_;
        if (next_) next_->previous_ = previous_;
    }
    maker_ = maker;
    previous_ = nullptr;
    next_ = maker ? maker->handles_ : nullptr;
    if (next_) next_->previous_ = this;
    if (maker) maker->handles_ = this;
    if (!keep_) return;
    if (const RefTargetHandle kept = Target()) ++kept->keeps_;
    if (left && --left->keeps_ == 0 && left->orphaned_) left->DeleteIfOrphaned();
}
