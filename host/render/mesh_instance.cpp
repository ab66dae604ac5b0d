#include "render/mesh_instance.h"

#include <algorithm>

namespace host {

namespace {

/// A normal through a transform, by the inverse of that transform.
Point3 NormalThrough(const Point3& n, const Matrix3& inverse) {
    return {DotProd(n, inverse.GetRow(0)), DotProd(n, inverse.GetRow(1)), DotProd(n, inverse.GetRow(2))};
}

Point3 Weighted(const Point3& a, const Point3& b, const Point3& c, float u, float v) {
    return a * (1.0f - u - v) + b * u + c * v;
}

} // namespace

bool MayBeClear(Mtl* material) {
    if (!material) return false;
    if (material->IsMultiMtl()) {
        for (int i = 0; i < material->NumSubMtls(); ++i)
            if (MayBeClear(material->GetSubMtl(i))) return true;
        return false;
    }
    auto* const standard = material->ClassID() == DMTL_CLASS_ID ? dynamic_cast<StdMat2*>(material) : nullptr;
    if (standard && (standard->GetSubTexmap(ID_OP) || !standard->GetTwoSided())) return true;
    return material->GetXParency() > 0.0f;
}

MeshInstance::MeshInstance(INode* n, const Mesh& m, TimeValue t, const Matrix3& worldToCam) : own_(m) {
    node = n;
    mesh = &own_;
    mtl = n->GetMtl();
    objToWorld = n->GetObjectTM(t);
    objToCam = objToWorld * worldToCam;
    worldToObj_ = Inverse(objToWorld);
    camToObj_ = Inverse(objToCam);
    box_ = own_.getBoundingBox();
    visibility = std::clamp(n->GetVisibility(t), 0.0f, 1.0f);
    receivesShadows = n->RcvShadows();
    inAtmosphere = n->ApplyAtmospherics();
    seen = n->GetPrimaryVisibility();
    casts = n->CastShadows();
    clear = visibility < 1.0f || MayBeClear(mtl);
    facesTurned = objToCam.Determinant() < 0.0f;
    points_.reserve(own_.verts.size());
    for (const Point3& p : own_.verts) points_.push_back(p * objToCam);
    MakeNormals();
}

void MeshInstance::MakeNormals() {
    normals_ = own_.CornerNormals();
    for (Point3& n : normals_) n = Normalize(NormalThrough(n, camToObj_));
    faceNormals_.resize(own_.faces.size());
    for (int f = 0; f < own_.getNumFaces(); ++f) {
        if (!own_.HasVertices(f)) continue; // is never hit
        const int* const v = own_.faces[size_t(f)].v;
        const Point3 &a = points_[size_t(v[0])], &b = points_[size_t(v[1])], &c = points_[size_t(v[2])];
        const Point3 n = Normalize(CrossProd(b - a, c - a));
        faceNormals_[size_t(f)] = facesTurned ? -n : n;
    }
}

void MeshInstance::AddTo(RayScene& scene) const {
    std::vector<int> corners;
    corners.reserve(own_.faces.size() * 3);
    for (const Face& f : own_.faces) corners.insert(corners.end(), f.v, f.v + 3);
    const unsigned rays = (seen ? kCameraRays : 0u) | (casts ? kShadowRays : 0u);
    scene.AddMesh(nodeID, points_, corners, rays, clear);
}

MeshInstance::Place MeshInstance::PlaceAt(int f, float u, float v) const {
    const Face& face = own_.faces[size_t(f)];
    const Point3 &a = points_[size_t(face.v[0])], &b = points_[size_t(face.v[1])], &c = points_[size_t(face.v[2])];
    const Point3* const n = &normals_[size_t(f) * 3];
    Place at{Weighted(a, b, c, u, v), faceNormals_[size_t(f)], Normalize(Weighted(n[0], n[1], n[2], u, v))};
    if (at.normal == Point3()) at.normal = at.faceNormal;
    return at;
}

const MeshMap* MeshInstance::MappingOf(int channel, int f, const TVFace*& face) const {
    const MeshMap* const map = own_.Map(channel);
    if (!map) return nullptr;
    face = &map->tf[size_t(f)];
    for (const int t : face->t)
        if (t < 0 || size_t(t) >= map->tv.size()) return nullptr;
    return map;
}

Point3 MeshInstance::MappingAt(int channel, int f, float u, float v) const {
    const TVFace* t = nullptr;
    const MeshMap* const map = MappingOf(channel, f, t);
    if (!map) return {0, 0, 0};
    return Weighted(map->tv[size_t(t->t[0])], map->tv[size_t(t->t[1])], map->tv[size_t(t->t[2])], u, v);
}

bool MeshInstance::TangentsAt(int channel, int f, Point3 tangents[2]) const {
    const TVFace* t = nullptr;
    const MeshMap* const map = MappingOf(channel, f, t);
    if (!map) return false;
    const Face& face = own_.faces[size_t(f)];
    Point3 tv[3], v[3];
    for (int c = 0; c < 3; ++c) {
        tv[c] = map->tv[size_t(t->t[c])];
        v[c] = points_[size_t(face.v[c])];
    }
    return ComputeBumpVec2D(tv, v, tangents);
}

Point3 MeshInstance::MappingChange(int channel, int f, const Point3& d) const {
    const TVFace* t = nullptr;
    const MeshMap* const map = MappingOf(channel, f, t);
    if (!map) return {0, 0, 0};
    const Face& face = own_.faces[size_t(f)];
    const Point3& corner = points_[size_t(face.v[0])];
    const Point3 e1 = points_[size_t(face.v[1])] - corner, e2 = points_[size_t(face.v[2])] - corner;
    // The share of either side in `d`, which lies in the face's plane.
    const float a = DotProd(e1, e1), b = DotProd(e1, e2), c = DotProd(e2, e2);
    const float det = a * c - b * b;
    if (!(det > 0.0f)) return {0, 0, 0};
    const float d1 = DotProd(d, e1), d2 = DotProd(d, e2);
    const float u = (d1 * c - d2 * b) / det, v = (d2 * a - d1 * b) / det;
    const Point3& from = map->tv[size_t(t->t[0])];
    return (map->tv[size_t(t->t[1])] - from) * u + (map->tv[size_t(t->t[2])] - from) * v;
}

} // namespace host
