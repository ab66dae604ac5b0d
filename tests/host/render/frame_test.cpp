// Whole frames: atmosphere, threads, edges, abort, failures.

#include <atomic>
#include <cmath>
#include <cstring>
#include <thread>

#include "core/error.h"
#include "materials/bitmap_map.h"
#include "materials/checker_map.h"
#include "render/effect_progress.h"
#include "render/scan_renderer.h"
#include "scene_fixture.h"
#include "sdk/atmos.h"

namespace host {
namespace {

struct Segment {
    IPoint2 pixel;
    Point3 p0, p1;
    bool background;
};

/// An even film of colour at every segment; records segments and the calls around them.
class Film : public Atmospheric {
public:
    explicit Film(const Color& color = {}, float opacity = 0) : color_(color), opacity_(opacity) {}
    int RenderBegin(TimeValue) override { return log += "begin ", 1; }
    int Update(TimeValue t, Interval&) override { return log += "update" + std::to_string(t) + " ", 1; }
    int RenderEnd(TimeValue) override { return log += "end ", 1; }
    void Shade(ShadeContext& sc, const Point3& p0, const Point3& p1, Color& col, Color& trans,
               bool background) override {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            segments.push_back({sc.ScreenCoord(), p0, p1, background});
        }
        if (onShade) onShade();
        col = color_ * opacity_ + col * (1 - opacity_);
        trans = trans * (1 - opacity_);
    }
    std::vector<Segment> At(int x, int y) const {
        std::vector<Segment> found;
        for (const Segment& s : segments)
            if (s.pixel == IPoint2(x, y)) found.push_back(s);
        return found;
    }
    std::string log;
    std::vector<Segment> segments;
    std::function<void()> onShade;

private:
    std::mutex mutex_;
    Color color_;
    float opacity_;
};

class FrameTest : public SceneTest {
protected:
    void Glow(Mtl* material) { static_cast<StdMtl*>(material)->Params()->SetValue(kStdSelfIllum, 0, 1.0f); }
    Node* AddPlate(float z, const Color& color, float opacity = 1) {
        StdMtl* const material = AddMaterial(color);
        Glow(material);
        material->Params()->SetValue(kStdOpacity, 0, opacity);
        Node* const node = AddMesh("plate", PlaneMesh(3), material);
        node->SetNodeTM(0, TransMatrix({0, 0, z}));
        return node;
    }
    /// A scene with a bit of everything, for comparisons.
    void AddShow() {
        AddCamera({3, -6, 4}, {0, 0, 0.8f});
        auto* const checker = core.Adopt(new CheckerMap);
        checker->Params()->SetValue(kMapTileU, 0, 4.0f);
        StdMtl* const ground = AddMaterial({1, 1, 1});
        ground->SetSubTexmap(ID_DI, checker);
        AddMesh("ground", PlaneMesh(4), ground);
        StdMtl* const glass = AddMaterial({0.3f, 0.6f, 1});
        glass->Params()->SetValue(kStdOpacity, 0, 0.4f);
        glass->Params()->SetValue(kStdSpecularLevel, 0, 1.0f);
        AddMesh("ball", SphereMesh(24), glass)->SetNodeTM(0, TransMatrix({0, 0, 1}));
        AddMesh("box", BoxMesh({1, -1, 0}, {2, 0, 1}), nullptr);
        AddLight(SPOT_LGT, {3, -3, 6}, {0, 0, 0})->Params()->SetValue(kLightShadows, 0, 1);
        AddLight(OMNI_LGT, {-5, -2, 3}, {0, 0, 0}, {0.2f, 0.2f, 0.4f})->Params()->SetValue(kLightShadows, 0, 1);
        core.SetBackGround({0.2f, 0.3f, 0.5f});
    }
};

TEST_F(FrameTest, SegmentsRunFromTheCameraToTheSurfaceOrFarAway) {
    for (const bool ortho : {false, true}) {
        core.ResetScene();
        AddCamera({1, 2, 10}, {1, 2, 0}, float(M_PI / 2))->Params()->SetValue(kCamOrtho, 0, ortho ? 1 : 0);
        AddMesh("plate", PlaneMesh(3), nullptr)->SetNodeTM(0, TransMatrix({1, 2, 0}));
        Film film;
        core.AddAtmosphere(&film);
        settings.samples = 1;
        ASSERT_EQ(Render(), FrameResult::kDone);
        ASSERT_EQ(film.segments.size(), 1200u);
        EXPECT_EQ(stats.atmosphereSegments, 1200u);
        EXPECT_EQ(stats.cameraSamples, 1200u);
        const Segment hit = film.At(22, 12).at(0), miss = film.At(2, 3).at(0);
        EXPECT_FALSE(hit.background);
        const Point3 expected(1 + 1.25f, 2 + 1.25f, 0);
        EXPECT_NEAR(Length(hit.p1 - expected), 0, 1e-4f);
        if (ortho) {
            EXPECT_NEAR(Length(hit.p0 - (expected + Point3(0, 0, 10))), 0, 1e-4f);
        } else {
            EXPECT_EQ(hit.p0, Point3(1, 2, 10));
        }
        EXPECT_TRUE(miss.background);
        const float length = Length(miss.p1 - miss.p0);
        EXPECT_GE(length, 0.99e6f);
        EXPECT_LT(std::max({std::fabs(miss.p1.x), std::fabs(miss.p1.y), std::fabs(miss.p1.z)}), 1e7f);
        EXPECT_EQ(film.log, "begin update0 end ");
        core.DeleteAtmosphere(0);
    }
}

TEST_F(FrameTest, EffectsCompositeFromTheLastToTheFirst) {
    AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    AddPlate(0, {1, 1, 1});
    core.SetBackGround({0, 0, 1});
    Film near({1, 0, 0}, 0.5f), far({0, 1, 0}, 0.5f);
    core.AddAtmosphere(&near);
    core.AddAtmosphere(&far);
    ASSERT_EQ(Render(), FrameResult::kDone);
    // White under green gives (.5, 1, .5); that under red (.75, .5, .25).
    ExpectColor(ColorAt(20, 15), {0.75f, 0.5f, 0.25f}, 1e-6f);
    EXPECT_EQ(AlphaAt(20, 15), 1.0f);
    EXPECT_EQ(picture.GetBackground(20, 15), Color());
    // The background shines through with a quarter; the rest is the films'.
    ExpectColor(ColorAt(1, 1), {0.5f, 0.25f, 0}, 1e-6f);
    ExpectColor(picture.GetBackground(1, 1), {0, 0, 0.25f}, 1e-6f);
    EXPECT_NEAR(AlphaAt(1, 1), 0.75f, 1e-6f);
    far.SetDisabled(true);
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(ColorAt(20, 15), {1, 0.5f, 0.5f}, 1e-6f);
}

TEST_F(FrameTest, ClearSurfacesCutTheAirIntoSegments) {
    AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    AddPlate(2, {1, 0, 0}, 0.5f);
    Node* const back = AddPlate(0, {0, 1, 0});
    Film film({0, 0, 1}, 0.5f);
    core.AddAtmosphere(&film);
    settings.samples = 1;
    ASSERT_EQ(Render(), FrameResult::kDone);
    std::vector<Segment> segments = film.At(20, 15);
    ASSERT_EQ(segments.size(), 2u);
    EXPECT_NEAR(segments[0].p0.z, 2, 1e-5f);
    EXPECT_NEAR(segments[0].p1.z, 0, 1e-5f);
    EXPECT_EQ(segments[1].p0, Point3(0, 0, 10));
    EXPECT_NEAR(segments[1].p1.z, 2, 1e-5f);
    // Green under the film (0, .5, .5), under half red (.5, .25, .25), under the film again.
    ExpectColor(ColorAt(20, 15), {0.25f, 0.125f, 0.625f}, 1e-5f);
    EXPECT_NEAR(DepthAt(20, 15), -8, 1e-4f);
    // Air in front of the back plate is left out when its node says so.
    back->SetRenderFlags(true, true, true, true, false);
    film.segments.clear();
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(film.At(20, 15).size(), 1u);
}

TEST_F(FrameTest, BackgroundShowsThroughClearSurfacesAndHalfVisibleNodes) {
    AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    Node* const plate = AddPlate(0, {1, 0, 0}, 0.5f);
    core.SetBackGround({0, 0, 1});
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(ColorAt(20, 15), {0.5f, 0, 0}, 1e-5f);
    ExpectColor(picture.GetBackground(20, 15), {0, 0, 0.5f}, 1e-5f);
    EXPECT_NEAR(AlphaAt(20, 15), 0.5f, 1e-5f);
    plate->SetVisibility(0.5f);
    ASSERT_EQ(Render(), FrameResult::kDone);
    ExpectColor(ColorAt(20, 15), {0.25f, 0, 0}, 1e-5f);
    EXPECT_NEAR(AlphaAt(20, 15), 0.25f, 1e-5f);
}

TEST_F(FrameTest, ThePictureIsTheSameForAnyNumberOfThreads) {
    AddShow();
    settings.width = 97;
    settings.height = 61;
    Film film({0.5f, 0.5f, 0.5f}, 0.25f);
    core.AddAtmosphere(&film);
    std::vector<Picture> pictures;
    for (const int threads : {1, 2, 3, 16, 1}) {
        settings.threads = threads;
        ASSERT_EQ(Render(), FrameResult::kDone);
        EXPECT_EQ(stats.threads, threads);
        pictures.push_back(picture);
    }
    for (size_t i = 1; i < pictures.size(); ++i)
        for (int y = 0; y < 61; ++y)
            for (int x = 0; x < 97; ++x) {
                ASSERT_EQ(pictures[i].GetPixel(x, y), pictures[0].GetPixel(x, y)) << i << ": " << x << " " << y;
                ASSERT_EQ(pictures[i].GetBackground(x, y), pictures[0].GetBackground(x, y));
                ASSERT_EQ(pictures[i].Z()[y * 97 + x], pictures[0].Z()[y * 97 + x]);
            }
    EXPECT_GT(stats.cameraSamples, 97u * 61u);
}

TEST_F(FrameTest, EdgesAreSmoothAndEvenAreasTakeOneSample) {
    AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    Node* const plate = AddPlate(0, {1, 1, 1});
    plate->SetNodeTM(0, TransMatrix({1.0f / 6, 0, 0})); // edges a third of a pixel off
    ASSERT_EQ(Render(), FrameResult::kDone);
    // Right edge at 20 + 2 * (3 + 1/6) = 26.33, left edge at 14.33.
    EXPECT_NEAR(AlphaAt(26, 15), 1.0f / 3, 1e-6f);
    EXPECT_NEAR(AlphaAt(14, 15), 2.0f / 3, 1e-6f);
    EXPECT_EQ(AlphaAt(25, 15), 1.0f);
    EXPECT_EQ(AlphaAt(27, 15), 0.0f);
    const uint64_t border = stats.cameraSamples - 1200; // 8 more samples in every pixel at the border
    EXPECT_EQ(border % 8, 0u);
    EXPECT_LT(border / 8, 110u);
    EXPECT_GT(border / 8, 40u);
    settings.samples = 1;
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(AlphaAt(26, 15), 0.0f);
    EXPECT_EQ(AlphaAt(14, 15), 1.0f);
}

TEST_F(FrameTest, AnAbortStopsAndStillEndsTheEffects) {
    AddShow();
    settings.width = settings.height = 200;
    Film film;
    std::atomic<int> calls{0};
    film.onShade = [&] {
        if (++calls == 500) core.RequestRenderAbort();
    };
    core.AddAtmosphere(&film);
    EXPECT_EQ(Render(), FrameResult::kAborted);
    EXPECT_EQ(film.log, "begin update0 end ");
    EXPECT_LT(film.segments.size(), 20000u);
    // The request stands until somebody takes it back.
    EXPECT_EQ(Render(), FrameResult::kAborted);
    core.ClearRenderAbort();
    film.onShade = nullptr;
    EXPECT_EQ(Render(), FrameResult::kDone);
}

TEST_F(FrameTest, AFailureInAnEffectEndsTheEffectsAndComesOut) {
    AddShow();
    Film film;
    film.onShade = [] { throw Error("broken"); };
    core.AddAtmosphere(&film);
    EXPECT_THROW(Render(), Error);
    EXPECT_EQ(film.log, "begin update0 end ");
}

TEST_F(FrameTest, ProgressCountsLinesOneCallAtATime) {
    class Counter : public IProgressIndicator {
    public:
        void SetTask(const std::string&, int) override {}
        void SetTaskProgress(int) override {}
        void SetObject(const std::string& name, int total) override {
            EXPECT_EQ(name, "Rendering");
            all = total;
        }
        void SetObjectProgress(int done) override {
            EXPECT_GT(done, last);
            last = done;
        }
        int last = 0, all = 0;
    } progress;
    AddShow();
    settings.height = 70;
    settings.threads = 3;
    EXPECT_EQ(RenderFrame(core, settings, &progress, picture, stats), FrameResult::kDone);
    EXPECT_EQ(progress.last, 70);
    EXPECT_EQ(progress.all, 70);
    EXPECT_GT(stats.wallSeconds, 0);
    EXPECT_GT(stats.cpuSeconds, 0);
    EXPECT_GT(stats.peakRssBytes, 1u << 20);
}

TEST_F(FrameTest, EffectsOnSeveralThreadsMayTellTheirProgress) {
    const std::string titles[] = {"strands of the mane and of the tail",
                                  "a field of grass that is much longer than hair"};
    class Names : public IProgressIndicator {
    public:
        explicit Names(const std::string* expected) : expected_(expected) {}
        void SetTask(const std::string&, int) override {}
        void SetTaskProgress(int) override {}
        void SetObject(const std::string& name, int) override {
            ++told;
            wrong += name != expected_[0] + " 25 %" && name != expected_[1] + " 25 %";
        }
        void SetObjectProgress(int) override {}
        int told = 0, wrong = 0;

    private:
        const std::string* expected_;
    } names(titles);
    std::mutex mutex;
    const std::atomic<int> lines{0};
    EffectProgress progress(core, &names, mutex, lines, 10);
    progress.SetTitle(titles[0].c_str());
    const auto tell = [&](const std::string& title) {
        for (int i = 0; i < 200000; ++i) {
            progress.SetTitle(title.c_str());
            progress.Progress(1, 4);
        }
    };
    std::thread other([&] { tell(titles[1]); });
    tell(titles[0]);
    other.join();
    EXPECT_EQ(names.told, 400000);
    EXPECT_EQ(names.wrong, 0);
}

/// Says that there is nothing, and no more than that.
class NothingMtl : public Mtl {
public:
    ~NothingMtl() override { DeleteAllRefs(); }
    void Shade(ShadeContext& sc) override { sc.out.flags |= SHADEOUT_NOTHING; }
};

TEST_F(FrameTest, WhereAMaterialSaysThatThereIsNothingTheRayGoesOn) {
    AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    Node* const plate = AddPlate(0, {1, 0.5f, 0.25f});
    AddPlate(2, {0, 0, 1})->SetMtl(core.Adopt(new NothingMtl));
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(ColorAt(20, 15), Color(1, 0.5f, 0.25f));
    EXPECT_NEAR(DepthAt(20, 15), -10.0f, 1e-4f);
    plate->Hide(true);
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(AlphaAt(20, 15), 0.0f);
}

TEST_F(FrameTest, HiddenAndUnrenderableNodesAreLeftOut) {
    AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    Node* const plate = AddPlate(0, {1, 1, 1});
    const auto alpha = [&] {
        EXPECT_EQ(Render(), FrameResult::kDone);
        return AlphaAt(20, 15);
    };
    EXPECT_EQ(alpha(), 1.0f);
    plate->Hide(true);
    EXPECT_EQ(alpha(), 0.0f);
    plate->Hide(false);
    plate->SetRenderFlags(false, true, true, true, true);
    EXPECT_EQ(alpha(), 0.0f);
    plate->SetRenderFlags(true, false, true, true, true);
    EXPECT_EQ(alpha(), 0.0f);
    plate->SetRenderFlags(true, true, true, true, true);
    plate->SetVisibility(0);
    EXPECT_EQ(alpha(), 0.0f);
}

TEST_F(FrameTest, MeshesWithBrokenFacesRenderTheRest) {
    AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    Mesh mesh = PlaneMesh(3);
    mesh.verts.push_back({NAN, 0, 0});
    mesh.verts.push_back({INFINITY, 0, 0});
    for (const int bad : {4, 5, 17, -3}) {
        Face f;
        f.v[0] = 0, f.v[1] = 1, f.v[2] = bad;
        mesh.faces.insert(mesh.faces.begin(), f);
    }
    mesh.maps.clear();
    AddMesh("broken", mesh, nullptr);
    AddMesh("empty", Mesh(), nullptr);
    Mesh noVertices;
    noVertices.faces.resize(2);
    AddMesh("no vertices", noVertices, nullptr);
    core.SetAmbient({1, 1, 1});
    ASSERT_EQ(Render(), FrameResult::kDone);
    for (const int x : {18, 20, 22}) EXPECT_EQ(AlphaAt(x, 15), 1.0f);
    ExpectColor(ColorAt(20, 15), {0.6f, 0.6f, 0.6f}, 1e-5f); // the node's own colour
}

TEST_F(FrameTest, IdsGoToTheChannelsThatAreAskedFor) {
    AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
    Mesh mesh = PlaneMesh(3);
    for (Face& f : mesh.faces) f.SetMatID(7);
    AddMesh("first", BoxMesh({50, 50, 0}, {51, 51, 1}), nullptr);
    Node* const plate = AddMesh("plate", mesh, nullptr);
    plate->SetGBufID(300);
    core.RenderParams().gbufChannels = BMM_CHAN_MTL_ID | BMM_CHAN_NODE_ID | BMM_CHAN_NODE_RENDER_ID;
    ASSERT_EQ(Render(), FrameResult::kDone);
    ChannelType type;
    const size_t at = 15 * 40 + 20;
    EXPECT_EQ(static_cast<uint8_t*>(picture.GetChannel(BMM_CHAN_MTL_ID, type))[at], 7);
    EXPECT_EQ(static_cast<uint16_t*>(picture.GetChannel(BMM_CHAN_NODE_ID, type))[at], 300);
    EXPECT_EQ(static_cast<uint16_t*>(picture.GetChannel(BMM_CHAN_NODE_RENDER_ID, type))[at], 1);
    EXPECT_EQ(static_cast<uint16_t*>(picture.GetChannel(BMM_CHAN_NODE_ID, type))[0], 0);
    EXPECT_EQ(plate->GetRenderID(), 0xffffu); // only during the render
}

TEST_F(FrameTest, BadSettingsAreOneLineEach) {
    AddCamera({0, 0, 10}, {0, 0, 0});
    const auto failure = [&](auto&& change) {
        FrameSettings s = settings;
        change(s);
        try {
            CheckFrameSettings(core, s);
        } catch (const Error& e) {
            return std::string(e.what());
        }
        return std::string();
    };
    EXPECT_EQ(failure([](FrameSettings&) {}), "");
    EXPECT_EQ(failure([](FrameSettings& s) { s.width = s.height = 0; }),
              "cannot render a picture of 0 x 0 pixels, expected 1 to 32768 a side");
    EXPECT_EQ(failure([](FrameSettings& s) { s.height = 32769; }),
              "cannot render a picture of 40 x 32769 pixels, expected 1 to 32768 a side");
    EXPECT_NE(failure([](FrameSettings& s) { s.pixelAspect = 0; }), "");
    EXPECT_NE(failure([](FrameSettings& s) { s.pixelAspect = NAN; }), "");
    EXPECT_NE(failure([](FrameSettings& s) { s.threads = -1; }), "");
    EXPECT_NE(failure([](FrameSettings& s) { s.samples = 0; }), "");
    EXPECT_EQ(failure([](FrameSettings& s) { s.camera = "kam"; }), "there is no camera 'kam', expected one of 'cam'");
    settings.width = 0;
    EXPECT_THROW(Render(), Error);
}

TEST_F(FrameTest, AMapWithoutItsFileIsOneLine) {
    AddCamera({0, 0, 10}, {0, 0, 0});
    auto* const map = core.Adopt(new BitmapMap);
    map->Params()->SetValue(kBitmapFile, 0, TSTR("/no/such/fur.png"));
    try {
        Render();
        ADD_FAILURE();
    } catch (const Error& e) {
        EXPECT_STREQ(e.what(), "/no/such/fur.png: cannot read: there is no such file");
    }
}

TEST_F(FrameTest, AnotherRendererIsRefused) {
    class Other : public Renderer {};
    AddCamera({0, 0, 10}, {0, 0, 0});
    core.SetCurrentRenderer(core.Adopt(new Other));
    EXPECT_THROW(Render(), Error);
}

TEST_F(FrameTest, TheViewportsCameraComesBack) {
    AddCamera({0, 0, 10}, {0, 0, 0});
    core.CreateNode("other", new TargetCamera);
    core.SetViewportCamera(core.GetINodeByName("other"));
    settings.camera = "cam";
    ASSERT_EQ(Render(), FrameResult::kDone);
    EXPECT_EQ(core.GetActiveViewport()->GetViewCamera(), core.GetINodeByName("other"));
}

TEST(ThreadCount, IsTheProcessorsForZero) {
    EXPECT_EQ(ThreadCount(0), std::max(1, int(std::thread::hardware_concurrency())));
    EXPECT_EQ(ThreadCount(5), 5);
    EXPECT_EQ(ThreadCount(100000), 256);
}

} // namespace
} // namespace host
