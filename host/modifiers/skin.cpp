// The skin modifier: bones.

#include "modifiers/skin.h"

#include "sdk/inode.h"

namespace host {

SkinModifier::SkinModifier(SkinData data) : bones_(std::move(data.bones)), weights_(std::move(data.weights)) {
    last_.resize(bones_.size());
    for (int i = 0; i < NumBones(); ++i) {
        INode* const node = bones_[size_t(i)].node;
        bones_[size_t(i)].node = nullptr;
        ReplaceReference(i, node);
        if (node) last_[size_t(i)] = bones_[size_t(i)].inverseBind * node->GetNodeTM(0);
    }
}

RefTargetHandle SkinModifier::GetReference(int i) {
    return i >= 0 && i < NumBones() ? bones_[size_t(i)].node : nullptr;
}

void SkinModifier::SetReference(int i, RefTargetHandle target) {
    if (i >= 0 && i < NumBones()) bones_[size_t(i)].node = static_cast<INode*>(target);
}

RefResult SkinModifier::NotifyRefChanged(const Interval&, RefTargetHandle, PartID& partID, RefMessage message) {
    if (message == REFMSG_TARGET_DELETED) return REF_SUCCEED;
    // A bone counts by its place only.
    if (message != REFMSG_CHANGE || !(partID & PART_TM)) return REF_STOP;
    partID = PART_GEOM;
    return REF_SUCCEED;
}

Interval SkinModifier::LocalValidity(TimeValue t) {
    Interval valid = FOREVER;
    for (const SkinBone& b : bones_)
        if (b.node) b.node->GetNodeTM(t, &valid);
    return valid;
}

void SkinModifier::ModifyObject(TimeValue t, ModContext&, ObjectState* os, INode*) {
    Mesh& mesh = static_cast<TriObject*>(os->obj)->mesh;
    if (mesh.getNumVerts() != weights_.NumVerts()) return;
    const Matrix3 toObject = Inverse(os->GetTM());
    std::vector<Matrix3> matrices(bones_.size());
    for (size_t i = 0; i < bones_.size(); ++i) {
        if (bones_[i].node) last_[i] = bones_[i].inverseBind * bones_[i].node->GetNodeTM(t);
        matrices[i] = last_[i] * toObject;
    }
    MeshNormals& normals = mesh.specNormals;
    // A normal goes with the vertex of the first corner that uses it, by the inverse of the vertex's matrix.
    std::vector<char> done(normals.normals.size(), 0);
    for (size_t f = 0; f < normals.faces.size() && f < mesh.faces.size(); ++f)
        for (int k = 0; k < 3; ++k) {
            const int n = normals.faces[f].t[k];
            if (n < 0 || size_t(n) >= done.size() || done[size_t(n)]) continue;
            done[size_t(n)] = 1;
            const Matrix3 inverse = Inverse(weights_.Blend(matrices, mesh.faces[f].v[k]));
            const Point3 old = normals.normals[size_t(n)];
            normals.normals[size_t(n)] = Normalize(
                {DotProd(old, inverse.GetRow(0)), DotProd(old, inverse.GetRow(1)), DotProd(old, inverse.GetRow(2))});
        }
    weights_.Transform(matrices, mesh.verts);
    mesh.VerticesMoved();
}

RefTargetHandle SkinModifier::Clone(RemapDir& remap) {
    SkinData data{bones_, weights_};
    for (SkinBone& b : data.bones) {
        // A copied skeleton takes over; other bones are shared.
        auto* const known = b.node ? static_cast<INode*>(remap.FindMapping(b.node)) : nullptr;
        if (known) b.node = known;
    }
    auto* const copy = new SkinModifier(std::move(data));
    copy->last_ = last_;
    CopySwitches(*copy);
    return copy;
}

} // namespace host
