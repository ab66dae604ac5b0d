// World-space mesh copies for collisions.

#include <gtest/gtest.h>

#include "Base/CollideMeshData.h"
#include "core/node.h"

namespace {

/// A unit square in the XY plane at z = 0 that faces up; the object is valid only over some stretch of time.
class Square : public TriObject {
public:
    Square() {
        mesh.verts = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
        mesh.faces.resize(2);
        const int corners[2][3] = {{0, 1, 2}, {0, 2, 3}};
        for (int f = 0; f < 2; ++f)
            for (int c = 0; c < 3; ++c) mesh.faces[size_t(f)].v[c] = corners[f][c];
    }
    Interval ObjectValidity(TimeValue) override { return validity; }
    Interval validity = FOREVER;
};

class CollideMesh : public testing::Test {
protected:
    CollideMesh() { node.SetObjectRef(&square); }
    ~CollideMesh() override { node.SetObjectRef(nullptr); }
    Square square;
    host::Node node;
    CollideMeshData data;
    float at = 0;
    Point3 normal;
};

TEST_F(CollideMesh, CopiesIntoWorldSpaceAndAnswersRays) {
    node.SetNodeTM(0, Matrix3({2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {10, 0, 5}));
    ASSERT_TRUE(data.Build(&node, 0));
    EXPECT_EQ(data.type, CollideMeshData::kCollider);
    EXPECT_EQ(data.node, &node);
    EXPECT_EQ(data.box.Min(), Point3(10, 0, 5));
    EXPECT_EQ(data.box.Max(), Point3(12, 2, 5));
    EXPECT_EQ(square.mesh.verts[2], Point3(1, 1, 0)); // the scene's mesh is untouched
    ASSERT_TRUE(data.IntersectRay({11, 1.5f, 9}, {0, 0, -2}, at, normal));
    EXPECT_FLOAT_EQ(at, 2.0f); // in lengths of the direction
    EXPECT_EQ(normal, Point3(0, 0, 1));
    EXPECT_FALSE(data.IntersectRay({11, 1.5f, 9}, {0, 0, 2}, at, normal));
    EXPECT_FALSE(data.IntersectRay({0, 0, 9}, {0, 0, -2}, at, normal));
}

TEST_F(CollideMesh, MirroredNodesKeepTheirOutside) {
    node.SetNodeTM(0, ScaleMatrix({-1, 1, 1}));
    ASSERT_TRUE(data.Build(&node, 0));
    ASSERT_TRUE(data.IntersectRay({-0.5f, 0.25f, 1}, {0, 0, -1}, at, normal));
    EXPECT_EQ(normal, Point3(0, 0, 1));
}

TEST_F(CollideMesh, UserPropertiesOverrideTheObjectsParameters) {
    CollideParams own;
    own.friction = 0.1f, own.staticFriction = 0.2f, own.distance = 0.3f, own.distanceRandom = 0.4f;
    ASSERT_TRUE(data.Build(&node, 0, own));
    EXPECT_EQ(data.params.friction, 0.1f);
    EXPECT_EQ(data.params.staticFriction, 0.2f);
    EXPECT_EQ(data.params.distance, 0.3f);
    EXPECT_EQ(data.params.distanceRandom, 0.4f);
    node.SetUserPropString("HairCollisionFriction", "0.5");
    node.SetUserPropString("HairCollisionStaticFriction", "0.6");
    node.SetUserPropString("HairCollisionDistance", "7");
    node.SetUserPropString("HairCollisionDistanceRandomFactor", "0.8");
    ASSERT_TRUE(data.Build(&node, 0, own));
    EXPECT_EQ(data.params.friction, 0.5f);
    EXPECT_EQ(data.params.staticFriction, 0.6f);
    EXPECT_EQ(data.params.distance, 7.0f);
    EXPECT_EQ(data.params.distanceRandom, 0.8f);
}

TEST_F(CollideMesh, RebuildsOnlyWhenTimeOrPlaceAskForIt) {
    square.validity = Interval(0, 100);
    ASSERT_TRUE(data.Build(&node, 0));
    data.mesh.verts[0] = Point3(7, 7, 7); // shows whether the copy is kept
    ASSERT_TRUE(data.Build(&node, 100));
    EXPECT_EQ(data.mesh.verts[0], Point3(7, 7, 7));
    square.validity = Interval(101, 300);
    node.InvalidateWorldState();
    ASSERT_TRUE(data.Build(&node, 200));
    EXPECT_EQ(data.mesh.verts[0], Point3(0, 0, 0));
    data.mesh.verts[0] = Point3(7, 7, 7);
    node.SetNodeTM(200, TransMatrix({0, 0, 3}));
    ASSERT_TRUE(data.Build(&node, 200));
    EXPECT_EQ(data.mesh.verts[0], Point3(0, 0, 3));
}

TEST_F(CollideMesh, NoMeshLeavesAnEmptyCopy) {
    ASSERT_TRUE(data.Build(&node, 0));
    EXPECT_FALSE(data.Build(nullptr, 0));
    EXPECT_EQ(data.mesh.getNumFaces(), 0);
    EXPECT_TRUE(data.valid.Empty());
    EXPECT_FALSE(data.IntersectRay({0.5f, 0.25f, 1}, {0, 0, -1}, at, normal));
    HelperObject helper;
    host::Node other;
    other.SetObjectRef(&helper);
    EXPECT_FALSE(data.Build(&other, 0));
    other.SetObjectRef(nullptr);
}

TEST_F(CollideMesh, RenderDataGoesWithTheCopy) {
    struct Counted : MeshRenderData {
        explicit Counted(int& n) : n(n) { ++n; }
        ~Counted() override { --n; }
        int& n;
    };
    int alive = 0;
    data.Build(&node, 0);
    data.renderData = std::make_unique<Counted>(alive);
    data.Build(&node, 0);
    EXPECT_EQ(alive, 1);
    data.FreeRenderData();
    EXPECT_EQ(alive, 0);
    data.renderData = std::make_unique<Counted>(alive);
    node.SetNodeTM(0, TransMatrix({1, 0, 0}));
    data.Build(&node, 0);
    EXPECT_EQ(alive, 0);
}

} // namespace
