// Undo of selections, named sets, and what a stack keeps for its modifiers.

#include "core/edit_tri_object.h"
#include "modifier_fixture.h"
#include "modifiers/mesh_select.h"
#include "sdk/hold.h"

namespace {

using namespace host;
using namespace modifier_test;

struct SelectionUndo : ModifierTest {
    MeshSelect* select = nullptr;
    SelectionUndo() {
        theHold.Flush();
        SetMesh(MakeBox({2, 2, 2}, 1));
        select = Put(new MeshSelect);
    }
    MeshSelectData& Data(int i = 0) { return MeshSelect::DataIn(*node->GetModContext(i)); }
    void SelectFace(int f) {
        Data().SetFaceSel(Bits(12, {f}), select, 0);
        select->LocalDataChanged();
    }
    template <class F>
    void Step(const char* name, F&& edit) {
        theHold.Begin();
        edit();
        theHold.Accept(name);
    }
};

TEST_F(SelectionUndo, ASelectionOfANodeComesBackAndIsEvaluated) {
    SelectFace(2);
    EXPECT_EQ(Result().faceSel, Bits(12, {2}));
    Step("pick", [&] {
        SelectFace(5);
        SelectFace(6);
        EXPECT_EQ(Result().faceSel, Bits(12, {6}));
    });
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(Result().faceSel, Bits(12, {2}));
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(Result().faceSel, Bits(12, {6}));
}

TEST_F(SelectionUndo, RulesAndNamedSetsComeBack) {
    SelectionRule rule;
    rule.ids = {1};
    Data().SetRule(rule);
    Result();
    Step("sets", [&] {
        rule.ids = {3};
        Data().SetRule(rule);
        Data().GetNamedFaceSelList().AppendSet(Bits(12, {4}), "ears");
        Data().AddSetRule("tail", rule);
        select->LocalDataChanged();
    });
    EXPECT_EQ(Result().faceSets.size(), 2u);
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(Result().faceSel, Bits(12, {1}));
    EXPECT_TRUE(Result().faceSets.empty());
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(Result().faceSel, Bits(12, {3}));
    EXPECT_EQ(Result().faceSets.size(), 2u);
    Step("remove", [&] { EXPECT_TRUE(Data().GetNamedFaceSelList().RemoveSet("ears")); });
    EXPECT_EQ(Result().faceSets.size(), 2u) << "nobody was told yet";
    ASSERT_TRUE(theHold.Undo());
    EXPECT_NE(Data().GetNamedFaceSelList().GetSet("ears"), nullptr);
}

TEST_F(SelectionUndo, LookingAtSetsOrEvaluatingIsNoEdit) {
    Data().GetNamedFaceSelList().AppendSet(Bits(12, {4}), "ears");
    Step("look", [&] {
        EXPECT_EQ(Data().GetNamedFaceSelList().Count(), 1);
        EXPECT_FALSE(Data().GetNamedFaceSelList().RemoveSet("none"));
        Result();
    });
    EXPECT_EQ(theHold.NumUndo(), 0);
}

TEST_F(SelectionUndo, ADeletedModifierComesBackWithItsSelection) {
    SelectFace(7);
    Step("delete", [&] { node->DeleteModifier(0); });
    EXPECT_TRUE(Result().faceSel.IsEmpty());
    ASSERT_TRUE(theHold.Undo());
    ASSERT_EQ(node->GetModifier(0), select);
    EXPECT_EQ(Result().faceSel, Bits(12, {7}));
    Step("delete in the scene", [&] { select->DeleteThis(); });
    EXPECT_EQ(node->NumModifiers(), 0);
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(Result().faceSel, Bits(12, {7}));
}

TEST_F(SelectionUndo, RecordsOutliveTheEntryThatTheyAreOf) {
    Step("pick", [&] { SelectFace(5); });
    node->DeleteModifier(0); // not recorded: the data is gone for good
    EXPECT_TRUE(theHold.Undo());
    EXPECT_TRUE(theHold.Redo());
    EXPECT_EQ(node->NumModifiers(), 0);
}

TEST_F(SelectionUndo, AMovedModifierTakesItsSelectionAlong) {
    SelectFace(7);
    auto* const other = Put(new MeshSelect);
    Data(0).SetFaceSel(Bits(12, {1}), other, 0);
    EXPECT_EQ(Result().faceSel, Bits(12, {1}));
    Step("move", [&] { EXPECT_TRUE(node->MoveModifier(0, 1)); });
    EXPECT_EQ(node->GetModifier(0), select);
    EXPECT_EQ(Result().faceSel, Bits(12, {7}));
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(Result().faceSel, Bits(12, {1}));
    EXPECT_FALSE(node->MoveModifier(0, 2));
    EXPECT_FALSE(node->MoveModifier(-1, 0));
}

struct WorldModifier : WSModifier {
    ~WorldModifier() override { DeleteAllRefs(); }
    ChannelMask ChannelsChanged() override { return 0; }
};

TEST_F(SelectionUndo, WorldSpaceModifiersStayOnTop) {
    auto* const a = Put(new WorldModifier);
    auto* const b = Put(new WorldModifier); // b, a, select
    EXPECT_TRUE(node->MoveModifier(0, 2));
    EXPECT_EQ(node->GetModifier(0), a);
    EXPECT_EQ(node->GetModifier(1), b);
    EXPECT_TRUE(node->MoveModifier(2, 0));
    EXPECT_EQ(node->GetModifier(2), select);
}

TEST_F(SelectionUndo, SwitchesAndNamesComeBack) {
    SelectFace(7);
    Step("off", [&] {
        select->DisableMod();
        select->EnableModInRender(false);
        select->SetName("pick");
    });
    EXPECT_TRUE(Result().faceSel.IsEmpty());
    ASSERT_TRUE(theHold.Undo());
    EXPECT_TRUE(select->IsEnabled() && select->IsEnabledInRender());
    EXPECT_EQ(select->GetName(), "Mesh Select");
    EXPECT_EQ(Result().faceSel, Bits(12, {7}));
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(select->GetName(), "pick");
    EXPECT_TRUE(Result().faceSel.IsEmpty());
}

TEST(EditTriObjectUndo, SelectionLevelAndSetsComeBack) {
    Core core;
    theHold.Flush();
    auto* const object = core.Adopt(new EditTriObject);
    object->mesh = MakeBox({1, 1, 1}, 1);
    Node* const node = core.CreateNode("n", object);
    const auto mesh = [&]() -> const Mesh& { return static_cast<TriObject*>(node->EvalWorldState(0).obj)->mesh; };
    object->SetFaceSel(Bits(12, {3}), object, 0);
    object->SetSelLevel(MESH_FACE);
    theHold.Begin();
    object->SetFaceSel(Bits(12, {4}), object, 0);
    object->SetVertSel(Bits(24, {1}), object, 0);
    object->SetSelLevel(MESH_VERTEX);
    object->GetNamedFaceSelList().AppendSet(Bits(12, {3, 4}), "pair");
    object->GetNamedVertSelList().AppendSet(Bits(24, {3}), "corner");
    object->LocalDataChanged();
    theHold.Accept("select");
    EXPECT_EQ(mesh().faceSets.size(), 1u);
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(mesh().faceSel, Bits(12, {3}));
    EXPECT_TRUE(mesh().vertSel.IsEmpty());
    EXPECT_EQ(mesh().selLevel, MESH_FACE);
    EXPECT_TRUE(mesh().faceSets.empty());
    EXPECT_EQ(object->GetNamedVertSelList().Count(), 0);
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(mesh().faceSel, Bits(12, {4}));
    EXPECT_EQ(mesh().faceSets.size(), 1u);
    EXPECT_EQ(object->GetNamedVertSelList().Count(), 1);
}

} // namespace
