// Smoothing groups by angle, explicit normals, turned faces.

#include "modifiers/smooth.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <map>
#include <numbers>
#include <set>

#include "host/core/test_objects.h"
#include "modifier_fixture.h"

namespace {

using namespace host;
using namespace modifier_test;

float Cosine(float degrees) {
    return std::cos(degrees * float(std::numbers::pi) / 180.0f);
}

// Faces at every edge, by its vertices.
std::map<std::pair<int, int>, std::vector<int>> Edges(const Mesh& mesh) {
    std::map<std::pair<int, int>, std::vector<int>> edges;
    for (int f = 0; f < mesh.getNumFaces(); ++f)
        for (int k = 0; k < 3; ++k) {
            const int a = mesh.faces[size_t(f)].v[k], b = mesh.faces[size_t(f)].v[(k + 1) % 3];
            edges[{std::min(a, b), std::max(a, b)}].push_back(f);
        }
    return edges;
}

// Smooth edges share a group, hard ones do not.
void ExpectGroups(const Mesh& mesh, float cosine) {
    for (const auto& [edge, faces] : Edges(mesh))
        for (const int f : faces)
            for (const int g : faces) {
                if (g <= f) continue;
                const float angle = DotProd(mesh.FaceNormal(f), mesh.FaceNormal(g));
                if (std::abs(angle - cosine) < 1e-4f) continue;
                const bool shared = mesh.faces[size_t(f)].smGroup & mesh.faces[size_t(g)].smGroup;
                EXPECT_EQ(shared, angle > cosine) << f << " " << g;
            }
}

TEST(SmoothByAngle, ACubesSidesStaySharp) {
    Mesh mesh = UnitCube(1);
    SmoothByAngle(mesh, Cosine(30));
    ExpectGroups(mesh, Cosine(30));
    for (int f = 0; f < 12; f += 2) EXPECT_NE(mesh.faces[size_t(f)].smGroup, 0u);
    for (int f = 0; f < 12; ++f)
        for (int c = 0; c < 3; ++c) EXPECT_EQ(mesh.CornerNormal(f, c), mesh.FaceNormal(f));
    SmoothByAngle(mesh, Cosine(95));
    for (const Face& f : mesh.faces) EXPECT_EQ(f.smGroup, 1u);
}

TEST(SmoothByAngle, ASphereIsOnePatch) {
    Mesh mesh = MakeSphere(1, 32);
    for (Face& f : mesh.faces) f.smGroup = 0;
    SmoothByAngle(mesh, Cosine(30));
    for (const Face& f : mesh.faces) EXPECT_EQ(f.smGroup, 1u);
}

TEST(SmoothByAngle, DegenerateFacesGetNone) {
    Mesh mesh = UnitCube();
    mesh.faces[0].v[1] = mesh.faces[0].v[0];
    SmoothByAngle(mesh, Cosine(180));
    EXPECT_EQ(mesh.faces[0].smGroup, 0u);
    EXPECT_NE(mesh.faces[3].smGroup, 0u);
}

// A cone that is sharp along one line only: its sides meet smoothly the other way round.
TEST(SmoothByAngle, AHardEdgeInsideASmoothPatchStaysHard) {
    Mesh mesh;
    const int n = 24;
    for (int i = 0; i < n; ++i) { // a drop: round, with a sharp edge at the angle 0
        const float a = 2 * float(std::numbers::pi) * (float(i) + 0.5f) / n;
        const float r = 1.0f + 0.8f * std::pow(std::abs(std::cos(a / 2)), 6.0f);
        mesh.verts.push_back({r * std::cos(a), r * std::sin(a), 0});
        mesh.verts.push_back({r * std::cos(a), r * std::sin(a), 2});
    }
    mesh.verts[0] = mesh.verts[2 * (n - 1)] = {2.4f, 0, 0};
    mesh.verts[0].y = 0.02f;
    mesh.verts[size_t(2 * (n - 1))].y = -0.02f;
    mesh.verts[1] = mesh.verts[0] + Point3(0, 0, 2);
    mesh.verts[size_t(2 * n - 1)] = mesh.verts[size_t(2 * n - 2)] + Point3(0, 0, 2);
    for (int i = 0; i < n; ++i) {
        const int a = 2 * i, b = 2 * ((i + 1) % n);
        AddFace(mesh, a, b, b + 1);
        AddFace(mesh, a, b + 1, a + 1);
    }
    SmoothByAngle(mesh, Cosine(40));
    ExpectGroups(mesh, Cosine(40));
}

RC_GTEST_PROP(SmoothByAngle, EdgesAreSmoothByTheirAngle, ()) {
    Mesh mesh = MakePlane(10, 10, 6);
    for (Point3& v : mesh.verts) v.z = float(*rc::gen::inRange(0, 20)) / 10.0f;
    const float cosine = Cosine(float(*rc::gen::inRange(5, 90)));
    SmoothByAngle(mesh, cosine);
    ExpectGroups(mesh, cosine);
    RC_ASSERT(!testing::Test::HasFailure());
}

struct SmoothTest : ModifierTest {};

TEST_F(SmoothTest, TheModifierFollowsItsParameters) {
    SetMesh(UnitCube());
    auto* const smooth = Put(new SmoothModifier);
    EXPECT_EQ(Result().CornerNormal(0, 0), Result().FaceNormal(0));
    smooth->Params()->SetValue(SmoothModifier::kAngle, 0, 91.0f);
    ExpectNear(Result().CornerNormal(0, 0), Result().CornerNormal(4, 0)); // both at vertex 0
    EXPECT_EQ(node->EvalWorldState(0).obj->ChannelValidity(0, TOPO_CHAN_NUM), FOREVER);
    smooth->Params()->SetValue(SmoothModifier::kMode, 0, 2);
    EXPECT_EQ(Result().faces[0].smGroup, 0u);
    smooth->Params()->SetValue(SmoothModifier::kMode, 0, 1);
    EXPECT_EQ(Result().faces[0].smGroup, 1u);
}

TEST_F(SmoothTest, ExplicitNormalsAreHonouredUntilSomethingMoves) {
    Mesh mesh = UnitCube(1);
    mesh.specNormals.normals = {{0, 0, 5}, {1, 0, 0}};
    mesh.specNormals.faces.assign(12, TVFace{{0, -1, 1}});
    mesh.specNormals.faces[5].t[0] = 9; // no such normal
    EXPECT_EQ(mesh.CornerNormal(3, 0), Point3(0, 0, 1));
    EXPECT_EQ(mesh.CornerNormal(3, 2), Point3(1, 0, 0));
    Mesh plain = UnitCube(1);
    EXPECT_EQ(mesh.CornerNormal(3, 1), plain.CornerNormal(3, 1));
    EXPECT_EQ(mesh.CornerNormal(5, 0), plain.CornerNormal(5, 0));
    SetMesh(mesh);
    EXPECT_EQ(Result().CornerNormal(3, 0), Point3(0, 0, 1));
    auto* const smooth = Put(new SmoothModifier);
    EXPECT_TRUE(Result().specNormals.IsEmpty());
    smooth->DisableMod();
    EXPECT_FALSE(Result().specNormals.IsEmpty());
}

TEST(FlipFaces, TurnsFacesRoundAndBack) {
    Mesh mesh = MakeBox({1, 2, 3}, 2);
    mesh.specNormals.normals = {{0, 0, 1}};
    mesh.specNormals.faces.assign(mesh.faces.size(), TVFace{{0, 0, -1}});
    const Mesh before = mesh;
    BitArray all(mesh.getNumFaces());
    all.Set(0);
    all.Set(7);
    FlipFaces(mesh, all);
    EXPECT_EQ(mesh.FaceNormal(0), -before.FaceNormal(0));
    EXPECT_EQ(mesh.FaceNormal(1), before.FaceNormal(1));
    EXPECT_EQ(mesh.CornerNormal(0, 0), Point3(0, 0, -1));
    EXPECT_EQ(mesh.CornerNormal(1, 0), Point3(0, 0, 1)) << "a shared normal of a face that stays";
    // The same edges are visible and every corner keeps its mapping.
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        std::set<std::pair<int, int>> visible[2];
        for (const Mesh* const m : {&before, static_cast<const Mesh*>(&mesh)}) {
            const Face& face = m->faces[size_t(f)];
            for (int k = 0; k < 3; ++k) {
                const int a = face.v[k], b = face.v[(k + 1) % 3];
                if (face.flags & (EDGE_A << k)) visible[m == &mesh].insert({std::min(a, b), std::max(a, b)});
            }
            EXPECT_EQ(face.MatID(), before.faces[size_t(f)].MatID());
        }
        EXPECT_EQ(visible[0], visible[1]) << f;
        for (int k = 0; k < 3; ++k)
            for (int j = 0; j < 3; ++j)
                if (mesh.faces[size_t(f)].v[k] == before.faces[size_t(f)].v[j]) {
                    EXPECT_EQ(mesh.maps[1].tf[size_t(f)].t[k], before.maps.at(1).tf[size_t(f)].t[j]);
                }
    }
    FlipFaces(mesh, all);
    for (size_t f = 0; f < mesh.faces.size(); ++f) {
        EXPECT_TRUE(std::equal(mesh.faces[f].v, mesh.faces[f].v + 3, before.faces[f].v));
        EXPECT_EQ(mesh.faces[f].flags, before.faces[f].flags);
    }
}

TEST_F(SmoothTest, FlipWorksOnSelectedFacesAtFaceLevel) {
    Mesh mesh = UnitCube();
    mesh.faceSel.SetSize(12);
    mesh.faceSel.Set(4);
    SetMesh(mesh);
    Put(new NormalFlipModifier);
    EXPECT_EQ(Result().FaceNormal(0), -tri->mesh.FaceNormal(0));
    tri->mesh.selLevel = MESH_FACE;
    tri->NotifyDependents(FOREVER, PART_SUBSEL_TYPE, REFMSG_CHANGE);
    EXPECT_EQ(Result().FaceNormal(0), tri->mesh.FaceNormal(0));
    EXPECT_EQ(Result().FaceNormal(4), -tri->mesh.FaceNormal(4));
}

} // namespace
