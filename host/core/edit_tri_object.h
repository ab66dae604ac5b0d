#pragma once
// Meshes that users edit: what a scene imports.

#include "sdk/hold.h"
#include "sdk/meshsel.h"
#include "sdk/object.h"

namespace host {

/// A triangle mesh as the base of a stack. Its selection and named sets are the mesh's own; changes of them are
/// undoable.
class EditTriObject : public TriObject, public IMeshSelect, public IMeshSelectData {
public:
    Class_ID ClassID() override { return EDITTRIOBJ_CLASS_ID; }
    const char* GetObjectName() override { return "Editable Mesh"; }
    void* GetInterface(uint32_t id) override;
    /// In the pipeline it is a plain mesh.
    RefTargetHandle Clone(RemapDir& remap) override;

    uint32_t GetSelLevel() override { return uint32_t(mesh.selLevel); }
    void SetSelLevel(uint32_t level) override;
    void LocalDataChanged() override;
    BitArray GetVertSel() override { return mesh.vertSel; }
    BitArray GetFaceSel() override { return mesh.faceSel; }
    void SetVertSel(const BitArray& set, IMeshSelect* owner, TimeValue t) override;
    void SetFaceSel(const BitArray& set, IMeshSelect* owner, TimeValue t) override;
    GenericNamedSelSetList& GetNamedVertSelList() override { return vertSets_; }
    /// The mesh's face sets; changes go into the mesh with LocalDataChanged.
    GenericNamedSelSetList& GetNamedFaceSelList() override;

private:
    static void SelectionRestored(ReferenceMaker* object);
    GenericNamedSelSetList faceSets_, vertSets_{[this] { HoldValue(this, vertSets_, SelectionRestored); }};
    bool setsAsked_ = false; ///< faceSets_ stands for the mesh's sets
};

} // namespace host
