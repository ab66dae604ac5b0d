#include "core/scene_refs.h"
#include "sdk/hold.h"

#include <algorithm>

namespace host {

Color SceneRefs::ColorAt(int slot, const Color& constant, TimeValue t, Interval& valid) const {
    Point3 value(constant);
    if (slots_[slot]) static_cast<Control*>(slots_[slot])->GetValue(t, &value, valid);
    return Color(value);
}

bool SceneRefs::SetColorController(int slot, Control* c) {
    if (c && c->SuperClassID() != CTRL_POINT3_CLASS_ID) return false;
    if (ReplaceReference(slot, c) != REF_SUCCEED) return false;
    if (c) c->SetAutoDelete(true);
    return true;
}

void SceneRefs::AddAtmospheric(Atmospheric* a) {
    if (!a || std::find(atmospherics_.begin(), atmospherics_.end(), a) != atmospherics_.end()) return;
    const HoldGroup group;
    InsertSlot(atmospherics_.size());
    ReplaceReference(NumRefs() - 1, a);
}

void SceneRefs::RemoveAtmospheric(int i) {
    if (i < 0 || i >= int(atmospherics_.size())) return;
    const HoldGroup group;
    EraseSlot(size_t(i));
}

void SceneRefs::HoldSlot(size_t i, bool present) {
    if (!theHold.Holding()) return;
    theHold.Put(new SlotRestore(this, present, [this, i](bool in) {
        if (in)
            InsertSlot(std::min(i, atmospherics_.size()));
        else if (i < atmospherics_.size())
            EraseSlot(i);
    }));
}

void SceneRefs::InsertSlot(size_t i) {
    atmospherics_.insert(atmospherics_.begin() + std::ptrdiff_t(i), nullptr);
    HoldSlot(i, true);
}

// Takes out a slot, emptying it first.
void SceneRefs::EraseSlot(size_t i) {
    ReplaceReference(kFixedRefs + int(i), nullptr);
    atmospherics_.erase(atmospherics_.begin() + std::ptrdiff_t(i));
    HoldSlot(i, false);
}

RefTargetHandle SceneRefs::GetReference(int i) {
    if (i < 0 || i >= NumRefs()) return nullptr;
    return i < kFixedRefs ? slots_[i] : atmospherics_[size_t(i - kFixedRefs)];
}

void SceneRefs::SetReference(int i, RefTargetHandle target) {
    if (i < 0 || i >= NumRefs()) return;
    if (i < kFixedRefs)
        slots_[i] = target;
    else
        atmospherics_[size_t(i - kFixedRefs)] = static_cast<Atmospheric*>(target);
}

RefResult SceneRefs::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage message) {
    if (message == REFMSG_TARGET_DELETED)
        for (size_t i = atmospherics_.size(); i-- > 0;)
            if (!atmospherics_[i]) EraseSlot(i);
    return REF_SUCCEED;
}

} // namespace host
