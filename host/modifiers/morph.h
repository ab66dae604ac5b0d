#pragma once
// Morph targets: shapes that are added by weights over time.

#include <string>
#include <vector>

#include "modifiers/modifier_classes.h"
#include "sdk/control.h"

namespace host {

/// One target: how far vertices move when its weight is 1.
struct MorphTarget {
    std::string name;
    std::vector<int> vertices;  ///< the vertices that move; empty: all, in order
    std::vector<Point3> deltas; ///< one for each of them
    float weight = 0;           ///< while there is no controller
};

/// The target that turns `base` into `goal`, both of the same number of vertices; only vertices that differ are kept.
MorphTarget MorphBetween(const std::string& name, const std::vector<Point3>& base, const std::vector<Point3>& goal);

/// Adds targets by their weights (any numbers; 1 is the whole target), in order. Vertices that the mesh does not have
/// are ignored. Explicit normals go.
class MorphModifier : public Modifier {
public:
    explicit MorphModifier(std::vector<MorphTarget> targets = {});
    ~MorphModifier() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return MORPH_CLASS_ID; }
    const char* GetObjectName() override { return "Morph"; }
    Class_ID InputType() override { return triObjectClassID; }
    ChannelMask ChannelsUsed() override { return GEOM_CHANNEL; }
    ChannelMask ChannelsChanged() override { return GEOM_CHANNEL; }
    Interval LocalValidity(TimeValue t) override;
    void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* node) override;
    RefTargetHandle Clone(RemapDir& remap) override;

    int NumTargets() const { return int(targets_.size()); }
    const MorphTarget& Target(int i) const { return targets_[size_t(i)]; }
    float Weight(int i, TimeValue t, Interval& valid);
    /// A constant weight; a key at `t` where there is an animated controller.
    void SetWeight(int i, TimeValue t, float weight);
    /// A float controller, shared (SetAutoDelete); null goes back to the constant. False when it is none.
    bool SetWeightController(int i, Control* c);

    int NumRefs() override { return NumTargets(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;
    int NumSubs() override { return NumTargets(); }
    Animatable* SubAnim(int i) override { return GetReference(i); }
    TSTR SubAnimName(int i) override { return i >= 0 && i < NumTargets() ? TSTR(Target(i).name) : TSTR(); }

private:
    std::vector<MorphTarget> targets_;
    std::vector<Control*> controls_;
};

} // namespace host
