// Primitives with parameters.

#include "shapes/primitive_object.h"

#include <gtest/gtest.h>

#include "core/controllers.h"
#include "core/core.h"
#include "modifiers/deform_modifiers.h"
#include "shapes/primitives.h"

namespace {

using namespace host;

struct PrimitiveTest : testing::Test {
    Core core;
    SphereObject* sphere = core.Adopt(new SphereObject);
    Node* node = core.CreateNode("n", sphere);
    const Mesh& MeshAt(TimeValue t) {
        Interval valid = FOREVER;
        bool needDelete = true;
        TriObject* const tri = GetTriObjectFromNode(node, t, valid, needDelete);
        EXPECT_FALSE(needDelete);
        return tri->mesh;
    }
};

TEST_F(PrimitiveTest, MeshesFollowTheirParameters) {
    EXPECT_EQ(MeshAt(0).verts, MakeSphere(1, 16).verts);
    sphere->Params()->SetValue(SphereObject::kRadius, 0, 2.0f);
    sphere->Params()->SetValue(SphereObject::kSegments, 0, 8);
    EXPECT_EQ(MeshAt(0).verts, MakeSphere(2, 8).verts);
    EXPECT_TRUE(sphere->CanConvertToType(triObjectClassID));
    EXPECT_TRUE(sphere->CanConvertToType(SPHERE_CLASS_ID));
    EXPECT_FALSE(sphere->CanConvertToType(splineShapeClassID));
    bool needDelete = true;
    EXPECT_EQ(sphere->GetRenderMesh(0, node, needDelete)->verts, MakeSphere(2, 8).verts);
    EXPECT_FALSE(needDelete);
}

TEST_F(PrimitiveTest, ParametersMoveOverTime) {
    auto* const keys = core.Adopt(new FloatControl);
    keys->SetKey(0, 1);
    keys->SetKey(100, 3);
    ASSERT_TRUE(sphere->Params()->SetController(SphereObject::kRadius, keys));
    EXPECT_EQ(MeshAt(50).verts, MakeSphere(2, 16).verts);
    EXPECT_EQ(node->EvalWorldState(50).valid, Interval(50, 50));
    EXPECT_EQ(MeshAt(500).verts, MakeSphere(3, 16).verts);
    // Two nodes at different times share the object.
    Node* const other = core.CreateNode("other", sphere);
    node->EvalWorldState(500);
    other->EvalWorldState(0);
    EXPECT_EQ(MeshAt(500).verts, MakeSphere(3, 16).verts);
}

TEST_F(PrimitiveTest, ModifiersWorkOnACopy) {
    auto* const m = core.Adopt(new XFormModifier);
    m->Params()->SetValue(XFormModifier::kPosition, 0, Point3(0, 0, 1));
    node->AddModifier(m);
    auto* const tri = static_cast<TriObject*>(node->EvalWorldState(0).obj);
    EXPECT_EQ(tri->ClassID(), TRIOBJ_CLASS_ID);
    EXPECT_EQ(tri->mesh.verts[0], Point3(0, 0, 0));
    EXPECT_EQ(sphere->mesh.verts[0], Point3(0, 0, -1));
    sphere->Params()->SetValue(SphereObject::kRadius, 0, 3.0f);
    EXPECT_EQ(static_cast<TriObject*>(node->EvalWorldState(0).obj)->mesh.verts[0], Point3(0, 0, -2));
}

// A stack whose lowest modifier is switched off keeps the object itself below the next one.
TEST_F(PrimitiveTest, AStackAsksAgainWhatOtherNodesAskedMeanwhile) {
    auto* const keys = core.Adopt(new FloatControl);
    keys->SetKey(0, 1);
    keys->SetKey(100, 3);
    ASSERT_TRUE(sphere->Params()->SetController(SphereObject::kRadius, keys));
    auto *const low = core.Adopt(new XFormModifier), *const high = core.Adopt(new XFormModifier);
    node->AddModifier(low);
    node->AddModifier(high);
    const auto lift = [&](float z) {
        high->Params()->SetValue(XFormModifier::kPosition, 0, Point3(0, 0, z));
        return MeshAt(0).verts[0].z;
    };
    EXPECT_EQ(lift(0), -1);
    EXPECT_EQ(lift(1), 0);
    low->DisableMod();
    EXPECT_EQ(lift(2), 1);
    Node* const other = core.CreateNode("other", sphere);
    EXPECT_EQ(static_cast<TriObject*>(other->EvalWorldState(100).obj)->mesh.verts[0].z, -3);
    EXPECT_EQ(lift(3), 2);
}

TEST_F(PrimitiveTest, BoxesPlanesAndClones) {
    BoxObject box;
    box.Params()->SetValue(BoxObject::kSize, 0, Point3(1, 2, 3));
    box.Params()->SetValue(BoxObject::kSegments, 0, 2);
    EXPECT_EQ(static_cast<TriObject*>(box.Eval(0).obj)->mesh.verts, MakeBox({1, 2, 3}, 2).verts);
    PlaneObject plane;
    plane.Params()->SetValue(PlaneObject::kWidth, 0, 5.0f);
    plane.Params()->SetValue(PlaneObject::kSegments, 0, 1);
    EXPECT_EQ(static_cast<TriObject*>(plane.Eval(0).obj)->mesh.verts, MakePlane(5, 1, 1).verts);
    for (PrimitiveObject* const p : {static_cast<PrimitiveObject*>(&box), static_cast<PrimitiveObject*>(&plane)}) {
        RemapDir remap;
        auto* const copy = core.Adopt(static_cast<PrimitiveObject*>(remap.CloneRef(p)));
        EXPECT_EQ(copy->ClassID(), p->ClassID());
        EXPECT_NE(copy->Params(), p->Params());
        EXPECT_EQ(static_cast<TriObject*>(copy->Eval(0).obj)->mesh.verts, p->mesh.verts);
    }
}

} // namespace
