#include "render/camera_sampler.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

/// A ray goes on this share of the depth behind a surface that lets light through.
constexpr float kStepBehind = 1e-5f;
/// Less transparency than this counts as none.
constexpr float kOpaque = 1e-3f;
/// Length of the segment to the background. Effects take segments as endless that reach this far, and as broken that
/// reach 1e7.
constexpr float kFarAway = 1e6f, kFarthest = 9e6f;

bool IsOpaque(const Color& transparency) {
    return std::max({transparency.r, transparency.g, transparency.b}) <= kOpaque;
}

} // namespace

CameraSampler::CameraSampler(RenderContext& render)
    : render_(render), effects_(render.Atmosphere().Effects().size()), sc_(render) {}

CameraSampler::View CameraSampler::ViewThrough(float x, float y) const {
    View view;
    render_.View().RayThrough(x, y, view.from, view.direction);
    view.unit = Normalize(view.direction);
    view.pixel = {int(std::floor(x)), int(std::floor(y))};
    view.screen = {x, y};
    return view;
}

// What the nearest face beyond depth `near` shows; false when there is none.
bool CameraSampler::ShadeNearest(const View& view, float near, SurfaceLayer& layer, float& depth) {
    RayHit hit;
    if (!render_.Rays().Nearest(view.from, view.direction, near, render_.View().yon, kCameraRays, hit)) return false;
    depth = hit.t;
    const MeshInstance& instance = render_.Instance(hit.id);
    sc_.Begin(view.pixel, view.screen);
    sc_.SetSurface(instance, hit, view.unit);
    render_.MaterialOf(instance).Shade(sc_);
    const Color clear = sc_.out.t;
    layer.skipped = (sc_.out.flags & SHADEOUT_NOTHING) != 0;
    layer.color = sc_.out.c * instance.visibility;
    layer.transparency = Color(1, 1, 1) + (clear - Color(1, 1, 1)) * instance.visibility;
    layer.p = sc_.P();
    layer.normal = sc_.OrigNormal();
    layer.instance = hit.id;
    layer.materialId = sc_.mtlNum;
    return true;
}

// Surfaces from the nearest one until one is opaque, into layers_. Returns how many.
int CameraSampler::Trace(const View& view) {
    float near = render_.View().hither;
    int count = 0;
    while (count < kMostLayers) {
        float depth = 0;
        if (!ShadeNearest(view, near, layers_[size_t(count)], depth)) break;
        if (!layers_[size_t(count)].skipped && IsOpaque(layers_[size_t(count++)].transparency)) break;
        near = std::max(depth + depth * kStepBehind, std::nextafter(depth, render_.View().yon));
    }
    return count;
}

// What is seen behind everything.
Color CameraSampler::Behind(const View& view) {
    if (!render_.envMap) return render_.BackgroundColor();
    sc_.Begin(view.pixel, view.screen);
    sc_.SetBackground(FarPoint(view), view.unit);
    return sc_.Background();
}

SurfaceSample CameraSampler::Surfaces(float x, float y) {
    const View view = ViewThrough(x, y);
    const int count = Trace(view);
    SurfaceSample sample;
    if (count > 0) sample.first = layers_[0];
    sample.more = count > 0 && !IsOpaque(layers_[0].transparency);
    if (count == 0 || !IsOpaque(layers_[size_t(count) - 1].transparency)) sample.flat = Behind(view);
    for (size_t i = size_t(count); i-- > 0;) sample.flat = layers_[i].color + layers_[i].transparency * sample.flat;
    for (int i = 0; i < 3; ++i) sample.flat[i] = std::clamp(sample.flat[i], 0.0f, 1.0f);
    return sample;
}

PixelSample CameraSampler::Shade(float x, float y) {
    const View view = ViewThrough(x, y);
    return Compose(view, layers_.data(), Trace(view));
}

PixelSample CameraSampler::Shade(float x, float y, const SurfaceSample& known) {
    if (known.more) return Shade(x, y);
    // Only the air and an environment ask where the sample looks.
    const View view = effects_ > 0 || render_.envMap ? ViewThrough(x, y) : View();
    return Compose(view, &known.first, known.first.instance >= 0 ? 1 : 0);
}

Point3 CameraSampler::FarPoint(const View& view) const {
    const float length = std::clamp(4.0f * render_.farRange, kFarAway, kFarthest);
    return view.from + view.unit * length;
}

// The air between `far` and the next nearer surface, or the camera.
void CameraSampler::Air(const View& view, const SurfaceLayer* nearer, const Point3& far, bool background,
                        PixelSample& s, Color& transparency) {
    if (effects_ == 0) return;
    const Matrix3& toWorld = render_.camToWorld;
    // The camera's own place is exact: effects recognise camera segments by it.
    const Point3 start = nearer                                 ? nearer->p * toWorld
                         : render_.projType == PROJ_PERSPECTIVE ? toWorld.GetTrans()
                                                                : view.from * toWorld;
    segments_ += effects_;
    sc_.Begin(view.pixel, view.screen);
    sc_.SetBackground(far, view.unit);
    render_.Atmosphere().Shade(sc_, start, far * toWorld, s.color, transparency, background);
}

PixelSample CameraSampler::Compose(const View& view, const SurfaceLayer* layers, int count) {
    PixelSample s;
    Color transparency;
    Color behind;
    if (count == 0 || !IsOpaque(layers[count - 1].transparency)) {
        behind = s.color = Behind(view);
        transparency = {1, 1, 1};
        const SurfaceLayer* const nearer = count > 0 ? &layers[count - 1] : nullptr;
        if (!nearer || render_.Instance(nearer->instance).inAtmosphere)
            Air(view, nearer, FarPoint(view), true, s, transparency);
    }
    for (int i = count - 1; i >= 0; --i) {
        s.color = layers[i].color + layers[i].transparency * s.color;
        transparency = layers[i].transparency * transparency;
        if (!render_.Instance(layers[i].instance).inAtmosphere) continue;
        Air(view, i > 0 ? &layers[i - 1] : nullptr, layers[i].p, false, s, transparency);
    }
    s.background = behind * transparency;
    s.alpha = std::clamp(1.0f - Intens(transparency), 0.0f, 1.0f);
    if (count > 0) s.z = layers[0].p.z;
    return s;
}

} // namespace host
