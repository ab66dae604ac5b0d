// G-buffer channels of a render.

#include <cmath>

#include "core/controllers.h"
#include "image/packed_normal.h"
#include "scene_fixture.h"

namespace host {
namespace {

struct GBuffer : SceneTest {
    Node* plane = nullptr;
    StdMtl* material = nullptr;
    GBuffer() {
        AddCamera({0, 0, 10}, {0, 0, 0}); // looks down: camera X is world X, 40 pixels wide
        AddLight(DIRECT_LGT, {0, 0, 10}, {0, 0, 0});
        material = AddMaterial({0.5f, 0.25f, 0.75f});
        plane = AddMesh("plane", PlaneMesh(2), material);
    }
    template <class T>
    T At(uint32_t channel, int x, int y, int components = 1, int component = 0) {
        const auto* const data = static_cast<const T*>(picture.Channel(channel));
        EXPECT_NE(data, nullptr) << channel;
        return data ? data[size_t((y * 40 + x) * components + component)] : T();
    }
    void RenderWith(uint32_t channels) {
        core.RenderParams().gbufChannels = channels;
        ASSERT_EQ(Render(), FrameResult::kDone);
    }
};

TEST_F(GBuffer, UvAndNormalAreTheSurfaces) {
    RenderWith(BMM_CHAN_UV | BMM_CHAN_NORMAL);
    // Pixel (20, 15) lies half a pixel right and below the axis.
    const float perPixel = 10 * std::tan(0.45f) / 20; // world units on the plane
    EXPECT_NEAR(At<Point2>(BMM_CHAN_UV, 20, 15).x, 0.5f + 0.5f * perPixel / 4, 1e-4);
    EXPECT_NEAR(At<Point2>(BMM_CHAN_UV, 20, 15).y, 0.5f - 0.5f * perPixel / 4, 1e-4);
    const Point3 n = UnpackNormal(At<uint32_t>(BMM_CHAN_NORMAL, 20, 15));
    EXPECT_NEAR(n.z, 1, 1e-3);
    EXPECT_EQ(At<uint32_t>(BMM_CHAN_NORMAL, 0, 0), 0u) << "nothing there";
}

TEST_F(GBuffer, ColorTransparencyAndCoverage) {
    material->Params()->SetValue(kStdOpacity, 0, 0.6f);
    RenderWith(BMM_CHAN_COLOR | BMM_CHAN_TRANSP | BMM_CHAN_COVERAGE | BMM_CHAN_REALPIX);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(At<uint8_t>(BMM_CHAN_TRANSP, 20, 15, 3, i), 102, 1);
    EXPECT_NEAR(At<uint8_t>(BMM_CHAN_COVERAGE, 20, 15), 153, 1);
    const Color own = ColorAt(20, 15); // premultiplied, nothing behind
    const Color real = ExpandRealPixel(At<RealPixel>(BMM_CHAN_REALPIX, 20, 15));
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(At<uint8_t>(BMM_CHAN_COLOR, 20, 15, 3, i), own[i] * 255, 1);
        EXPECT_NEAR(real[i], own[i], 0.01f);
    }
    EXPECT_EQ(At<uint8_t>(BMM_CHAN_COVERAGE, 0, 0), 0);
    EXPECT_EQ(At<uint8_t>(BMM_CHAN_COLOR, 0, 0, 3, 0), 0);
}

TEST_F(GBuffer, VelocityIsTheWayToTheNextFrame) {
    auto* const prs = new PrsControl;
    plane->SetTMController(prs);
    auto* const position = static_cast<PositionControl*>(prs->Position());
    position->SetKey(0, {0, 0, 0});
    position->SetKey(core.GetTicksPerFrame(), {0.5f, 0.25f, 0});
    RenderWith(BMM_CHAN_VELOC);
    const float perPixel = 10 * std::tan(0.45f) / 20;
    for (const int x : {18, 20, 22}) {
        EXPECT_NEAR(At<Point2>(BMM_CHAN_VELOC, x, 15).x, 0.5f / perPixel, 1e-3);
        EXPECT_NEAR(At<Point2>(BMM_CHAN_VELOC, x, 15).y, -0.25f / perPixel, 1e-3) << "down counts up";
    }
    EXPECT_EQ(At<Point2>(BMM_CHAN_VELOC, 0, 0).x, 0);
}

TEST_F(GBuffer, ChannelsDoNotChangeThePicture) {
    RenderWith(0);
    const Picture plain = picture;
    RenderWith(BMM_CHAN_VELOC | BMM_CHAN_UV | BMM_CHAN_NORMAL | BMM_CHAN_COLOR | BMM_CHAN_COVERAGE);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) ASSERT_EQ(plain.Shown(x, y), picture.Shown(x, y));
}

TEST(PackedNormal, ComesBackWithinAThousandth) {
    EXPECT_EQ(UnpackNormal(0), Point3());
    for (const Point3& n : {Point3(1, 0, 0), Point3(0, -1, 0), Point3(0, 0, -1), Normalize(Point3(1, -2, 3))}) {
        const Point3 back = UnpackNormal(PackNormal(n));
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(back[i], n[i], 2e-3);
    }
}

} // namespace
} // namespace host
