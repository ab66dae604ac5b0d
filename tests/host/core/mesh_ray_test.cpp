// Ray intersection against brute force over random meshes.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "core/mesh_tree.h"
#include "test_objects.h"

namespace {

struct Answer {
    bool hit = false;
    float at = 0;
    Point3 normal, bary;
    int face = -1;
};

Answer Ask(const Mesh& mesh, const Ray& ray) {
    Answer a;
    a.hit = mesh.IntersectRay(ray, a.at, a.normal, a.face, a.bary);
    return a;
}

Mesh RandomMesh(std::mt19937& rng, int faces, float size) {
    std::uniform_real_distribution<float> place(-10, 10), around(-size, size);
    Mesh mesh;
    for (int f = 0; f < faces; ++f) {
        const Point3 centre(place(rng), place(rng), place(rng));
        for (int c = 0; c < 3; ++c) mesh.verts.push_back(centre + Point3(around(rng), around(rng), around(rng)));
        AddFace(mesh, 3 * f, 3 * f + 1, 3 * f + 2);
    }
    return mesh;
}

host::MeshTree::Hit BruteForce(const Mesh& mesh, const Ray& ray) {
    host::MeshTree::Hit hit;
    for (int f = 0; f < mesh.getNumFaces(); ++f) host::MeshTree::HitTriangle(mesh, f, ray, hit);
    return hit;
}

TEST(MeshRay, HitsTheCube) {
    const Mesh cube = UnitCube();
    const Answer a = Ask(cube, {{0.25f, 0.5f, 3}, {0, 0, -2}});
    ASSERT_TRUE(a.hit);
    EXPECT_EQ(a.at, 1) << "in units of the direction's length";
    EXPECT_EQ(a.normal, Point3(0, 0, 1));
    const Face& face = cube.faces[size_t(a.face)];
    Point3 p;
    for (int c = 0; c < 3; ++c) p += cube.verts[size_t(face.v[c])] * a.bary[c];
    EXPECT_NEAR(p.x, 0.25f, 1e-6f);
    EXPECT_NEAR(p.y, 0.5f, 1e-6f);
    EXPECT_NEAR(p.z, 1, 1e-6f);
}

TEST(MeshRay, InsideHitsTheBackOfAWall) {
    const Answer a = Ask(UnitCube(), {{0.5f, 0.25f, 0.5f}, {1, 0, 0}});
    ASSERT_TRUE(a.hit);
    EXPECT_EQ(a.at, 0.5f);
    EXPECT_EQ(a.normal, Point3(1, 0, 0));
}

TEST(MeshRay, MissesAndBadRays) {
    const Mesh cube = UnitCube();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(Ask(cube, {{0.5f, 0.5f, 3}, {0, 0, 1}}).hit) << "behind the origin";
    EXPECT_FALSE(Ask(cube, {{1.5f, 0.5f, 3}, {0, 0, -1}}).hit);
    EXPECT_FALSE(Ask(cube, {{0.5f, 0.5f, 3}, {0, 0, 0}}).hit);
    EXPECT_FALSE(Ask(cube, {{nan, 0.5f, 3}, {0, 0, -1}}).hit);
    EXPECT_FALSE(Ask(Mesh(), {{0, 0, 0}, {0, 0, 1}}).hit);
}

TEST(MeshRay, StartsOnTheSurface) {
    const Answer a = Ask(UnitCube(), {{0.3f, 0.6f, 1}, {0, 0, 1}});
    ASSERT_TRUE(a.hit);
    EXPECT_EQ(a.at, 0);
}

TEST(MeshRay, OfFacesAtOneDistanceTheLowestCounts) {
    Mesh mesh;
    mesh.verts = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    for (int i = 0; i < 40; ++i) AddFace(mesh, 0, 1, 2);
    EXPECT_EQ(Ask(mesh, {{0.2f, 0.2f, 1}, {0, 0, -1}}).face, 0);
}

TEST(MeshRay, BadFacesAreLeftOut) {
    Mesh mesh = UnitCube();
    mesh.verts.push_back({std::numeric_limits<float>::infinity(), 0, 0});
    mesh.verts.push_back({3e38f, -3e38f, 3e38f});
    AddFace(mesh, 0, 1, 8);
    AddFace(mesh, 0, 1, 77);
    AddFace(mesh, 0, 9, 9);
    AddFace(mesh, 2, 2, 2);
    EXPECT_EQ(Ask(mesh, {{0.25f, 0.5f, 3}, {0, 0, -1}}).at, 2);
}

// Straight onto a diagonal, the rim and the corners: the edge functions are exactly zero there.
TEST(MeshRay, EdgesAndCornersCount) {
    const Mesh cube = UnitCube();
    for (int i = 0; i <= 8; ++i)
        for (const int k : {0, i, 8}) {
            const float x = float(i) / 8, y = float(k) / 8;
            const Answer down = Ask(cube, {{x, y, 3}, {0, 0, -1}}), up = Ask(cube, {{y, x, -3}, {0, 0, 1}});
            ASSERT_TRUE(down.hit && up.hit) << x << " " << y;
            const bool onDiagonal = i > 0 && i < 8 && k == i;
            EXPECT_TRUE(!onDiagonal || Ask(cube, {{x, y, 0.5f}, {0, 0, 1}}).hit) << "from within";
            EXPECT_EQ(down.at, 2);
            EXPECT_EQ(up.at, 3);
        }
}

// Along the diagonals and edges of a closed mesh no ray slips through.
TEST(MeshRay, SharedEdgesLeaveNoGap) {
    Mesh mesh = UnitCube();
    for (Point3& v : mesh.verts) v = Point3(v.x * 0.7f + 0.13f, v.y * 1.3f - 0.41f, v.z * 0.9f + 0.077f);
    std::mt19937 rng(5);
    std::uniform_real_distribution<float> unit(0, 1);
    for (int i = 0; i < 20000; ++i) {
        const Face& face = mesh.faces[size_t(i) % mesh.faces.size()];
        const Point3 &a = mesh.verts[size_t(face.v[i % 3])], &b = mesh.verts[size_t(face.v[(i + 1) % 3])];
        const Point3 aim = a + (b - a) * unit(rng), inside(0.48f, 0.24f, 0.53f);
        ASSERT_TRUE(Ask(mesh, {inside, aim - inside}).hit) << i;
    }
}

RC_GTEST_PROP(MeshRay, TheTreeAnswersAsBruteForce, ()) {
    std::mt19937 rng(*rc::gen::arbitrary<unsigned>());
    const int faces = *rc::gen::inRange(1, 400);
    const Mesh mesh = RandomMesh(rng, faces, *rc::gen::element(0.001f, 1.0f, 8.0f));
    std::uniform_real_distribution<float> place(-15, 15);
    std::uniform_int_distribution<int> axis(0, 7);
    for (int i = 0; i < 40; ++i) {
        Ray ray{{place(rng), place(rng), place(rng)}, {place(rng), place(rng), place(rng)}};
        const int zeroed = axis(rng);
        for (int k = 0; k < 3; ++k)
            if (zeroed >> k & 1 && zeroed != 7) ray.dir[k] = 0;
        // Half of the rays aim at a vertex.
        if (i % 2) ray.dir = mesh.verts[size_t(i) % mesh.verts.size()] - ray.p;
        const host::MeshTree::Hit expected = BruteForce(mesh, ray);
        const Answer found = Ask(mesh, ray);
        RC_ASSERT(found.hit == (expected.face >= 0));
        if (!found.hit) continue;
        RC_ASSERT(found.face == expected.face);
        RC_ASSERT(found.at == float(expected.t));
        RC_ASSERT(found.normal == mesh.FaceNormal(found.face));
        RC_ASSERT(std::fabs(found.bary.x + found.bary.y + found.bary.z - 1) < 1e-5f);
    }
}

// The brute force itself against the plane equation.
RC_GTEST_PROP(MeshRay, HitPointsLieOnTheTriangle, ()) {
    std::mt19937 rng(*rc::gen::arbitrary<unsigned>());
    const Mesh mesh = RandomMesh(rng, 1, 5);
    std::uniform_real_distribution<float> weight(0.05f, 1), place(-15, 15);
    float w[3] = {weight(rng), weight(rng), weight(rng)};
    const float sum = w[0] + w[1] + w[2];
    Point3 aim;
    for (int c = 0; c < 3; ++c) aim += mesh.verts[size_t(c)] * (w[c] / sum);
    const Point3 from(place(rng), place(rng), place(rng));
    RC_PRE(std::fabs(DotProd(Normalize(aim - from), mesh.FaceNormal(0))) > 0.05f);
    const Answer a = Ask(mesh, {from, aim - from});
    RC_ASSERT(a.hit);
    RC_ASSERT(std::fabs(a.at - 1) < 1e-3f);
    for (int c = 0; c < 3; ++c) RC_ASSERT(std::fabs(a.bary[c] - w[c] / sum) < 1e-2f);
}

} // namespace
