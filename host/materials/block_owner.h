#pragma once
// What materials and maps with a parameter block have in common.

#include <array>

#include "sdk/plugapi.h"

namespace host {

/// `Base` (a material or map) that owns one parameter block in slot 0 and `Slots` further references. A change of the
/// block or of a reference calls Refresh.
template <class Base, int Slots>
class BlockOwner : public Base {
public:
    IParamBlock2* Params() { return block_; }
    int NumRefs() override { return 1 + Slots; }
    RefTargetHandle GetReference(int i) override {
        if (i == 0) return block_;
        return i >= 1 && i <= Slots ? slots_[size_t(i - 1)] : nullptr;
    }
    void SetReference(int i, RefTargetHandle target) override {
        if (i == 0) block_ = static_cast<IParamBlock2*>(target);
        if (i >= 1 && i <= Slots) slots_[size_t(i - 1)] = target;
    }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle target, PartID&, RefMessage message) override {
        // A deleted target has left its slot already.
        if (message == REFMSG_CHANGE || message == REFMSG_TARGET_DELETED) Refresh();
        return REF_SUCCEED;
    }
    int NumSubs() override { return 1 + Slots; }
    Animatable* SubAnim(int i) override { return GetReference(i); }
    TSTR SubAnimName(int i) override { return i == 0 ? "Parameters" : "Reference " + std::to_string(i); }
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? block_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? block_ : nullptr; }
    /// Reads the parameters at `t` into what is evaluated.
    void Update(TimeValue t, Interval& valid) override {
        time_ = t;
        UpdateReferences(t, valid);
        Refresh();
        if (block_)
            for (int i = 0; i < block_->NumParams(); ++i) block_->GetValidity(block_->IndextoID(i), t, valid);
    }

protected:
    /// Brings the references in the slots to `t`.
    virtual void UpdateReferences(TimeValue t, Interval& valid) {}
    /// Takes the block's values at Time() over.
    virtual void Refresh() = 0;
    TimeValue Time() const { return time_; }
    ReferenceTarget* Slot(int i) const { return slots_[size_t(i)]; }
    /// Gives a copy its own block, and clones of the referenced targets, or the targets themselves.
    void CopyReferences(BlockOwner& copy, RemapDir& remap) {
        copy.ReplaceReference(0, remap.CloneRef(block_));
        for (int i = 0; i < Slots; ++i) {
            RefTargetHandle target = remap.CloneRef(slots_[size_t(i)]);
            if (target && target != slots_[size_t(i)] && !target->HasDependents()) target->SetAutoDelete(true);
            copy.ReplaceReference(1 + i, target ? target : slots_[size_t(i)]);
        }
        copy.SetName(this->GetName());
    }
    /// Makes `copy`, just made, a copy of this one's references and values, at the same time.
    RefTargetHandle Copied(BlockOwner* copy, RemapDir& remap) {
        CopyReferences(*copy, remap);
        copy->time_ = time_;
        copy->Refresh();
        return copy;
    }

private:
    IParamBlock2* block_ = nullptr;
    std::array<ReferenceTarget*, size_t(Slots)> slots_{};
    TimeValue time_ = 0;
};

} // namespace host
