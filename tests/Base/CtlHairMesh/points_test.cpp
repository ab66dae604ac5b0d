// The flat point space, failure, bounds.

#include <gtest/gtest.h>

#include <filesystem>

#include "Base/EngineFixture.h"
#include "DebugTools/Assert.h"

namespace {

using namespace engine;

TEST(PointSpace, CountsTheKnotsOfExistingStrands) {
    Mesh m = FlatGrid(2, 1);
    HairParams p = PlainFur();
    Emitter emitter(m);
    CtlHairMesh control(&emitter);
    ASSERT_TRUE(control.Evaluate(0, p));
    EXPECT_EQ(control.PointCount(), 9 * 5);
    p.SetInt(pid_knots, 7);
    control.Reset();
    ASSERT_TRUE(control.Evaluate(0, p));
    EXPECT_EQ(control.PointCount(), 9 * 7);
    for (int v = 0; v < 9; ++v) EXPECT_EQ(control.Strand(v)->KnotCount(), 7);

    emitter.mesh.faceSel.SetSize(8);
    emitter.mesh.faceSel.Set(0); // vertices 0, 1, 4
    p.faceSelection.type = 1;
    control.Reset();
    ASSERT_TRUE(control.Evaluate(0, p));
    EXPECT_EQ(control.PointCount(), 3 * 7);
    for (const int v : {2, 3, 5, 6, 7, 8}) EXPECT_EQ(control.Strand(v), nullptr);
    const Matrix3 up = TransMatrix({0, 0, 10});
    EXPECT_EQ(control.GetPoint(14, up), control.Strand(4)->knots[0] + Point3(0, 0, 10));
    EXPECT_EQ(control.GetPoint(20, up), control.Strand(4)->knots[6] + Point3(0, 0, 10));
}

TEST(PointSpace, ASetPointRebuildsTheSpline) {
    Emitter emitter(OneTriangle());
    CtlHairMesh control(&emitter);
    ASSERT_TRUE(control.Evaluate(0, PlainFur()));
    const float before = control.Strand(1)->Length();
    control.SetPoint(5 + 4, {1, 3, 1});
    const VertexStrand& s = *control.Strand(1);
    EXPECT_EQ(s.knots[4], Point3(1, 3, 1));
    EXPECT_FALSE(s.splineDirty);
    EXPECT_GT(s.out[3].y, 0.1f);
    EXPECT_GT(s.Length(), before + 1);
}

TEST(PointSpace, WrongIndicesAreReportedOnce) {
    static int reports = 0;
    const auto logFile = std::filesystem::temp_directory_path() / "velmar_points_test.log";
    LogSetFileName(nullptr, logFile.c_str());
    LogSetCrashCopyName(nullptr, logFile.c_str());
    const auto former = GetDiagSystem()->assertCallback.exchange([](const char*) { return ++reports > 0; });
    {
        Emitter emitter(OneTriangle());
        CtlHairMesh control(&emitter);
        ASSERT_TRUE(control.Evaluate(0, PlainFur()));
        const auto knots = control.Strand(2)->knots;
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(control.GetPoint(15, TransMatrix({1, 1, 1})), Point3());
            EXPECT_EQ(control.GetPoint(-1, Matrix3()), Point3());
            EXPECT_EQ(reports, 1);
        }
        for (int i = 0; i < 2; ++i) {
            control.SetPoint(15, {9, 9, 9});
            control.SetPoint(-3, {9, 9, 9});
            EXPECT_EQ(reports, 2);
        }
        EXPECT_EQ(control.Strand(2)->knots, knots);
        for (const int k : {0, 14, -1, 1000}) EXPECT_EQ(control.Strand(0)->ControlPoint(k), Point3());
        EXPECT_EQ(reports, 3);
    }
    GetDiagSystem()->assertCallback = former;
    LogSetCopyOnClose(nullptr, false);
    LogSetFileName(nullptr, nullptr); // closes the file
    std::filesystem::remove(logFile);
}

TEST(ControlMesh, AMissingMeshLeavesTheRecordAsItWas) {
    HairParams p = PlainFur();
    p.SetInt(pid_fixDensity, 1);
    Emitter emitter(OneTriangle());
    emitter.meshAt = [&](TimeValue) { return emitter.mesh; };
    CtlHairMesh control(&emitter);
    ASSERT_TRUE(control.Evaluate(0, p));
    const Mesh* mesh = control.CurrentMesh();
    emitter.missing = true;
    EXPECT_FALSE(control.Evaluate(160, p));
    EXPECT_EQ(control.Time(), 0);
    EXPECT_EQ(control.CurrentMesh(), mesh);
    ASSERT_NE(control.Reference(), nullptr);
    EXPECT_EQ(control.Strand(0)->KnotCount(), 5);
    emitter.missing = false;
    EXPECT_TRUE(control.Evaluate(160, p));
    EXPECT_EQ(control.Time(), 160);
}

TEST(ControlMesh, AMissingMeshFromTheStart) {
    Emitter emitter{Mesh()};
    emitter.missing = true;
    CtlHairMesh control(&emitter);
    HairParams p = PlainFur();
    EXPECT_FALSE(control.Evaluate(0, p));
    p.SetInt(pid_fixShape, 1);
    EXPECT_FALSE(control.Evaluate(0, p));
    EXPECT_EQ(control.CurrentMesh(), nullptr);
    EXPECT_EQ(control.VertexCount(), 0);
}

TEST(ControlMesh, AStillEmitterIsEvaluatedOnce) {
    Emitter emitter(OneTriangle());
    CtlHairMesh control(&emitter);
    const HairParams p = PlainFur();
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(control.Evaluate(160 * i, p));
    EXPECT_EQ(emitter.asked.size(), 1u);
    control.Reset();
    ASSERT_TRUE(control.Evaluate(0, p));
    EXPECT_EQ(emitter.asked.size(), 2u);
}

TEST(ControlMesh, BoundsKeepTheSameStrands) {
    HairParams p = PlainFur();
    p.SetInt(pid_randSeed, 9);
    Emitter emitter(FlatGrid(10, 2));
    CtlHairMesh control(&emitter);
    ASSERT_TRUE(control.Evaluate(0, p));
    const Box3 all = control.Bounds(p, 100);
    EXPECT_EQ(all.pmin, Point3(-1, -1, 0));
    EXPECT_NEAR(all.pmax.z, 1.0f, 1e-6f);
    EXPECT_EQ(control.Bounds(p, 1).pmin, all.pmin) << "kept until the strands change";
    control.Reset();
    ASSERT_TRUE(control.Evaluate(0, p));
    Box3 some;
    HairRandom r;
    r.Seed(9);
    for (int v = 0; v < control.VertexCount(); ++v)
        if (r.Draw() * 100 <= 5 * 32767) some += control.Strand(v)->Bounds();
    const Box3 kept = control.Bounds(p, 5);
    EXPECT_EQ(kept.pmin, some.pmin);
    EXPECT_EQ(kept.pmax, some.pmax);
    EXPECT_LT(kept.Width().x * kept.Width().y, 4.0f);
}

TEST(ControlMesh, HairWithoutModelHairsGrowsNothing) {
    HairParams p = PlainFur();
    p.isFur = false;
    Emitter emitter(OneTriangle());
    CtlHairMesh control(&emitter);
    ASSERT_TRUE(control.Evaluate(0, p));
    for (int v = 0; v < 3; ++v) EXPECT_EQ(control.Strand(v), nullptr);
}

} // namespace
