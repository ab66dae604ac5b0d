// Transform controllers and the splitting of matrices.

#include <algorithm>
#include <cmath>

#include "core/controllers.h"
#include "sdk/hold.h"

namespace host {

void MatrixControl::GetValue(TimeValue, void* value, Interval&) {
    *static_cast<Matrix3*>(value) = tm_;
}

void MatrixControl::SetValue(TimeValue, const void* value) {
    if (HoldOnce(held_))
        HoldValue(this, tm_, [](ReferenceMaker* m) {
            static_cast<MatrixControl*>(m)->NotifyDependents(FOREVER, PART_TM, REFMSG_CHANGE);
        });
    tm_ = *static_cast<const Matrix3*>(value);
    NotifyDependents(FOREVER, PART_TM, REFMSG_CHANGE);
}

RefTargetHandle MatrixControl::Clone(RemapDir&) {
    auto* copy = new MatrixControl;
    copy->tm_ = tm_;
    return copy;
}

PrsControl::PrsControl() {
    const HoldSuspend unrecorded;
    Control* const parts[3] = {new PositionControl, new RotationControl, new ScaleControl};
    for (int i = 0; i < 3; ++i) {
        parts[i]->SetAutoDelete(true);
        ReplaceReference(i, parts[i]);
    }
}

void PrsControl::SetReference(int i, RefTargetHandle target) {
    constexpr SClass_ID kSupers[3] = {CTRL_POSITION_CLASS_ID, CTRL_ROTATION_CLASS_ID, CTRL_SCALE_CLASS_ID};
    if (i < 0 || i > 2 || (target && target->SuperClassID() != kSupers[i])) return;
    subs_[i] = static_cast<Control*>(target);
}

TSTR PrsControl::SubAnimName(int i) {
    return i == 0 ? "Position" : i == 1 ? "Rotation" : "Scale";
}

void PrsControl::GetValue(TimeValue t, void* value, Interval& valid) {
    Point3 position, scale(1, 1, 1);
    Quat rotation;
    if (subs_[0]) subs_[0]->GetValue(t, &position, valid);
    if (subs_[1]) subs_[1]->GetValue(t, &rotation, valid);
    if (subs_[2]) subs_[2]->GetValue(t, &scale, valid);
    Matrix3 tm = ScaleMatrix(scale) * rotation.ToMatrix();
    tm.SetTrans(position);
    *static_cast<Matrix3*>(value) = tm;
}

void PrsControl::SetValue(TimeValue t, const void* value) {
    const AffineParts parts = Decompose(*static_cast<const Matrix3*>(value));
    if (subs_[0]) subs_[0]->SetValue(t, &parts.translation);
    if (subs_[1]) subs_[1]->SetValue(t, &parts.rotation);
    if (subs_[2]) subs_[2]->SetValue(t, &parts.scale);
}

bool PrsControl::IsAnimated() const {
    for (const Control* c : subs_)
        if (c && c->IsAnimated()) return true;
    return false;
}

RefTargetHandle PrsControl::Clone(RemapDir& remap) {
    auto* copy = new PrsControl;
    for (int i = 0; i < 3; ++i) copy->ReplaceReference(i, remap.CloneRef(subs_[i]));
    return copy;
}

} // namespace host
