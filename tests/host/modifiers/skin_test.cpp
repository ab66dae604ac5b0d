// Skinning.

#include "modifiers/skin.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "core/controllers.h"
#include "core/euler.h"
#include "modifier_fixture.h"

namespace {

using namespace host;
using namespace modifier_test;

struct SkinTest : ModifierTest {
    Node *hip = core.CreateNode("hip"), *knee = core.CreateNode("knee", nullptr, hip);
    SkinModifier* skin = nullptr;

    SkinTest() {
        SetMesh(MakeBox({1, 1, 4}, 4)); // z from -2 to 2
        hip->SetNodeTM(0, TransMatrix({0, 0, -2}));
        knee->SetNodeTM(0, TransMatrix({0, 0, 0}));
    }
    // Lower half follows the hip, upper half the knee, the middle both.
    void Bind() {
        std::vector<SkinInfluence> influences;
        for (int v = 0; v < tri->mesh.getNumVerts(); ++v) {
            const float z = tri->mesh.verts[size_t(v)].z;
            if (z <= 0) influences.push_back({v, 0, 2});
            if (z >= 0) influences.push_back({v, 1, 2});
        }
        const Matrix3 place = node->GetObjectTM(0);
        SkinData data;
        data.bones = {{hip, InverseBind(place, hip->GetNodeTM(0))}, {knee, InverseBind(place, knee->GetNodeTM(0))}};
        data.weights = SkinWeights(tri->mesh.getNumVerts(), 2, influences);
        skin = Put(new SkinModifier(std::move(data)));
    }
    Point3 World(size_t v, TimeValue t = 0) { return Result(t).verts[v] * node->GetObjectTM(t); }
};

TEST_F(SkinTest, StandsStillWhereItWasBound) {
    Bind();
    for (size_t v = 0; v < tri->mesh.verts.size(); ++v) ExpectNear(Result().verts[v], tri->mesh.verts[v]);
    EXPECT_EQ(Valid(), FOREVER);
}

TEST_F(SkinTest, VerticesFollowTheirBones) {
    Bind();
    knee->SetNodeTM(0, EulerMatrix({90, 0, 0}));
    for (size_t v = 0; v < tri->mesh.verts.size(); ++v) {
        const Point3 p = tri->mesh.verts[v], turned(p.x, -p.z, p.y);
        ExpectNear(World(v), p.z < 0 ? p : p.z > 0 ? turned : (p + turned) * 0.5f);
    }
    hip->SetNodeTM(0, TransMatrix({5, 0, -2})); // the knee goes along
    for (size_t v = 0; v < tri->mesh.verts.size(); ++v)
        if (tri->mesh.verts[v].z < 0) ExpectNear(World(v), tri->mesh.verts[v] + Point3(5, 0, 0));
}

TEST_F(SkinTest, TheWorldPlaceDoesNotDependOnTheNodes) {
    node->SetNodeTM(0, TransMatrix({7, 0, 0}));
    Bind();
    const Point3 before = World(0);
    node->SetNodeTM(0, EulerMatrix({0, 0, 30}) * TransMatrix({1, 2, 3}));
    ExpectNear(World(0), before);
    knee->SetNodeTM(0, TransMatrix({0, 0, 1}));
    ExpectNear(World(0), before);
}

TEST_F(SkinTest, MovingBonesNarrowValidity) {
    Bind();
    auto* const prs = core.Adopt(new PrsControl);
    static_cast<PositionControl*>(prs->Position())->SetKey(0, {0, 0, 2});
    static_cast<PositionControl*>(prs->Position())->SetKey(100, {0, 0, 4});
    knee->SetTMController(prs);
    EXPECT_EQ(Valid(50), Interval(50, 50));
    EXPECT_EQ(node->EvalWorldState(50).obj->ChannelValidity(50, TOPO_CHAN_NUM), FOREVER);
    EXPECT_EQ(Valid(150), Interval(100, TIME_PosInfinity));
    for (size_t v = 0; v < tri->mesh.verts.size(); ++v)
        if (tri->mesh.verts[v].z > 0) ExpectNear(World(v, 50), tri->mesh.verts[v] + Point3(0, 0, 1));
}

TEST_F(SkinTest, OtherChangesOfABoneDoNotCount) {
    Bind();
    const Mesh* const mesh = &Result();
    const_cast<Mesh*>(mesh)->verts[0].x = 123; // a mark
    knee->SetWireColor({1, 0, 0});
    knee->SetVisibility(0.5f);
    EXPECT_EQ(Result().verts[0].x, 123);
    knee->SetNodeTM(0, TransMatrix({0, 0, 1}));
    EXPECT_NE(Result().verts[0].x, 123);
}

TEST_F(SkinTest, ADeletedBoneStaysWhereItWas) {
    Bind();
    knee->SetNodeTM(0, TransMatrix({0, 0, 3}));
    const std::vector<Point3> before = Result().verts;
    core.DeleteNode(knee);
    EXPECT_EQ(skin->BoneNode(1), nullptr);
    node->InvalidateWorldState();
    EXPECT_EQ(Result().verts, before);
}

TEST_F(SkinTest, ExplicitNormalsTurnAlong) {
    Mesh mesh = tri->mesh;
    mesh.specNormals.normals = {{0, 0, 1}, {0, 0, 1}};
    for (const Face& f : mesh.faces) {
        TVFace corners;
        for (int k = 0; k < 3; ++k) corners.t[k] = mesh.verts[size_t(f.v[k])].z > 0 ? 1 : 0;
        mesh.specNormals.faces.push_back(corners);
    }
    SetMesh(mesh);
    Bind();
    knee->SetNodeTM(0, EulerMatrix({90, 0, 0}));
    ExpectNear(Result().specNormals.normals[1], {0, -1, 0});
}

TEST_F(SkinTest, AnotherMeshPassesUnchanged) {
    Bind();
    knee->SetNodeTM(0, TransMatrix({0, 0, 3}));
    SetMesh(MakeBox({1, 1, 1}, 1));
    EXPECT_EQ(Result().verts, tri->mesh.verts);
}

TEST_F(SkinTest, ClonesFollowCopiedBonesOrShareThem) {
    Bind();
    RemapDir shared;
    auto* const same = core.Adopt(static_cast<SkinModifier*>(shared.CloneRef(skin)));
    EXPECT_EQ(same->BoneNode(0), hip);
    RemapDir remap;
    Node* const newHip = core.Adopt(static_cast<Node*>(remap.CloneRef(hip)));
    auto* const other = core.Adopt(static_cast<SkinModifier*>(remap.CloneRef(skin)));
    EXPECT_EQ(other->BoneNode(0), newHip);
    EXPECT_EQ(other->BoneNode(1), knee);
    EXPECT_EQ(other->Weights().NumInfluences(), skin->Weights().NumInfluences());
}

TEST_F(SkinTest, ABoneCannotBeTheNodeItself) {
    SkinData data;
    data.bones = {{node, Matrix3()}};
    data.weights = SkinWeights(tri->mesh.getNumVerts(), 1, {});
    auto* const m = core.Adopt(new SkinModifier(std::move(data)));
    EXPECT_FALSE(node->AddModifier(m));
}

TEST(SkinWeights, AreCleanedAndNormalised) {
    const SkinWeights w(3, 2,
                        {{0, 0, 3}, {0, 1, 1}, {2, 1, 0.2f}, {1, 0, 0}, {1, 1, -1}, {5, 0, 1}, {0, 7, 1}, {-1, 0, 1}});
    EXPECT_EQ(w.NumVerts(), 3);
    EXPECT_EQ(w.NumInfluences(), 3);
    EXPECT_EQ(w.Count(0), 2);
    EXPECT_EQ(w.Weight(0, 0), 0.75f);
    EXPECT_EQ(w.Bone(0, 1), 1);
    EXPECT_EQ(w.Weight(0, 1), 0.25f);
    EXPECT_EQ(w.Count(1), 0);
    EXPECT_EQ(w.Weight(2, 0), 1);
    EXPECT_EQ(w.MostOfAVertex(), 2);
    std::vector<Point3> points{{1, 0, 0}, {1, 1, 1}, {0, 0, 0}};
    w.Transform({TransMatrix({0, 4, 0}), ScaleMatrix({3, 3, 3})}, points);
    EXPECT_EQ(points[0], Point3(1.5f, 3, 0));
    EXPECT_EQ(points[1], Point3(1, 1, 1)) << "no bone, no move";
    EXPECT_EQ(points[2], Point3(0, 0, 0));
}

// Twelve bones a vertex, against the blend in doubles; the same for any number of threads.
RC_GTEST_PROP(SkinWeights, BlendLinearly, ()) {
    const int bones = 12, vertices = 40000;
    std::vector<Matrix3> matrices;
    for (int b = 0; b < bones; ++b)
        matrices.push_back(EulerMatrix({float(*rc::gen::inRange(0, 360)), float(b * 20), 10}) *
                           TransMatrix({float(*rc::gen::inRange(-5, 5)), float(b), 0}));
    std::vector<SkinInfluence> influences;
    for (int v = 0; v < vertices; ++v)
        for (int b = 0; b <= v % bones; ++b) influences.push_back({v, b, float(1 + (v * 7 + b * 3) % 5)});
    const SkinWeights weights(vertices, bones, influences);
    RC_ASSERT(weights.MostOfAVertex() == bones);
    std::vector<Point3> points(static_cast<size_t>(vertices)), one, three;
    for (int v = 0; v < vertices; ++v) points[size_t(v)] = {float(v % 100) / 10, float(v % 37) / 7, float(v % 11)};
    one = three = points;
    weights.Transform(matrices, one, 1);
    weights.Transform(matrices, three, 3);
    RC_ASSERT(one == three);
    for (int v = 0; v < vertices; v += 97) {
        double sum[3] = {0, 0, 0};
        for (int i = 0; i < weights.Count(v); ++i) {
            const Point3 p = points[size_t(v)] * matrices[size_t(weights.Bone(v, i))];
            for (int k = 0; k < 3; ++k) sum[k] += double(p[k]) * double(weights.Weight(v, i));
        }
        const Point3 viaMatrix = points[size_t(v)] * weights.Blend(matrices, v);
        for (int k = 0; k < 3; ++k) {
            RC_ASSERT(std::abs(sum[k] - double(one[size_t(v)][k])) < 1e-4);
            RC_ASSERT(std::abs(sum[k] - double(viaMatrix[k])) < 1e-4);
        }
    }
}

} // namespace
