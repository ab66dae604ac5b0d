#include "core/undo_records.h"

#include <algorithm>

namespace host {

RefRestore::RefRestore(ReferenceMaker* maker, int which, RefTargetHandle former)
    : maker_(maker), which_(which), saved_(former, true), wasEmpty_(!former) {}

void RefRestore::Exchange() {
    ReferenceMaker* const maker = maker_.Maker();
    if (!maker || which_ >= maker->NumRefs() || (!wasEmpty_ && !saved_.Maker())) return;
    const RefTargetHandle now = maker->GetReference(which_), former = saved_.Target();
    const MakerHandle keepNow(now, true);
    if (maker->ReplaceReference(which_, former) != REF_SUCCEED) return;
    saved_.Set(keepNow.Maker());
    wasEmpty_ = !now;
    maker->ReferenceRestored(which_);
}

OwnerRestore::~OwnerRestore() {
    const RefTargetHandle target = target_.Target();
    if (!target || owned_ || TargetOwner::Of(target)) return;
    const MakerHandle alive(target);
    target_.Set(nullptr);
    if (!alive.Maker() || (target->AutoDelete() && target->HasRealDependents())) return;
    target->DeleteThis();
}

void OwnerRestore::Turn() {
    const RefTargetHandle target = target_.Target();
    if (!target) return;
    if (owned_) {
        if (TargetOwner::Of(target) != owner_) return;
        index_ = owner_->IndexOf(target);
        owner_->Release(target);
    } else {
        if (TargetOwner::Of(target)) return;
        owner_->Adopt(target, index_);
    }
    owned_ = !owned_;
}

void DeleteUndoably(ReferenceTarget* target) {
    TargetOwner* const owner = TargetOwner::Of(target);
    const MakerHandle alive(target, true);
    theHold.Begin();
    while (alive.Maker() && target->HasDependents()) {
        ReferenceMaker* const maker = target->Dependents().back();
        const MakerHandle told(maker);
        for (int i = 0; i < maker->NumRefs(); ++i)
            if (maker->GetReference(i) == target) maker->ReplaceReference(i, nullptr);
        while (maker->IsLinked(target)) maker->Unlink(target);
        PartID part = PART_ALL;
        if (told.Maker()) maker->NotifyRefChanged(FOREVER, target, part, REFMSG_TARGET_DELETED);
    }
    if (alive.Maker() && TargetOwner::Of(target) == owner) {
        theHold.Put(new OwnerRestore(owner, target, false, owner->IndexOf(target)));
        owner->Release(target);
    }
    theHold.Accept("Delete");
}

} // namespace host
