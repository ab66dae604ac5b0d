#pragma once
// What modifiers and objects with a parameter block have in common.

#include "sdk/iparamb2.h"

namespace host {

/// `Base` (a modifier or object) that owns one parameter block in slot 0. A change of the block goes on to dependents.
template <class Base>
class BlockHolder : public Base {
public:
    ~BlockHolder() override { this->DeleteAllRefs(); }
    IParamBlock2* Params() { return block_; }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? block_ : nullptr; }
    void SetReference(int i, RefTargetHandle target) override {
        if (i == 0) block_ = static_cast<IParamBlock2*>(target);
    }
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return i == 0 ? block_ : nullptr; }
    TSTR SubAnimName(int i) override { return i == 0 ? "Parameters" : ""; }
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? block_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? block_ : nullptr; }

protected:
    /// Where all parameters hold their values around `t`.
    Interval ParamValidity(TimeValue t) {
        Interval valid = FOREVER;
        if (block_)
            for (int i = 0; i < block_->NumParams(); ++i) block_->GetValidity(block_->IndextoID(i), t, valid);
        return valid;
    }
    float Float(ParamID id, TimeValue t) { return block_ ? block_->GetFloat(id, t) : 0.0f; }
    int Int(ParamID id, TimeValue t) { return block_ ? block_->GetInt(id, t) : 0; }
    Point3 Point(ParamID id, TimeValue t) {
        Interval valid = FOREVER;
        return block_ ? block_->GetPoint3(id, t, valid) : Point3();
    }
    void CopyBlock(BlockHolder& copy, RemapDir& remap) { copy.ReplaceReference(0, remap.CloneRef(block_)); }

private:
    IParamBlock2* block_ = nullptr;
};

/// `Base` (a BlockHolder) as the class `T`, which states its id and its objects' name as `kClass` and `kName`; copies
/// are made by `new T` and get their own block.
template <class T, class Base>
class NamedHolder : public Base {
public:
    Class_ID ClassID() override { return T::kClass; }
    const char* GetObjectName() override { return T::kName; }
    RefTargetHandle Clone(RemapDir& remap) override {
        auto* const copy = new T;
        this->CopyBlock(*copy, remap);
        // Modifiers have switches beside their block.
        if constexpr (requires { this->CopySwitches(*copy); }) this->CopySwitches(*copy);
        return copy;
    }
};

} // namespace host
