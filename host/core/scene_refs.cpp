#include "core/scene_refs.h"

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
    atmospherics_.push_back(nullptr);
    ReplaceReference(NumRefs() - 1, a);
}

void SceneRefs::RemoveAtmospheric(int i) {
    if (i < 0 || i >= int(atmospherics_.size())) return;
    ReplaceReference(kFixedRefs + i, nullptr);
    atmospherics_.erase(atmospherics_.begin() + i);
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
    if (message == REFMSG_TARGET_DELETED) std::erase(atmospherics_, nullptr);
    return REF_SUCCEED;
}

} // namespace host
