// What strands hand to the rasteriser: colours of width samples, control strands, knots' colours.

#include <gtest/gtest.h>

#include "Base/CreateHair/RenderHandoff.h"
#include "Base/CreateHair/StrandShading.h"
#include "Base/CreateHair/VertexStrands.h"
#include "PictureFixture.h"

namespace {

using namespace engine;

/// Keeps what the context says at every point it is asked at.
class Witness : public Mtl {
public:
    struct Call {
        Point3 p, normal, uvw, bary, pObj;
        int mtl, face;
        bool back;
    };
    std::vector<Call> calls;
    void Shade(ShadeContext& sc) override {
        calls.push_back({sc.P(), sc.Normal(), sc.UVW(1), sc.BarycentricCoords(), sc.PObj(), sc.mtlNum, sc.FaceNumber(),
                         sc.backFace != 0});
        sc.out.c = Color(0.1f * float(calls.size()), 0, 0);
        sc.out.t = Color(0.25f, 0.25f, 0.25f);
    }
};

struct ShadingFixture {
    Camera camera{100, 100, 10};
    Witness witness;
    ShadingSetup setup;
    HairParams params = PlainFur();
    StrandSurface surface;
    ShadingFixture() {
        setup.material = &witness;
        setup.image = &camera.image;
        setup.view = &camera.view;
        setup.useLights = false;
        params.mappingChannels = {STRANDMAP_STRAND_COLOR, STRANDMAP_CYLINDRICAL};
        surface.orientation = {1, 0, 0};
    }
    std::vector<Color> colors;
    std::vector<float> opacities;
    const std::vector<Witness::Call>& Samples(int n, bool flat, float thickness = 0.2f, float v = 0.5f) {
        params.SetInt(pid_maxWidthSamples, n);
        params.SetInt(pid_crossSec, flat);
        StrandShading shading(setup, params);
        EXPECT_EQ(shading.WidthSamples(), n);
        shading.SetStrand(surface);
        colors.resize(size_t(n)), opacities.resize(size_t(n));
        witness.calls.clear();
        // A vertical strand straight ahead of the camera: the eye lies along +Z.
        PaddedPoints position, tangent;
        position.Resize(1), tangent.Resize(1);
        position.Set(0, {0, 0, -5}), tangent.Set(0, {0, 2, 0});
        shading.SetPoints(position, tangent, 1);
        shading.ShadeSamples(0, thickness, v, colors.data(), opacities.data());
        return witness.calls;
    }
};

TEST(StrandShading, OneRoundSample) {
    ShadingFixture f;
    f.surface.bary = {0.2f, 0.3f, 0.5f};
    f.surface.materialId = 3, f.surface.face = 17;
    f.setup.visibility = 0.5f;
    const auto& c = f.Samples(1, false);
    ASSERT_EQ(c.size(), 1u);
    EXPECT_POINT_NEAR(c[0].p, Point3(0, 0, -4.9f), 1e-6f);
    EXPECT_POINT_NEAR(c[0].normal, Point3(0, 0, 1), 1e-6f);
    EXPECT_POINT_NEAR(c[0].pObj, Point3(0, 0, 5.1f), 1e-5f);
    EXPECT_EQ(c[0].bary, f.surface.bary);
    EXPECT_EQ(c[0].mtl, 3);
    EXPECT_EQ(c[0].face, 17);
    EXPECT_FALSE(c[0].back);
    // S = T x N = +X; a = atan2(-(O . N), O . S) = 0, u = 3/4.
    EXPECT_NEAR(c[0].uvw.x, 0.75f, 1e-6f);
    EXPECT_EQ(c[0].uvw.y, 0.5f);
    EXPECT_EQ(f.colors[0], Color(0.1f, 0, 0));
    EXPECT_NEAR(f.opacities[0], 0.375f, 1e-6f);
}

TEST(StrandShading, ThreeRoundSamples) {
    ShadingFixture f;
    const auto& c = f.Samples(3, false);
    ASSERT_EQ(c.size(), 3u);
    const Point3 at[3] = {{-0.1f, 0, -5}, {0, 0, -4.9f}, {0.1f, 0, -5}}, normal[3] = {{-1, 0, 0}, {0, 0, 1}, {1, 0, 0}};
    const float u[3] = {0.5f, 0.75f, 1.0f};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_POINT_NEAR(c[i].p, at[i], 1e-6f);
        EXPECT_POINT_NEAR(c[i].normal, normal[i], 1e-6f);
        EXPECT_NEAR(c[i].uvw.x, u[i], 1e-6f);
    }
    f.surface.orientation = {0, 0, 1}; // a = atan2(-1, 0) = -pi/2
    const auto& d = f.Samples(3, false);
    const float turned[3] = {0.75f, 1.0f, 0.25f};
    for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(d[i].uvw.x, turned[i], 1e-6f);
    f.surface.orientation = {-1, 0, 0}; // a = atan2(-0, -1) = +-pi
    const auto& e = f.Samples(3, false);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_GE(e[i].uvw.x, 0.001f);
        EXPECT_LE(e[i].uvw.x, 1.0f);
    }
}

TEST(StrandShading, FiveFlatSamplesSpanTwiceTheThickness) {
    ShadingFixture f;
    const auto& c = f.Samples(5, true);
    ASSERT_EQ(c.size(), 5u);
    // The ribbon's face n = T x (O x T) = +X, S = T x n = -Z.
    const float u[5] = {0.001f, 0.25f, 0.5f, 0.75f, 0.999f};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_POINT_NEAR(c[i].p, Point3(0, 0, -4.8f - 0.1f * float(i)), 1e-5f);
        EXPECT_EQ(c[i].uvw.x, u[i]);
        EXPECT_POINT_NEAR(c[i].normal, Point3(1, 0, 0), 1e-6f);
    }
    f.surface.orientation = {0, 0, -1}; // faces away from the camera
    const auto& d = f.Samples(1, true);
    ASSERT_EQ(d.size(), 1u);
    EXPECT_TRUE(d[0].back);
    EXPECT_POINT_NEAR(d[0].normal, Point3(0, 0, 1), 1e-6f);
    EXPECT_POINT_NEAR(d[0].p, Point3(0, 0, -5), 1e-6f);
    EXPECT_EQ(d[0].uvw.x, 0.5f);
}

TEST(StrandShading, AlongTheStrandStaysInside) {
    ShadingFixture f;
    EXPECT_EQ(f.Samples(1, false, 0.1f, 0.0f)[0].uvw.y, 0.001f);
    EXPECT_EQ(f.Samples(1, false, 0.1f, 1.0f)[0].uvw.y, 0.999f);
}

TEST(StrandShading, DegenerateTangents) {
    EXPECT_TRUE(StrandShading::Degenerate({0, 0, 0}));
    EXPECT_TRUE(StrandShading::Degenerate({0.00005f, -0.00003f, 0.00001f}));
    EXPECT_FALSE(StrandShading::Degenerate({0, -0.0002f, 0}));
}

TEST(VertexStrands, GoOnFromTheControlMeshsGenerator) {
    HairParams p = PlainFur();
    p.SetInt(pid_orientAxis, 2);
    p.SetFloat(pid_orientRand, 1.0f);
    p.SetFloat(pid_vdirRand, 0.1f);
    Engine e(Sphere(1, 5, 6), p);
    const VertexStrandList list(e.run);
    EXPECT_EQ(list.Count(), e.control.VertexCount());
    HairRandom r = e.control.RandomState();
    for (int i = 0; i < list.Count(); ++i) {
        list.Make(*e.context, i);
        const StrandRecord s(*e.context);
        const float angle = 90.0f * float(r.Draw() - 16383) / 16383.0f;
        r.Skip(3); // hue, saturation, value
        EXPECT_NEAR(e.context->orientAngle, angle, 1e-4f);
        EXPECT_EQ(e.context->rng.state, r.state);
        const VertexStrand& own = *e.control.Strand(list.Vertex(i));
        EXPECT_POINT_NEAR(s.position[0], own.root, 1e-6f);
        for (int k = 0; k < 5; ++k) EXPECT_POINT_NEAR(s.position[size_t(5 * k)], own.knots[size_t(k)], 1e-5f);
    }
}

TEST(VertexStrands, EmptySlotsAreLeftOut) {
    Mesh m = FlatGrid(3, 1);
    m.faceSel.SetSize(18);
    m.faceSel.Set(4);
    HairParams p = PlainFur();
    p.faceSelection.type = 1;
    Engine e(m, p);
    const VertexStrandList list(e.run);
    ASSERT_EQ(list.Count(), 3);
    for (int i = 0; i < 3; ++i) EXPECT_NE(e.control.Strand(list.Vertex(i)), nullptr);
}

// Widths on screen, through the rasteriser's vertex count: a ribbon seen edge-on keeps one hundredth of its width.
TEST(Handoff, EdgeOnRibbonsAreThinNotGone) {
    const auto coverage = [](int orientation) {
        HairParams p = PlainFur();
        p.SetInt(pid_crossSec, 1);
        p.SetInt(pid_orientAxis, 2);
        p.SetInt(pid_orientAngle, orientation);
        p.SetFloat(pid_densPerFace, 1.0f);
        p.SetFloat(pid_thickness, 0.3f);
        Mesh m = OneTriangle();
        m.verts = {{0, -1, 0}, {0.001f, -1, 0}, {0, -1, -0.001f}}; // grows along +Y
        Engine e(m, p);
        StrandPaint paint;
        const Picture picture = RenderPicture(e, Camera(64, 64, 4), {}, paint);
        double sum = 0;
        for (const auto& list : picture.lists)
            for (const Plain& f : list) sum += f.coverage;
        return sum / 65535;
    };
    // c = orientation . normalise(tangent x position): the ribbon is edge-on where the orientation points sideways.
    const double edge = coverage(0), face = coverage(90);
    EXPECT_GT(edge, 0.0);
    EXPECT_GT(face, 30 * edge);
    EXPECT_LT(face, 150 * edge);
}

TEST(Handoff, SegmentsTooNearTheCameraAreLeftOut) {
    HairParams p = PlainFur();
    p.SetInt(pid_fur_useBending, 0);
    Engine e(FlatGrid(1, 0.2f), p);
    StrandPaint paint;
    // Strands run from depth 2 to depth 1: all of them are drawn. From 1.8 to 0.8, and from 0.8 on, some or none.
    EXPECT_GT(RenderPicture(e, Camera(64, 64, 2.0f), {}, paint).Filled(), 0u);
    const int all = paint.shaded;
    paint.shaded = 0;
    EXPECT_GT(RenderPicture(e, Camera(64, 64, 1.8f), {}, paint).Filled(), 0u);
    EXPECT_LT(paint.shaded, all);
    paint.shaded = 0;
    EXPECT_EQ(RenderPicture(e, Camera(64, 64, 0.85f), {}, paint).Filled(), 0u);
    EXPECT_EQ(paint.shaded, 0);
}

} // namespace
