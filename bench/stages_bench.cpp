// Where the time of a picture goes: the same strands, stopped after each stage.
//
// usage: stages_bench MESH.obj STRANDS
// One thread, 1280 x 720, two lights. Prints one line a stage: seconds and share.

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Base/CreateHair/RenderDriver.h"
#include "Base/CreateHair/RenderHandoff.h"
#include "Base/CreateHair/WorkUnits.h"
#include "BenchEmitter.h"
#include "BunnyMesh.h"
#include "BunnyScene.h"
#include "HRendBuf/HRendBuf.h"

namespace {

constexpr int kWidth = 1280, kHeight = 720;

double Now() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

// A diffuse material in the strand's colour.
class StrandMaterial : public Mtl {
public:
    void Shade(ShadeContext& sc) override {
        Color sum(0.2f, 0.2f, 0.2f);
        for (int i = 0; i < sc.nLights; ++i) {
            Color c;
            Point3 d;
            float cosine, diffuse;
            if (sc.Light(i)->Illuminate(sc, sc.Normal(), c, d, cosine, diffuse)) sum += c * diffuse;
        }
        sc.out.c = sum * Color(0.6f, 0.45f, 0.3f);
        sc.out.t = Color();
    }
};

class DirectLight : public LightDesc {
public:
    DirectLight(const Point3& d, const Color& c) : direction_(d), color_(c) {}
    bool Illuminate(ShadeContext&, const Point3& n, Color& c, Point3& d, float& cosine, float& diffuse) override {
        cosine = diffuse = DotProd(n, direction_);
        if (cosine <= 0) return false;
        c = color_, d = direction_;
        return true;
    }

private:
    Point3 direction_;
    Color color_;
};

struct Nobody {
    static bool Aborted() { return false; }
    void OnStrand(StrandContext&) {}
};

class Owner : public IHRendOwner {
public:
    HRendSettings settings;
    std::vector<IHairSource*> sources;
    HRendSettings& Settings() override { return settings; }
    std::vector<IHairSource*> HairSources() override { return sources; }
    RendParams RenderParams() override { return {}; }
    bool Aborted() override { return false; }
    bool MemoryIsTight() override { return false; }
    void Assert(const char* what) override { std::fprintf(stderr, "assertion: %s\n", what); }
};

class Coat : public IHairSource {
public:
    GenerationRun* run = nullptr;
    ShadingSetup* setup = nullptr;
    bool Update(TimeValue) override { return true; }
    int StrandCount() override { return 0; }
    float MinHairDist() override { return 0; }
    int Render(HRendBuf& buffer) override {
        uint32_t unit = 0;
        return int(RenderHair(*run, *setup, buffer, nullptr, unit).strands);
    }
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: stages_bench MESH.obj STRANDS\n");
        return 1;
    }
    const Mesh mesh = LoadBunny(argv[1]);
    const HairParams params = BunnyCoat(std::atof(argv[2]) / double(mesh.getNumFaces()));

    ViewParamsEx view;
    const Point3 forward = Normalize(kBunnyTarget - kBunnyCamera),
                 right = Normalize(CrossProd(forward, Point3(0, 0, 1)));
    view.camToWorld = Matrix3(right, CrossProd(right, forward), -forward, kBunnyCamera);
    view.worldToCam = Inverse(view.camToWorld);
    view.fov = kBunnyFov;
    HairImageInfo image;
    image.SetSize(kWidth, kHeight, 1.0f);
    image.ComputeScales(view);
    StrandMaterial material;
    DirectLight key(Normalize(VectorTransform(kBunnyKeyLight, view.worldToCam)), {0.9f, 0.85f, 0.8f});
    DirectLight fill(Normalize(VectorTransform(Point3(-1, -0.4f, 0.2f), view.worldToCam)), {0.2f, 0.25f, 0.3f});
    ShadingSetup setup;
    setup.material = &material;
    setup.lights = {&key, &fill};
    setup.image = &image;
    setup.view = &view;

    const double t0 = Now();
    BenchEmitter emitter(mesh);
    CtlHairMesh control(&emitter);
    control.Evaluate(0, params);
    const ScreenRegion region{0, 0, kWidth, kHeight, 1.5f};
    RunRequest request;
    request.params = &params;
    request.control = &control;
    request.worldToOutput = view.worldToCam;
    request.image = &image;
    request.region = &region;
    GenerationRun run;
    run.Prepare(request);
    StrandContext context(run, 0);
    DrawStrandCounts(run, context);
    const std::vector<WorkUnit> units = MakeWorkUnits(run, 128);

    const double t1 = Now();
    Nobody nobody;
    for (const WorkUnit& u : units) BuildUnit(context, u, nobody);

    const double t2 = Now();
    HRendSettings settings;
    const LineFilterCone cone(1.5f);
    settings.filter = &cone;
    SampleWriter writer;
    StrandShading shading(setup, params);
    const auto draw = [&](const PixelRect& rect) {
        writer.Setup(TileGrid(rect));
        HRB_Thick raster(0, writer);
        const LineFilterCone fallback(1.0f);
        raster.SetTarget({rect, &cone, 1.5f, &fallback});
        RenderHandoff handoff(run, settings, raster, &shading, nullptr, nullptr);
        for (const WorkUnit& u : units) {
            BuildUnit(context, u, handoff);
            if (writer.BytesInUse() > settings.batchBytes) writer.Reset();
        }
    };
    draw({0, 0, 1, 1});
    const double t3 = Now();
    draw({0, 0, kWidth, kHeight});
    const double t4 = Now();
    Owner owner;
    owner.settings = settings;
    owner.settings.bucketType = 0;
    Coat coat;
    coat.run = &run, coat.setup = &setup;
    owner.sources = {&coat};
    HRendBuf buffer(owner);
    buffer.RenderBucket(HRM_IMAGE, 0, image, view, 0, 0, nullptr, nullptr, nullptr);
    const double t5 = Now();

    const double prepare = t1 - t0, generate = t2 - t1, shade = (t3 - t2) - generate, raster = (t4 - t3) - (t3 - t2),
                 insert = (t5 - t4) - (t4 - t3), total = prepare + (t5 - t4);
    const auto line = [&](const char* name, double s) {
        std::printf("%-34s %7.2f s  %5.1f %%\n", name, s, 100 * s / total);
    };
    std::printf("%s strands, one thread\n", argv[2]);
    line("control strands, run preparation", prepare);
    line("making strands", generate);
    line("widths, shading (two lights)", shade);
    line("rasterising", raster);
    line("inserting fragments", insert);
    line("all", total);
    return 0;
}
