// Frames that need a mesh.

#include "Base/HUtil/Frames.h"

FaceCorner FindLowestFace(const Mesh& mesh, int vertex) {
    for (int f = 0; f < mesh.getNumFaces(); ++f)
        for (int c = 0; c < 3; ++c)
            if (mesh.faces[size_t(f)].v[c] == vertex) return {f, c};
    return {};
}

std::vector<FaceCorner> FindLowestFaces(const Mesh& mesh) {
    std::vector<FaceCorner> lowest(size_t(mesh.getNumVerts()));
    for (int f = mesh.getNumFaces(); f-- > 0;)
        for (int c = 3; c-- > 0;) {
            const int v = mesh.faces[size_t(f)].v[c];
            if (v >= 0 && v < mesh.getNumVerts()) lowest[size_t(v)] = {f, c};
        }
    return lowest;
}

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

Matrix3 FrameFromMapping(const Mesh& mesh, int vertex, int channel, const Point3* normal, FaceCorner at) {
    if (at.face < 0) at = FindLowestFace(mesh, vertex);
    Point3 n(0, 0, 1);
    if (normal) {
        n = *normal;
    } else if (vertex >= 0 && vertex < mesh.getNumVerts()) {
        n = mesh.VertexNormals()[size_t(vertex)];
    }
    Point3 tangents[2];
    if (!MappingTangents(mesh, at.face, channel, tangents)) return FrameFromDirection(n);
    return {Normalize(tangents[0]), Normalize(tangents[1]), n, Point3()};
}
