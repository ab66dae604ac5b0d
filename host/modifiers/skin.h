#pragma once
// Skinning: a mesh follows bones.

#include <vector>

#include "modifiers/modifier_classes.h"

namespace host {

/// A bone: a node, and the matrix that brought the mesh (object space) into the bone's space when it was bound.
struct SkinBone {
    INode* node = nullptr;
    Matrix3 inverseBind;
};

/// How much a vertex follows a bone.
struct SkinInfluence {
    int vertex = 0, bone = 0;
    float weight = 0;
};

/// Bones and weights by vertex; any number of bones a vertex.
class SkinWeights {
public:
    SkinWeights() = default;
    /// From influences in any order. Those with a weight that is not above 0, or for a vertex or bone that does not
    /// exist, are left out; the weights of a vertex are scaled to the sum 1. A vertex without any stays where it is.
    SkinWeights(int vertices, int bones, const std::vector<SkinInfluence>& influences);

    int NumVerts() const { return int(first_.size()) - 1; }
    int NumInfluences() const { return int(weights_.size()); }
    /// Most influences of a vertex.
    int MostOfAVertex() const;
    int Count(int vertex) const { return first_[size_t(vertex) + 1] - first_[size_t(vertex)]; }
    int Bone(int vertex, int i) const { return bones_[size_t(first_[size_t(vertex)] + i)]; }
    float Weight(int vertex, int i) const { return weights_[size_t(first_[size_t(vertex)] + i)]; }

    /// Moves `points` (one a vertex): each becomes the weighted mean of what the bones' matrices make of it. The same
    /// result for any number of threads (0: as many as there are processors).
    void Transform(const std::vector<Matrix3>& bones, std::vector<Point3>& points, int threads = 0) const;
    /// The blended matrix of a vertex.
    Matrix3 Blend(const std::vector<Matrix3>& bones, int vertex) const;

private:
    std::vector<int> first_{0}; ///< by vertex: its influences start here; one entry more at the end
    std::vector<int> bones_;
    std::vector<float> weights_;
};

/// All that a skin needs.
struct SkinData {
    std::vector<SkinBone> bones;
    SkinWeights weights;
};

/// Linear blend skinning: in the world, a vertex goes where its bones take it, wherever the node itself stands. A mesh
/// with another number of vertices than the weights passes unchanged. Explicit normals turn along.
class SkinModifier : public Modifier {
public:
    explicit SkinModifier(SkinData data = {});
    ~SkinModifier() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return SKIN_CLASS_ID; }
    const char* GetObjectName() override { return "Skin"; }
    Class_ID InputType() override { return triObjectClassID; }
    ChannelMask ChannelsUsed() override { return TOPO_CHANNEL | GEOM_CHANNEL | TM_CHANNEL; }
    ChannelMask ChannelsChanged() override { return GEOM_CHANNEL; }
    Interval LocalValidity(TimeValue t) override;
    void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* node) override;
    RefTargetHandle Clone(RemapDir& remap) override;

    int NumBones() const { return int(bones_.size()); }
    INode* BoneNode(int i) const { return bones_[size_t(i)].node; }
    const SkinWeights& Weights() const { return weights_; }
    int NumRefs() override { return NumBones(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;

private:
    std::vector<SkinBone> bones_; ///< a deleted bone's node is null: it no longer moves
    SkinWeights weights_;
    std::vector<Matrix3> last_; ///< of every bone, from bind place to world, when it was evaluated last
};

/// A bone bound where things stand: `mesh` is the skinned node's place, `bone` the bone's, both in the world.
inline Matrix3 InverseBind(const Matrix3& mesh, const Matrix3& bone) {
    return mesh * Inverse(bone);
}

} // namespace host
