#pragma once
// The mesh-select modifier.

#include "modifiers/modifier_classes.h"
#include "modifiers/selection_rule.h"
#include "modifiers/soft_selection.h"
#include "sdk/meshsel.h"

namespace host {

/// The selection that a mesh-select modifier keeps for a node: by rule, or set as it stands.
class MeshSelectData : public LocalModData, public IMeshSelectData {
public:
    LocalModData* Clone() override { return new MeshSelectData(*this); }
    void* GetInterface(uint32_t id) override {
        return id == I_MESHSELECTDATA ? static_cast<IMeshSelectData*>(this) : nullptr;
    }
    BitArray GetVertSel() override { return vertSel_; }
    BitArray GetFaceSel() override { return faceSel_; }
    void SetVertSel(const BitArray& set, IMeshSelect* owner, TimeValue t) override;
    void SetFaceSel(const BitArray& set, IMeshSelect* owner, TimeValue t) override;
    GenericNamedSelSetList& GetNamedVertSelList() override { return vertSets_; }
    GenericNamedSelSetList& GetNamedFaceSelList() override { return faceSets_; }

    /// Selects by a rule from now on, whatever mesh comes.
    void SetRule(const SelectionRule& rule);
    /// A named face set by a rule.
    void AddSetRule(const std::string& name, const SelectionRule& rule);
    /// Works the rules out for a mesh.
    void Resolve(const Mesh& mesh);

private:
    SelectionRule rule_;
    bool faceRule_ = true, vertRule_ = true;
    std::vector<std::pair<std::string, SelectionRule>> setRules_;
    BitArray faceSel_, vertSel_;
    GenericNamedSelSetList faceSets_, vertSets_;
};

/// Puts a selection, its level, soft selection weights and named face sets on a mesh.
class MeshSelect : public BlockHolder<Modifier>, public IMeshSelect {
public:
    enum { kLevel, kSoft, kFalloff, kPinch, kBubble };
    MeshSelect();
    Class_ID ClassID() override { return MESHSELECT_CLASS_ID; }
    const char* GetObjectName() override { return "Mesh Select"; }
    void* GetInterface(uint32_t id) override { return id == I_MESHSELECT ? static_cast<IMeshSelect*>(this) : nullptr; }
    Class_ID InputType() override { return triObjectClassID; }
    ChannelMask ChannelsUsed() override;
    ChannelMask ChannelsChanged() override { return SELECT_CHANNEL | SUBSEL_TYPE_CHANNEL; }
    Interval LocalValidity(TimeValue t) override { return ParamValidity(t); }
    void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* node) override;
    RefTargetHandle Clone(RemapDir& remap) override;

    uint32_t GetSelLevel() override { return uint32_t(Int(kLevel, 0)); }
    void SetSelLevel(uint32_t level) override { Params()->SetValue(kLevel, 0, int(level)); }
    void LocalDataChanged() override { NotifyDependents(FOREVER, PART_SELECT, REFMSG_CHANGE); }
    /// The selection in a stack entry, made when it is not there yet.
    static MeshSelectData& DataIn(ModContext& mc);
};

ClassDesc* MeshSelectDesc();

} // namespace host
