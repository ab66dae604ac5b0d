#pragma once
// The host's parameter blocks.

#include <utility>
#include <vector>

#include "sdk/control.h"
#include "sdk/iparamb2.h"

namespace host {

/// A block of values. References, in the order of the parameters: one for the controller of every animatable parameter,
/// one for every entry of a reference or node parameter. Reading is safe from several threads while nobody writes.
class ParamBlock2 : public IParamBlock2 {
public:
    ParamBlock2(const ParamBlockDesc2* desc, ReferenceMaker* owner);
    ~ParamBlock2() override { DeleteAllRefs(); }
    void GetClassName(TSTR& s) override { s = "ParamBlock2"; }

    const ParamBlockDesc2* GetDesc() const override { return desc_; }
    BlockID ID() const override { return desc_->id; }
    /// The maker that holds the block in the description's slot, else another one that refers to it, else the one it
    /// was made for.
    ReferenceMaker* GetOwner() const override;
    int NumParams() const override { return desc_->Count(); }
    ParamID IndextoID(int index) const override;
    int IDtoIndex(ParamID id) const override;

    float GetFloat(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) override;
    int GetInt(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) override;
    Point3 GetPoint3(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) override;
    TSTR GetStr(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) override;
    INode* GetINode(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) override;
    ReferenceTarget* GetReferenceTarget(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) override;
    using IParamBlock2::GetFloat;
    using IParamBlock2::GetINode;
    using IParamBlock2::GetInt;
    using IParamBlock2::GetReferenceTarget;
    using IParamBlock2::GetStr;

    bool SetValue(ParamID id, TimeValue t, float v, int tabIndex = 0) override;
    bool SetValue(ParamID id, TimeValue t, int v, int tabIndex = 0) override;
    bool SetValue(ParamID id, TimeValue t, const Point3& v, int tabIndex = 0) override;
    bool SetValue(ParamID id, TimeValue t, const TSTR& v, int tabIndex = 0) override;
    bool SetValue(ParamID id, TimeValue t, INode* v, int tabIndex = 0) override;
    bool SetValue(ParamID id, TimeValue t, ReferenceTarget* v, int tabIndex = 0) override;
    using IParamBlock2::SetValue;

    int Count(ParamID id) const override;
    bool SetCount(ParamID id, int n) override;
    bool Append(ParamID id, INode* node) override;
    bool Delete(ParamID id, int start, int count) override;

    Control* GetController(ParamID id) override;
    bool SetController(ParamID id, Control* c) override;
    void GetValidity(ParamID id, TimeValue t, Interval& valid) override;
    ParamID LastNotifyParamID(int* tabIndex = nullptr) override;

    int NumRefs() override;
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;
    /// Tracks: the animatable parameters and the references flagged P_SUBANIM.
    int NumSubs() override;
    Animatable* SubAnim(int i) override;
    TSTR SubAnimName(int i) override;
    void ReferenceRestored(int which) override;
    /// Values and controllers are copied and references cloned. Nodes are not cloned: a node that the remapping knows
    /// is replaced by its clone, others stay. A target that cannot be cloned is shared.
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    struct Param {
        const ParamDef* def = nullptr;
        std::vector<PB2Value> values; ///< one, or the entries of a table
        Control* control = nullptr;
        uint64_t held = 0; ///< the hold that knows the value
    };
    class NumberRestore;
    /// Where reference slot `ref` lives: a parameter, and -1 for its controller or the entry.
    struct Place {
        Param* param = nullptr;
        int entry = -1;
    };
    Param* Find(ParamID id);
    Param* Entry(ParamID id, int tabIndex);
    Place PlaceOf(int ref);
    int SlotOf(const Param& p, int entry);
    const Param* TrackParam(int i) const;
    PB2Value Read(Param& p, TimeValue t, Interval& valid, int tabIndex);
    void ReadControl(const Param& p, TimeValue t, Interval& valid, PB2Value& v);
    void WriteNumber(Param& p, TimeValue t, const PB2Value& v, int tabIndex);
    bool SetNumber(Param& p, TimeValue t, PB2Value v, int tabIndex);
    bool SetReferenceValue(ParamID id, TimeValue t, ReferenceTarget* v, int tabIndex, bool node);
    bool StoreReference(Param& p, TimeValue t, ReferenceTarget* v, int tabIndex);
    bool Accepts(const Param& p, ReferenceTarget* v, int tabIndex);
    void TellChanged(const Param& p, int tabIndex, PartID part = PART_ALL, const Interval& when = FOREVER);
    void HoldNumber(Param& p);
    void HoldEntry(const Param& p, int at, bool present);
    void InsertEntry(Param& p, int at);
    void EraseEntry(Param& p, int at);

    const ParamBlockDesc2* desc_;
    ReferenceMaker* madeFor_;
    std::vector<Param> params_;
    std::vector<short> indexById_; ///< -1 for ids between
    ParamID lastParam_ = -1;
    int lastEntry_ = -1;
    const Control* silenced_ = nullptr; ///< its changes are not passed on
};

// Kinds of parameters.
bool IsNumber(ParamType2 type);    ///< floats, ints, bools, times, points, colours
bool IsReference(ParamType2 type); ///< references, maps, nodes, tables of nodes
bool IsNodeType(ParamType2 type);  ///< nodes and tables of nodes
bool IsPoint(ParamType2 type);     ///< points and colours
/// Forces the number in `v` into the definition's range (components of points one by one); bools become 0 or 1.
void ClampToRange(const ParamDef& def, PB2Value& v);
/// A controller's float as a whole number: rounded, saturated at the ends of int.
int RoundToInt(float v);

} // namespace host
