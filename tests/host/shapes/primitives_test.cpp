// Simple shapes.

#include "shapes/primitives.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>

using namespace host;

namespace {

// Every directed edge once, with its opposite: closed and turned the same way all over.
bool IsClosed(const Mesh& mesh) {
    std::map<std::array<float, 6>, int> edges;
    for (const Face& f : mesh.faces)
        for (int k = 0; k < 3; ++k) {
            const Point3 a = mesh.verts[size_t(f.v[k])], b = mesh.verts[size_t(f.v[(k + 1) % 3])];
            ++edges[{a.x, a.y, a.z, b.x, b.y, b.z}];
        }
    for (const auto& [e, count] : edges) {
        const auto back = edges.find({e[3], e[4], e[5], e[0], e[1], e[2]});
        if (count != 1 || back == edges.end() || back->second != 1) return false;
    }
    return true;
}

double Volume(const Mesh& mesh) {
    double volume = 0;
    for (const Face& f : mesh.faces)
        volume += double(DotProd(mesh.verts[size_t(f.v[0])],
                                 CrossProd(mesh.verts[size_t(f.v[1])], mesh.verts[size_t(f.v[2])]))) /
                  6;
    return volume;
}

} // namespace

TEST(Primitives, Plane) {
    const Mesh m = MakePlane(2, 4, 3);
    EXPECT_EQ(m.getNumVerts(), 16);
    EXPECT_EQ(m.getNumFaces(), 18);
    EXPECT_TRUE(m.mapSupport(1));
    for (int f = 0; f < m.getNumFaces(); ++f) EXPECT_EQ(m.FaceNormal(f), Point3(0, 0, 1));
    EXPECT_EQ(m.getBoundingBox().pmin, Point3(-1, -2, 0));
    EXPECT_EQ(m.getBoundingBox().pmax, Point3(1, 2, 0));
}

TEST(Primitives, Box) {
    const Mesh m = MakeBox({1, 2, 3}, 2);
    EXPECT_EQ(m.getNumFaces(), 6 * 8);
    EXPECT_TRUE(IsClosed(m));
    EXPECT_NEAR(Volume(m), 6, 1e-5);
    EXPECT_EQ(m.faces[0].MatID(), 0);
    EXPECT_EQ(m.faces.back().MatID(), 5);
    EXPECT_EQ(m.FaceNormal(0), Point3(-1, 0, 0));
    EXPECT_EQ(m.FaceNormal(47), Point3(0, 0, 1));
}

TEST(Primitives, Sphere) {
    const Mesh m = MakeSphere(2, 64);
    EXPECT_TRUE(IsClosed(m));
    EXPECT_NEAR(Volume(m), 4.0 / 3 * M_PI * 8, 0.2);
    for (const Point3& p : m.verts) EXPECT_NEAR(Length(p), 2, 1e-5);
    EXPECT_EQ(m.getNumFaces(), 64 * 32 * 2 - 2 * 64);
    EXPECT_EQ(m.maps.at(1).tf.size(), m.faces.size());
    const Mesh least = MakeSphere(1, 1);
    EXPECT_TRUE(IsClosed(least));
}
