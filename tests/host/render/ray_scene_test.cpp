#include "render/ray_scene.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "scene_fixture.h"
#include "sdk/mesh.h"

namespace host {
namespace {

std::vector<int> Corners(const Mesh& m) {
    std::vector<int> corners;
    for (const Face& f : m.faces) corners.insert(corners.end(), f.v, f.v + 3);
    return corners;
}

class HalfLight : public ShadowFilter {
public:
    Color Transparency(const RayHit& hit, const Point3&, const Point3&) override {
        ++asked;
        last = hit;
        return {0.5f, 0.25f, 1};
    }
    int asked = 0;
    RayHit last;
};

TEST(RayScene, NearestHitWithWeights) {
    RayScene scene;
    const Mesh plane = PlaneMesh(1);
    scene.AddMesh(42, plane.verts, Corners(plane), kCameraRays, false);
    scene.Commit();
    RayHit hit;
    ASSERT_TRUE(scene.Nearest({0.5f, -0.25f, 4}, {0, 0, -2}, 0, 1e30f, kCameraRays, hit));
    EXPECT_EQ(hit.id, 42);
    EXPECT_EQ(hit.face, 0);
    EXPECT_FLOAT_EQ(hit.t, 2);
    EXPECT_FLOAT_EQ(hit.u, 0.375f);
    EXPECT_FLOAT_EQ(hit.v, 0.375f);
    EXPECT_FALSE(scene.Nearest({0.5f, -0.25f, 4}, {0, 0, -2}, 2.5f, 1e30f, kCameraRays, hit));
    EXPECT_FALSE(scene.Nearest({0.5f, -0.25f, 4}, {0, 0, -2}, 0, 1.5f, kCameraRays, hit));
    EXPECT_FALSE(scene.Nearest({0.5f, -0.25f, 4}, {0, 0, -2}, 0, 1e30f, kShadowRays, hit));
    EXPECT_FALSE(scene.Nearest({5, 5, 4}, {0, 0, -2}, 0, 1e30f, kCameraRays, hit));
}

TEST(RayScene, AnEmptySceneIsHitByNothing) {
    RayScene scene;
    scene.AddMesh(0, {}, {}, kCameraRays, false);
    scene.Commit();
    RayHit hit;
    EXPECT_FALSE(scene.Nearest({0, 0, 1}, {0, 0, -1}, 0, 1e30f, kCameraRays, hit));
    EXPECT_EQ(scene.Transmission({0, 0, 1}, {0, 0, -1}, 0, 1e30f, nullptr), Color(1, 1, 1));
}

TEST(RayScene, ShadowRaysAskClearMeshesOnly) {
    RayScene scene;
    const Mesh plane = PlaneMesh(1);
    std::vector<Point3> lower = plane.verts;
    for (Point3& p : lower) p.z -= 1;
    scene.AddMesh(1, plane.verts, Corners(plane), kShadowRays, true);
    scene.AddMesh(2, lower, Corners(plane), kShadowRays, true);
    scene.Commit();
    HalfLight filter;
    EXPECT_EQ(scene.Transmission({0.5f, 0.1f, 4}, {0, 0, -1}, 0, 10, &filter), Color(0.25f, 0.0625f, 1));
    EXPECT_EQ(filter.asked, 2);
    EXPECT_EQ(scene.Transmission({0.5f, 0.1f, 4}, {0, 0, -1}, 0, 4.5f, &filter), Color(0.5f, 0.25f, 1));
    EXPECT_EQ(filter.last.id, 1);
    EXPECT_FLOAT_EQ(filter.last.t, 4);
    EXPECT_EQ(scene.Transmission({0.5f, 0.1f, 4}, {0, 0, -1}, 0, 10, nullptr), Color());
    EXPECT_EQ(scene.Transmission({3, 0.1f, 4}, {0, 0, -1}, 0, 10, &filter), Color(1, 1, 1));
    RayScene opaque;
    opaque.AddMesh(1, plane.verts, Corners(plane), kShadowRays, false);
    opaque.Commit();
    filter.asked = 0;
    EXPECT_EQ(opaque.Transmission({0.5f, 0.1f, 4}, {0, 0, -1}, 0, 10, &filter), Color());
    EXPECT_EQ(filter.asked, 0);
}

// The host's mesh has its own nearest-hit search; both must agree.
RC_GTEST_PROP(RayScene, AgreesWithTheMeshsOwnSearch, ()) {
    static const Mesh sphere = SphereMesh(12);
    static const std::unique_ptr<RayScene> scene = [] {
        auto s = std::make_unique<RayScene>();
        s->AddMesh(3, sphere.verts, Corners(sphere), kCameraRays, false);
        s->Commit();
        return s;
    }();
    const auto number = [] { return float(*rc::gen::inRange(-2000, 2000)) / 1000.0f; };
    const Point3 from(number() * 2, number() * 2, 5 + number());
    const Point3 to(number(), number(), number());
    RC_PRE(Length(to - from) > 0.5f);
    const Point3 direction = Normalize(to - from);
    Ray ray;
    ray.p = from;
    ray.dir = direction;
    float at = 0;
    Point3 normal, bary;
    int face = -1;
    const bool own = sphere.IntersectRay(ray, at, normal, face, bary);
    RayHit hit;
    const bool traced = scene->Nearest(from, direction, 0, 1e30f, kCameraRays, hit);
    // On the silhouette rounding decides.
    if (own != traced) RC_ASSERT(std::fabs(Length(CrossProd(from, direction)) - 1) < 0.03f);
    if (own && traced) {
        RC_ASSERT(std::fabs(at - hit.t) < 1e-4f);
        if (hit.u > 0.01f && hit.v > 0.01f && hit.u + hit.v < 0.99f) RC_ASSERT(face == hit.face);
    }
}

} // namespace
} // namespace host
