// The ray-traced picture that ours is measured against: the same strands as flat Bezier curves in an Embree scene, on
// all threads: build, then 16 camera rays a pixel, and one shadow ray for every hit.
//
// usage: raytraced_baseline MESH.obj STRANDS [WIDTH HEIGHT [THREADS]]
// Prints one JSON object; the time to make the strands is reported apart and not counted.

#include <embree3/rtcore.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "Base/CreateHair/WorkUnits.h"
#include "BenchEmitter.h"
#include "BunnyMesh.h"
#include "BunnyScene.h"

namespace {

double Now() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

// Curve vertices (x, y, z, radius) of all strands.
struct Curves {
    std::vector<float> vertices;
    std::vector<unsigned> first; ///< first vertex of every segment
    static bool Aborted() { return false; }
    void OnStrand(StrandContext& c) {
        const unsigned base = unsigned(vertices.size() / 4);
        for (int s = 0; s < c.segments; ++s) first.push_back(base + unsigned(3 * s));
        for (int k = 0; k <= 3 * c.segments; ++k) {
            const Point3 p = c.control[k];
            const int point = std::min(c.points - 1, k * c.run->steps / 3);
            vertices.insert(vertices.end(), {p.x, p.y, p.z, c.width[point] * 0.5f});
        }
    }
};

Curves MakeStrands(const Mesh& mesh, double strands) {
    const HairParams params = BunnyCoat(strands / double(mesh.getNumFaces()));
    BenchEmitter emitter(mesh);
    CtlHairMesh control(&emitter);
    control.Evaluate(0, params);
    GenerationRun run;
    RunRequest request;
    request.mode = GEN_SHAPE;
    request.params = &params;
    request.control = &control;
    run.Prepare(request);
    StrandContext context(run, 0);
    DrawStrandCounts(run, context);
    Curves curves;
    curves.vertices.reserve(size_t(run.TotalStrands()) * 13 * 4);
    curves.first.reserve(size_t(run.TotalStrands()) * 4);
    for (const WorkUnit& u : MakeWorkUnits(run, 128)) BuildUnit(context, u, curves);
    return curves;
}

RTCScene BuildScene(RTCDevice device, const Curves& curves) {
    RTCScene scene = rtcNewScene(device);
    RTCGeometry g = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_FLAT_BEZIER_CURVE);
    rtcSetSharedGeometryBuffer(g, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT4, curves.vertices.data(), 0, 16,
                               curves.vertices.size() / 4);
    rtcSetSharedGeometryBuffer(g, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT, curves.first.data(), 0, 4,
                               curves.first.size());
    rtcCommitGeometry(g);
    rtcAttachGeometry(scene, g);
    rtcReleaseGeometry(g);
    rtcCommitScene(scene);
    return scene;
}

// One pixel: 4 x 4 camera rays, a shadow ray toward the key light for every hit. Answers the number of hits.
int TracePixel(RTCScene scene, int x, int y, int width, int height) {
    const float focal = 0.5f / std::tan(kBunnyFov * 0.5f);
    const Point3 origin = kBunnyCamera;
    const Point3 forward = Normalize(kBunnyTarget - origin);
    const Point3 right = Normalize(CrossProd(forward, Point3(0, 0, 1))), up = CrossProd(right, forward);
    const Point3 light = Normalize(kBunnyKeyLight - kBunnyTarget);
    int hits = 0;
    for (int s = 0; s < 16; ++s) {
        const float u = (float(x) + (float(s % 4) + 0.5f) * 0.25f) / float(width) - 0.5f;
        const float v = (0.5f * float(height) - float(y) - (float(s / 4) + 0.5f) * 0.25f) / float(width);
        const Point3 d = Normalize(forward * focal + right * u + up * v);
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        context.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
        RTCRayHit ray{};
        ray.ray.org_x = origin.x, ray.ray.org_y = origin.y, ray.ray.org_z = origin.z;
        ray.ray.dir_x = d.x, ray.ray.dir_y = d.y, ray.ray.dir_z = d.z;
        ray.ray.tfar = INFINITY;
        ray.ray.mask = -1u;
        ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        rtcIntersect1(scene, &context, &ray);
        if (ray.hit.geomID == RTC_INVALID_GEOMETRY_ID) continue;
        ++hits;
        const Point3 p = origin + d * ray.ray.tfar + light * 0.002f;
        RTCRay shadow{};
        shadow.org_x = p.x, shadow.org_y = p.y, shadow.org_z = p.z;
        shadow.dir_x = light.x, shadow.dir_y = light.y, shadow.dir_z = light.z;
        shadow.tfar = INFINITY;
        shadow.mask = -1u;
        rtcInitIntersectContext(&context);
        rtcOccluded1(scene, &context, &shadow);
    }
    return hits;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: raytraced_baseline MESH.obj STRANDS [WIDTH HEIGHT [THREADS]]\n");
        return 1;
    }
    const int width = argc > 4 ? std::atoi(argv[3]) : 1280, height = argc > 4 ? std::atoi(argv[4]) : 720;
    const int threads = argc > 5 ? std::atoi(argv[5]) : int(std::thread::hardware_concurrency());
    const double t0 = Now();
    const Curves curves = MakeStrands(LoadBunny(argv[1]), std::atof(argv[2]));
    const double t1 = Now();
    RTCDevice device = rtcNewDevice(("threads=" + std::to_string(threads)).c_str());
    RTCScene scene = BuildScene(device, curves);
    const double t2 = Now();
    std::atomic<int> row{0};
    std::atomic<long> hits{0};
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i)
        workers.emplace_back([&] {
            long mine = 0;
            for (int y = row++; y < height; y = row++)
                for (int x = 0; x < width; ++x) mine += TracePixel(scene, x, y, width, height);
            hits += mine;
        });
    for (auto& w : workers) w.join();
    const double t3 = Now();
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("{\"segments\": %zu, \"strands_s\": %.3f, \"build_s\": %.3f, \"trace_s\": %.3f, \"wall_s\": %.3f, "
                "\"hits\": %ld, \"peak_rss_bytes\": %ld}\n",
                curves.first.size(), t1 - t0, t2 - t1, t3 - t2, t3 - t1, hits.load(), usage.ru_maxrss * 1024L);
    rtcReleaseScene(scene);
    rtcReleaseDevice(device);
    return 0;
}
