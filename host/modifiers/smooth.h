#pragma once
// Smoothing groups and the sides of faces.

#include "modifiers/modifier_classes.h"

namespace host {

/// Gives faces smoothing groups by angle: neighbours at an edge share a group when the angle between their normals is
/// at most the given one (its cosine; degenerate faces are never smooth), and share none when it is larger. Groups that
/// touch differ. Where more than 32 would be needed, the faces left over get none.
void SmoothByAngle(Mesh& mesh, float cosine);

/// Turns the chosen faces round: corners, edges and mapping in the other order, explicit normals the other way.
void FlipFaces(Mesh& mesh, const BitArray& faces);

/// Smoothing groups by angle (`angle`, degrees), or one group for all faces or none (`mode` 0 angle, 1 all, 2 none).
/// Explicit normals go.
class SmoothModifier : public NamedHolder<SmoothModifier, BlockHolder<Modifier>> {
public:
    static constexpr Class_ID kClass = SMOOTH_CLASS_ID;
    static constexpr const char* kName = "Smooth";
    enum { kAngle, kMode };
    SmoothModifier();
    Class_ID InputType() override { return triObjectClassID; }
    ChannelMask ChannelsUsed() override;
    ChannelMask ChannelsChanged() override { return TOPO_CHANNEL | GEOM_CHANNEL; }
    Interval LocalValidity(TimeValue t) override { return ParamValidity(t); }
    void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* node) override;
};

/// Turns all faces round, or the selected ones where the mesh is at face level.
class NormalFlipModifier : public Modifier {
public:
    ~NormalFlipModifier() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return NORMAL_FLIP_CLASS_ID; }
    const char* GetObjectName() override { return "Normal Flip"; }
    Class_ID InputType() override { return triObjectClassID; }
    ChannelMask ChannelsUsed() override { return TOPO_CHANNEL | SELECT_CHANNEL | SUBSEL_TYPE_CHANNEL; }
    ChannelMask ChannelsChanged() override { return TOPO_CHANNEL | GEOM_CHANNEL | TEXMAP_CHANNEL | VERTCOLOR_CHANNEL; }
    void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* node) override;
    RefTargetHandle Clone(RemapDir& remap) override;
};

ClassDesc* SmoothModifierDesc();

} // namespace host
