// Nodes: hierarchy, transforms, properties, the modifier stack.

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <thread>

#include "core/controllers.h"
#include "core/core.h"
#include "core/light.h"
#include "test_objects.h"

namespace {

using namespace host;

void ExpectNear(const Matrix3& a, const Matrix3& b, float tolerance = 1e-5f) {
    for (int i = 0; i < 4; ++i)
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(a.GetRow(i)[k], b.GetRow(i)[k], tolerance) << i << "," << k;
}

// Moves every vertex along X by `step`, counts its calls, and holds within `valid`.
struct Mover : Modifier {
    float step = 1;
    int calls = 0;
    Interval valid = FOREVER;
    Interval LocalValidity(TimeValue) override { return valid; }
    void ModifyObject(TimeValue, ModContext&, ObjectState* os, INode*) override {
        ++calls;
        if (os->obj->ClassID() != TRIOBJ_CLASS_ID) return;
        Mesh& mesh = static_cast<TriObject*>(os->obj)->mesh;
        for (Point3& v : mesh.verts) v = Point3(v.x * step + step, v.y, v.z);
        mesh.InvalidateGeomCache();
    }
    void Changed() { NotifyDependents(FOREVER, PART_GEOM, REFMSG_CHANGE); }
};

struct NodeTest : testing::Test {
    Core core;
    Mover mover, second; // outlives the nodes that use it: the destructor below empties the scene first
    TriObject* tri = core.Adopt(new TriObject);
    ~NodeTest() override { core.ResetScene(); }
    static float X(Node* node, TimeValue t = 0) {
        return static_cast<TriObject*>(node->EvalWorldState(t).obj)->mesh.verts[0].x;
    }
};

TEST_F(NodeTest, HierarchyAndCircles) {
    Node* const a = core.CreateNode("a");
    Node* const b = core.CreateNode("b", nullptr, a);
    Node* const c = core.CreateNode("c", nullptr, b);
    EXPECT_EQ(b->GetParentNode(), a);
    EXPECT_EQ(a->GetChildNode(0), b);
    EXPECT_EQ(a->GetChildNode(1), nullptr);
    EXPECT_FALSE(c->AttachChild(a));
    EXPECT_FALSE(a->AttachChild(a));
    EXPECT_FALSE(a->AttachChild(nullptr));
    EXPECT_EQ(core.AllNodes(), (std::vector<Node*>{a, b, c}));
    EXPECT_EQ(core.GetINodeByName("c"), c);
    EXPECT_EQ(core.GetINodeByName("C"), nullptr);
    core.DeleteNode(b);
    EXPECT_EQ(c->GetParentNode(), a) << "children go to the parent";
    EXPECT_EQ(core.AllNodes(), (std::vector<Node*>{a, c}));
    core.DeleteNode(core.GetRootNode());
    EXPECT_EQ(core.AllNodes().size(), 2u) << "the root stays";
}

TEST_F(NodeTest, TransformsFollowTheParents) {
    Node* const a = core.CreateNode("a");
    Node* const b = core.CreateNode("b", nullptr, a);
    const float h = std::sqrt(0.5f);
    Matrix3 turn = Quat(0, 0, h, h).ToMatrix();
    turn.SetTrans({10, 0, 0});
    a->SetNodeTM(0, turn);
    EXPECT_EQ(b->GetNodeTM(0), turn);
    const Matrix3 world({2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {1, 2, 3});
    b->SetNodeTM(0, world);
    ExpectNear(b->GetNodeTM(0), world);
    b->SetObjectOffset(TransMatrix({0, 0, 5}));
    ExpectNear(b->GetObjectTM(0), TransMatrix({0, 0, 5}) * world);
    ExpectNear(b->GetNodeTM(0), world);
}

TEST_F(NodeTest, AttachingMayKeepThePlaceInTheWorld) {
    Node* const a = core.CreateNode("a");
    Node* const b = core.CreateNode("b");
    a->SetNodeTM(0, TransMatrix({5, 0, 0}));
    b->SetNodeTM(0, TransMatrix({1, 0, 0}));
    a->AttachChild(b, true);
    EXPECT_EQ(b->GetNodeTM(0).GetTrans(), Point3(1, 0, 0));
    core.GetRootNode()->AttachChild(b);
    EXPECT_EQ(b->GetNodeTM(0).GetTrans(), Point3(-4, 0, 0));
}

TEST_F(NodeTest, ValidityOfTransformsIsTheIntersection) {
    Node* const a = core.CreateNode("a");
    Node* const b = core.CreateNode("b", nullptr, a);
    auto* const moving = new PrsControl;
    auto* const path = static_cast<PositionControl*>(moving->Position());
    path->SetKey(100, {0, 0, 0});
    path->SetKey(200, {100, 0, 0});
    ASSERT_TRUE(a->SetTMController(moving));
    Interval valid = FOREVER;
    EXPECT_EQ(b->GetNodeTM(150, &valid).GetTrans(), Point3(50, 0, 0));
    EXPECT_EQ(valid, Interval(150, 150));
    valid = FOREVER;
    b->GetObjectTM(50, &valid);
    EXPECT_EQ(valid, Interval(TIME_NegInfinity, 100));
    FloatControl wrong;
    EXPECT_FALSE(a->SetTMController(&wrong));
    EXPECT_FALSE(a->SetTMController(nullptr));
}

TEST_F(NodeTest, AMovedNodeTellsTheDependentsOfItsChildren) {
    Node* const a = core.CreateNode("a");
    Node* const b = core.CreateNode("b", nullptr, a);
    Thing watcher(1);
    watcher.ReplaceReference(0, b);
    a->SetNodeTM(0, TransMatrix({1, 0, 0}));
    ASSERT_EQ(watcher.heard.size(), 1u);
    EXPECT_EQ(watcher.heard[0].part, PART_TM);
    watcher.DeleteAllRefs();
}

TEST_F(NodeTest, TargetsAreLookedAt) {
    Node* const camera = core.CreateNode("camera");
    Node* const target = core.CreateNode("target");
    camera->SetNodeTM(0, TransMatrix({0, -5, 0}));
    ASSERT_TRUE(camera->SetTarget(target));
    const Matrix3 tm = camera->GetNodeTM(0);
    ExpectNear(tm, Matrix3({1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, -5, 0})); // -Z looks along +Y
    target->SetNodeTM(0, TransMatrix({0, -5, -9}));
    ExpectNear(camera->GetNodeTM(0), Matrix3({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, -5, 0})); // straight down
    target->SetNodeTM(0, TransMatrix({0, -5, 0}));
    EXPECT_EQ(camera->GetNodeTM(0), TransMatrix({0, -5, 0})) << "in the same place: as it stands";
    EXPECT_FALSE(target->SetTarget(camera)) << "each would follow the other";
    EXPECT_FALSE(camera->AttachChild(target));
    EXPECT_FALSE(camera->SetTarget(camera));
    Thing watcher(1);
    watcher.ReplaceReference(0, camera);
    target->SetNodeTM(0, TransMatrix({1, 1, 1}));
    EXPECT_EQ(watcher.heard.size(), 1u) << "a moved target moves the camera";
    core.DeleteNode(target);
    EXPECT_EQ(camera->GetTarget(), nullptr);
    watcher.DeleteAllRefs();
}

TEST_F(NodeTest, FlagsAndVisibility) {
    Node* const n = core.CreateNode("n");
    EXPECT_TRUE(n->Renderable() && n->GetPrimaryVisibility() && n->GetSecondaryVisibility() && n->CastShadows() &&
                n->RcvShadows() && n->ApplyAtmospherics());
    EXPECT_FALSE(n->IsNodeHidden() || n->IsFrozen() || n->Selected());
    n->SetRenderFlags(false, true, false, true, false);
    EXPECT_FALSE(n->Renderable());
    EXPECT_TRUE(n->GetPrimaryVisibility());
    EXPECT_FALSE(n->CastShadows());
    EXPECT_TRUE(n->RcvShadows());
    EXPECT_FALSE(n->ApplyAtmospherics());
    EXPECT_EQ(n->GetRenderID(), 0xffffu);
    n->SetGBufID(7);
    EXPECT_EQ(n->GetGBufID(), 7);
    EXPECT_EQ(n->GetVisibility(0), 1);
    n->SetVisibility(2);
    EXPECT_EQ(n->GetVisibility(0), 1) << "0..1";
    auto* const fade = new FloatControl;
    fade->SetKey(0, 0);
    fade->SetKey(10, 1);
    ASSERT_TRUE(n->SetVisibilityController(fade));
    Interval valid = FOREVER;
    EXPECT_EQ(n->GetVisibility(5, &valid), 0.5f);
    EXPECT_EQ(valid, Interval(5, 5));
}

TEST_F(NodeTest, ChangesSendTheirOwnMessages) {
    Node* const n = core.CreateNode("n");
    Thing watcher(1);
    watcher.ReplaceReference(0, n);
    n->SetName("m");
    n->Hide(true);
    n->Hide(true);
    n->SetWireColor({1, 0, 0});
    std::vector<RefMessage> messages;
    for (const auto& h : watcher.heard) messages.push_back(h.message);
    EXPECT_EQ(messages, (std::vector<RefMessage>{REFMSG_NODE_NAMECHANGE, REFMSG_NODE_DISPLAY_CHANGED,
                                                 REFMSG_NODE_DISPLAY_CHANGED}));
    watcher.DeleteAllRefs();
}

TEST_F(NodeTest, AMovedKeyIsToldForItsTimes) {
    TimesListener above, lit;
    Node* const parent = core.CreateNode("parent");
    Node* const child = core.CreateNode("child", nullptr, parent);
    auto* const prs = new PrsControl;
    auto* const path = static_cast<PositionControl*>(prs->Position());
    for (int i = 0; i < 6; ++i) path->SetKey(i * 100, {float(i), 0, 0});
    parent->SetTMController(prs);
    above.ReplaceReference(0, child);
    path->SetKey(200, {9, 0, 0});
    EXPECT_EQ(above.told, Interval(0, 400)) << "smooth neighbours reach as far as theirs";
    auto* const lamp = core.Adopt(new Light(OMNI_LGT));
    auto* const strength = new FloatControl;
    for (int i = 0; i < 6; ++i) strength->SetKey(i * 100, 1);
    lamp->Params()->SetController(kLightMultiplier, strength);
    lit.ReplaceReference(0, lamp);
    strength->DeleteKeyAtTime(0);
    EXPECT_EQ(lit.told, Interval(TIME_NegInfinity, 200));
    above.DeleteAllRefs();
    lit.DeleteAllRefs();
}

TEST_F(NodeTest, ThePipelineWorksOnACopyFromTheBottomUp) {
    tri->mesh = UnitCube();
    Node* const n = core.CreateNode("n", tri);
    EXPECT_EQ(n->EvalWorldState(0).obj, tri) << "without modifiers the object itself";
    mover.step = 2;  // x -> 2x + 2
    second.step = 1; // x -> x + 1
    ASSERT_TRUE(n->AddModifier(&second));
    ASSERT_TRUE(n->AddModifier(&mover)); // on top: applied last
    EXPECT_EQ(n->GetModifier(0), &mover);
    EXPECT_EQ(X(n), 4); // (0 + 1) * 2 + 2
    EXPECT_EQ(tri->mesh.verts[0].x, 0) << "the base object is untouched";
    mover.DisableMod();
    EXPECT_EQ(X(n), 1);
    n->DeleteModifier(1);
    EXPECT_EQ(X(n), 0);
    EXPECT_FALSE(n->DeleteModifier(1));
    EXPECT_FALSE(n->AddModifier(nullptr));
    EXPECT_FALSE(n->AddModifier(&second, 5));
    mover.EnableMod();
}

TEST_F(NodeTest, ResultsAreKeptWhileTheyHold) {
    tri->mesh = UnitCube();
    Node* const n = core.CreateNode("n", tri);
    mover.valid = Interval(0, 10);
    n->AddModifier(&mover);
    EXPECT_EQ(n->EvalWorldState(5).valid, Interval(0, 10));
    n->EvalWorldState(0);
    n->EvalWorldState(10);
    EXPECT_EQ(mover.calls, 1);
    mover.valid = FOREVER;
    n->EvalWorldState(11);
    EXPECT_EQ(mover.calls, 2);
    n->EvalWorldState(-1000);
    EXPECT_EQ(mover.calls, 2);
    mover.step = 3;
    mover.Changed();
    EXPECT_EQ(X(n), 3);
    EXPECT_EQ(mover.calls, 3) << "a change of a modifier drops the result";
    n->SetNodeTM(0, TransMatrix({1, 0, 0}));
    n->EvalWorldState(0);
    EXPECT_EQ(mover.calls, 3) << "a move does not";
}

TEST_F(NodeTest, ThreadsMayEvaluateTheSameTime) {
    tri->mesh = UnitCube();
    Node* const n = core.CreateNode("n", tri);
    n->AddModifier(&mover);
    std::vector<std::thread> threads;
    std::atomic<int> right{0};
    for (int i = 0; i < 4; ++i) threads.emplace_back([&] { right += X(n, 5) == 1; });
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(right, 4);
    EXPECT_EQ(mover.calls, 1);
    n->DeleteModifier(0);
}

TEST_F(NodeTest, AModifierMayPutInANewObject) {
    struct Replacer : Modifier {
        void ModifyObject(TimeValue, ModContext&, ObjectState* os, INode*) override {
            auto* const fresh = new TriObject;
            fresh->mesh.verts = {{42, 0, 0}};
            os->obj = fresh;
        }
    } replacer;
    Node* const n = core.CreateNode("n", tri);
    n->AddModifier(&replacer);
    n->AddModifier(&mover);
    EXPECT_EQ(X(n), 43);
    n->InvalidateWorldState();
    EXPECT_EQ(X(n), 43);
    n->DeleteModifier(1);
}

TEST_F(NodeTest, ADeletedModifierOrObjectLeavesTheStack) {
    tri->mesh = UnitCube();
    Node* const n = core.CreateNode("n", tri);
    auto* const dies = new Mover;
    n->AddModifier(dies);
    n->AddModifier(&mover);
    EXPECT_EQ(X(n), 2);
    delete dies;
    EXPECT_EQ(n->NumModifiers(), 1);
    EXPECT_EQ(n->GetModifier(0), &mover);
    EXPECT_EQ(X(n), 1);
    tri->DeleteThis();
    EXPECT_EQ(n->EvalWorldState(0).obj, nullptr);
    n->DeleteModifier(0);
}

TEST_F(NodeTest, MeshesOfNodes) {
    tri->mesh = UnitCube();
    Node* const n = core.CreateNode("n", tri);
    mover.valid = Interval(0, 10);
    n->AddModifier(&mover);
    Interval valid(5, 100);
    bool needDelete = true;
    TriObject* const mesh = GetTriObjectFromNode(n, 7, valid, needDelete);
    ASSERT_NE(mesh, nullptr);
    EXPECT_FALSE(needDelete);
    EXPECT_EQ(mesh->mesh.verts[0].x, 1);
    EXPECT_EQ(valid, Interval(5, 10));
    EXPECT_EQ(GetTriObjectFromNode(core.CreateNode("empty"), 0, valid, needDelete), nullptr);
    EXPECT_EQ(GetTriObjectFromNode(core.CreateNode("shape", new ShapeObject), 0, valid, needDelete), nullptr);
    EXPECT_EQ(GetTriObjectFromNode(nullptr, 0, valid, needDelete), nullptr);
    n->DeleteModifier(0);
}

TEST_F(NodeTest, ObjectsThatConvertGiveMeshesToBeDeleted) {
    struct Ball : GeomObject {
        bool CanConvertToType(Class_ID id) override { return id == TRIOBJ_CLASS_ID; }
        Object* ConvertToType(TimeValue, Class_ID) override { return new TriObject; }
    };
    Node* const n = core.CreateNode("n", new Ball);
    Interval valid = FOREVER;
    bool needDelete = false;
    const std::unique_ptr<TriObject> mesh(GetTriObjectFromNode(n, 0, valid, needDelete));
    EXPECT_TRUE(needDelete);
    EXPECT_NE(mesh, nullptr);
}

TEST_F(NodeTest, ClonesBelongToTheSameScene) {
    tri->mesh = UnitCube();
    Node* const n = core.CreateNode("n", tri);
    n->SetNodeTM(0, TransMatrix({1, 2, 3}));
    n->SetUserPropString("k", "v");
    n->SetGBufID(3);
    RemapDir remap;
    auto* const copy = core.Adopt(static_cast<Node*>(remap.CloneRef(n)));
    EXPECT_STREQ(copy->GetName(), "n");
    EXPECT_EQ(copy->GetNodeTM(0), n->GetNodeTM(0));
    EXPECT_NE(copy->GetObjectRef(), tri);
    EXPECT_TRUE(core.Owner().Owns(copy->GetObjectRef()));
    EXPECT_EQ(static_cast<TriObject*>(copy->GetObjectRef())->mesh.getNumFaces(), 12);
    EXPECT_EQ(copy->GetGBufID(), 3);
    TSTR value;
    EXPECT_TRUE(copy->GetUserPropString("k", value));
    copy->SetNodeTM(0, Matrix3());
    EXPECT_EQ(n->GetNodeTM(0).GetTrans(), Point3(1, 2, 3));
}

TEST(UserProps, LinesOfText) {
    Node n("n");
    n.SetUserPropText("HairCollisionFriction = 0.25\r\nname=  two words \nno sign here\nCount = 12\nBad = 3x\n");
    float f = -1;
    int i = -1;
    TSTR s;
    EXPECT_TRUE(n.GetUserPropFloat("HairCollisionFriction", f));
    EXPECT_EQ(f, 0.25f);
    EXPECT_TRUE(n.GetUserPropFloat("haircollisionfriction", f)) << "case does not matter";
    EXPECT_TRUE(n.GetUserPropString("name", s));
    EXPECT_EQ(s, "two words");
    EXPECT_TRUE(n.GetUserPropInt("Count", i));
    EXPECT_EQ(i, 12);
    EXPECT_TRUE(n.GetUserPropFloat("Count", f));
    EXPECT_EQ(f, 12);
    f = 5, i = 6;
    EXPECT_FALSE(n.GetUserPropFloat("Bad", f));
    EXPECT_FALSE(n.GetUserPropInt("HairCollisionFriction", i));
    EXPECT_FALSE(n.GetUserPropFloat("missing", f));
    EXPECT_FALSE(n.GetUserPropString("no sign here", s));
    EXPECT_FALSE(n.GetUserPropString("", s));
    EXPECT_FALSE(n.GetUserPropString(nullptr, s));
    EXPECT_EQ(f, 5) << "untouched";
    EXPECT_EQ(i, 6);
}

TEST(UserProps, SettingReplacesAppendsAndRemoves) {
    Node n("n");
    n.SetUserPropString("a", "1");
    n.SetUserPropString("b", "2");
    n.SetUserPropString("A", "+3.5");
    EXPECT_EQ(n.UserProperties().Text(), "A = +3.5\nb = 2\n");
    float f = 0;
    EXPECT_TRUE(n.GetUserPropFloat("a", f));
    EXPECT_EQ(f, 3.5f);
    n.SetUserPropString("a", nullptr);
    EXPECT_EQ(n.UserProperties().Text(), "b = 2\n");
    for (const char* bad : {"nan", "inf", "1e99", "", "0x10"}) {
        n.SetUserPropString("b", bad);
        EXPECT_FALSE(n.GetUserPropFloat("b", f)) << bad;
    }
}

} // namespace
