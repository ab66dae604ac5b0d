#include "modifiers/morph.h"

namespace host {

MorphTarget MorphBetween(const std::string& name, const std::vector<Point3>& base, const std::vector<Point3>& goal) {
    MorphTarget target;
    target.name = name;
    for (size_t v = 0; v < base.size() && v < goal.size(); ++v) {
        if (base[v] == goal[v]) continue;
        target.vertices.push_back(int(v));
        target.deltas.push_back(goal[v] - base[v]);
    }
    return target;
}

MorphModifier::MorphModifier(std::vector<MorphTarget> targets)
    : targets_(std::move(targets)), controls_(targets_.size(), nullptr) {}

RefTargetHandle MorphModifier::GetReference(int i) {
    return i >= 0 && i < NumTargets() ? controls_[size_t(i)] : nullptr;
}

void MorphModifier::SetReference(int i, RefTargetHandle target) {
    if (i >= 0 && i < NumTargets()) controls_[size_t(i)] = static_cast<Control*>(target);
}

RefResult MorphModifier::NotifyRefChanged(const Interval&, RefTargetHandle, PartID& partID, RefMessage message) {
    if (message == REFMSG_CHANGE) partID = PART_GEOM;
    return REF_SUCCEED;
}

float MorphModifier::Weight(int i, TimeValue t, Interval& valid) {
    float weight = targets_[size_t(i)].weight;
    if (Control* const c = controls_[size_t(i)]) c->GetValue(t, &weight, valid);
    return weight;
}

void MorphModifier::SetWeight(int i, TimeValue t, float weight) {
    if (Control* const c = controls_[size_t(i)]) return c->SetValue(t, &weight);
    targets_[size_t(i)].weight = weight;
    NotifyDependents(FOREVER, PART_GEOM, REFMSG_CHANGE);
}

bool MorphModifier::SetWeightController(int i, Control* c) {
    if (c && c->SuperClassID() != CTRL_FLOAT_CLASS_ID) return false;
    if (ReplaceReference(i, c) != REF_SUCCEED) return false;
    if (c) c->SetAutoDelete(true);
    NotifyDependents(FOREVER, PART_GEOM, REFMSG_CHANGE);
    return true;
}

Interval MorphModifier::LocalValidity(TimeValue t) {
    Interval valid = FOREVER;
    for (int i = 0; i < NumTargets(); ++i) Weight(i, t, valid);
    return valid;
}

void MorphModifier::ModifyObject(TimeValue t, ModContext&, ObjectState* os, INode*) {
    auto* const tri = static_cast<TriObject*>(os->obj);
    std::vector<Point3>& verts = tri->mesh.verts;
    bool moved = false;
    for (int i = 0; i < NumTargets(); ++i) {
        const MorphTarget& target = targets_[size_t(i)];
        Interval valid = FOREVER;
        const float weight = Weight(i, t, valid);
        if (weight == 0.0f) continue;
        moved = true;
        for (size_t k = 0; k < target.deltas.size(); ++k) {
            const size_t v = target.vertices.empty() ? k : size_t(target.vertices[k]);
            if (v < verts.size()) verts[v] += target.deltas[k] * weight;
        }
    }
    if (moved) tri->PointsWereChanged();
}

RefTargetHandle MorphModifier::Clone(RemapDir& remap) {
    auto* const copy = new MorphModifier(targets_);
    for (int i = 0; i < NumTargets(); ++i)
        if (controls_[size_t(i)])
            copy->SetWeightController(i, static_cast<Control*>(remap.CloneRef(controls_[size_t(i)])));
    CopySwitches(*copy);
    return copy;
}

} // namespace host
