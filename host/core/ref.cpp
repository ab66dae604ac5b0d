// References: slots, back references, circles, cloning with remapping.

#include "sdk/ref.h"

#include <algorithm>
#include <unordered_set>

ReferenceMaker::~ReferenceMaker() {
    // Classes that forgot DeleteAllRefs must not leave dangling back references behind.
    while (!targets_.empty()) Unlink(targets_.back());
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
        if (stored) Link(stored);
        if (old) Unlink(old);
    }
    return stored == target ? REF_SUCCEED : REF_FAIL;
}

void ReferenceMaker::DeleteAllRefs() {
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

RefTargetHandle RemapDir::FindMapping(RefTargetHandle from) const {
    const auto it = map_.find(from);
    return it == map_.end() ? nullptr : it->second;
}

RefTargetHandle RemapDir::CloneRef(RefTargetHandle from) {
    if (!from) return nullptr;
    if (const RefTargetHandle known = FindMapping(from)) return known;
    const RefTargetHandle to = from->Clone(*this);
    if (to) {
        to->SetAutoDelete(from->AutoDelete());
        AddEntry(from, to);
    }
    return to;
}
