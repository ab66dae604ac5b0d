// Culling never leaves out what would have been seen.

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "PictureFixture.h"

namespace {

using namespace engine;

/// Keeps which segments were left visible.
struct VisibleSegments {
    std::map<std::pair<int, int>, ThreadVector<char>> byStrand;
    static bool Aborted() { return false; }
    void OnStrand(StrandContext& c) { byStrand[{c.face->face, c.strandIndex}] = c.segmentVisible; }
};

class Culling : public testing::TestWithParam<bool> {};

// Every segment of every strand whose points, with half their width and the filter, come into the region.
void CheckRegions(const HairParams& params, const Camera& camera, unsigned seed) {
    Engine whole(Sphere(1, 8, 10), params, camera.Request());
    ASSERT_TRUE(whole.prepared);
    const std::vector<StrandRecord> strands = whole.Strands();
    ASSERT_GT(strands.size(), 100u);
    HairRandom r;
    r.Seed(seed);
    size_t seen = 0, kept = 0, all = 0;
    for (int round = 0; round < 40; ++round) {
        ScreenRegion region;
        region.x0 = r.Draw() % camera.image.width, region.y0 = r.Draw() % camera.image.height;
        const int largest = camera.image.width / 8;
        region.x1 = region.x0 + 1 + r.Draw() % largest, region.y1 = region.y0 + 1 + r.Draw() % largest;
        region.filterRadius = 1.5f;
        Engine part(Sphere(1, 8, 10), params, camera.Request(&region));
        VisibleSegments visible;
        for (const WorkUnit& u : MakeWorkUnits(part.run, 16)) BuildUnit(*part.context, u, visible);
        for (const StrandRecord& s : strands)
            for (int i = 0; i < s.points; ++i) {
                const int segment = std::min(i / part.run.steps, s.segments - 1);
                const Point3& p = s.position[size_t(i)];
                const Point2 at = camera.image.MapCamToScreen(p);
                const float width = camera.image.MapCamToScreen({s.width[size_t(i)], 0, p.z}).x - camera.image.centreX;
                const float reach = width / 2 + region.filterRadius;
                const auto strand = visible.byStrand.find({s.face, s.index});
                const bool handed = strand != visible.byStrand.end() && strand->second[size_t(segment)];
                ++all, kept += handed;
                if (at.x + reach < float(region.x0) || at.x - reach > float(region.x1) ||
                    at.y + reach < float(region.y0) || at.y - reach > float(region.y1))
                    continue;
                ++seen;
                ASSERT_TRUE(handed) << "face " << s.face << " strand " << s.index << " point " << i;
            }
    }
    EXPECT_GT(seen, 50u);
    EXPECT_LT(kept, all) << "something is culled at all";
}

TEST_P(Culling, KeepsEverySegmentThatTouchesTheRegion) {
    const Camera camera(320, 240, 6, GetParam());
    HairParams p = WildFur();
    p.SetFloat(pid_length, 0.4f);
    CheckRegions(p, camera, 1);
    p.SetFloat(pid_thickness, 0.2f);
    CheckRegions(p, camera, 2);
    p.SetFloat(pid_dirRand, 1.0f);
    p.SetFloat(pid_clumpAmount, 0.0f);
    p.SetFloat(pid_curlRadius, 0.0f);
    CheckRegions(p, camera, 3);
    CheckRegions(PlainFur(), camera, 4);
}

// One segment has no neighbours that would keep it, and large pixels' margins count for nothing in a large picture.
TEST_P(Culling, AllowsForCurlsAndDirectionRandom) {
    const Camera camera(3000, 2400, 6, GetParam());
    HairParams p = WildFur();
    p.SetInt(pid_knots, 2);
    p.SetInt(pid_bezierSteps, 20);
    p.SetFloat(pid_length, 0.2f);
    p.SetFloat(pid_clumpAmount, 0.0f);
    p.SetFloat(pid_dirRand, 0.0f);
    p.SetFloat(pid_curlRadius, 0.4f);
    CheckRegions(p, camera, 5);
    p.SetInt(pid_useCurliness, 0);
    p.SetFloat(pid_length, 1.0f);
    p.SetFloat(pid_dirRand, 1.0f);
    CheckRegions(p, camera, 6);
}

INSTANTIATE_TEST_SUITE_P(Views, Culling, testing::Values(true, false),
                         [](const auto& info) { return info.param ? "perspective" : "parallel"; });

TEST(CullFace, WithoutARegionNothingIsCulled) {
    const Camera camera(32, 24, 3);
    Engine e(FlatGrid(2, 1), PlainFur(), camera.Request());
    e.context->SetFace(e.run.faces[0]);
    EXPECT_TRUE(CullFace(*e.context));
    for (const char v : e.context->segmentVisible) EXPECT_TRUE(v);
}

TEST(CullFace, FarAwayFacesAreSkipped) {
    const Camera camera(320, 240, 30);
    const ScreenRegion region{0, 0, 4, 4, 1.5f};
    Engine e(FlatGrid(2, 1), PlainFur(), camera.Request(&region));
    for (const EmitterFace& f : e.run.faces) {
        e.context->SetFace(f);
        EXPECT_FALSE(CullFace(*e.context));
    }
    EXPECT_TRUE(e.Strands().empty());
}

TEST(CullFace, AStrandThroughTheCameraPlaneIsKept) {
    const Camera camera(320, 240, 0.5f); // the strands' tips lie behind the camera
    const ScreenRegion region{0, 0, 4, 4, 1.5f};
    Engine e(FlatGrid(2, 1), PlainFur(), camera.Request(&region));
    e.context->SetFace(e.run.faces[0]);
    EXPECT_TRUE(CullFace(*e.context));
    EXPECT_TRUE(e.context->segmentVisible[3]);
}

} // namespace
