#include "render/gbuffer_writer.h"

#include <algorithm>
#include <cmath>

#include "image/packed_normal.h"

namespace host {

namespace {

uint8_t ToByte(float v) {
    return uint8_t(std::clamp(v, 0.0f, 1.0f) * 255.0f + 0.5f);
}

void PutBytes(uint8_t* at, size_t index, const Color& c) {
    for (int i = 0; at && i < 3; ++i) at[index * 3 + size_t(i)] = ToByte(c[i]);
}

/// The inverse of ExpandRealPixel, cutting off.
RealPixel ToRealPixel(const Color& c) {
    const float most = std::max({c.r, c.g, c.b});
    if (!(most > 1e-32f)) return {};
    int exponent = 0;
    std::frexp(most, &exponent);
    exponent = std::min(exponent, 127);
    const auto byte = [&](float v) { return uint8_t(std::clamp(std::ldexp(v, 8 - exponent), 0.0f, 255.0f)); };
    return {byte(c.r), byte(c.g), byte(c.b), uint8_t(exponent + 128)};
}

Point2 OnScreen(const CameraView& view, const Point3& p) {
    if (view.projType == PROJ_PARALLEL) return {view.xc + view.xscale * p.x, view.yc + view.yscale * p.y};
    return {view.xc + view.xscale * p.x / p.z, view.yc + view.yscale * p.y / p.z};
}

} // namespace

template <class T>
T* GBufferWriter::Channel(uint32_t channel) {
    ChannelType type;
    return static_cast<T*>(out_.GetChannel(channel, type));
}

GBufferWriter::GBufferWriter(Core& core, RenderContext& render, Picture& out)
    : render_(render), out_(out), material_(Channel<uint8_t>(BMM_CHAN_MTL_ID)),
      coverage_(Channel<uint8_t>(BMM_CHAN_COVERAGE)), color_(Channel<uint8_t>(BMM_CHAN_COLOR)),
      transparency_(Channel<uint8_t>(BMM_CHAN_TRANSP)), node_(Channel<uint16_t>(BMM_CHAN_NODE_ID)),
      renderId_(Channel<uint16_t>(BMM_CHAN_NODE_RENDER_ID)), real_(Channel<RealPixel>(BMM_CHAN_REALPIX)),
      normal_(Channel<uint32_t>(BMM_CHAN_NORMAL)), uv_(Channel<Point2>(BMM_CHAN_UV)),
      velocity_(Channel<Point2>(BMM_CHAN_VELOC)) {
    if (velocity_) MakeNextPlaces(core);
}

void GBufferWriter::MakeNextPlaces(Core& core) {
    const TimeValue later = render_.time + core.GetTicksPerFrame();
    next_ = MakeCameraView(render_.View().node, later, render_.devWidth, render_.devHeight, render_.devAspect);
    for (int i = 0; i < render_.NumRenderInstances(); ++i) {
        MeshInstance& instance = render_.Instance(i);
        Interval valid = FOREVER;
        bool needDelete = false;
        TriObject* const tri = GetTriObjectFromNode(instance.node, later, valid, needDelete);
        // A mesh that becomes another one has no points to follow: it moves as a whole.
        const bool same = tri && tri->mesh.getNumVerts() == instance.mesh->getNumVerts();
        const Matrix3 toCam = instance.node->GetObjectTM(later) * next_.worldToCam;
        std::vector<Point3>& places = nextPlaces_.emplace_back();
        for (const Point3& p : same ? tri->mesh.verts : instance.mesh->verts) places.push_back(p * toCam);
        if (needDelete) tri->DeleteThis();
    }
}

void GBufferWriter::Put(int x, int y, const SurfaceSample& centre, float alpha) const {
    const size_t index = size_t(y) * size_t(out_.Width()) + size_t(x);
    if (coverage_) coverage_[index] = ToByte(alpha);
    const SurfaceLayer& s = centre.first;
    if (s.instance < 0) return;
    const MeshInstance& instance = render_.Instance(s.instance);
    if (material_) material_[index] = uint8_t(s.materialId);
    if (node_) node_[index] = uint16_t(instance.node->GetGBufID());
    if (renderId_) renderId_[index] = uint16_t(instance.nodeID);
    PutBytes(color_, index, s.color);
    PutBytes(transparency_, index, s.transparency);
    if (real_) real_[index] = ToRealPixel(s.color);
    if (normal_) normal_[index] = PackNormal(s.normal);
    if (uv_ || velocity_) PutHit(x, y, index, s);
}

// The surface's hit again: only what is seldom asked for needs it.
bool GBufferWriter::Hit(int x, int y, const SurfaceLayer& surface, RayHit& hit) const {
    Point3 from, direction;
    render_.View().RayThrough(float(x) + 0.5f, float(y) + 0.5f, from, direction);
    const float depth = -surface.p.z, before = depth - std::fabs(depth) * 1e-4f;
    return render_.Rays().Nearest(from, direction, before, render_.View().yon, kCameraRays, hit) &&
           hit.id == surface.instance;
}

void GBufferWriter::PutHit(int x, int y, size_t index, const SurfaceLayer& surface) const {
    RayHit hit;
    if (!Hit(x, y, surface, hit)) return;
    const MeshInstance& instance = render_.Instance(hit.id);
    if (uv_) {
        const Point3 uvw = instance.MappingAt(1, hit.face, hit.u, hit.v);
        uv_[index] = {uvw.x, uvw.y};
    }
    if (!velocity_) return;
    const int* const corners = instance.mesh->faces[size_t(hit.face)].v;
    const std::vector<Point3>& places = nextPlaces_[size_t(hit.id)];
    const auto place = [&](int c) { return places[size_t(corners[c])]; };
    const Point3 later = place(0) * (1.0f - hit.u - hit.v) + place(1) * hit.u + place(2) * hit.v;
    if (next_.projType == PROJ_PERSPECTIVE && !(later.z < 0.0f)) return; // behind the camera by then
    velocity_[index] = OnScreen(next_, later) - OnScreen(render_.View(), surface.p);
}

} // namespace host
