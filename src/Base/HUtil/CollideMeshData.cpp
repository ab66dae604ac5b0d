// World-space mesh copies for collisions and cutters.

#include "Base/CollideMeshData.h"

#include <utility>

#include "Base/HUtil/BoxUtil.h"

namespace {

void ReadProperties(INode* node, CollideParams& p) {
    node->GetUserPropFloat("HairCollisionFriction", p.friction);
    node->GetUserPropFloat("HairCollisionStaticFriction", p.staticFriction);
    node->GetUserPropFloat("HairCollisionDistance", p.distance);
    node->GetUserPropFloat("HairCollisionDistanceRandomFactor", p.distanceRandom);
}

/// Reverses every face, so that normals keep pointing out of a surface that its transform mirrors.
void FlipFaces(Mesh& mesh) {
    for (Face& f : mesh.faces) std::swap(f.v[1], f.v[2]);
    for (auto& channel : mesh.maps)
        for (TVFace& f : channel.second.tf) std::swap(f.t[1], f.t[2]);
}

} // namespace

bool CollideMeshData::Build(INode* n, TimeValue t, const CollideParams& own) {
    params = own;
    if (n) ReadProperties(n, params);
    const bool sameNode = n && n == node;
    node = n;
    if (sameNode && valid.InInterval(t) && node->GetObjectTM(t) == tm) return true;
    FreeRenderData();
    valid.SetEmpty();
    box.Init();
    mesh = Mesh();
    return node && CopyMesh(t);
}

bool CollideMeshData::CopyMesh(TimeValue t) {
    Interval meshValid = FOREVER;
    bool needDelete = false;
    TriObject* object = GetTriObjectFromNode(node, t, meshValid, needDelete);
    if (!object) return false;
    mesh = object->mesh;
    if (needDelete) object->DeleteThis();

    tm = node->GetObjectTM(t);
    for (Point3& p : mesh.verts) p = p * tm;
    if (tm.Determinant() < 0.0f) FlipFaces(mesh);
    mesh.InvalidateGeomCache();
    mesh.checkNormals();
    box = BoxOfPoints(mesh.getNumVerts(), mesh.verts.data());
    valid = meshValid;

    // The ray tree is built on first use; doing that here leaves only reads for the threads that follow.
    float at;
    Point3 normal;
    IntersectRay(box.Center(), Point3(0, 0, 1), at, normal);
    return true;
}

bool CollideMeshData::IntersectRay(const Point3& origin, const Point3& direction, float& at, Point3& normal) const {
    const Ray ray{origin, direction};
    if (!RayTouchesBox(ray, box)) return false;
    int face;
    Point3 bary;
    return mesh.IntersectRay(ray, at, normal, face, bary);
}
