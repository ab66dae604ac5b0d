// Every strand against one that is made plainly from the formulas, bit for bit.

#include <gtest/gtest.h>

#include "ReferenceStrand.h"

namespace {

using namespace engine;

void CompareAll(Mesh mesh, const HairParams& params, const Matrix3& objectTM = Matrix3()) {
    Engine e(std::move(mesh), params);
    e.emitter.objectTM = objectTM;
    e.control.Reset();
    e.Begin({});
    const std::vector<StrandRecord> strands = e.Strands();
    size_t at = 0;
    for (const EmitterFace& f : e.run.faces)
        for (int i = 0; i < f.strands; ++i) {
            const ReferenceStrand r(e.run, f, i);
            if (!r.made) continue;
            ASSERT_LT(at, strands.size());
            const StrandRecord& s = strands[at++];
            ASSERT_EQ(s.face, f.face);
            ASSERT_EQ(s.index, i);
            ASSERT_EQ(s.bary, r.bary);
            ASSERT_EQ(s.weights, r.weights);
            ASSERT_EQ(s.segments, r.segments);
            ASSERT_EQ(s.fraction, r.fraction);
            ASSERT_TRUE(s.control == r.control);
            ASSERT_TRUE(s.position == r.position) << "face " << s.face << " strand " << s.index;
            ASSERT_TRUE(s.tangent == r.tangent);
            ASSERT_EQ(s.state, r.rng.state);
        }
    ASSERT_EQ(at, strands.size());
    ASSERT_GT(at, 0u);
}

TEST(Reference, StraightFur) {
    CompareAll(FlatGrid(4, 2.0f), PlainFur());
}

TEST(Reference, EverythingOn) {
    HairParams p = WildFur();
    p.SetFloat(pid_densPerFace, 9.3f);
    CompareAll(Sphere(1.0f, 6, 8), p);
    CompareAll(Sphere(1.0f, 6, 8), p, TurnedAndMoved());
}

TEST(Reference, KnotsAndSteps) {
    for (const int knots : {2, 3, 4, 7, 12})
        for (const int steps : {1, 2, 3, 5, 8}) {
            HairParams p = WildFur();
            p.SetInt(pid_knots, knots);
            p.SetInt(pid_bezierSteps, steps);
            SCOPED_TRACE(testing::Message() << knots << " knots, " << steps << " steps");
            CompareAll(Sphere(1.0f, 4, 5), p);
        }
}

TEST(Reference, EverySwitchAlone) {
    const auto with = [](const auto& change) {
        HairParams p = PlainFur();
        p.SetFloat(pid_densPerFace, 7.5f);
        p.SetRandCurve(pid_randDist_length, Curve({{0, 0}, {1, 1}}));
        change(p);
        CompareAll(Sphere(2.0f, 5, 6), p, TurnedAndMoved());
    };
    with([](HairParams&) {});
    with([](HairParams& p) { p.SetFloat(pid_dirRand, 0.5f); });
    with([](HairParams& p) { p.SetFloat(pid_dirRand, 0.0005f); });
    with([](HairParams& p) { p.SetFloat(pid_clumpAmount, 1.0f), p.SetFloat(pid_clumpRadius, 0.6f); });
    for (int attract = 0; attract < 4; ++attract)
        with([&](HairParams& p) {
            p.SetFloat(pid_clumpAmount, 0.8f);
            p.SetInt(pid_clumpAttract, attract);
            p.SetFloat(pid_clumpPercent, 0.3f), p.SetFloat(pid_clumpPerFace, 2.2f), p.SetFloat(pid_clumpPerArea, 3.0f);
        });
    for (int axis = 0; axis < 3; ++axis)
        with([&](HairParams& p) {
            p.SetInt(pid_useCurliness, 1);
            p.SetInt(pid_orientAxis, axis);
            p.SetInt(pid_orientAngle, 33);
            p.SetInt(pid_curlLenRandCut, axis == 1);
            p.SetFloat(pid_curlRadius, 0.1f);
            p.SetFloat(pid_curlTurns, 3.0f);
        });
    // The fade's curve at zero hides the direction random; the length rule then stops exactly at a strand's end.
    with([](HairParams& p) {
        p.SetFloat(pid_dirRand, 0.4f);
        p.SetCurve(pid_curve_clumpShape, Curve({{0, 0}, {1, 0}}));
    });
}

} // namespace
