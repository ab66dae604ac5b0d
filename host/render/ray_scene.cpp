#include "render/ray_scene.h"

#include <algorithm>
#include <cmath>

#include <embree3/rtcore.h>

#include "core/error.h"

namespace host {

/// The library's device and scene, and the meshes' own ids by geometry number.
struct RayScene::Impl {
    RTCDevice device = nullptr;
    RTCScene scene = nullptr;
    std::vector<int> ids;
};

namespace {

/// Less light than this counts as none.
constexpr float kDark = 1e-3f;

/// What travels with a shadow ray.
struct ShadowQuery {
    RTCIntersectContext context; // first: the library hands its address back
    Point3 from, direction;
    const std::vector<int>* ids = nullptr;
    ShadowFilter* filter = nullptr;
    Color light{1, 1, 1};
};

// Every member by itself: a value-initialised ray is cleared as a block first, which costs more than the rest.
void SetRay(RTCRay& ray, const Point3& from, const Point3& direction, float near, float far, unsigned rays) {
    ray.org_x = from.x, ray.org_y = from.y, ray.org_z = from.z;
    ray.dir_x = direction.x, ray.dir_y = direction.y, ray.dir_z = direction.z;
    ray.tnear = near, ray.tfar = far;
    ray.time = 0;
    ray.mask = rays;
    ray.id = ray.flags = 0;
}

// Called for every triangle of a clear mesh on a shadow ray: takes its share of the light and lets the ray go on.
void FilterShadow(const RTCFilterFunctionNArguments* args) {
    auto* const query = reinterpret_cast<ShadowQuery*>(args->context);
    if (args->N != 1 || args->valid[0] == 0 || !query->filter) return;
    const auto* const at = reinterpret_cast<const RTCHit*>(args->hit);
    const RayHit hit{(*query->ids)[at->geomID], int(at->primID), at->u, at->v,
                     reinterpret_cast<const RTCRay*>(args->ray)->tfar};
    query->light = query->light * query->filter->Transparency(hit, query->from, query->direction);
    if (std::max({query->light.r, query->light.g, query->light.b}) > kDark) args->valid[0] = 0;
}

} // namespace

RayScene::RayScene() : impl_(new Impl) {
    impl_->device = rtcNewDevice("threads=1,isa=sse4.2");
    if (!impl_->device) {
        delete impl_;
        throw Error("cannot trace rays: this processor lacks SSE 4.2");
    }
    impl_->scene = rtcNewScene(impl_->device);
    rtcSetSceneFlags(impl_->scene, RTC_SCENE_FLAG_ROBUST);
    rtcSetSceneBuildQuality(impl_->scene, RTC_BUILD_QUALITY_MEDIUM);
}

RayScene::~RayScene() {
    rtcReleaseScene(impl_->scene);
    rtcReleaseDevice(impl_->device);
    delete impl_;
}

void RayScene::AddMesh(int id, const std::vector<Point3>& points, const std::vector<int>& corners, unsigned rays,
                       bool clear) {
    if (points.empty() || corners.size() < 3) return;
    const size_t faces = corners.size() / 3;
    RTCGeometry geometry = rtcNewGeometry(impl_->device, RTC_GEOMETRY_TYPE_TRIANGLE);
    auto* const p = static_cast<float*>(rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                                                                3 * sizeof(float), points.size()));
    auto* const c = static_cast<unsigned*>(
        rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(unsigned), faces));
    if (!p || !c) {
        rtcReleaseGeometry(geometry);
        throw Error("cannot trace rays: out of memory");
    }
    for (size_t i = 0; i < points.size(); ++i)
        for (int k = 0; k < 3; ++k) p[3 * i + size_t(k)] = points[i][k];
    for (size_t f = 0; f < faces; ++f) {
        const int* const v = &corners[3 * f];
        const bool good = std::all_of(
            v, v + 3, [&](int i) { return i >= 0 && size_t(i) < points.size() && IsFinite(points[size_t(i)]); });
        // A triangle without area is never hit.
        for (size_t k = 0; k < 3; ++k) c[3 * f + k] = good ? unsigned(v[k]) : 0u;
    }
    rtcSetGeometryMask(geometry, rays);
    if (clear) rtcSetGeometryOccludedFilterFunction(geometry, FilterShadow);
    rtcCommitGeometry(geometry);
    const unsigned number = rtcAttachGeometry(impl_->scene, geometry);
    rtcReleaseGeometry(geometry);
    if (impl_->ids.size() <= number) impl_->ids.resize(size_t(number) + 1, -1);
    impl_->ids[number] = id;
}

void RayScene::Commit() {
    rtcCommitScene(impl_->scene);
    if (rtcGetDeviceError(impl_->device) != RTC_ERROR_NONE) throw Error("cannot trace rays: out of memory");
}

bool RayScene::Nearest(const Point3& from, const Point3& direction, float near, float far, unsigned rays,
                       RayHit& hit) const {
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    RTCRayHit query;
    SetRay(query.ray, from, direction, near, far, rays);
    query.hit.geomID = query.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(impl_->scene, &context, &query);
    if (query.hit.geomID == RTC_INVALID_GEOMETRY_ID) return false;
    hit = {impl_->ids[query.hit.geomID], int(query.hit.primID), query.hit.u, query.hit.v, query.ray.tfar};
    return true;
}

Color RayScene::Transmission(const Point3& from, const Point3& direction, float near, float far,
                             ShadowFilter* filter) const {
    RTCRay ray;
    SetRay(ray, from, direction, near, far, kShadowRays);
    ShadowQuery query;
    rtcInitIntersectContext(&query.context);
    query.from = from;
    query.direction = direction;
    query.ids = &impl_->ids;
    query.filter = filter;
    rtcOccluded1(impl_->scene, &query.context, &ray);
    // The library marks a blocked ray by a far end of minus infinity.
    return ray.tfar < 0.0f ? Color() : query.light;
}

} // namespace host
