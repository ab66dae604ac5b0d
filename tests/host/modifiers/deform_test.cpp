// Transform, bend, noise; morph targets; mesh caches.

#include <numbers>

#include "core/controllers.h"
#include "core/error.h"
#include "modifier_fixture.h"
#include "modifiers/deform_modifiers.h"
#include "modifiers/mesh_cache.h"
#include "modifiers/morph.h"
#include "sdk/noise.h"

namespace {

using namespace host;
using namespace modifier_test;

struct DeformTest : ModifierTest {
    DeformTest() { SetMesh(MakeBox({1, 1, 4}, 2)); }
};

TEST_F(DeformTest, XFormScalesTurnsAndMovesAboutItsCentre) {
    auto* const m = Put(new XFormModifier);
    EXPECT_EQ(Result().verts, tri->mesh.verts);
    m->Params()->SetValue(XFormModifier::kScale, 0, Point3(2, 1, 1));
    m->Params()->SetValue(XFormModifier::kRotation, 0, Point3(0, 0, 90));
    m->Params()->SetValue(XFormModifier::kPosition, 0, Point3(0, 0, 10));
    m->Params()->SetValue(XFormModifier::kCenter, 0, Point3(1, 0, 0));
    for (size_t v = 0; v < tri->mesh.verts.size(); ++v) {
        const Point3 p = tri->mesh.verts[v];
        ExpectNear(Result().verts[v], {1 - p.y, 2 * (p.x - 1), p.z + 10});
    }
    EXPECT_EQ(Valid(), FOREVER);
    auto* const keys = core.Adopt(new Point3Control);
    keys->SetKey(0, {0, 0, 0});
    keys->SetKey(100, {0, 0, 5});
    m->Params()->SetController(XFormModifier::kPosition, keys);
    EXPECT_EQ(Valid(50), Interval(50, 50));
    const Point3 before = Result(0).verts[0];
    ExpectNear(Result(50).verts[0], before + Point3(0, 0, 2.5f));
    EXPECT_EQ(Valid(200), Interval(100, TIME_PosInfinity));
}

TEST_F(DeformTest, BendFollowsAnArc) {
    auto* const m = Put(new BendModifier);
    EXPECT_EQ(Result().verts, tri->mesh.verts) << "no angle, no change";
    m->Params()->SetValue(BendModifier::kAngle, 0, 90.0f);
    const float radius = 4 / (float(std::numbers::pi) / 2); // 90 degrees over the height 4
    for (size_t v = 0; v < tri->mesh.verts.size(); ++v) {
        const Point3 p = tri->mesh.verts[v], q = Result().verts[v];
        EXPECT_FLOAT_EQ(q.y, p.y);
        // On the circle about (radius, 0) whose radius is that of its layer, at the angle of its height.
        EXPECT_NEAR(std::hypot(radius - q.x, q.z), radius - p.x, 1e-4f);
        EXPECT_NEAR(std::atan2(q.z, radius - q.x), p.z / radius, 1e-5f);
    }
    m->Params()->SetValue(BendModifier::kDirection, 0, 90.0f);
    for (size_t v = 0; v < tri->mesh.verts.size(); ++v)
        EXPECT_NEAR(Result().verts[v].x, tri->mesh.verts[v].x, 1e-5f) << "now toward Y";
}

TEST_F(DeformTest, NoiseMovesWithinItsStrength) {
    auto* const m = Put(new NoiseModifier);
    m->Params()->SetValue(NoiseModifier::kStrength, 0, Point3(0, 0, 3));
    m->Params()->SetValue(NoiseModifier::kWaveSize, 0, 0.7f);
    bool moved = false;
    const std::vector<Point3> first = Result().verts;
    for (size_t v = 0; v < first.size(); ++v) {
        const Point3 d = first[v] - tri->mesh.verts[v];
        EXPECT_EQ(d.x, 0);
        EXPECT_EQ(d.y, 0);
        EXPECT_LE(std::abs(d.z), 3.3f);
        moved |= d.z != 0;
    }
    EXPECT_TRUE(moved);
    m->Params()->SetValue(NoiseModifier::kSeed, 0, 1);
    EXPECT_NE(Result().verts, first);
    m->Params()->SetValue(NoiseModifier::kSeed, 0, 0);
    EXPECT_EQ(Result().verts, first);
}

TEST_F(DeformTest, ModifiersWorkOnShapesToo) {
    auto* const shape = new ShapeObject;
    shape->shape.splines.resize(1);
    shape->shape.splines[0].AddKnot({1, 0, 0});
    shape->shape.splines[0].AddKnot({2, 0, 0});
    Node* const line = core.CreateNode("line", shape);
    auto* const m = core.Adopt(new XFormModifier);
    m->Params()->SetValue(XFormModifier::kPosition, 0, Point3(0, 0, 3));
    line->AddModifier(m);
    auto* const moved = dynamic_cast<ShapeObject*>(line->EvalWorldState(0).obj);
    ASSERT_NE(moved, nullptr);
    EXPECT_EQ(moved->shape.splines[0].knots[1].point, Point3(2, 0, 3));
    EXPECT_EQ(moved->shape.splines[0].knots[1].inVec, Point3(2, 0, 3));
    EXPECT_EQ(shape->shape.splines[0].knots[1].point, Point3(2, 0, 0));
}

TEST_F(DeformTest, MorphAddsTargetsByTheirWeights) {
    const std::vector<Point3> base = tri->mesh.verts;
    std::vector<Point3> goal = base;
    goal[3] += Point3(1, 2, 3);
    MorphTarget dense;
    dense.name = "all";
    dense.deltas.assign(base.size(), Point3(0, 0, 1));
    MorphTarget one = MorphBetween("one", base, goal);
    EXPECT_EQ(one.vertices, std::vector<int>{3});
    one.vertices.push_back(1000000); // ignored
    one.deltas.push_back({9, 9, 9});
    auto* const m = Put(new MorphModifier({one, dense}));
    EXPECT_EQ(Result().verts, base);
    m->SetWeight(0, 0, 0.5f);
    EXPECT_EQ(Result().verts[3], base[3] + Point3(0.5f, 1, 1.5f));
    EXPECT_EQ(Result().verts[0], base[0]);
    m->SetWeight(1, 0, -2);
    ExpectNear(Result().verts[3], base[3] + Point3(0.5f, 1, -0.5f));
    EXPECT_EQ(m->SubAnimName(1), "all");
    EXPECT_EQ(Valid(), FOREVER);

    auto* const keys = core.Adopt(new FloatControl);
    keys->SetKey(0, 0);
    keys->SetKey(100, 1);
    EXPECT_TRUE(m->SetWeightController(1, keys));
    EXPECT_FALSE(m->SetWeightController(1, core.Adopt(new PositionControl)));
    EXPECT_EQ(Valid(25), Interval(25, 25));
    EXPECT_FLOAT_EQ(Result(25).verts[0].z, base[0].z + 0.25f);
    keys->SetKey(25, 0.5f);
    EXPECT_FLOAT_EQ(Result(25).verts[0].z, base[0].z + 0.5f) << "a new key comes through";
    EXPECT_TRUE(m->SetWeightController(1, nullptr));
    EXPECT_FLOAT_EQ(Result(25).verts[0].z, base[0].z - 2);
    RemapDir remap;
    auto* const copy = core.Adopt(static_cast<MorphModifier*>(remap.CloneRef(m)));
    EXPECT_EQ(copy->NumTargets(), 2);
}

struct CacheTest : DeformTest {
    std::vector<int> read;
    std::shared_ptr<MeshFrames> Frames(std::vector<TimeValue> times, size_t bytes = size_t(1) << 30) {
        return std::make_shared<MeshFrames>(
            std::move(times),
            [this](int i) {
                read.push_back(i);
                if (i == 7) throw Error("frame 7 is broken");
                std::vector<Point3> points = tri->mesh.verts;
                for (Point3& p : points) p.z = float(i);
                return points;
            },
            bytes);
    }
};

TEST_F(CacheTest, FramesAreInterpolatedOrHeld) {
    auto* const straight = Put(new MeshCacheModifier(Frames({100, 200, 400})));
    EXPECT_EQ(Result(0).verts[0].z, 0);
    EXPECT_EQ(Valid(0), Interval(TIME_NegInfinity, 100));
    EXPECT_EQ(Result(150).verts[0].z, 0.5f);
    EXPECT_EQ(Valid(150), Interval(150, 150));
    EXPECT_EQ(Result(200).verts[0].z, 1);
    EXPECT_EQ(Result(250).verts[0].z, 1.25f);
    EXPECT_EQ(Result(1000).verts[0].z, 2);
    EXPECT_EQ(Valid(1000), Interval(400, TIME_PosInfinity));
    EXPECT_EQ(node->EvalWorldState(150).obj->ChannelValidity(150, TOPO_CHAN_NUM), FOREVER);
    straight->DisableMod();
    Put(new MeshCacheModifier(Frames({100, 200, 400}), false));
    EXPECT_EQ(Result(199).verts[0].z, 0);
    EXPECT_EQ(Valid(199), Interval(100, 199));
    EXPECT_EQ(Result(200).verts[0].z, 1);
    EXPECT_EQ(Valid(300), Interval(200, 399));
    EXPECT_EQ(Valid(50), Interval(TIME_NegInfinity, 100));
}

TEST_F(CacheTest, FramesAreReadOnceWhileMemoryLasts) {
    Put(new MeshCacheModifier(Frames({0, 10, 20, 30})));
    for (const TimeValue t : {5, 15, 5, 25, 15}) Result(t);
    EXPECT_EQ(read, (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(CacheTest, OldFramesLeaveMemory) {
    const size_t frame = tri->mesh.verts.size() * sizeof(Point3);
    const auto frames = Frames({0, 10, 20, 30, 40}, 3 * frame);
    std::string error;
    for (const int i : {0, 1, 2, 0, 3}) EXPECT_NE(frames->Get(i, error), nullptr);
    EXPECT_EQ(frames->Kept(), 3);
    read.clear();
    frames->Get(0, error);
    EXPECT_TRUE(read.empty()) << "used lately";
    frames->Get(1, error);
    EXPECT_EQ(read, std::vector<int>{1}) << "the oldest left";
    EXPECT_EQ(error, "");
    const auto tight = Frames({0, 10}, 1);
    tight->Get(0, error);
    tight->Get(1, error);
    EXPECT_EQ(tight->Kept(), 2) << "two are always kept";
}

TEST_F(CacheTest, ABrokenFrameChangesNothingAndIsLogged) {
    Core::Scope current(core);
    std::vector<std::string> lines;
    core.Log();
    static_cast<HostLog*>(core.Log())->SetSink([&](int, const std::string& line) { lines.push_back(line); });
    auto frames = Frames({0, 1, 2, 3, 4, 5, 6, 7});
    frames->Put(2, std::vector<Point3>(3));
    Put(new MeshCacheModifier(frames, false));
    EXPECT_EQ(Result(7).verts, tri->mesh.verts);
    EXPECT_EQ(Result(2).verts, tri->mesh.verts);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NE(lines[0].find("n: frame 7 is broken"), std::string::npos) << lines[0];
    EXPECT_NE(lines[1].find("another number of vertices"), std::string::npos);
}

} // namespace
