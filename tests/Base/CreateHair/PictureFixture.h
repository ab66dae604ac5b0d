#pragma once
// A camera, a material and a render buffer around the engine.

#include <algorithm>
#include <atomic>

#include "Base/CreateHair/RenderDriver.h"
#include "Base/EngineFixture.h"
#include "HRendBuf/TestHair.h"

namespace engine {

/// A camera at (0, 0, distance) that looks down -Z at the origin.
struct Camera {
    HairImageInfo image;
    ViewParamsEx view;
    Camera(int width, int height, float distance, bool perspective = true) {
        view.projType = perspective ? PROJ_PERSPECTIVE : PROJ_PARALLEL;
        view.fov = 0.8f;
        view.zoom = 0.015f; // parallel views are 400 units wide at 1
        view.camToWorld = TransMatrix({0, 0, distance});
        view.worldToCam = Inverse(view.camToWorld);
        view.nearRange = 0, view.farRange = 100;
        image.SetSize(width, height, 1.0f);
        image.ComputeScales(view);
    }
    RunRequest Request(const ScreenRegion* region = nullptr) const {
        RunRequest r;
        r.worldToOutput = view.worldToCam;
        r.image = &image;
        r.perspective = view.projType == PROJ_PERSPECTIVE;
        r.region = region;
        return r;
    }
};

/// The strand's colour, brighter where the normal faces the camera, partly clear.
class StrandPaint : public Mtl {
public:
    void Shade(ShadeContext& sc) override {
        sc.out.c = Color(sc.UVW(0)) * (0.3f + 0.7f * std::fabs(sc.Normal().z));
        sc.out.t = Color(0.3f, 0.3f, 0.3f);
        ++shaded;
    }
    std::atomic<int> shaded{0};
};

/// Everything a pixel of a rendered picture holds.
struct Picture {
    std::vector<std::vector<Plain>> lists;
    std::vector<Color> colors;
    int64_t strands = 0;
    size_t Filled() const {
        return size_t(std::count_if(lists.begin(), lists.end(), [](const auto& l) { return !l.empty(); }));
    }
    friend bool operator==(const Picture&, const Picture&) = default;
};

struct PictureSettings {
    int threads = 1, bucketType = 0, bucketSize = 64;
    bool shadeMiddle = true;
    float thickLimit = 2.0f;
    size_t batchBytes = 4u << 20;
};

/// The hair of one emitter as a source for a buffer.
class Coat : public IHairSource {
public:
    Coat(Engine& e, const Camera& camera, StrandPaint& paint) : engine_(e), camera_(camera) {
        setup.material = &paint;
        setup.image = &camera.image;
        setup.view = &camera.view;
        setup.useLights = false;
    }
    ShadingSetup setup;
    std::atomic<bool> abort{false};
    RenderStats stats;

    bool Update(TimeValue) override { return true; }
    int StrandCount() override { return 0; }
    float MinHairDist() override { return 0; }
    int Render(HRendBuf& buffer) override {
        const PixelRect& b = buffer.Bucket();
        const ScreenRegion region{b.x0, b.y0, b.x1, b.y1, buffer.Settings().filter->Size()};
        RunRequest r = camera_.Request(&region);
        r.shading = buffer.Settings().shadeMiddle;
        engine_.Begin(r);
        uint32_t unit = 0;
        stats = RenderHair(engine_.run, setup, buffer, &abort, unit);
        return int(stats.strands);
    }

private:
    Engine& engine_;
    const Camera& camera_;
};

inline Picture RenderPicture(Engine& e, const Camera& camera, const PictureSettings& s, StrandPaint& paint) {
    TestOwner owner;
    owner.settings.threadCount = s.threads;
    owner.settings.bucketType = s.bucketType;
    owner.settings.bucketSize = s.bucketSize;
    owner.settings.shadeMiddle = s.shadeMiddle;
    owner.settings.thickLimit = s.thickLimit;
    owner.settings.batchBytes = s.batchBytes;
    Coat coat(e, camera, paint);
    owner.sources = {&coat};
    HRendBuf buffer(owner);
    Picture p;
    for (int y = 0; y < camera.image.height; ++y)
        for (int x = 0; x < camera.image.width; ++x) {
            buffer.RenderBucket(HRM_IMAGE, 0, camera.image, camera.view, x, y, nullptr, nullptr, nullptr);
            p.lists.push_back(PlainList(buffer.ReadImage(x, y)));
            Color c;
            float through = 1;
            buffer.Composite(x, y, 0, -1000, c, through);
            p.colors.push_back(c + Color(through, through, through));
        }
    EXPECT_TRUE(owner.asserts.empty());
    return p;
}

} // namespace engine
