// Selections: rules, the mesh-select modifier, soft selection, named sets.

#include "modifiers/mesh_select.h"

#include "core/edit_tri_object.h"
#include "modifier_fixture.h"
#include "modifiers/deform_modifiers.h"
#include "sdk/plugapi.h"

namespace {

using namespace host;
using namespace modifier_test;

struct MeshSelectTest : ModifierTest {
    MeshSelect* select = nullptr;
    MeshSelectTest() {
        SetMesh(MakeBox({2, 2, 2}, 1)); // 24 vertices, 12 faces, material = side, group = side
        select = Put(new MeshSelect);
    }
    MeshSelectData& Data() { return MeshSelect::DataIn(*node->GetModContext(0)); }
    void Rule(const SelectionRule& rule) {
        Data().SetRule(rule);
        select->LocalDataChanged();
    }
};

TEST_F(MeshSelectTest, RulesSelectFaces) {
    SelectionRule rule;
    Rule(rule);
    EXPECT_TRUE(Result().faceSel.IsEmpty());
    EXPECT_EQ(Result().selLevel, MESH_FACE);
    rule.ids = {0, 3, 99, -1};
    Rule(rule);
    EXPECT_EQ(Result().faceSel, Bits(12, {0, 3}));
    rule.ranges = {{5, 6}, {11, 40}, {8, 7}};
    Rule(rule);
    EXPECT_EQ(Result().faceSel, Bits(12, {0, 3, 5, 6, 11}));
    rule = {};
    rule.materials = {5};
    rule.smoothing = 1u << 1;
    Rule(rule);
    EXPECT_EQ(Result().faceSel, Bits(12, {2, 3, 10, 11}));
    rule.invert = true;
    Rule(rule);
    EXPECT_EQ(Result().faceSel.NumberSet(), 8);
    rule = {};
    rule.all = true;
    Rule(rule);
    EXPECT_EQ(Result().faceSel.NumberSet(), 12);
    EXPECT_TRUE(tri->mesh.faceSel.IsEmpty()) << "the base stays";
}

TEST_F(MeshSelectTest, RulesSelectVertices) {
    select->SetSelLevel(MESH_VERTEX);
    SelectionRule rule;
    rule.ids = {1};
    rule.materials = {5}; // the four vertices of the last side
    Rule(rule);
    EXPECT_EQ(Result().vertSel, Bits(24, {1, 20, 21, 22, 23}));
    EXPECT_EQ(Result().selLevel, MESH_VERTEX);
}

TEST_F(MeshSelectTest, ASelectionSetByHandReplacesTheRule) {
    SelectionRule rule;
    rule.all = true;
    Rule(rule);
    auto* const face = GetMeshSelectInterface(select);
    ASSERT_EQ(face, static_cast<IMeshSelect*>(select));
    auto* const data = static_cast<IMeshSelectData*>(node->GetModContext(0)->localData->GetInterface(I_MESHSELECTDATA));
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(node->GetModContext(0)->localData->GetInterface(1), nullptr);
    Result();
    data->SetFaceSel(Bits(3, {2}), face, 0);
    face->LocalDataChanged();
    EXPECT_EQ(Result().faceSel, Bits(12, {2})) << "a short selection is extended with clear bits";
}

TEST_F(MeshSelectTest, NamedSetsStandInFrontOfTheMeshs) {
    tri->mesh.faceSets = {{"ears", Bits(12, {1})}, {"tail", Bits(12, {2})}};
    tri->NotifyDependents(FOREVER, PART_SELECT, REFMSG_CHANGE);
    SelectionRule rule;
    rule.ids = {7};
    Data().AddSetRule("tail", rule);
    Data().GetNamedFaceSelList().AppendSet(Bits(2, {1}), "new");
    select->LocalDataChanged();
    const auto& sets = Result().faceSets;
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0].first, "new");
    EXPECT_EQ(sets[0].second, Bits(12, {1}));
    EXPECT_EQ(sets[1].first, "tail");
    EXPECT_EQ(sets[1].second, Bits(12, {7}));
    EXPECT_EQ(sets[2].first, "ears");
    SelectionRule bySet;
    bySet.sets = {"ears"};
    Rule(bySet);
    EXPECT_EQ(Result().faceSel, Bits(12, {1}));
}

TEST_F(MeshSelectTest, APlainSelectionOutlivesMovingVertices) {
    tri->SetChannelValidity(GEOM_CHAN_NUM, Interval(0, 0));
    tri->NotifyDependents(FOREVER, PART_GEOM, REFMSG_CHANGE);
    node->EvalWorldState(0);
    EXPECT_EQ(node->EvalWorldState(0).obj->ChannelValidity(0, SELECT_CHAN_NUM), FOREVER);
    select->Params()->SetValue(MeshSelect::kSoft, 0, 1);
    EXPECT_EQ(node->EvalWorldState(0).obj->ChannelValidity(0, SELECT_CHAN_NUM), Interval(0, 0));
}

TEST(SoftWeight, GoesFromOneToZero) {
    const SoftSelection plain{10, 0, 0};
    EXPECT_EQ(SoftWeight(0, plain), 1);
    EXPECT_FLOAT_EQ(SoftWeight(5, plain), 0.5f);
    EXPECT_FLOAT_EQ(SoftWeight(7.5f, plain), 0.15625f); // 3/16 - 2/64
    EXPECT_EQ(SoftWeight(10, plain), 0);
    EXPECT_EQ(SoftWeight(11, plain), 0);
    EXPECT_FLOAT_EQ(SoftWeight(5, {10, 1, 0}), 0.875f);  // + 3/8
    EXPECT_FLOAT_EQ(SoftWeight(5, {10, 0, -1}), 0.125f); // - 3/8
    EXPECT_EQ(SoftWeight(5, {10, 5, 5}), 1) << "kept within 0..1";
    EXPECT_EQ(SoftWeight(5, {10, -5, -5}), 0);
    EXPECT_EQ(SoftWeight(1, {0, 0, 0}), 0);
    float last = 1;
    for (int i = 1; i <= 100; ++i) {
        const float w = SoftWeight(float(i) / 10, plain);
        EXPECT_LE(w, last);
        last = w;
    }
}

TEST(SoftWeights, TheNearestSelectedVertexCounts) {
    Mesh mesh = MakeSphere(5, 24);
    BitArray selected(mesh.getNumVerts());
    for (int v = 0; v < mesh.getNumVerts(); v += 37) selected.Set(v);
    const SoftSelection soft{3, 0.2f, -0.1f};
    const std::vector<float> weights = SoftWeights(mesh, selected, soft);
    for (int v = 0; v < mesh.getNumVerts(); ++v) {
        float nearest = 1e9f;
        for (int s = 0; s < mesh.getNumVerts(); s += 37)
            nearest = std::min(nearest, LengthSquared(mesh.verts[size_t(v)] - mesh.verts[size_t(s)]));
        EXPECT_FLOAT_EQ(weights[size_t(v)], SoftWeight(std::sqrt(nearest), soft)) << v;
    }
    selected.ClearAll();
    for (const float w : SoftWeights(mesh, selected, soft)) EXPECT_EQ(w, 0);
}

TEST_F(MeshSelectTest, SoftSelectionWeighsWhatLaterModifiersDo) {
    Mesh strip = MakePlane(4, 1, 4); // columns at x = -2, -1, 0, 1, 2
    SetMesh(strip);
    select->SetSelLevel(MESH_VERTEX);
    SelectionRule rule;
    for (int v = 0; v < strip.getNumVerts(); ++v)
        if (strip.verts[size_t(v)].x == -2) rule.ids.push_back(v);
    Rule(rule);
    select->Params()->SetValue(MeshSelect::kSoft, 0, 1);
    select->Params()->SetValue(MeshSelect::kFalloff, 0, 2.0f);
    auto* const lift = Put(new XFormModifier);
    lift->Params()->SetValue(XFormModifier::kPosition, 0, Point3(0, 0, 8));
    for (size_t v = 0; v < strip.verts.size(); ++v) {
        const float x = strip.verts[v].x;
        const float expected = x == -2 ? 8.0f : x == -1 ? 4.0f : 0.0f;
        EXPECT_FLOAT_EQ(Result().verts[v].z, expected) << x;
    }
    ASSERT_NE(Result().vertexFloat(VDATA_SELECT), nullptr);
    select->Params()->SetValue(MeshSelect::kSoft, 0, 0);
    EXPECT_EQ(Result().vertexFloat(VDATA_SELECT), nullptr);
    for (size_t v = 0; v < strip.verts.size(); ++v)
        EXPECT_EQ(Result().verts[v].z, strip.verts[v].x == -2 ? 8.0f : 0.0f);
}

TEST_F(MeshSelectTest, AtFaceLevelTheCornersMove) {
    SelectionRule rule;
    rule.materials = {5};
    Rule(rule);
    auto* const lift = Put(new XFormModifier);
    lift->Params()->SetValue(XFormModifier::kPosition, 0, Point3(0, 0, 1));
    for (int v = 0; v < 24; ++v)
        EXPECT_EQ(Result().verts[size_t(v)].z, tri->mesh.verts[size_t(v)].z + (v >= 20 ? 1.0f : 0.0f)) << v;
    select->SetSelLevel(MESH_OBJECT);
    EXPECT_EQ(Result().verts[0].z, tri->mesh.verts[0].z + 1);
}

TEST_F(MeshSelectTest, ClonesKeepParametersAndLocalData) {
    SelectionRule rule;
    rule.ids = {4};
    Rule(rule);
    select->SetSelLevel(MESH_VERTEX);
    select->SetName("pick");
    RemapDir remap;
    auto* const copy = core.Adopt(static_cast<Node*>(remap.CloneRef(node)));
    ASSERT_EQ(copy->NumModifiers(), 1);
    EXPECT_NE(copy->GetModifier(0), select);
    EXPECT_EQ(copy->GetModifier(0)->GetName(), "pick");
    const Mesh& mesh = static_cast<TriObject*>(copy->EvalWorldState(0).obj)->mesh;
    EXPECT_EQ(mesh.selLevel, MESH_VERTEX);
    EXPECT_EQ(mesh.vertSel, Bits(24, {4}));
}

TEST(EditTriObject, ItsSelectionIsTheMeshs) {
    Core core;
    auto* const object = core.Adopt(new EditTriObject);
    object->mesh = MakeBox({1, 1, 1}, 1);
    Node* const node = core.CreateNode("n", object);
    auto* const face = GetMeshSelectInterface(object);
    ASSERT_NE(face, nullptr);
    auto* const data = static_cast<IMeshSelectData*>(object->GetInterface(I_MESHSELECTDATA));
    ASSERT_NE(data, nullptr);
    data->SetFaceSel(Bits(12, {3}), face, 0);
    data->GetNamedFaceSelList().AppendSet(Bits(12, {3, 4}), "pair");
    face->SetSelLevel(MESH_FACE);
    face->LocalDataChanged();
    const Mesh& mesh = static_cast<TriObject*>(node->EvalWorldState(0).obj)->mesh;
    EXPECT_EQ(mesh.faceSel, Bits(12, {3}));
    ASSERT_EQ(mesh.faceSets.size(), 1u);
    EXPECT_EQ(mesh.faceSets[0].second, Bits(12, {3, 4}));
    EXPECT_EQ(object->ClassID(), EDITTRIOBJ_CLASS_ID);
    EXPECT_TRUE(object->CanConvertToType(triObjectClassID));
    RemapDir remap;
    auto* const copy = core.Adopt(static_cast<EditTriObject*>(remap.CloneRef(object)));
    EXPECT_EQ(copy->ClassID(), EDITTRIOBJ_CLASS_ID);
    EXPECT_EQ(copy->mesh.faceSets.size(), 1u);
}

TEST(NamedSets, AreFoundReplacedAndRemoved) {
    GenericNamedSelSetList list;
    list.AppendSet(Bits(2, {0}), "a");
    list.AppendSet(Bits(2, {1}), "b");
    list.AppendSet(Bits(2, {1}), "a");
    EXPECT_EQ(list.Count(), 2);
    ASSERT_NE(list.GetSet("a"), nullptr);
    EXPECT_EQ(*list.GetSet("a"), Bits(2, {1}));
    EXPECT_EQ(list.GetSet("c"), nullptr);
    EXPECT_TRUE(list.RemoveSet("a"));
    EXPECT_FALSE(list.RemoveSet("a"));
    EXPECT_EQ(list.Name(0), "b");
}

} // namespace
