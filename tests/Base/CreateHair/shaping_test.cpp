// Length, clumping, direction random, colours, orientation, thickness, curls.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "Base/CreateHair/Colors.h"
#include "Base/CreateHair/Curl.h"
#include "Base/CreateHair/Orientation.h"
#include "Base/CreateHair/Thickness.h"
#include "Base/EngineFixture.h"
#include "Base/HUtil/HairColor.h"

namespace {

using namespace engine;

// A distribution that always answers i / 255.
CurveShape Always(int i) {
    CurveShape c;
    for (const int k : {0, i - 1, i, i + 1, 255})
        if (k <= 255 && (c.knots.empty() || float(k) / 255.0f > c.knots.back().x))
            c.knots.push_back({float(k) / 255.0f, k == i ? 1.0f : 0.0f, CURVE_CORNER});
    c.Fit();
    return c;
}

TEST(Length, OfAStraightStrand) {
    HairParams p = PlainFur();
    for (const int i : {1, 51, 85, 128, 200, 254}) {
        p.SetRandCurve(pid_randDist_length, Always(i));
        const float l = float(i) / 255.0f, x = 4.0f * l;
        for (const StrandRecord& s : Grow(OneTriangle(), p)) {
            EXPECT_EQ(s.segments, int(std::ceil(x)));
            EXPECT_EQ(s.fraction, x - float(s.segments - 1));
            EXPECT_EQ(s.points, (s.segments - 1) * 5 + 1 + int(std::ceil(s.fraction * 5)));
            EXPECT_NEAR(ChordLength(s), l, 1e-5f);
            EXPECT_EQ(int(s.position.size()), s.points);
        }
    }
}

TEST(Length, OfHairIsTheParameter) {
    HairParams p = PlainFur();
    p.SetInt(pid_knots, 11);
    Engine e(OneTriangle(), p);
    // Hair takes its length as a share of its control strands.
    e.params.isFur = false;
    e.params.SetFloat(pid_length, 0.5f);
    for (const StrandRecord& s : e.Strands()) {
        EXPECT_EQ(s.segments, 5);
        EXPECT_EQ(s.fraction, 1.0f);
        EXPECT_EQ(s.points, 5 * 5 + 1);
        EXPECT_NEAR(ChordLength(s), 0.5f, 1e-5f);
    }
    e.params.SetFloat(pid_length, 1.5f);
    for (const StrandRecord& s : e.Strands()) EXPECT_EQ(s.segments, 10) << "never more than the control strands have";
    e.params.SetFloat(pid_length, 0.0f);
    EXPECT_TRUE(e.Strands().empty());
}

TEST(Length, ZeroDropsEveryStrand) {
    HairParams p = WildFur();
    p.SetRandCurve(pid_randDist_length, Always(0));
    EXPECT_TRUE(Grow(Sphere(1, 5, 6), p).empty());
}

TEST(Length, CutFactorShortens) {
    HairParams p = PlainFur();
    Engine e(OneTriangle(), p);
    e.control.SetCutFactors({0.5f, 0.5f, 0.5f});
    for (const StrandRecord& s : e.Strands()) EXPECT_EQ(s.segments, 4) << "without modelling cutters";
    e.params.SetInt(pid_useModCutters, 1);
    for (const StrandRecord& s : e.Strands()) EXPECT_NEAR(float(s.segments - 1) + s.fraction, 2.0f, 1e-5f);
    e.control.SetCutFactors({-1.0f}); // negative and missing entries count as 1
    for (const StrandRecord& s : e.Strands()) EXPECT_NEAR(float(s.segments - 1) + s.fraction, 4.0f, 1e-5f);
}

// What the length rule measures: chords between knots, the last one up to the fraction.
float KnotLength(const StrandRecord& s) {
    float length = 0;
    for (int i = 1; i <= s.segments; ++i)
        length += Length(s.control[size_t(3 * i)] - s.control[size_t(3 * i - 3)]) * (i == s.segments ? s.fraction : 1);
    return length;
}

TEST(DirectionRandom, KeepsRootsAndLengths) {
    HairParams p = PlainFur();
    p.SetInt(pid_fur_useLeaning, 1);
    p.SetFloat(pid_fur_leanAngle, 30.0f);
    p.SetFloat(pid_densPerFace, 5.0f);
    p.SetRandCurve(pid_randDist_length, Curve({{0, 0}, {0.4f, 1}, {0.6f, 1}, {0.7f, 0}, {1, 0}}));
    const auto plain = Grow(Sphere(1, 10, 12), p);
    p.SetFloat(pid_dirRand, 0.3f);
    const auto random = Grow(Sphere(1, 10, 12), p);
    ASSERT_EQ(plain.size(), random.size());
    size_t moved = 0;
    for (size_t i = 0; i < plain.size(); ++i) {
        EXPECT_EQ(plain[i].bary, random[i].bary);
        EXPECT_EQ(plain[i].root, random[i].root);
        EXPECT_POINT_NEAR(plain[i].position[0], random[i].position[0], 1e-6f);
        EXPECT_NEAR(KnotLength(plain[i]), KnotLength(random[i]), 1e-5f);
        moved += Length(plain[i].position.back() - random[i].position.back()) > 1e-3f;
    }
    EXPECT_GT(moved, plain.size() / 2);
}

TEST(DirectionRandom, ACutAtAJointHasNoFurtherPoint) {
    HairParams p = PlainFur();
    p.SetInt(pid_knots, 4);
    p.SetFloat(pid_dirRand, 0.4f);
    p.SetCurve(pid_curve_clumpShape, Curve({{0, 0}, {1, 0}}));
    p.SetRandCurve(pid_randDist_length, Always(85)); // a third: one segment of three
    const auto strands = Grow(OneTriangle(), p);
    ASSERT_FALSE(strands.empty());
    for (const StrandRecord& s : strands) {
        EXPECT_EQ(s.segments, 2);
        EXPECT_EQ(s.fraction, 0.0f);
        EXPECT_EQ(s.points, 6);
        EXPECT_NEAR(ChordLength(s), 1 / 3.0f, 1e-6f);
        EXPECT_EQ(s.width.size(), 6u);
    }
}

RC_GTEST_PROP(DirectionRandom, WeightsKeepTheirSumAndBounds, ()) {
    HairParams p = PlainFur();
    const float d = float(*rc::gen::inRange(1, 1001)) / 1000.0f;
    p.SetFloat(pid_dirRand, d);
    p.SetFloat(pid_densPerFace, 50.0f);
    p.SetInt(pid_randSeed, *rc::gen::inRange(0, 100000));
    for (const StrandRecord& s : Grow(OneTriangle(), p)) {
        RC_ASSERT(std::fabs(s.weights.x + s.weights.y + s.weights.z - 1.0f) < 1e-5f);
        float positive = 0;
        for (int i = 0; i < 3; ++i) positive += s.weights[i] > 0 ? s.weights[i] : 0;
        RC_ASSERT(positive < 1.0f + 3.0f * d);                                 // culling counts on it
        RC_ASSERT(s.weights.z > -d - 1e-4f && s.weights.z < 1.0f + d + 1e-4f); // the last one that is tested
    }
}

TEST(DirectionRandom, ShiftTakesInProportion) {
    Point3 w(0.2f, 0.6f, 0.2f);
    ShiftWeight(w, 0, 0.4f);
    EXPECT_POINT_NEAR(w, Point3(0.6f, 0.3f, 0.1f), 1e-6f);
    w = {1, 0.0004f, -0.0004f};
    ShiftWeight(w, 0, 0.5f); // the others count for nothing: half each
    EXPECT_POINT_NEAR(w, Point3(1.5f, -0.2496f, -0.2504f), 1e-6f);
    w = {0.5f, -0.25f, 0.75f};
    ShiftWeight(w, 2, -1.0f);
    EXPECT_POINT_NEAR(w, Point3(0.5f + 2 / 3.0f, -0.25f + 1 / 3.0f, -0.25f), 1e-6f);
}

HairParams Clumped(int attract) {
    HairParams p = PlainFur();
    p.SetInt(pid_fur_useLeaning, 1);
    p.SetFloat(pid_fur_leanAngle, 20.0f);
    p.SetFloat(pid_densPerFace, 12.0f);
    p.SetFloat(pid_clumpAmount, 1.0f);
    p.SetFloat(pid_clumpRadius, 100.0f);
    p.SetInt(pid_clumpAttract, attract);
    p.SetFloat(pid_clumpPerFace, 3.0f);
    p.SetFloat(pid_clumpPercent, 0.25f);
    return p;
}

TEST(Clumping, FullyToCornerStrands) {
    const Mesh mesh = FlatGrid(2, 2);
    Engine e(mesh, Clumped(0));
    for (const StrandRecord& s : e.Strands()) {
        // The nearest corner by the distance between the roots.
        int nearest = 0;
        const Face& f = mesh.faces[size_t(s.face)];
        for (int c = 1; c < 3; ++c)
            if (Length(mesh.verts[size_t(f.v[c])] - s.root) < Length(mesh.verts[size_t(f.v[nearest])] - s.root))
                nearest = c;
        EXPECT_POINT_NEAR(s.position.back(), e.control.Strand(f.v[nearest])->knots.back(), 1e-5f);
        EXPECT_EQ(s.position[0], s.root);
    }
}

TEST(Clumping, FullyToTheFirstStrandsOfTheFace) {
    const auto strands = Grow(OneTriangle(), Clumped(2));
    ASSERT_EQ(strands.size(), 12u);
    for (size_t i = 0; i < 12; ++i) {
        EXPECT_EQ(strands[i].attracted, i >= 3);
        size_t nearest = i;
        for (size_t a = 0; a < 3 && i >= 3; ++a)
            if (nearest == i ||
                Length(strands[a].root - strands[i].root) < Length(strands[nearest].root - strands[i].root))
                nearest = a;
        EXPECT_POINT_NEAR(strands[i].position.back(), strands[nearest].position.back(), 1e-5f);
    }
}

TEST(Clumping, NothingBeyondTheRadiusOrWithoutAmount) {
    HairParams p = Clumped(0);
    HairParams off = p;
    off.SetFloat(pid_clumpAmount, 0.0f);
    const auto plain = Grow(FlatGrid(2, 200), off);
    p.SetFloat(pid_clumpRadius, 0.001f);
    EXPECT_TRUE(Grow(FlatGrid(2, 200), p) == plain);
    for (const float attractors : {0.0f, 12.0f, 40.0f}) {
        HairParams q = Clumped(2);
        q.SetFloat(pid_clumpPerFace, attractors);
        const auto strands = Grow(FlatGrid(2, 200), q);
        for (size_t i = 0; i < strands.size(); ++i) EXPECT_EQ(strands[i].weights, strands[i].bary);
    }
}

TEST(Clumping, ACurveOfZeroHidesClumpingAndDirectionRandom) {
    HairParams p = Clumped(0);
    p.SetRandCurve(pid_randDist_length, Curve({{0, 0}, {1, 1}}));
    HairParams q = p;
    q.SetCurve(pid_curve_clumpShape, Curve({{0, 0}, {1, 0}}));
    q.SetFloat(pid_dirRand, 0.5f);
    p.SetFloat(pid_clumpAmount, 0.0f);
    const auto plain = Grow(FlatGrid(3, 2), p), hidden = Grow(FlatGrid(3, 2), q);
    ASSERT_EQ(plain.size(), hidden.size());
    for (size_t i = 0; i < plain.size(); ++i) {
        EXPECT_NE(hidden[i].weights, hidden[i].bary);
        EXPECT_POINT_NEAR(plain[i].position.back(), hidden[i].position.back(), 1e-5f);
    }
}

TEST(Clumping, ADeformedEmitterClumpsTheSameStrands) {
    HairParams p = Clumped(2);
    p.SetInt(pid_fixDensity, 1);
    p.SetInt(pid_fixRefFrame, 0);
    Engine e(OneTriangle(), p);
    e.emitter.meshAt = [](TimeValue t) {
        Mesh m = OneTriangle();
        if (t) m.verts[1] = {50, 0, 0}; // other strands are nearest now
        return m;
    };
    e.control.Reset();
    e.Begin({}, 0);
    const auto before = e.Strands();
    e.Begin({}, 160);
    const auto after = e.Strands();
    ASSERT_EQ(before.size(), after.size());
    for (size_t i = 0; i < before.size(); ++i) EXPECT_EQ(before[i].weights, after[i].weights);
}

TEST(Colors, WithoutVariationsTheyPassThroughHsv) {
    HairParams p = PlainFur();
    for (const StrandRecord& s : Grow(OneTriangle(), p)) {
        EXPECT_EQ(s.base, FromHsv(ToHsv(p.colBase)));
        EXPECT_EQ(s.tip, FromHsv(ToHsv(p.colTip)));
    }
}

TEST(Colors, ShiftsByTheSamples) {
    HairParams p = PlainFur();
    p.colBase = {0.8f, 0.4f, 0.2f}, p.colTip = {0.2f, 0.3f, 0.9f};
    p.SetRandCurve(pid_randDist_colorH, Always(255)); // half a turn
    for (const StrandRecord& s : Grow(OneTriangle(), p)) {
        EXPECT_NEAR(ToHsv(s.base).h, WrapUnit(ToHsv(p.colBase).h + 0.5f), 1e-5f);
        EXPECT_NEAR(ToHsv(s.tip).h, WrapUnit(ToHsv(p.colTip).h + 0.5f), 1e-5f);
    }
    p.SetRandCurve(pid_randDist_colorH, CurveShape());
    p.SetRandCurve(pid_randDist_colorS, Always(0)); // to grey
    for (const StrandRecord& s : Grow(OneTriangle(), p)) EXPECT_EQ(s.base, Color(0.8f, 0.8f, 0.8f));
    p.SetRandCurve(pid_randDist_colorS, CurveShape());
    p.SetRandCurve(pid_randDist_colorV, Always(255)); // to full value
    for (const StrandRecord& s : Grow(OneTriangle(), p)) EXPECT_NEAR(ToHsv(s.tip).v, 1.0f, 1e-6f);
}

TEST(Colors, AlongTheStrand) {
    HairParams p = PlainFur();
    p.SetFloat(pid_colBias, 0.25f);
    Engine e(OneTriangle(), p);
    e.context->base = {0, 0, 0}, e.context->tip = {1, 2, 4};
    EXPECT_EQ(StrandColorAt(*e.context, 0.0f), Color(0.25f, 0.5f, 1.0f));
    EXPECT_EQ(StrandColorAt(*e.context, 0.75f), Color(1, 2, 4));
    EXPECT_EQ(StrandColorAt(*e.context, 1.0f), Color(1, 2, 4));
}

TEST(Orientation, RotateAboutTheAxes) {
    EXPECT_POINT_NEAR(RotateAbout({1, 0, 0}, 0), Point3(0, 1, 0), 1e-6f);
    EXPECT_POINT_NEAR(RotateAbout({1, 0, 0}, 90), Point3(0, 0, 1), 1e-6f);
    EXPECT_POINT_NEAR(RotateAbout({0, 1, 0}, 0), Point3(-1, 0, 0), 1e-6f);
    EXPECT_POINT_NEAR(RotateAbout({0, 0, 1}, 0), Point3(1, 0, 0), 1e-6f);
    EXPECT_POINT_NEAR(RotateAbout({0, 0, 1}, 90), Point3(0, 1, 0), 1e-6f);
    EXPECT_POINT_NEAR(RotateAbout({0.0004f, 0.0005f, 1}, 0), Point3(1, 0, 0), 1e-6f);
}

TEST(Orientation, AngleIsDrawnAroundTheParameter) {
    HairParams p = PlainFur();
    p.SetInt(pid_orientAxis, 2);
    p.SetInt(pid_orientAngle, 30);
    for (const StrandRecord& s : Grow(OneTriangle(), p)) EXPECT_EQ(s.orientation, RotateAbout({0, 0, 1}, 30));
    p.SetFloat(pid_orientRand, 0.5f);
    Engine e(OneTriangle(), p);
    for (const StrandRecord& s : e.Strands()) {
        HairRandom r;
        r.Seed(StrandSeed(e.run.faces[0].seed, s.index));
        r.Skip(6);
        const float signedDraw = float(r.Draw() - 16383) / 16383.0f;
        EXPECT_EQ(s.orientation, RotateAbout({0, 0, 1}, 30.0f + 45.0f * signedDraw));
    }
}

TEST(Orientation, BendDirectionOfTheHeaviestCorner) {
    HairParams p = PlainFur();
    p.SetInt(pid_orientAxis, 3);
    Engine e(OneTriangle(), p);
    for (const StrandRecord& s : e.Strands()) // straight: the root's own negated position serves
        EXPECT_EQ(s.orientation, RotateAbout(-s.root, 0));
    // Corners 0 and 2 bend, each its own way.
    e.control.SetPoint(4, {0, 1, 0.5f});
    e.control.SetPoint(14, {1, 1, 0.5f});
    e.Begin({});
    Point3 bend[3];
    EXPECT_TRUE(e.control.Strand(0)->BendDirection(bend[0]));
    EXPECT_FALSE(e.control.Strand(1)->BendDirection(bend[1]));
    EXPECT_TRUE(e.control.Strand(2)->BendDirection(bend[2]));
    for (const StrandRecord& s : e.Strands())
        EXPECT_EQ(s.orientation, RotateAbout(bend[s.weights.x >= s.weights.z ? 0 : 2], 0));
}

TEST(Thickness, ProfileAlongTheStrand) {
    HairParams p = PlainFur();
    p.SetFloat(pid_thickness, 2.0f);
    p.SetCurve(pid_curve_thickness, Curve({{0, 1}, {1, 0}}));
    for (const StrandRecord& s : Grow(OneTriangle(), p))
        for (int i = 0; i <= 20; ++i) EXPECT_NEAR(s.width[size_t(i)], 2.0f * (1 - float(i) / 20), 1e-5f);
    float profile[21];
    FillThicknessProfile(p, 5, 5, 0.5f, profile);
    EXPECT_EQ(profile[0], 1.0f);
    EXPECT_NEAR(profile[10], 0.75f, 1e-6f);
    EXPECT_EQ(profile[20], 0.5f) << "a cut strand keeps the thickness of what is left";
}

TEST(Thickness, OfAShorterStrand) {
    HairParams p = PlainFur();
    p.SetFloat(pid_thickness, 2.0f);
    p.SetCurve(pid_curve_thickness, Curve({{0, 1}, {1, 0.1f}}));
    p.SetRandCurve(pid_randDist_length, Always(128));
    p.SetInt(pid_linkThickRand2LenRand, 0);
    p.SetInt(pid_thickLenRandCut, 0);
    for (const StrandRecord& s : Grow(OneTriangle(), p)) EXPECT_NEAR(s.width.back(), 0.2f, 1e-5f);
    p.SetInt(pid_thickLenRandCut, 1);
    for (const StrandRecord& s : Grow(OneTriangle(), p)) {
        ASSERT_EQ(s.points, 12);
        EXPECT_NEAR(s.width[11], 2.0f * (1 - 0.9f * 11 / 20), 1e-5f);
    }
    p.SetInt(pid_linkThickRand2LenRand, 1);
    for (const StrandRecord& s : Grow(OneTriangle(), p)) EXPECT_EQ(s.thickness, 2.0f * (128 / 255.0f));
}

TEST(Thickness, EarlyExitsByRun) {
    const auto made = [](GenerationMode mode, bool geom, float minThick, int thin) {
        HairParams p = PlainFur();
        p.SetFloat(pid_thickness, 1.0f);
        p.SetInt(pid_useGeom, geom);
        p.SetFloat(pid_geomMinThick, minThick);
        p.SetInt(pid_geomThin, thin);
        Engine e(OneTriangle(), p);
        e.run.request.mode = mode;
        return !e.Strands().empty();
    };
    const float thick = 1.0f, thin = 1.5f; // the threshold itself counts as thick
    EXPECT_TRUE(made(GEN_ESTIMATE, false, thick, 0));
    EXPECT_FALSE(made(GEN_ESTIMATE, false, thin, 0));
    EXPECT_FALSE(made(GEN_MESH, false, thick, 0));
    EXPECT_TRUE(made(GEN_MESH, true, thick, 0));
    EXPECT_FALSE(made(GEN_MESH, true, thin, 0));
    EXPECT_TRUE(made(GEN_SHAPE, false, thin, 0));
    EXPECT_FALSE(made(GEN_SHAPE, true, thin, 0));
    EXPECT_TRUE(made(GEN_SHAPE, true, thick, 0));
    EXPECT_TRUE(made(GEN_RENDER, false, thick, 0));
    EXPECT_FALSE(made(GEN_RENDER, true, thick, 1));
    EXPECT_TRUE(made(GEN_RENDER, true, thin, 1));
    EXPECT_FALSE(made(GEN_RENDER, true, thin, 0));
}

TEST(Curl, OneTurnIsAHelix) {
    HairParams p = PlainFur();
    p.SetInt(pid_bezierSteps, 10);
    const auto straight = Grow(OneTriangle(), p);
    p.SetInt(pid_useCurliness, 1);
    p.SetFloat(pid_curlRadius, 0.2f);
    p.SetFloat(pid_curlTurns, 1.0f);
    p.SetFloat(pid_curlOrientRandom, 0.0f);
    const auto curled = Grow(OneTriangle(), p);
    ASSERT_EQ(curled.size(), straight.size());
    for (size_t s = 0; s < curled.size(); ++s) {
        const Point3 start = curled[s].position[0] - straight[s].position[0];
        for (size_t i = 0; i <= 40; ++i) {
            const Point3 d = curled[s].position[i] - straight[s].position[i];
            EXPECT_NEAR(Length(d), 0.2f, 1e-5f);
            EXPECT_NEAR(d.z, 0.0f, 1e-5f);
            const float angle = 6.2831855f * float(i) / 40;
            EXPECT_NEAR(DotProd(d, start), 0.04f * cosf(angle), 1e-5f);
            // up * sine with up = T x U: counter-clockwise about the strand.
            EXPECT_NEAR(DotProd(d, CrossProd(Point3(0, 0, 1), start)), 0.04f * sinf(angle), 1e-5f);
        }
        EXPECT_EQ(curled[s].tangent[0], curled[s].position[1] - curled[s].position[0]);
        EXPECT_EQ(curled[s].tangent[7], curled[s].position[8] - curled[s].position[6]);
        EXPECT_EQ(curled[s].tangent[40], curled[s].position[40] - curled[s].position[39]);
    }
}

TEST(Curl, ShorteningCutsOrCompresses) {
    HairParams p = PlainFur();
    p.SetRandCurve(pid_randDist_length, Always(128));
    const auto straight = Grow(OneTriangle(), p);
    p.SetInt(pid_useCurliness, 1);
    p.SetFloat(pid_curlRadius, 0.2f);
    p.SetFloat(pid_curlTurns, 1.0f);
    p.SetFloat(pid_curlOrientRandom, 0.0f);
    for (const bool cut : {false, true}) {
        p.SetInt(pid_curlLenRandCut, cut);
        const auto curled = Grow(OneTriangle(), p);
        for (size_t s = 0; s < curled.size(); ++s) {
            const size_t last = curled[s].position.size() - 1;
            const Point3 first = curled[s].position[0] - straight[s].position[0],
                         end = curled[s].position[last] - straight[s].position[last];
            const float angle = 6.2831855f * (cut ? float(last) / 20 : 1.0f);
            EXPECT_NEAR(DotProd(first, end), 0.04f * cosf(angle), 1e-5f);
        }
    }
}

TEST(Curl, FrameNeverTurnsOver) {
    PaddedPoints tangents, frame;
    tangents.Resize(50), frame.Resize(50);
    for (int i = 0; i < 50; ++i) tangents.Set(i, Normalize(Point3(cosf(0.2f * float(i)), sinf(0.2f * float(i)), 0.3f)));
    BuildStrandFrame(tangents, 50, {0, 0, 1}, frame);
    for (int i = 1; i < 50; ++i) {
        EXPECT_GT(DotProd(frame[i], frame[i - 1]), 0.8f);
        EXPECT_NEAR(DotProd(frame[i], tangents[i]), 0.0f, 1e-5f);
        EXPECT_NEAR(Length(frame[i]), 1.0f, 1e-5f);
    }
    // Along the orientation there is no side: the X axis serves.
    for (int i = 0; i < 50; ++i) tangents.Set(i, {0, 0, 1});
    BuildStrandFrame(tangents, 50, {0, 0, 1}, frame);
    EXPECT_EQ(frame[0], Point3(0, 1, 0));
}

} // namespace
