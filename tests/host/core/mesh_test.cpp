// Meshes: normals worked out by hand, channels, tangents, caches.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <thread>

#include "test_objects.h"

namespace {

void ExpectNear(const Point3& a, const Point3& b, float tolerance = 1e-6f) {
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(a[i], b[i], tolerance) << "component " << i;
}

TEST(Mesh, FaceNormalsOfTheCube) {
    const Mesh cube = UnitCube();
    const Point3 sides[6] = {{0, 0, -1}, {0, 0, 1}, {0, -1, 0}, {0, 1, 0}, {-1, 0, 0}, {1, 0, 0}};
    for (int f = 0; f < 12; ++f) EXPECT_EQ(cube.FaceNormal(f), sides[f / 2]) << f;
}

TEST(Mesh, FaceNormalOfWhatIsNoTriangle) {
    Mesh mesh = UnitCube();
    AddFace(mesh, 1, 1, 2);
    AddFace(mesh, 0, 1, 99);
    AddFace(mesh, -1, 1, 2);
    for (const int f : {12, 13, 14, 15, -1}) EXPECT_EQ(mesh.FaceNormal(f), Point3()) << f;
    EXPECT_EQ(mesh.VertexNormals().size(), 8u) << "bad faces do not disturb the others";
}

// A vertex on a side's diagonal is used by both of the side's faces, so that side counts twice.
TEST(Mesh, VertexNormalsCountAFaceOnceAUse) {
    const Mesh cube = UnitCube();
    const std::vector<Point3>& n = cube.VertexNormals();
    ASSERT_EQ(n.size(), 8u);
    ExpectNear(n[0], Normalize(Point3(-2, -2, -2))); // on the diagonals of z = 0, y = 0 and x = 0
    ExpectNear(n[7], Normalize(Point3(2, 2, 2)));    // on those of z = 1, y = 1 and x = 1
    ExpectNear(n[1], Normalize(Point3(2, -1, -1)));  // on the diagonal of x = 1 only
    ExpectNear(n[2], Normalize(Point3(-1, 2, -1)));  // on that of y = 1 only
    ExpectNear(n[3], Normalize(Point3(1, 1, -2)));   // on that of z = 0 only
    ExpectNear(n[4], Normalize(Point3(-1, -1, 2)));
    ExpectNear(n[5], Normalize(Point3(1, -2, 1)));
    ExpectNear(n[6], Normalize(Point3(-2, 1, 1)));
}

TEST(Mesh, VertexWithoutFacesHasNoNormal) {
    Mesh mesh = UnitCube();
    mesh.verts.push_back({5, 5, 5});
    EXPECT_EQ(mesh.VertexNormals()[8], Point3());
    int face = -1, corner = -1;
    EXPECT_FALSE(mesh.FirstFaceOfVertex(8, face, corner));
    EXPECT_FALSE(mesh.FirstFaceOfVertex(9, face, corner));
    ASSERT_TRUE(mesh.FirstFaceOfVertex(4, face, corner));
    EXPECT_EQ(face, 2);
    EXPECT_EQ(corner, 0);
}

TEST(Mesh, CachesFollowInvalidation) {
    Mesh mesh;
    mesh.verts = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    AddFace(mesh, 0, 1, 2);
    EXPECT_EQ(mesh.VertexNormals()[0], Point3(0, 0, 1));
    const Mesh copy = mesh;
    mesh.verts[2] = {0, 0, 1};
    mesh.InvalidateGeomCache();
    EXPECT_EQ(mesh.VertexNormals()[0], Point3(0, -1, 0));
    EXPECT_EQ(copy.VertexNormals()[0], Point3(0, 0, 1));
    mesh = copy;
    EXPECT_EQ(mesh.VertexNormals()[0], Point3(0, 0, 1));
}

TEST(Mesh, CornerNormalsBySmoothingGroups) {
    // A roof: two slopes over the edge 0-1, and a wall that shares vertex 0.
    Mesh mesh;
    mesh.verts = {{0, 0, 1}, {0, 1, 1}, {1, 0, 0}, {-1, 0, 0}};
    AddFace(mesh, 0, 2, 1, 1);     // normal (1, 0, 1)
    AddFace(mesh, 0, 1, 3, 1 | 2); // normal (-1, 0, 1)
    AddFace(mesh, 0, 3, 2, 4);     // normal (0, -1, 0)
    ExpectNear(mesh.CornerNormal(0, 0), {0, 0, 1});
    ExpectNear(mesh.CornerNormal(1, 1), {0, 0, 1});
    ExpectNear(mesh.CornerNormal(2, 0), {0, -1, 0});
    ExpectNear(mesh.CornerNormal(0, 1), Normalize(Point3(1, 0, 1)));
    mesh.faces[0].smGroup = 0;
    ExpectNear(mesh.CornerNormal(0, 0), Normalize(Point3(1, 0, 1)));
    EXPECT_EQ(mesh.CornerNormal(0, 3), Point3());
    EXPECT_EQ(mesh.CornerNormal(7, 0), Point3());
}

TEST(Mesh, CornerNormalOfFoldedFacesIsTheirOwn) {
    Mesh mesh;
    mesh.verts = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    AddFace(mesh, 0, 1, 2, 1);
    AddFace(mesh, 0, 2, 1, 1);
    EXPECT_EQ(mesh.CornerNormal(0, 0), Point3(0, 0, 1));
    EXPECT_EQ(mesh.CornerNormal(1, 0), Point3(0, 0, -1));
}

TEST(Mesh, MappingChannels) {
    Mesh mesh = UnitCube();
    EXPECT_EQ(mesh.getNumMaps(), 0);
    EXPECT_FALSE(mesh.mapSupport(1));
    mesh.maps[1].tv = {{0, 0, 0}};
    mesh.maps[1].tf.resize(11);
    EXPECT_FALSE(mesh.mapSupport(1)) << "one face is missing";
    mesh.maps[1].tf.resize(12);
    EXPECT_TRUE(mesh.mapSupport(1));
    EXPECT_EQ(mesh.Map(1), &mesh.maps[1]);
    mesh.maps[7].tv = {{0, 0, 0}};
    mesh.maps[7].tf.resize(12);
    mesh.maps[50].tf.resize(12);
    EXPECT_EQ(mesh.getNumMaps(), 8) << "channel 50 has no vertices";
    mesh.maps.erase(1);
    mesh.maps.erase(7);
    mesh.maps[MAP_ALPHA].tv = {{1, 1, 1}};
    mesh.maps[MAP_ALPHA].tf.resize(12);
    EXPECT_TRUE(mesh.mapSupport(MAP_ALPHA));
    EXPECT_EQ(mesh.getNumMaps(), 0) << "negative channels do not count";
}

TEST(Mesh, VertexDataNeedsAValueForEveryVertex) {
    Mesh mesh = UnitCube();
    mesh.vdata[VDATA_SELECT].resize(7);
    EXPECT_EQ(mesh.vertexFloat(VDATA_SELECT), nullptr);
    mesh.vdata[VDATA_SELECT].resize(8);
    EXPECT_EQ(mesh.vertexFloat(VDATA_SELECT), &mesh.vdata[VDATA_SELECT]);
    EXPECT_EQ(mesh.vertexFloat(VDATA_WEIGHT), nullptr);
}

TEST(Mesh, SelectionsAreKeptWithTheMesh) {
    Mesh mesh = UnitCube();
    mesh.faceSel.SetSize(12);
    mesh.faceSel.Set(3);
    mesh.faceSets.push_back({"top", mesh.faceSel});
    const Mesh copy = mesh;
    EXPECT_TRUE(copy.faceSets[0].second[3]);
    EXPECT_EQ(copy.faceSel.NumberSet(), 1);
}

TEST(Mesh, BoundingBox) {
    const Box3 box = UnitCube().getBoundingBox();
    EXPECT_EQ(box.pmin, Point3(0, 0, 0));
    EXPECT_EQ(box.pmax, Point3(1, 1, 1));
    EXPECT_TRUE(Mesh().getBoundingBox().IsEmpty());
}

TEST(Mesh, MaterialIds) {
    Face face;
    face.SetMatID(0xffff);
    EXPECT_EQ(face.MatID(), 0xffff);
    EXPECT_EQ(face.flags & 0xffff, EDGE_ALL);
}

TEST(Mesh, ThreadsMayAskAtOnce) {
    for (int round = 0; round < 20; ++round) {
        const Mesh cube = UnitCube(1);
        std::vector<std::thread> threads;
        std::atomic<int> right{0};
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                float at = 0;
                Point3 normal, bary;
                int face = -1;
                const Mesh copy = cube;
                const bool hit = cube.IntersectRay({{0.3f, 0.4f, 5}, {0, 0, -1}}, at, normal, face, bary);
                if (hit && at == 4 && cube.VertexNormals().size() == 8 && copy.CornerNormal(0, 0).z < 0) ++right;
            });
        for (std::thread& t : threads) t.join();
        ASSERT_EQ(right, 4);
    }
}

TEST(BumpVectors, FollowTheMapping) {
    // Positions are 2u along X and 3v along Z.
    const Point3 tv[3] = {{0.25f, 0.25f, 0}, {0.75f, 0.25f, 0}, {0.25f, 1.25f, 9}};
    Point3 v[3], b[2];
    for (int i = 0; i < 3; ++i) v[i] = Point3(2 * tv[i].x, 7, 3 * tv[i].y);
    ASSERT_TRUE(ComputeBumpVec2D(tv, v, b));
    ExpectNear(b[0], {2, 0, 0});
    ExpectNear(b[1], {0, 0, 3});
}

TEST(BumpVectors, MirroredMappingTurnsU) {
    const Point3 tv[3] = {{1, 0, 0}, {0, 0, 0}, {1, 1, 0}}, v[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    Point3 b[2];
    ASSERT_TRUE(ComputeBumpVec2D(tv, v, b));
    ExpectNear(b[0], {-1, 0, 0});
    ExpectNear(b[1], {0, 1, 0});
}

TEST(BumpVectors, DegenerateMappingFails) {
    const Point3 v[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const Point3 line[3] = {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}}, point[3] = {};
    const Point3 tiny[3] = {{0, 0, 0}, {1e-20f, 0, 0}, {0, 1e-20f, 0}};
    Point3 b[2];
    EXPECT_FALSE(ComputeBumpVec2D(line, v, b));
    EXPECT_FALSE(ComputeBumpVec2D(point, v, b));
    EXPECT_FALSE(ComputeBumpVec2D(tiny, v, b));
}

} // namespace
