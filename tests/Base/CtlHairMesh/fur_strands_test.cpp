// Control strands of fur: where they point, how they bend, what they draw.

#include <gtest/gtest.h>

#include "Base/EngineFixture.h"
#include "Base/HairMath.h"

namespace {

using namespace engine;

struct Grown {
    Emitter emitter;
    CtlHairMesh control;
    Grown(Mesh m, const HairParams& p, const Matrix3& tm = Matrix3()) : emitter(std::move(m)), control(&emitter) {
        emitter.objectTM = tm;
        EXPECT_TRUE(control.Evaluate(0, p));
    }
    const VertexStrand& operator[](int v) const { return *control.Strand(v); }
    Point3 Tip(int v) const { return control.Strand(v)->knots.back(); }
};

HairParams Leaning(float angle, float direction) {
    HairParams p = PlainFur();
    p.SetInt(pid_fur_useLeaning, 1);
    p.SetFloat(pid_fur_leanAngle, angle);
    p.SetFloat(pid_fur_leanDir, direction);
    p.SetFloat(pid_fur_leanAmtRand, 0);
    p.SetFloat(pid_fur_leanDirRand, 0);
    p.SetInt(pid_fur_leanDirChan, -1);
    p.SetInt(pid_fur_leanAbsolute, 0);
    return p;
}

HairParams Polar(float amount, float direction) {
    HairParams p = PlainFur();
    p.SetInt(pid_fur_useBending, 1);
    p.SetInt(pid_fur_bendStyle, 0);
    p.SetFloat(pid_fur_bendAmount, amount);
    p.SetFloat(pid_fur_bendDir, direction);
    p.SetFloat(pid_fur_bendAmtRand, 0);
    p.SetFloat(pid_fur_bendDirRand, 0);
    p.SetInt(pid_fur_bendDirChan, -1);
    p.SetInt(pid_fur_bendAbsolute, 0);
    return p;
}

uint32_t Skipped(uint32_t seed, uint64_t draws) {
    HairRandom r;
    r.Seed(seed);
    r.Skip(draws);
    return r.state;
}

TEST(FurStrands, StraightOnesStandOnTheNormals) {
    HairParams p = PlainFur();
    p.SetFloat(pid_length, 2.0f);
    const Grown g(OneTriangle(), p);
    for (int v = 0; v < 3; ++v) {
        const VertexStrand& s = g[v];
        ASSERT_EQ(s.KnotCount(), 5);
        EXPECT_EQ(s.splineSource, SPLINE_FROM_KNOTS);
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(s.knots[size_t(i)], s.root + Point3(0, 0, 0.5f * float(i)));
        }
        EXPECT_EQ(s.display[0], s.root - Point3(0, 0, 5));
        EXPECT_EQ(s.display[1], s.root + Point3(0, 0, 5));
        EXPECT_NEAR(s.Length(), 2.0f, 1e-5f);
        Point3 bend;
        EXPECT_FALSE(s.BendDirection(bend));
    }
}

TEST(FurStrands, ControlPointsByFlatIndex) {
    const Grown g(OneTriangle(), PlainFur());
    const VertexStrand& s = g[1];
    EXPECT_EQ(s.ControlPoint(1), s.knots[0]);
    EXPECT_EQ(s.ControlPoint(2), s.out[0]);
    EXPECT_EQ(s.ControlPoint(3), s.in[1]);
    EXPECT_EQ(s.ControlPoint(4), s.knots[1]);
    EXPECT_EQ(s.ControlPoint(12), s.in[4]);
    EXPECT_EQ(s.ControlPoint(13), s.knots[4]);
    for (int k = 1; k <= 13; ++k) {
        EXPECT_POINT_NEAR(s.ControlPoint(k), (s.root + Point3(0, 0, float(k - 1) / 12.0f)), 1e-6f);
    }
}

TEST(FurStrands, LengthIsAWorldLength) {
    HairParams p = PlainFur();
    Matrix3 tm = TurnedAndMoved();
    for (int i = 0; i < 3; ++i) tm.SetRow(i, tm.GetRow(i) * 4.0f);
    const Grown g(Sphere(1, 4, 5), p, tm);
    for (int v = 0; v < g.control.VertexCount(); ++v)
        EXPECT_NEAR(Length((g.Tip(v) - g[v].root) * 1.0f) * 4.0f, 1.0f, 1e-5f);
}

TEST(FurStrands, AScaledEmitterGrowsStraightOut) {
    Mesh m = OneTriangle();
    m.verts[2] = {0, 1, 1}; // normal (0, -1, 1)
    for (const bool leaning : {false, true}) {
        HairParams p = leaning ? Leaning(0, 0) : PlainFur();
        p.SetInt(pid_fur_useBending, 1);
        p.SetInt(pid_fur_bendStyle, 1);
        Matrix3 tm;
        tm.SetRow(2, {0, 0, 3});
        const Grown g(m, p, tm);
        const Point3 across = Normalize(CrossProd(Point3(1, 0, 0), Point3(0, 1, 3)));
        const Point3 grown = VectorTransform(g.Tip(0) - g[0].root, tm);
        EXPECT_POINT_NEAR(grown, across, 1e-5f);
        EXPECT_POINT_NEAR(VectorTransform(g[0].knots[2] - g[0].root, tm), across * 0.5f, 1e-4f);
    }
}

TEST(FurStrands, LeanByExactlyTheAngleTowardTheDirection) {
    for (const float angle : {0.0f, 30.0f, 90.0f, 150.0f})
        for (const float direction : {0.0f, 45.0f, 200.0f}) {
            const Grown g(OneTriangle(), Leaning(angle, direction));
            const float a = angle * 0.017453292f, d = direction * 0.017453292f;
            // Above +Z the frame is X, Y, Z.
            const Point3 expected(sinf(a) * cosf(d), sinf(a) * sinf(d), cosf(a));
            for (int v = 0; v < 3; ++v) EXPECT_POINT_NEAR(g.Tip(v), (g[v].root + expected), 1e-6f);
        }
}

TEST(FurStrands, LeanInTheFrameOfTheMode) {
    Mesh m = OneTriangle();
    m.verts[2] = {0, 0, -1}; // normal +Y
    MeshMap map;
    map.tv = {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}}; // V runs along the mesh's X, U along -Z
    map.tf = {{{0, 1, 2}}};
    m.maps[1] = map;
    const Matrix3 tm = TurnedAndMoved();
    const auto direction = [&](int mode) {
        HairParams p = Leaning(90, 0);
        p.SetInt(pid_fur_leanDirChan, mode);
        const Grown g(m, p, tm);
        return g.Tip(0) - g[0].root;
    };
    EXPECT_POINT_NEAR(direction(-1), Point3(-1, 0, 0), 1e-5f);                     // normal's XY
    EXPECT_POINT_NEAR(direction(1), Point3(0, 0, -1), 1e-5f);                      // U
    EXPECT_POINT_NEAR(direction(2), Point3(-1, 0, 0), 1e-5f);                      // missing channel: normal
    EXPECT_POINT_NEAR(direction(0), Point3(-1, 0, 0), 1e-5f);                      // any other: normal
    EXPECT_POINT_NEAR(direction(-2), Point3(1, 0, 0), 1e-5f);                      // emitter
    EXPECT_POINT_NEAR(VectorTransform(direction(-3), tm), Point3(1, 0, 0), 1e-5f); // world
}

TEST(FurStrands, ArcTowardTheLean) {
    HairParams p = Leaning(60, 0);
    p.SetInt(pid_fur_useBending, 1);
    p.SetInt(pid_fur_bendStyle, 1);
    p.SetInt(pid_knots, 33);
    const Grown g(OneTriangle(), p);
    const VertexStrand& s = g[0];
    const float theta = 60 * 0.017453292f;
    const Point3 chord(sinf(theta), 0, cosf(theta));
    EXPECT_POINT_NEAR(g.Tip(0), chord * (sinf(theta) / theta), 1e-5f);
    EXPECT_NEAR(s.Length(), 1.0f, 1e-3f);
    // All knots lie on the circle of radius 1 / 2 theta around a point beside the root; a cubic strays a little.
    const float radius = 1 / (2 * theta);
    for (const Point3& k : s.knots) EXPECT_NEAR(Length(k - Point3(radius, 0, 0)), radius, 2e-3f * radius);
    EXPECT_GT(DotProd(Normalize(s.knots[1] - s.knots[0]), Point3(0, 0, 1)), 0.999f) << "it starts along the normal";
    Point3 bend;
    EXPECT_TRUE(s.BendDirection(bend));
    EXPECT_NEAR(Length(bend), 1.0f, 1e-6f);
}

TEST(FurStrands, ArcsAlongAndAgainstTheNormalAreStraight) {
    const auto straight = [](float angle) {
        HairParams p = Leaning(angle, 0);
        p.SetInt(pid_fur_useBending, 1);
        p.SetInt(pid_fur_bendStyle, 1);
        const Grown g(OneTriangle(), p);
        const Point3 middle = (g[0].root + g.Tip(0)) * 0.5f;
        return Length(g[0].knots[2] - middle) < 1e-5f && std::fabs(Length(g.Tip(0)) - 1) < 1e-5f;
    };
    EXPECT_TRUE(straight(0));
    EXPECT_TRUE(straight(165)); // cos is -0.966
    EXPECT_TRUE(straight(180));
    EXPECT_FALSE(straight(160)); // cos is -0.940
    EXPECT_FALSE(straight(5));
}

TEST(FurStrands, PolarBendTurnsBy180DegreesAtAmountOne) {
    HairParams p = Polar(1, 0);
    p.SetInt(pid_knots, 65);
    const Grown g(OneTriangle(), p);
    // The tip lies at 2 / pi of the length from the root, along the lean direction.
    EXPECT_POINT_NEAR(g.Tip(0), Point3(0, 0, 2 / HairMath::kPi), 1e-5f);
    const auto& k = g[0].knots;
    const Point3 first = Normalize(k[1] - k[0]), last = Normalize(k[64] - k[63]);
    EXPECT_LT(DotProd(first, last), -0.99f);
    EXPECT_NEAR(std::fabs(k[32].x), 1 / HairMath::kPi, 0.01f);
    EXPECT_GT(last.x, 0.99f) << "it arrives turned toward the bend direction";
}

TEST(FurStrands, ANegativeAmountBendsToTheOtherSide) {
    const Grown a(OneTriangle(), Polar(0.5f, 30)), b(OneTriangle(), Polar(-0.5f, 30)),
        c(OneTriangle(), Polar(0.5f, 210));
    for (size_t i = 0; i < 5; ++i) {
        const Point3 mirrored(-a[0].knots[i].x, -a[0].knots[i].y, a[0].knots[i].z);
        EXPECT_POINT_NEAR(b[0].knots[i], mirrored, 1e-6f);
        EXPECT_POINT_NEAR(b[0].knots[i], c[0].knots[i], 1e-6f);
    }
    EXPECT_GT(std::fabs(a[0].knots[2].x), 0.05f);
}

TEST(FurStrands, ATinyBendIsNone) {
    const Grown a(OneTriangle(), Polar(0.001f, 30)), b(OneTriangle(), PlainFur());
    EXPECT_EQ(a[0].knots, b[0].knots);
}

TEST(FurStrands, AbsoluteWithoutItsDistributionIsPolar) {
    HairParams p = Leaning(40, 20), q = p;
    q.SetInt(pid_fur_leanAbsolute, 1);
    const Grown a(OneTriangle(), p), b(OneTriangle(), q);
    EXPECT_EQ(a[0].knots, b[0].knots);
}

TEST(FurStrands, RandomLeanIsDrawnAngleThenDirection) {
    HairParams p = Leaning(30, 10);
    p.SetFloat(pid_fur_leanAmtRand, 0.5f);
    p.SetFloat(pid_fur_leanDirRand, 0.25f);
    p.SetInt(pid_randSeed, 77);
    const Grown g(OneTriangle(), p);
    HairRandom r;
    r.Seed(77);
    for (int v = 0; v < 3; ++v) {
        const float s1 = float(r.Draw() - 16383) / 16383.0f, s2 = float(r.Draw() - 16383) / 16383.0f;
        r.Skip(3);
        const float a = (30 + 45 * s1) * 0.017453292f, d = (10 + 22.5f * s2) * 0.017453292f;
        EXPECT_POINT_NEAR(g.Tip(v), (g[v].root + Point3(sinf(a) * cosf(d), sinf(a) * sinf(d), cosf(a))), 1e-5f);
    }
    EXPECT_EQ(g.control.RandomState().state, r.state);
}

TEST(FurStrands, DrawsPerVertexForEverySwitch) {
    for (int mask = 0; mask < 16; ++mask) {
        HairParams p = Leaning(30, 10);
        p.SetInt(pid_randSeed, 5);
        p.SetInt(pid_fur_useLeaning, mask & 1);
        p.SetInt(pid_fur_useBending, mask >> 1 & 1);
        p.SetInt(pid_fur_bendStyle, mask >> 2 & 1);
        p.SetFloat(pid_vdirRand, mask & 8 ? 0.4f : 0.0f);
        const int draws = (mask & 1 ? 2 : 0) + ((mask & 6) == 2 ? 2 : 0) + 3;
        Mesh m = FlatGrid(3, 1);
        const Grown all(m, p);
        EXPECT_EQ(all.control.RandomState().state, Skipped(5, uint64_t(draws) * m.verts.size())) << mask;
        m.faceSel.SetSize(m.getNumFaces());
        m.faceSel.Set(7);
        p.faceSelection.type = 1;
        const Grown some(m, p);
        EXPECT_EQ(some.control.RandomState().state, all.control.RandomState().state) << mask;
        for (int v = 0; v < m.getNumVerts(); ++v)
            EXPECT_TRUE(!some.control.Strand(v) || some[v].knots == all[v].knots) << v;
    }
}

TEST(FurStrands, DirectionRandomTiltsByAtMost90Degrees) {
    HairParams p = PlainFur();
    p.SetFloat(pid_vdirRand, 1.0f);
    const Grown g(Sphere(1, 12, 16), p);
    float least = 2;
    for (int v = 0; v < g.control.VertexCount(); ++v) {
        const Point3 d = g.Tip(v) - g[v].root;
        EXPECT_NEAR(Length(d), 1.0f, 1e-4f);
        EXPECT_EQ(g[v].knots[0], g[v].root);
        least = std::min(least, DotProd(d, g[v].normal));
    }
    EXPECT_GT(least, -0.01f);
    EXPECT_LT(least, 0.3f);
}

TEST(FurStrands, FewerThanTwoKnotsGrowNothing) {
    for (const int knots : {0, 1}) {
        HairParams p = PlainFur();
        p.SetInt(pid_knots, knots);
        Engine e(OneTriangle(), p);
        for (int v = 0; v < 3; ++v) EXPECT_EQ(e.control.Strand(v), nullptr);
        EXPECT_FALSE(e.prepared);
        EXPECT_EQ(e.control.PointCount(), 0);
    }
}

} // namespace
