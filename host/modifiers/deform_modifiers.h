#pragma once
// Modifiers that move points by a rule: transform, bend, noise.

#include <memory>

#include "modifiers/modifier_classes.h"

namespace host {

/// A modifier that moves the points of whatever can be deformed, by their selection.
class DeformModifier : public BlockHolder<Modifier> {
public:
    ChannelMask ChannelsUsed() override { return TOPO_CHANNEL | GEOM_CHANNEL | SELECT_CHANNEL | SUBSEL_TYPE_CHANNEL; }
    ChannelMask ChannelsChanged() override { return GEOM_CHANNEL; }
    Interval LocalValidity(TimeValue t) override { return ParamValidity(t); }
    void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* node) override;

protected:
    /// What it does at `t` to an object whose points (or selected points) fill `box`.
    virtual std::unique_ptr<Deformer> MakeDeformer(TimeValue t, const Box3& box) = 0;
};

/// Scales, then turns (degrees about X, Y, Z), then moves, about `center`.
class XFormModifier : public NamedHolder<XFormModifier, DeformModifier> {
public:
    static constexpr Class_ID kClass = XFORM_CLASS_ID;
    static constexpr const char* kName = "XForm";
    enum { kPosition, kRotation, kScale, kCenter };
    XFormModifier();

protected:
    std::unique_ptr<Deformer> MakeDeformer(TimeValue t, const Box3& box) override;
};

/// Bends what stands along Z round an arc of `angle` degrees over the height of the points' box, toward `direction`
/// (degrees from X about Z). The plane z = 0 stays.
class BendModifier : public NamedHolder<BendModifier, DeformModifier> {
public:
    static constexpr Class_ID kClass = BEND_CLASS_ID;
    static constexpr const char* kName = "Bend";
    enum { kAngle, kDirection };
    BendModifier();

protected:
    std::unique_ptr<Deformer> MakeDeformer(TimeValue t, const Box3& box) override;
};

/// Moves points by the host's 3-D noise times `strength`, with waves of the size `scale`; `phase` moves through the
/// noise, `seed` starts elsewhere.
class NoiseModifier : public NamedHolder<NoiseModifier, DeformModifier> {
public:
    static constexpr Class_ID kClass = NOISE_CLASS_ID;
    static constexpr const char* kName = "Noise";
    enum { kStrength, kWaveSize, kPhase, kSeed };
    NoiseModifier();

protected:
    std::unique_ptr<Deformer> MakeDeformer(TimeValue t, const Box3& box) override;
};

ClassDesc* XFormModifierDesc();
ClassDesc* BendModifierDesc();
ClassDesc* NoiseModifierDesc();

} // namespace host
