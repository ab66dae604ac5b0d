// Frames that need a mesh.

#include "Base/HUtil/Frames.h"

namespace {

/// U and V tangents of the channel on a face; false where it has none.
bool MappingTangents(const Mesh& mesh, int face, int channel, Point3 tangents[2]) {
    const MeshMap* map = mesh.Map(channel);
    if (!map || face < 0 || face >= mesh.getNumFaces()) return false;
    Point3 tv[3], v[3];
    for (int c = 0; c < 3; ++c) {
        const size_t t = size_t(map->tf[size_t(face)].t[c]), p = size_t(mesh.faces[size_t(face)].v[c]);
        if (t >= map->tv.size() || p >= mesh.verts.size()) return false;
        tv[c] = map->tv[t];
        v[c] = mesh.verts[p];
    }
    return ComputeBumpVec2D(tv, v, tangents);
}

} // namespace

Matrix3 FrameFromMapping(const Mesh& mesh, int vertex, int channel, const Point3* normal, int face, int corner) {
    if (face < 0) {
        mesh.FirstFaceOfVertex(vertex, face, corner);
    } else if (vertex < 0 && face < mesh.getNumFaces()) {
        vertex = mesh.faces[size_t(face)].v[corner];
    }
    Point3 n(0, 0, 1);
    if (normal) {
        n = *normal;
    } else if (vertex >= 0 && vertex < mesh.getNumVerts()) {
        n = mesh.VertexNormals()[size_t(vertex)];
    }
    Point3 tangents[2];
    if (!MappingTangents(mesh, face, channel, tangents)) return FrameFromDirection(n);
    return {Normalize(tangents[0]), Normalize(tangents[1]), n, Point3()};
}
