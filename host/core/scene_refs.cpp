#include "core/scene_refs.h"

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

} // namespace host
