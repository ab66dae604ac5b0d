#include "modifiers/smooth.h"

#include <cmath>
#include <numbers>

namespace host {

namespace {

BlockClassDesc<SmoothModifier>& Desc() {
    static BlockClassDesc<SmoothModifier> desc(
        "Smooth", "smooth", OSM_CLASS_ID, SMOOTH_CLASS_ID,
        {FloatParam(SmoothModifier::kAngle, "angle", 30, 0, 180), IntParam(SmoothModifier::kMode, "mode", 0, 0, 2)});
    return desc;
}

void FlipCorners(TVFace& f) {
    std::swap(f.t[1], f.t[2]);
}

} // namespace

ClassDesc* SmoothModifierDesc() {
    return &Desc();
}

SmoothModifier::SmoothModifier() {
    Desc().MakeAutoParamBlocks(this);
}

ChannelMask SmoothModifier::ChannelsUsed() {
    return TOPO_CHANNEL | (Int(kMode, 0) == 0 ? GEOM_CHANNEL : 0);
}

void SmoothModifier::ModifyObject(TimeValue t, ModContext&, ObjectState* os, INode*) {
    Mesh& mesh = static_cast<TriObject*>(os->obj)->mesh;
    mesh.specNormals.Clear();
    const int mode = Int(kMode, t);
    if (mode == 0) return SmoothByAngle(mesh, std::cos(Float(kAngle, t) * float(std::numbers::pi) / 180.0f));
    for (Face& f : mesh.faces) f.smGroup = mode == 1 ? 1u : 0u;
}

void FlipFaces(Mesh& mesh, const BitArray& faces) {
    MeshNormals& normals = mesh.specNormals;
    const size_t own = normals.normals.size(); // normals may be shared with faces that stay: the turned ones are added
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        if (!faces[f]) continue;
        Face& face = mesh.faces[size_t(f)];
        std::swap(face.v[1], face.v[2]);
        const uint32_t a = face.flags & EDGE_A, b = face.flags & EDGE_B, c = face.flags & EDGE_C;
        face.flags = (face.flags & ~EDGE_ALL) | b | (a ? EDGE_C : 0) | (c ? EDGE_A : 0);
        for (auto& [channel, map] : mesh.maps)
            if (size_t(f) < map.tf.size()) FlipCorners(map.tf[size_t(f)]);
        if (size_t(f) >= normals.faces.size()) continue;
        TVFace& corners = normals.faces[size_t(f)];
        FlipCorners(corners);
        for (int& n : corners.t) {
            if (n < 0 || size_t(n) >= own) continue;
            normals.normals.push_back(-normals.normals[size_t(n)]);
            n = int(normals.normals.size()) - 1;
        }
    }
    mesh.InvalidateGeomCache();
}

void NormalFlipModifier::ModifyObject(TimeValue, ModContext&, ObjectState* os, INode*) {
    Mesh& mesh = static_cast<TriObject*>(os->obj)->mesh;
    if (mesh.selLevel == MESH_FACE) return FlipFaces(mesh, mesh.faceSel);
    BitArray all(mesh.getNumFaces());
    all.SetAll();
    FlipFaces(mesh, all);
}

RefTargetHandle NormalFlipModifier::Clone(RemapDir&) {
    auto* const copy = new NormalFlipModifier;
    CopySwitches(*copy);
    return copy;
}

} // namespace host
