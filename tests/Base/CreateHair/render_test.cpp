// Pictures: the same bit for bit for any number of threads, kind and size of bucket.

#include <gtest/gtest.h>

#include "PictureFixture.h"
#include "slowed.h"

namespace {

using namespace engine;

// A curled, clumped, randomised coat with thin and wide strands.
HairParams Coated() {
    HairParams p = WildFur();
    p.SetFloat(pid_length, 0.5f);
    p.SetFloat(pid_densPerFace, 30.0f / kSlowed);
    p.SetFloat(pid_thickness, 0.05f);
    p.SetInt(pid_orientAxis, 3);
    p.SetInt(pid_linkThickRand2LenRand, 0);
    p.SetRandCurve(pid_randDist_thickness, Curve({{0, 1}, {0.3f, 0}, {0.7f, 0}, {1, 1}}));
    return p;
}

struct Scene {
    Camera camera{100, 75, 4};
    Engine engine;
    StrandPaint paint;
    explicit Scene(const HairParams& p) : engine(Sphere(1, 6, 8), p) {}
    Picture Render(const PictureSettings& s) { return RenderPicture(engine, camera, s, paint); }
};

void SameForAllSettings(const HairParams& params, bool shadeMiddle) {
    Scene scene(params);
    PictureSettings s;
    s.shadeMiddle = shadeMiddle;
    const Picture expected = scene.Render(s);
    ASSERT_GT(expected.Filled(), 1000u);
    EXPECT_TRUE(scene.Render(s) == expected) << "twice in a row";
    for (const int threads : {2, 3, 16}) {
        s.threads = threads;
        s.batchBytes = threads == 3 ? 20000 : 4u << 20;
        EXPECT_TRUE(scene.Render(s) == expected) << threads << " threads";
    }
    for (const int type : {1, 2})
        for (const int size : {10, 37, 64, 1000}) {
            s.bucketType = type, s.bucketSize = size, s.threads = size == 37 ? 1 : 3;
            EXPECT_TRUE(scene.Render(s) == expected) << "type " << type << " size " << size << ", " << s.threads;
        }
}

TEST(Render, TheSameForAllThreadsAndBuckets) {
    SameForAllSettings(Coated(), true);
}

TEST(Render, TheSameWithMiddleShadingOff) {
    SameForAllSettings(Coated(), false);
}

TEST(Render, TheSameWithFlatStrandsAndWidthSamples) {
    HairParams p = Coated();
    p.SetInt(pid_crossSec, 1);
    p.SetInt(pid_maxWidthSamples, 4);
    p.SetInt(pid_shadeBezSegs, 0);
    SameForAllSettings(p, true);
    p.SetInt(pid_crossSec, 0);
    p.SetInt(pid_widthFiltering, 1);
    SameForAllSettings(p, true);
}

TEST(Render, NearTheCameraToo) {
    HairParams p = Coated();
    p.SetFloat(pid_length, 1.2f);
    Scene scene(p);
    scene.camera = Camera(100, 75, 2.4f); // strands reach past the nearest drawn depth
    const Picture expected = scene.Render({});
    ASSERT_GT(expected.Filled(), 1000u);
    EXPECT_TRUE(scene.Render({3, 2, 16}) == expected);
    EXPECT_TRUE(scene.Render({2, 1, 10}) == expected);
}

TEST(Render, VertexStrandsAreDrawnOnlyWithoutMiddleShading) {
    HairParams p = PlainFur();
    p.SetFloat(pid_densPerFace, 0.0f);
    p.SetFloat(pid_length, 0.5f);
    Scene scene(p);
    EXPECT_EQ(scene.Render({}).Filled(), 0u);
    EXPECT_EQ(scene.paint.shaded, 0);
    PictureSettings s;
    s.shadeMiddle = false;
    EXPECT_GT(scene.Render(s).Filled(), 100u);
    // One sample at each knot of each of the sphere's 42 control strands.
    EXPECT_EQ(scene.paint.shaded, 42 * 5);
}

TEST(Render, AnAbortDrawsNoFurtherStrand) {
    Scene scene(Coated());
    TestOwner owner;
    owner.settings.bucketType = 0;
    Coat coat(scene.engine, scene.camera, scene.paint);
    coat.abort = true;
    owner.sources = {&coat};
    HRendBuf buffer(owner);
    buffer.RenderBucket(HRM_IMAGE, 0, scene.camera.image, scene.camera.view, 0, 0, nullptr, nullptr, nullptr);
    EXPECT_EQ(coat.stats.strands, 0);
    EXPECT_FALSE(coat.stats.failed);
}

} // namespace
