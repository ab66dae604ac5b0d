// Shape and density fixing.

#include <gtest/gtest.h>

#include "Base/EngineFixture.h"

namespace {

using namespace engine;

// At frame 0 a flat sheet; later it rises, and its right half folds up.
Mesh Folding(TimeValue t) {
    Mesh m = FlatGrid(4, 2);
    const float f = float(t) / 1600.0f;
    for (Point3& v : m.verts) {
        v.z += f;
        if (v.x > 0) v = {v.x * cosf(f), v.y, v.z + v.x * sinf(f)};
    }
    return m;
}

HairParams Fixed(bool follow) {
    HairParams p = PlainFur();
    p.SetInt(pid_fixShape, 1);
    p.SetInt(pid_fixFollow, follow);
    p.SetInt(pid_fixRefFrame, 0);
    p.SetFloat(pid_vdirRand, 0.3f);
    return p;
}

// Fur on the folding sheet, fixed at frame 0.
struct FixedFur {
    Emitter emitter{Mesh()};
    CtlHairMesh control{&emitter};
    HairParams params;
    std::vector<VertexStrand> before; ///< at frame 0
    explicit FixedFur(bool follow) : params(Fixed(follow)) {
        emitter.meshAt = Folding;
        EXPECT_TRUE(control.Evaluate(0, params));
        for (int v = 0; v < control.VertexCount(); ++v) before.push_back(*control.Strand(v));
    }
};

TEST(ShapeFixing, StandingStillChangesNoBit) {
    for (const bool follow : {false, true})
        for (const bool density : {false, true}) {
            HairParams fixed = WildFur();
            fixed.SetInt(pid_fixShape, 1);
            fixed.SetInt(pid_fixFollow, follow);
            fixed.SetInt(pid_fixDensity, density);
            fixed.SetInt(pid_fixRefFrame, 3);
            const auto grow = [](const HairParams& p, TimeValue t) {
                Engine e(Sphere(1, 6, 8), p);
                e.emitter.objectTM = TurnedAndMoved();
                e.control.Reset();
                e.Begin({}, t);
                return e.Strands();
            };
            const auto plain = grow(WildFur(), 0);
            ASSERT_FALSE(plain.empty());
            for (const TimeValue t : {0, 160, 480, 1600}) EXPECT_TRUE(grow(fixed, t) == plain);
        }
}

TEST(ShapeFixing, RootsRideOnTheirVertices) {
    FixedFur fur(false);
    auto& [emitter, control, params, before] = fur;
    ASSERT_TRUE(control.Evaluate(1600, params));
    const Mesh now = Folding(1600);
    for (int v = 0; v < control.VertexCount(); ++v) {
        const VertexStrand& s = *control.Strand(v);
        EXPECT_EQ(s.root, now.verts[size_t(v)]);
        EXPECT_EQ(s.knots[0], s.root);
        for (size_t i = 0; i < 5; ++i)
            EXPECT_POINT_NEAR((s.knots[i] - s.root), (before[size_t(v)].knots[i] - before[size_t(v)].root), 1e-5f);
    }
    // Back at the fixing frame everything is as it was.
    ASSERT_TRUE(control.Evaluate(0, params));
    for (int v = 0; v < control.VertexCount(); ++v) EXPECT_EQ(control.Strand(v)->knots, before[size_t(v)].knots);
}

TEST(ShapeFixing, FollowTurnsWithTheSurface) {
    FixedFur fur(true);
    auto& [emitter, control, params, before] = fur;
    ASSERT_TRUE(control.Evaluate(800, params));
    // The right column has turned by half a radian about -Y, the left one not at all.
    const float a = 0.5f;
    for (int y = 0; y < 5; ++y)
        for (const int x : {0, 4}) {
            const size_t v = size_t(y * 5 + x);
            const VertexStrand& s = *control.Strand(int(v));
            for (size_t i = 0; i < 5; ++i) {
                const Point3 d = before[v].knots[i] - before[v].root;
                const Point3 turned =
                    x == 0 ? d : Point3(d.x * cosf(a) - d.z * sinf(a), d.y, d.x * sinf(a) + d.z * cosf(a));
                EXPECT_POINT_NEAR((s.knots[i] - s.root), turned, 1e-4f);
            }
            EXPECT_NEAR(s.Length(), before[v].Length(), 1e-4f);
        }
}

TEST(ShapeFixing, FacesOfTheFixingFrameGrow) {
    Emitter emitter{Mesh()};
    emitter.meshAt = [](TimeValue t) {
        Mesh m = FlatGrid(2, 1);
        m.faceSel.SetSize(8);
        m.faceSel.Set(t == 0 ? 1 : 6);
        return m;
    };
    HairParams p = Fixed(true);
    p.faceSelection.type = 1;
    CtlHairMesh control(&emitter);
    ASSERT_TRUE(control.Evaluate(160, p));
    EXPECT_TRUE(control.FaceSelected(1));
    EXPECT_FALSE(control.FaceSelected(6));
    EXPECT_FALSE(control.FaceSelected(100));
}

TEST(ShapeFixing, AnotherTopologyGrowsAnew) {
    Emitter emitter{Mesh()};
    emitter.meshAt = [](TimeValue t) { return t == 0 ? FlatGrid(2, 1) : FlatGrid(3, 1); };
    CtlHairMesh control(&emitter);
    const HairParams p = Fixed(true);
    ASSERT_TRUE(control.Evaluate(0, p));
    ASSERT_TRUE(control.Evaluate(160, p));
    EXPECT_EQ(control.VertexCount(), 16);
    for (int v = 0; v < 16; ++v) ASSERT_NE(control.Strand(v), nullptr);
    ASSERT_TRUE(control.Evaluate(0, p));
    EXPECT_EQ(control.VertexCount(), 9);
}

TEST(ShapeFixing, AsManyVerticesButFewerFaces) {
    Emitter emitter{Mesh()};
    emitter.meshAt = [](TimeValue t) {
        Mesh m = FlatGrid(4, 1);
        if (t != 0) m.faces.resize(1);
        return m;
    };
    Engine e(Mesh(), PlainFur()); // a run over such a mesh must not look beyond its faces
    e.emitter.meshAt = emitter.meshAt;
    e.params = Fixed(true);
    e.control.Reset();
    e.Begin({}, 0);
    const size_t all = e.Strands().size();
    e.Begin({}, 160);
    EXPECT_EQ(e.control.VertexCount(), 25);
    EXPECT_LT(e.Strands().size(), all);
}

TEST(DensityFixing, StrandNumbersStayWhileTheEmitterGrows) {
    const auto count = [](bool fixed, TimeValue t) {
        HairParams p = PlainFur();
        p.SetInt(pid_densType, 1);
        p.SetFloat(pid_densPerArea, 100.0f);
        p.SetInt(pid_fixDensity, fixed);
        p.SetInt(pid_fixRefFrame, 0);
        Engine e(Mesh(FlatGrid(4, 2)), p);
        e.emitter.meshAt = [](TimeValue at) { return FlatGrid(4, 2 + 2 * float(at) / 160.0f); };
        e.control.Reset();
        e.Begin({}, t);
        return e.run.TotalStrands();
    };
    EXPECT_NEAR(double(count(false, 0)), 400, 25);
    EXPECT_NEAR(double(count(false, 160)), 1600, 50);
    EXPECT_EQ(count(true, 0), count(false, 0));
    EXPECT_EQ(count(true, 160), count(true, 0));
}

TEST(DensityFixing, ReferenceIsTheMeshAtTheFixingFrame) {
    HairParams p = PlainFur();
    p.SetInt(pid_fixDensity, 1);
    p.SetInt(pid_fixRefFrame, 2);
    Emitter emitter{Mesh()};
    emitter.meshAt = Folding;
    emitter.placeAt = [](TimeValue t) { return TransMatrix({float(t), 0, 0}); };
    CtlHairMesh control(&emitter);
    ASSERT_TRUE(control.Evaluate(1600, p));
    const Mesh then = Folding(320);
    ASSERT_NE(control.Reference(), nullptr);
    ASSERT_EQ(control.Reference()->VertexCount(), 25);
    for (size_t v = 0; v < 25; ++v) EXPECT_EQ(control.Reference()->positions[v], then.verts[v] + Point3(320, 0, 0));
    for (const float area : control.Reference()->faceArea) EXPECT_NEAR(area, 0.125f, 1e-4f);
}

} // namespace
