#include "core/edit_tri_object.h"

#include <algorithm>

namespace host {

void* EditTriObject::GetInterface(uint32_t id) {
    if (id == I_MESHSELECT) return static_cast<IMeshSelect*>(this);
    if (id == I_MESHSELECTDATA) return static_cast<IMeshSelectData*>(this);
    return nullptr;
}

RefTargetHandle EditTriObject::Clone(RemapDir&) {
    auto* const copy = new EditTriObject;
    copy->mesh = mesh;
    copy->vertSets_ = vertSets_;
    for (int c = 0; c < NUM_OBJ_CHANS; ++c) copy->SetChannelValidity(c, ChannelValidity(0, c));
    return copy;
}

void EditTriObject::SelectionRestored(ReferenceMaker* object) {
    static_cast<EditTriObject*>(object)->NotifyDependents(FOREVER, PART_SELECT | PART_SUBSEL_TYPE, REFMSG_CHANGE);
}

void EditTriObject::SetSelLevel(uint32_t level) {
    HoldValue(this, mesh.selLevel, SelectionRestored);
    mesh.selLevel = int(std::min<uint32_t>(level, MESH_FACE));
    NotifyDependents(FOREVER, PART_SUBSEL_TYPE, REFMSG_CHANGE);
}

void EditTriObject::SetVertSel(const BitArray& set, IMeshSelect*, TimeValue) {
    HoldValue(this, mesh.vertSel, SelectionRestored);
    mesh.vertSel = set;
    mesh.vertSel.SetSize(mesh.getNumVerts());
}

void EditTriObject::SetFaceSel(const BitArray& set, IMeshSelect*, TimeValue) {
    HoldValue(this, mesh.faceSel, SelectionRestored);
    mesh.faceSel = set;
    mesh.faceSel.SetSize(mesh.getNumFaces());
}

GenericNamedSelSetList& EditTriObject::GetNamedFaceSelList() {
    faceSets_.DeleteAll();
    for (const auto& [name, set] : mesh.faceSets) faceSets_.AppendSet(set, name);
    setsAsked_ = true;
    return faceSets_;
}

void EditTriObject::LocalDataChanged() {
    if (setsAsked_) {
        HoldValue(this, mesh.faceSets, SelectionRestored);
        mesh.faceSets.clear();
        for (int i = 0; i < faceSets_.Count(); ++i) mesh.faceSets.emplace_back(faceSets_.Name(i), faceSets_[i]);
        setsAsked_ = false;
    }
    NotifyDependents(FOREVER, PART_SELECT, REFMSG_CHANGE);
}

} // namespace host
