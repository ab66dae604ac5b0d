#pragma once
// The mesh-select modifier.

#include <functional>
#include <memory>

#include "modifiers/modifier_classes.h"
#include "modifiers/selection_rule.h"
#include "modifiers/soft_selection.h"
#include "sdk/meshsel.h"

namespace host {

class MeshSelect;

/// The selection that a mesh-select modifier keeps for a node: by rule, or set as it stands. Every change is undoable
/// while a hold is open.
class MeshSelectData : public LocalModData, public IMeshSelectData {
public:
    MeshSelectData() = default;
    MeshSelectData(const MeshSelectData& other) : LocalModData(other), kept_(MakeKept(other.kept_->now)) {}
    MeshSelectData& operator=(const MeshSelectData&) = delete;
    LocalModData* Clone() override { return new MeshSelectData(*this); }
    void* GetInterface(uint32_t id) override {
        return id == I_MESHSELECTDATA ? static_cast<IMeshSelectData*>(this) : nullptr;
    }
    BitArray GetVertSel() override { return kept_->now.vertSel; }
    BitArray GetFaceSel() override { return kept_->now.faceSel; }
    void SetVertSel(const BitArray& set, IMeshSelect* owner, TimeValue t) override;
    void SetFaceSel(const BitArray& set, IMeshSelect* owner, TimeValue t) override;
    GenericNamedSelSetList& GetNamedVertSelList() override { return kept_->now.vertSets; }
    GenericNamedSelSetList& GetNamedFaceSelList() override { return kept_->now.faceSets; }

    /// Selects by a rule from now on, whatever mesh comes.
    void SetRule(const SelectionRule& rule);
    /// A named face set by a rule.
    void AddSetRule(const std::string& name, const SelectionRule& rule);
    /// Works the rules out for a mesh. `owner`, the modifier, is told when undo changes the data.
    void Resolve(const Mesh& mesh, const std::shared_ptr<MeshSelect*>& owner);

private:
    struct State {
        State() = default;
        /// `changing` is called before a list of sets is changed.
        explicit State(const std::function<void()>& changing) : faceSets(changing), vertSets(changing) {}
        SelectionRule rule;
        bool faceRule = true, vertRule = true;
        std::vector<std::pair<std::string, SelectionRule>> setRules;
        BitArray faceSel, vertSel;
        GenericNamedSelSetList faceSets, vertSets;
    };
    /// Undo records share it, whatever becomes of the stack's entry.
    struct Kept {
        explicit Kept(const std::function<void()>& changing) : now(changing) {}
        State now;
        std::weak_ptr<MeshSelect*> owner;
        uint64_t held = 0; ///< the hold that has recorded it
    };
    class StateRestore;
    static std::shared_ptr<Kept> MakeKept(const State& from);
    static void HoldState(const std::shared_ptr<Kept>& kept);
    State& Change();

    std::shared_ptr<Kept> kept_ = MakeKept(State());
};

/// Puts a selection, its level, soft selection weights and named face sets on a mesh.
class MeshSelect : public NamedHolder<MeshSelect, BlockHolder<Modifier>>, public IMeshSelect {
public:
    static constexpr Class_ID kClass = MESHSELECT_CLASS_ID;
    static constexpr const char* kName = "Mesh Select";
    enum { kLevel, kSoft, kFalloff, kPinch, kBubble };
    MeshSelect();
    void* GetInterface(uint32_t id) override { return id == I_MESHSELECT ? static_cast<IMeshSelect*>(this) : nullptr; }
    Class_ID InputType() override { return triObjectClassID; }
    ChannelMask ChannelsUsed() override;
    ChannelMask ChannelsChanged() override { return SELECT_CHANNEL | SUBSEL_TYPE_CHANNEL; }
    Interval LocalValidity(TimeValue t) override { return ParamValidity(t); }
    void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* node) override;

    uint32_t GetSelLevel() override { return uint32_t(Int(kLevel, 0)); }
    void SetSelLevel(uint32_t level) override { Params()->SetValue(kLevel, 0, int(level)); }
    void LocalDataChanged() override { NotifyDependents(FOREVER, PART_SELECT, REFMSG_CHANGE); }
    /// The selection in a stack entry, made when it is not there yet.
    static MeshSelectData& DataIn(ModContext& mc);

private:
    std::shared_ptr<MeshSelect*> self_ = std::make_shared<MeshSelect*>(this); ///< lets data know whether this lives
};

ClassDesc* MeshSelectDesc();

} // namespace host
