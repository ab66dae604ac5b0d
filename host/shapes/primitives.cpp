#include "shapes/primitives.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace host {

namespace {

void AddFace(Mesh& mesh, const int v[3], const int t[3], uint32_t edges, uint32_t group, int material) {
    Face face;
    std::copy(v, v + 3, face.v);
    face.flags = edges;
    face.smGroup = group;
    face.SetMatID(material);
    mesh.faces.push_back(face);
    mesh.maps[1].tf.push_back({{t[0], t[1], t[2]}});
}

// A grid of squares from `origin` along `u` and `v`, facing u x v.
void AddGrid(Mesh& mesh, const Point3& origin, const Point3& u, const Point3& v, int segments, int number) {
    const int firstVert = mesh.getNumVerts(), firstMap = int(mesh.maps[1].tv.size()), row = segments + 1;
    for (int y = 0; y <= segments; ++y)
        for (int x = 0; x <= segments; ++x) {
            const float a = float(x) / float(segments), b = float(y) / float(segments);
            mesh.verts.push_back(origin + u * a + v * b);
            mesh.maps[1].tv.push_back({a, b, 0});
        }
    for (int y = 0; y < segments; ++y)
        for (int x = 0; x < segments; ++x) {
            const int at = y * row + x;
            const int lower[3] = {at, at + 1, at + row + 1}, upper[3] = {at, at + row + 1, at + row};
            for (const int* const c : {lower, upper}) {
                const int verts[3] = {firstVert + c[0], firstVert + c[1], firstVert + c[2]};
                const int map[3] = {firstMap + c[0], firstMap + c[1], firstMap + c[2]};
                AddFace(mesh, verts, map, c == lower ? EDGE_A | EDGE_B : EDGE_B | EDGE_C, 1u << number, number);
            }
        }
}

} // namespace

Mesh MakePlane(float sizeX, float sizeY, int segments) {
    Mesh mesh;
    AddGrid(mesh, {-sizeX / 2, -sizeY / 2, 0}, {sizeX, 0, 0}, {0, sizeY, 0}, std::max(segments, 1), 0);
    return mesh;
}

Mesh MakeBox(const Point3& size, int segments) {
    Mesh mesh;
    const Point3 low = size * -0.5f, x{size.x, 0, 0}, y{0, size.y, 0}, z{0, 0, size.z};
    const int n = std::max(segments, 1);
    AddGrid(mesh, low, z, y, n, 0);
    AddGrid(mesh, low + x, y, z, n, 1);
    AddGrid(mesh, low, x, z, n, 2);
    AddGrid(mesh, low + y, z, x, n, 3);
    AddGrid(mesh, low, y, x, n, 4);
    AddGrid(mesh, low + z, x, y, n, 5);
    return mesh;
}

Mesh MakeSphere(float radius, int segments) {
    Mesh mesh;
    const int around = std::max(segments, 3), rings = std::max(segments / 2, 2);
    MeshMap& map = mesh.maps[1];
    // Vertices: the lower pole, the rings between, the upper pole; mapping vertices: full rows with a seam.
    mesh.verts.push_back({0, 0, -radius});
    for (int r = 1; r < rings; ++r) {
        const double polar = std::numbers::pi * r / rings;
        for (int a = 0; a < around; ++a) {
            const double turn = 2 * std::numbers::pi * a / around;
            mesh.verts.push_back({float(radius * std::sin(polar) * std::cos(turn)),
                                  float(radius * std::sin(polar) * std::sin(turn)), float(-radius * std::cos(polar))});
        }
    }
    mesh.verts.push_back({0, 0, radius});
    for (int r = 0; r <= rings; ++r)
        for (int a = 0; a <= around; ++a) map.tv.push_back({float(a) / float(around), float(r) / float(rings), 0});
    const auto vert = [&](int r, int a) {
        return r == 0 ? 0 : r == rings ? mesh.getNumVerts() - 1 : 1 + (r - 1) * around + a % around;
    };
    const auto mapVert = [&](int r, int a) { return r * (around + 1) + a; };
    for (int r = 0; r < rings; ++r)
        for (int a = 0; a < around; ++a) {
            const int v[4] = {vert(r, a), vert(r, a + 1), vert(r + 1, a + 1), vert(r + 1, a)};
            const int t[4] = {mapVert(r, a), mapVert(r, a + 1), mapVert(r + 1, a + 1), mapVert(r + 1, a)};
            const int upper[3] = {v[0], v[2], v[3]}, upperMap[3] = {t[0], t[2], t[3]};
            if (r > 0) AddFace(mesh, v, t, r + 1 < rings ? EDGE_A | EDGE_B : EDGE_ALL, 1, 0);
            if (r + 1 < rings) AddFace(mesh, upper, upperMap, r > 0 ? EDGE_B | EDGE_C : EDGE_ALL, 1, 0);
        }
    return mesh;
}

} // namespace host
