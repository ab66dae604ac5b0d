// Camera samples a second of the host's renderer, beside a bare Embree loop over the same rays in the same run: one
// camera ray through every pixel's centre, and one shadow ray where the light can reach what it hit.
//
// usage: camera_bench SCENE.toml (one omni light that casts shadows)
// Prints one JSON object with medians of seven by name and number of threads: rays a second of the bare loop, samples a
// second with one sample a pixel and with more at edges, and the shares of the two in the loop's rate.

#include <embree3/rtcore.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "render/render_context.h"
#include "scene/loader.h"

namespace {

using namespace host;

constexpr int kRuns = 7;

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + kRuns / 2, values.end());
    return values[kRuns / 2];
}

/// The scene's meshes in camera space, with the library's own settings.
class BareScene {
public:
    explicit BareScene(RenderContext& render) : device_(rtcNewDevice("threads=1")), scene_(rtcNewScene(device_)) {
        for (int i = 0; i < render.NumRenderInstances(); ++i) Add(*render.GetRenderInstance(i));
        rtcCommitScene(scene_);
    }
    ~BareScene() {
        rtcReleaseScene(scene_);
        rtcReleaseDevice(device_);
    }
    BareScene(const BareScene&) = delete;
    BareScene& operator=(const BareScene&) = delete;

    /// One pixel; 1 when the camera sees light there.
    int Trace(const CameraView& view, const Point3& light, int x, int y) const {
        Point3 from, d;
        view.RayThrough(float(x) + 0.5f, float(y) + 0.5f, from, d);
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        RTCRayHit ray{};
        Aim(ray.ray, from, d, view.hither, view.yon);
        ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        rtcIntersect1(scene_, &context, &ray);
        if (ray.hit.geomID == RTC_INVALID_GEOMETRY_ID) return 0;
        const Point3 p = from + d * ray.ray.tfar, way = light - p;
        const Point3 n(ray.hit.Ng_x, ray.hit.Ng_y, ray.hit.Ng_z);
        // The side that is seen must be the lit one.
        if (!(DotProd(n, way) * DotProd(n, d) < 0.0f)) return 0;
        RTCRay shadow{};
        Aim(shadow, p, way, 1e-4f, 1.0f);
        rtcInitIntersectContext(&context);
        rtcOccluded1(scene_, &context, &shadow);
        return shadow.tfar >= 0.0f;
    }

private:
    static void Aim(RTCRay& ray, const Point3& from, const Point3& d, float near, float far) {
        ray.org_x = from.x, ray.org_y = from.y, ray.org_z = from.z;
        ray.dir_x = d.x, ray.dir_y = d.y, ray.dir_z = d.z;
        ray.tnear = near, ray.tfar = far;
        ray.mask = -1u;
    }
    void Add(const RenderInstance& instance) {
        const Mesh& mesh = *instance.mesh;
        RTCGeometry g = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
        auto* const p = static_cast<float*>(rtcSetNewGeometryBuffer(g, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                                                                    3 * sizeof(float), mesh.verts.size()));
        auto* const c = static_cast<unsigned*>(rtcSetNewGeometryBuffer(g, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                                                                       3 * sizeof(unsigned), mesh.faces.size()));
        for (size_t i = 0; i < mesh.verts.size(); ++i) {
            const Point3 at = mesh.verts[i] * instance.objToCam;
            for (int k = 0; k < 3; ++k) p[3 * i + size_t(k)] = at[k];
        }
        for (size_t f = 0; f < mesh.faces.size(); ++f)
            for (size_t k = 0; k < 3; ++k) c[3 * f + k] = unsigned(mesh.faces[f].v[k]);
        rtcCommitGeometry(g);
        rtcAttachGeometry(scene_, g);
        rtcReleaseGeometry(g);
    }
    RTCDevice device_;
    RTCScene scene_;
};

/// Camera rays a second of the bare loop.
double BareRate(const BareScene& scene, const RenderContext& render, const Point3& light, int threads) {
    const auto start = std::chrono::steady_clock::now();
    std::atomic<int> row{0}, lit{0};
    const auto work = [&] {
        int mine = 0;
        for (int y = row++; y < render.devHeight; y = row++)
            for (int x = 0; x < render.devWidth; ++x) mine += scene.Trace(render.View(), light, x, y);
        lit += mine;
    };
    std::vector<std::thread> others;
    for (int i = 1; i < threads; ++i) others.emplace_back(work);
    work();
    for (std::thread& t : others) t.join();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (lit == 0) std::fprintf(stderr, "camera_bench: nothing is lit\n");
    return double(render.devWidth) * double(render.devHeight) / seconds;
}

/// Camera samples a second of whole frames, the preparation of the scene included. The picture is used again, as by a
/// series of frames.
double FrameRate(Core& core, FrameSettings settings, int threads, int samples) {
    settings.threads = threads;
    settings.samples = samples;
    static Picture picture;
    FrameStats stats;
    RenderFrame(core, settings, nullptr, picture, stats);
    return double(stats.cameraSamples) / stats.wallSeconds;
}

int Run(const char* file) {
    Core core;
    core.SetQuietMode(true);
    core.Log()->SetSink([](int, const std::string&) {});
    const Core::Scope current(core);
    RegisterRenderClasses(core);
    const LoadedScene scene = LoadScene(core, file);
    const FrameSettings& settings = scene.render;
    const CameraView view =
        MakeCameraView(FindCamera(core, settings.camera), 0, settings.width, settings.height, settings.pixelAspect);
    RenderContext render(core, settings, view);
    render.AddLights();
    const Point3 light = render.GetLight(0)->lightToCam.GetTrans();
    const BareScene bare(render);
    for (const int threads : {1, 2}) {
        // In turns, so that what else the machine does meets all of them.
        std::vector<double> rays, one, edges, oneShare, edgesShare;
        for (int i = 0; i < kRuns; ++i) {
            rays.push_back(BareRate(bare, render, light, threads));
            one.push_back(FrameRate(core, settings, threads, 1));
            edges.push_back(FrameRate(core, settings, threads, 3));
            oneShare.push_back(one.back() / rays.back());
            edgesShare.push_back(edges.back() / rays.back());
        }
        std::printf("%s\"bare_%d\": %.0f, \"one_%d\": %.0f, \"edges_%d\": %.0f, ", threads == 1 ? "{" : ", ", threads,
                    Median(rays), threads, Median(one), threads, Median(edges));
        std::printf("\"one_share_%d\": %.3f, \"edges_share_%d\": %.3f", threads, Median(oneShare), threads,
                    Median(edgesShare));
    }
    std::printf("}\n");
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2) try {
            return Run(argv[1]);
        } catch (const host::Error& e) {
            std::fprintf(stderr, "camera_bench: %s\n", e.what());
            return 1;
        }
    std::fprintf(stderr, "usage: camera_bench SCENE.toml\n");
    return 1;
}
