// Modifier stacks: channels, validity, what is kept and what a change invalidates.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "core/core.h"
#include "core/render_evaluation.h"
#include "test_objects.h"

namespace {

using namespace host;

// Adds `step` to one coordinate of all vertices (GEOM), or puts `step` into the material ids (TOPO), or marks the
// first face (SELECT).
struct Counter : Modifier {
    ChannelMask writes = GEOM_CHANNEL, reads = GEOM_CHANNEL;
    float step = 1;
    int calls = 0;
    Interval valid = FOREVER;
    bool perFrame = false;
    float seenX = 0;
    ~Counter() override { DeleteAllRefs(); }
    ChannelMask ChannelsUsed() override { return reads; }
    ChannelMask ChannelsChanged() override { return writes; }
    Interval LocalValidity(TimeValue t) override { return perFrame ? Interval(t, t) : valid; }
    void ModifyObject(TimeValue t, ModContext&, ObjectState* os, INode*) override {
        ++calls;
        Mesh& mesh = static_cast<TriObject*>(os->obj)->mesh;
        seenX = mesh.verts[0].x;
        if (writes & GEOM_CHANNEL)
            for (Point3& v : mesh.verts) v.x += step + (perFrame ? float(t) : 0.0f);
        if (writes & TOPO_CHANNEL)
            for (Face& f : mesh.faces) f.SetMatID(f.MatID() + int(step));
        if (writes & SELECT_CHANNEL) {
            mesh.faceSel.SetSize(mesh.getNumFaces());
            mesh.faceSel.Set(int(step));
        }
        mesh.InvalidateGeomCache();
    }
    void Changed() { NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE); }
};

struct StackTest : testing::Test {
    Counter a, b, c; // outlive the nodes
    Core core;
    TriObject* tri = core.Adopt(new TriObject);
    Node* node = nullptr;
    StackTest() {
        tri->mesh = UnitCube();
        node = core.CreateNode("n", tri);
    }
    ~StackTest() override { core.ResetScene(); }
    Mesh& Result(TimeValue t = 0) { return static_cast<TriObject*>(node->EvalWorldState(t).obj)->mesh; }
    // From the lowest up.
    void Stack(std::initializer_list<Modifier*> modifiers) {
        for (Modifier* const m : modifiers) ASSERT_TRUE(node->AddModifier(m));
    }
    void ExpectCalls(int na, int nb, int nc) {
        EXPECT_EQ(a.calls, na);
        EXPECT_EQ(b.calls, nb);
        EXPECT_EQ(c.calls, nc);
    }
};

TEST_F(StackTest, AnEditedModifierIsTheOnlyOneThatRunsAgain) {
    Stack({&a, &b, &c});
    EXPECT_EQ(Result().verts[0].x, 3);
    ExpectCalls(1, 1, 1);
    c.step = 5;
    c.Changed();
    EXPECT_EQ(Result().verts[0].x, 7);
    ExpectCalls(2, 2, 2); // the first change: from now on what flows into it is kept
    c.step = 6;
    c.Changed();
    EXPECT_EQ(Result().verts[0].x, 8);
    ExpectCalls(2, 2, 3);
    b.step = 10;
    b.Changed();
    EXPECT_EQ(Result().verts[0].x, 17);
    b.step = 20;
    b.Changed();
    EXPECT_EQ(Result().verts[0].x, 27);
    EXPECT_EQ(a.calls, 3) << "one more when the first change split the stack below it";
    EXPECT_EQ(tri->mesh.verts[0].x, 0) << "the base stays";
}

TEST_F(StackTest, WhatStandsStillBelowAMovingModifierRunsOnce) {
    b.perFrame = true;
    Stack({&a, &b, &c});
    for (const TimeValue t : {0, 10, 20, 30, 20}) EXPECT_EQ(Result(t).verts[0].x, 3.0f + float(t));
    ExpectCalls(1, 5, 5);
    EXPECT_EQ(node->EvalWorldState(20).valid, Interval(20, 20));
}

TEST_F(StackTest, OnlyChangedChannelsAreCopiedAgain) {
    b.perFrame = true;
    Stack({&a, &b});
    Mesh& mesh = Result(0);
    const Face* const faces = mesh.faces.data();
    mesh.faces[3].smGroup = 77; // a mark: the faces of the working copy are not written again
    EXPECT_EQ(Result(1).faces.data(), faces);
    EXPECT_EQ(Result(2).faces[3].smGroup, 77u);
    tri->mesh.faces[3].smGroup = 5;
    tri->NotifyDependents(FOREVER, PART_TOPO, REFMSG_CHANGE);
    EXPECT_EQ(Result(2).faces[3].smGroup, 5u) << "a change of the base comes through";
}

TEST_F(StackTest, ChannelsKeepTheirOwnValidity) {
    a.writes = TOPO_CHANNEL, a.reads = TOPO_CHANNEL;
    a.valid = Interval(0, 100);
    b.perFrame = true;
    c.writes = SELECT_CHANNEL, c.reads = TOPO_CHANNEL;
    Stack({&a, &b, &c});
    const ObjectState& os = node->EvalWorldState(7);
    EXPECT_EQ(os.valid, Interval(7, 7));
    EXPECT_EQ(os.obj->ChannelValidity(7, TOPO_CHAN_NUM), Interval(0, 100));
    EXPECT_EQ(os.obj->ChannelValidity(7, GEOM_CHAN_NUM), Interval(7, 7));
    EXPECT_EQ(os.obj->ChannelValidity(7, SELECT_CHAN_NUM), Interval(0, 100)) << "made from the faces";
    EXPECT_EQ(os.obj->ChannelValidity(7, TEXMAP_CHAN_NUM), FOREVER);
}

TEST_F(StackTest, ABaseThatChangesOverTimeIsCopiedByChannel) {
    tri->SetChannelValidity(GEOM_CHAN_NUM, Interval(0, 10));
    Stack({&a});
    EXPECT_EQ(node->EvalWorldState(5).valid, Interval(0, 10));
    EXPECT_EQ(node->EvalWorldState(5).obj->ChannelValidity(5, TOPO_CHAN_NUM), FOREVER);
    tri->mesh.verts[0].x = 40;
    tri->SetChannelValidity(GEOM_CHAN_NUM, Interval(11, 20));
    EXPECT_EQ(Result(12).verts[0].x, 41);
    EXPECT_EQ(node->EvalWorldState(12).valid, Interval(11, 20));
    tri->InvalidateChannels(GEOM_CHANNEL);
    tri->NotifyDependents(FOREVER, PART_GEOM, REFMSG_CHANGE);
    EXPECT_EQ(node->EvalWorldState(12).valid, Interval(12, 12)) << "valid at the time it was made for";
}

TEST_F(StackTest, SwitchesPassTheObjectBy) {
    Stack({&a, &b});
    a.DisableMod();
    EXPECT_EQ(Result().verts[0].x, 1);
    b.DisableMod();
    EXPECT_EQ(node->EvalWorldState(0).obj, tri) << "nothing works: the object itself";
    a.EnableMod();
    b.EnableMod();
    EXPECT_EQ(Result().verts[0].x, 2);
}

TEST_F(StackTest, RendersAndViewsMaySeeDifferentStacks) {
    a.EnableModInRender(false);
    b.EnableModInViews(false);
    b.step = 10;
    Stack({&a, &b});
    EXPECT_EQ(Result().verts[0].x, 1);
    {
        const RenderEvaluation outer;
        EXPECT_EQ(Result().verts[0].x, 10);
        {
            const RenderEvaluation inner;
            EXPECT_EQ(Result().verts[0].x, 10);
        }
        EXPECT_EQ(Result().verts[0].x, 10);
    }
    EXPECT_EQ(Result().verts[0].x, 1);
}

TEST_F(StackTest, ModifiersThatUseThePlaceSeeItAndFollowIt) {
    struct Placed : Counter {
        Matrix3 seen;
        void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* n) override {
            seen = os->GetTM();
            Counter::ModifyObject(t, mc, os, n);
        }
    } placed;
    placed.reads = GEOM_CHANNEL | TM_CHANNEL;
    Stack({&a, &placed, &c});
    node->SetNodeTM(0, TransMatrix({1, 2, 3}));
    EXPECT_EQ(Result().verts[0].x, 3);
    EXPECT_EQ(placed.seen, TransMatrix({1, 2, 3}));
    EXPECT_EQ(node->EvalWorldState(0).tm, Matrix3());
    Thing watcher(1);
    watcher.ReplaceReference(0, node);
    node->SetNodeTM(0, TransMatrix({4, 0, 0}));
    ASSERT_EQ(watcher.heard.size(), 1u);
    EXPECT_EQ(watcher.heard[0].part, PART_TM | PART_GEOM) << "the mesh changes as well";
    Result();
    EXPECT_EQ(placed.seen, TransMatrix({4, 0, 0}));
    EXPECT_EQ(placed.calls, 2);
    watcher.DeleteAllRefs();
    core.ResetScene();
}

TEST_F(StackTest, WorldSpaceModifiersStayOnTop) {
    struct Warp : WSModifier {
        Point3 origin;
        ~Warp() override { DeleteAllRefs(); }
        void ModifyObject(TimeValue, ModContext&, ObjectState* os, INode*) override { origin = Point3() * os->GetTM(); }
    } warp;
    Stack({&a, &warp, &b});
    EXPECT_EQ(node->GetModifier(0), &warp);
    EXPECT_EQ(node->GetModifier(1), &b);
    EXPECT_EQ(node->GetModifier(2), &a);
    node->SetNodeTM(0, TransMatrix({0, 0, 9}));
    Result();
    EXPECT_EQ(warp.origin, Point3(0, 0, 9));
    core.ResetScene();
}

TEST_F(StackTest, ObjectsAreConvertedForModifiersOrPassThemBy) {
    struct Ball : GeomObject {
        bool CanConvertToType(Class_ID id) override { return id == triObjectClassID; }
        Object* ConvertToType(TimeValue, Class_ID) override {
            auto* const made = new TriObject;
            made->mesh = UnitCube();
            return made;
        }
    };
    struct OnMeshes : Counter {
        Class_ID InputType() override { return triObjectClassID; }
    } onMeshes;
    Node* const ball = core.CreateNode("ball", new Ball);
    ASSERT_TRUE(ball->AddModifier(&onMeshes));
    EXPECT_EQ(static_cast<TriObject*>(ball->EvalWorldState(0).obj)->mesh.verts[0].x, 1);
    Node* const shape = core.CreateNode("shape", new ShapeObject);
    ASSERT_TRUE(shape->AddModifier(&onMeshes));
    EXPECT_EQ(shape->EvalWorldState(0).obj, shape->GetObjectRef());
    EXPECT_EQ(onMeshes.calls, 1);
    core.ResetScene();
}

TEST_F(StackTest, ADeformableFormTakesTheCopysPlace) {
    struct View : Object {
        Point3 point;
        bool form = false;
        RefTargetHandle Clone(RemapDir&) override { return new View; }
        bool CanConvertToType(Class_ID id) override { return id == defObjectClassID; }
        Object* ConvertToType(TimeValue, Class_ID) override {
            auto* const made = new View;
            made->form = true;
            return made;
        }
        bool IsDeformable() override { return form; }
        int NumPoints() override { return 1; }
        Point3 GetPoint(int) override { return point; }
        void SetPoint(int, const Point3& p) override { point = p; }
    };
    struct Lift : Modifier {
        struct Up : Deformer {
            Point3 Map(int, const Point3& p) override { return p + Point3(0, 0, 1); }
        };
        ~Lift() override { DeleteAllRefs(); }
        void ModifyObject(TimeValue, ModContext&, ObjectState* os, INode*) override {
            Up up;
            os->obj->Deform(&up);
        }
    } lift;
    Node* const n = core.CreateNode("view", new View);
    n->AddModifier(&lift);
    EXPECT_EQ(static_cast<View*>(n->EvalWorldState(0).obj)->point, Point3(0, 0, 1));
    core.ResetScene();
}

TEST_F(StackTest, LocalDataIsCopiedWithTheNode) {
    struct Data : LocalModData {
        int number = 0;
        LocalModData* Clone() override {
            auto* const copy = new Data;
            copy->number = number;
            return copy;
        }
    };
    Stack({&a});
    auto* const data = new Data;
    data->number = 5;
    node->GetModContext(0)->localData = data;
    Result();
    EXPECT_EQ(node->GetModContext(0)->box.Max(), Point3(1, 1, 1));
    RemapDir remap;
    auto* const copy = core.Adopt(static_cast<Node*>(remap.CloneRef(node)));
    ASSERT_EQ(copy->NumModifiers(), 1);
    auto* const other = static_cast<Data*>(copy->GetModContext(0)->localData);
    ASSERT_NE(other, nullptr);
    EXPECT_NE(other, data);
    EXPECT_EQ(other->number, 5);
    EXPECT_EQ(copy->GetModContext(1), nullptr);
}

// Whatever happens in whatever order, the outcome is that of a stack evaluated from nothing.
RC_GTEST_PROP(ModifierStack, KeptResultsEqualFreshOnes, ()) {
    std::vector<std::unique_ptr<Counter>> modifiers;
    const int count = *rc::gen::inRange(1, 6);
    for (int i = 0; i < count; ++i) {
        modifiers.push_back(std::make_unique<Counter>());
        Counter& m = *modifiers.back();
        m.perFrame = *rc::gen::arbitrary<bool>();
        m.writes = *rc::gen::element(GEOM_CHANNEL, TOPO_CHANNEL, SELECT_CHANNEL, OBJ_CHANNELS);
        m.reads = OBJ_CHANNELS;
        m.step = float(*rc::gen::inRange(0, 9));
        if (*rc::gen::arbitrary<bool>()) m.valid = Interval(0, *rc::gen::inRange(1, 20));
    }
    Core core;
    auto* const tri = new TriObject;
    tri->mesh = UnitCube();
    Node *const node = core.CreateNode("kept", tri), *const other = core.CreateNode("fresh", tri);
    for (const auto& m : modifiers) {
        node->AddModifier(m.get());
        other->AddModifier(m.get());
    }
    for (int turn = 0; turn < 12; ++turn) {
        Counter& m = *modifiers[size_t(*rc::gen::inRange(0, count))];
        switch (*rc::gen::inRange(0, 5)) {
        case 0:
            m.step = float(*rc::gen::inRange(0, 9));
            m.Changed();
            break;
        case 1:
            m.IsEnabled() ? m.DisableMod() : m.EnableMod();
            break;
        case 2:
            tri->mesh.verts[0].x += 1;
            tri->NotifyDependents(FOREVER, PART_GEOM, REFMSG_CHANGE);
            break;
        case 3:
            tri->mesh.faces[0].SetMatID(tri->mesh.faces[0].MatID() + 1);
            tri->NotifyDependents(FOREVER, PART_TOPO, REFMSG_CHANGE);
            break;
        default:
            break;
        }
        const TimeValue t = *rc::gen::inRange(0, 25);
        other->InvalidateWorldState();
        const Mesh& fresh = static_cast<TriObject*>(other->EvalWorldState(t).obj)->mesh;
        const Mesh& kept = static_cast<TriObject*>(node->EvalWorldState(t).obj)->mesh;
        RC_ASSERT(kept.verts == fresh.verts);
        RC_ASSERT(kept.faceSel == fresh.faceSel);
        for (int f = 0; f < fresh.getNumFaces(); ++f)
            RC_ASSERT(kept.faces[size_t(f)].flags == fresh.faces[size_t(f)].flags);
    }
    core.ResetScene();
}

} // namespace
