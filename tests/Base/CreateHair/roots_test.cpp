// Face records, strand numbers, roots, work units.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "Base/EngineFixture.h"

namespace {

using namespace engine;

// The generator once more, from its definition.
struct PlainRandom {
    uint32_t state;
    int operator()() {
        state = state * 214013u + 2531011u;
        return int(state >> 16 & 0x7fffu);
    }
};

TEST(Roots, SeedsAndRootsWorkedOutByHand) {
    HairParams p = PlainFur();
    p.SetInt(pid_randSeed, 1);
    p.SetFloat(pid_densPerFace, 2.0f);
    Engine e(OneTriangle(), p);
    // 1 * 214013 + 2531011 = 2745024 = 41 * 65536 + 58048: the first output of seed 1 is 41.
    ASSERT_EQ(e.run.faces.size(), 1u);
    EXPECT_EQ(e.run.faces[0].seed, 41u);
    EXPECT_EQ(e.run.faces[0].strands, 2);
    EXPECT_EQ(e.run.faces[0].corner[1], Point3(1, 0, 0));
    EXPECT_EQ(e.run.faces[0].centre, Point3(1 / 3.0f, 1 / 3.0f, 0));
    PlainRandom face{41};
    face(), face(); // strand number, attractor number
    const auto strands = e.Strands();
    ASSERT_EQ(strands.size(), 2u);
    for (int i = 0; i < 2; ++i) {
        int a = face(), b = face();
        if (a + b > 32767) a = 32767 - a, b = 32767 - b;
        const Point3 root(float(a) / 32767, float(b) / 32767, float(32767 - a - b) / 32767);
        EXPECT_EQ(strands[size_t(i)].bary, root);
        EXPECT_POINT_NEAR(strands[size_t(i)].root, Point3(root.y, root.z, 0), 1e-6f);
        EXPECT_EQ(strands[size_t(i)].control[0], strands[size_t(i)].root);
    }
}

// Ten draws a strand: one discarded, length, thickness, three of colour, orientation, two of the direction random,
// curl.
TEST(Roots, DrawsPerStrandForEverySwitch) {
    for (int mask = 0; mask < 256; ++mask) {
        HairParams p = PlainFur();
        p.SetFloat(pid_densPerFace, 3.0f);
        if (mask & 1) p.SetRandCurve(pid_randDist_length, Curve({{0, 0}, {0.5f, 1}, {1, 1}}));
        if (mask & 2) p.SetRandCurve(pid_randDist_thickness, Curve({{0, 1}, {1, 1}}));
        p.SetInt(pid_linkThickRand2LenRand, mask >> 2 & 1);
        if (mask & 8) p.SetRandCurve(pid_randDist_colorS, Curve({{0, 1}, {1, 1}}));
        p.SetFloat(pid_orientRand, mask & 16 ? 1.0f : 0.0f);
        p.SetFloat(pid_dirRand, mask & 32 ? 0.3f : 0.0f);
        p.SetFloat(pid_clumpAmount, mask & 64 ? 1.0f : 0.0f);
        p.SetInt(pid_useCurliness, mask >> 7 & 1);
        Engine e(OneTriangle(), p);
        const auto strands = e.Strands();
        ASSERT_EQ(strands.size(), 3u);
        for (const StrandRecord& s : strands) {
            PlainRandom r{uint32_t(s.index) * 13737u + e.run.faces[0].seed};
            for (int i = 0; i < 10; ++i) r();
            EXPECT_EQ(s.state, r.state) << mask;
        }
    }
}

TEST(Roots, HalfAStrandAFace) {
    int withStrand = 0;
    for (int seed = 0; seed < 400; ++seed) {
        HairParams p = PlainFur();
        p.SetFloat(pid_densPerFace, 0.5f);
        p.SetInt(pid_randSeed, seed * 977);
        const size_t n = Grow(OneTriangle(), p).size();
        ASSERT_LE(n, 1u);
        ASSERT_EQ(Grow(OneTriangle(), p).size(), n);
        withStrand += int(n);
    }
    EXPECT_GT(withStrand, 150);
    EXPECT_LT(withStrand, 250);
}

TEST(Roots, DensityPerArea) {
    HairParams p = PlainFur();
    p.SetInt(pid_densType, 1);
    p.SetFloat(pid_densPerArea, 50.0f);
    Engine e(FlatGrid(10, 4), p);
    EXPECT_NEAR(double(e.run.TotalStrands()), 800.0, 40.0);
    EXPECT_NEAR(e.run.faces[3].strandCount, 50 * 0.08f, 1e-4f);
    e.emitter.objectTM = ScaleMatrix({2, 2, 2});
    e.control.Reset();
    e.Begin({});
    EXPECT_NEAR(double(e.run.TotalStrands()), 3200.0, 100.0) << "areas are world areas";
}

TEST(Roots, ClumpValues) {
    const auto value = [](int attract) {
        HairParams p = PlainFur();
        p.SetInt(pid_clumpAttract, attract);
        p.SetFloat(pid_densPerFace, 40.0f);
        p.SetFloat(pid_clumpPercent, 0.1f);
        p.SetFloat(pid_clumpPerFace, 7.0f);
        p.SetFloat(pid_clumpPerArea, 6.0f);
        return Engine(OneTriangle(), p).run.faces[0].clumpValue;
    };
    EXPECT_EQ(value(0), 0.5f);
    EXPECT_FLOAT_EQ(value(1), 4.0f);
    EXPECT_EQ(value(2), 7.0f);
    EXPECT_EQ(value(3), 3.0f);
}

TEST(Roots, AttractorLimit) {
    EmitterFace f;
    f.strands = 5;
    const auto limit = [&](int attractors) {
        f.attractors = attractors;
        return f.AttractorLimit();
    };
    EXPECT_EQ(limit(-1), 5);
    EXPECT_EQ(limit(0), 5);
    EXPECT_EQ(limit(1), 1);
    EXPECT_EQ(limit(4), 4);
    EXPECT_EQ(limit(5), 5);
    EXPECT_EQ(limit(9), 5);
}

TEST(Roots, AttractedFlags) {
    const auto attracted = [](int attract, float perFace) {
        HairParams p = PlainFur();
        p.SetInt(pid_clumpAttract, attract);
        p.SetFloat(pid_densPerFace, 10.0f);
        p.SetFloat(pid_clumpPerFace, perFace);
        int n = 0;
        for (const StrandRecord& s : Grow(OneTriangle(), p)) n += s.attracted;
        return n;
    };
    EXPECT_EQ(attracted(0, 3), 0);
    EXPECT_EQ(attracted(2, 3), 7);
    EXPECT_EQ(attracted(2, 0), 0);
    EXPECT_EQ(attracted(2, 10), 0);
    EXPECT_EQ(attracted(2, 25), 0) << "more attractors than strands: none is attracted";
}

TEST(Roots, SelectionNeverMovesOtherStrands) {
    const Mesh whole = Sphere(1, 6, 8);
    const HairParams p = WildFur();
    std::map<std::pair<int, int>, StrandRecord> all;
    for (const StrandRecord& s : Grow(whole, p)) all.emplace(std::make_pair(s.face, s.index), s);
    for (unsigned pattern = 1; pattern < 6; ++pattern) {
        Mesh m = whole;
        m.faceSel.SetSize(m.getNumFaces());
        HairRandom r;
        r.Seed(pattern);
        for (int f = 0; f < m.getNumFaces(); ++f) m.faceSel.Set(f, r.Draw() % 3 == 0);
        HairParams q = p;
        q.faceSelection.type = 1;
        const auto some = Grow(m, q);
        ASSERT_FALSE(some.empty());
        EXPECT_LT(some.size(), all.size());
        for (const StrandRecord& s : some) {
            EXPECT_TRUE(m.faceSel[s.face]);
            EXPECT_TRUE(s == all.at({s.face, s.index}));
        }
    }
}

TEST(Roots, AFaceThatMissesACornerStrandIsBald) {
    Engine e(FlatGrid(2, 1), PlainFur());
    for (EmitterFace& f : e.run.faces)
        if (f.face == 3) f.strand[1] = nullptr;
    DrawStrandCounts(e.run, *e.context);
    EXPECT_EQ(e.run.faces[3].strands, 0);
    EXPECT_EQ(e.run.faces[2].strands, 4);
    for (const StrandRecord& s : e.Strands()) EXPECT_NE(s.face, 3);
}

TEST(Roots, StrandRootJumpsToAnyStrand) {
    EmitterFace f;
    f.seed = 12345;
    HairRandom r;
    r.Seed(f.seed);
    r.Skip(2);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(StrandRoot(f, i), RandomBarycentric(r));
    EXPECT_EQ(StrandSeed(7, 3), 7u + 3u * 13737u);
}

TEST(Units, AnySizeAndOrderGivesTheSameStrands) {
    HairParams p = WildFur();
    p.SetFloat(pid_densPerFace, 6.7f);
    Engine e(Sphere(1, 6, 8), p);
    const auto expected = e.Strands(1 << 30);
    ASSERT_GT(expected.size(), 300u);
    for (const int size : {1, 2, 7, 128}) {
        EXPECT_TRUE(e.Strands(size) == expected) << size;
        std::vector<WorkUnit> units = MakeWorkUnits(e.run, size);
        std::vector<std::vector<StrandRecord>> parts(units.size());
        std::vector<size_t> order(units.size());
        for (size_t i = 0; i < order.size(); ++i) order[i] = i * 7919 % order.size();
        std::sort(order.begin(), order.end());
        std::reverse(order.begin(), order.end());
        order.erase(std::unique(order.begin(), order.end()), order.end());
        ASSERT_EQ(order.size(), units.size());
        StrandContext other(e.run, 1);
        for (const size_t i : order) {
            Recorder recorder;
            BuildUnit(i % 2 ? other : *e.context, units[i], recorder);
            parts[i] = std::move(recorder.strands);
        }
        std::vector<StrandRecord> joined;
        for (const auto& part : parts) joined.insert(joined.end(), part.begin(), part.end());
        EXPECT_TRUE(joined == expected) << size;
    }
}

TEST(Units, CoverEveryStrandOnce) {
    HairParams p = PlainFur();
    p.SetFloat(pid_densPerFace, 2.5f);
    Engine e(FlatGrid(5, 1), p);
    for (const int size : {1, 3, 10, 1000}) {
        int64_t sum = 0;
        const auto units = MakeWorkUnits(e.run, size);
        for (const WorkUnit& u : units) {
            EXPECT_GT(u.count, 0);
            EXPECT_LE(u.count, size);
            sum += u.count;
        }
        EXPECT_EQ(sum, e.run.TotalStrands());
    }
}

TEST(Units, SelectedFaceAndStrandEqualTheirCounterparts) {
    const HairParams p = WildFur();
    const auto all = Grow(Sphere(1, 5, 6), p);
    for (const int face : {0, 17, 40}) {
        RunRequest r;
        r.selectedFace = face;
        std::vector<StrandRecord> expected;
        for (const StrandRecord& s : all)
            if (s.face == face) expected.push_back(s);
        EXPECT_TRUE(Engine(Sphere(1, 5, 6), p, r).Strands() == expected);
        for (const StrandRecord& s : expected) {
            r.selectedStrand = s.index;
            const auto one = Engine(Sphere(1, 5, 6), p, r).Strands();
            ASSERT_EQ(one.size(), 1u);
            EXPECT_TRUE(one[0] == s);
        }
    }
    RunRequest r;
    r.selectedFace = 100000;
    EXPECT_TRUE(Engine(Sphere(1, 5, 6), p, r).Strands().empty());
}

TEST(Units, AnAbortedConsumerGetsNoFurtherStrand) {
    Engine e(Sphere(1, 5, 6), PlainFur());
    Recorder recorder;
    recorder.limit = 5;
    for (const WorkUnit& u : MakeWorkUnits(e.run, 3)) BuildUnit(*e.context, u, recorder);
    EXPECT_EQ(recorder.strands.size(), 5u);
}

TEST(Estimate, CountsStrandsThatTheLengthRuleDrops) {
    HairParams p = PlainFur();
    p.SetFloat(pid_geomMinThick, 0.0f);
    p.SetRandCurve(pid_randDist_length, Curve({{0, 1}, {0.002f, 0}, {1, 0}})); // always 0
    RunRequest r;
    r.mode = GEN_ESTIMATE;
    EXPECT_EQ(Engine(FlatGrid(2, 1), p, r).Strands().size(), 32u);
    EXPECT_TRUE(Grow(FlatGrid(2, 1), p).empty());
    p.SetFloat(pid_geomMinThick, 5.0f);
    EXPECT_TRUE(Engine(FlatGrid(2, 1), p, r).Strands().empty()) << "thin strands are not counted";
}

} // namespace
