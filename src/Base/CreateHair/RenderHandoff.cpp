#include "Base/CreateHair/RenderHandoff.h"

#include <algorithm>
#include <cmath>

#include "HRendBuf/HRendOwner.h"
#include "HRendBuf/HairImageInfo.h"

namespace {

// In a perspective view a segment is drawn only when all of it lies at least this far in front of the camera.
constexpr float kNearestDrawn = -0.9f;
// Edge-on ribbons keep this share of their width.
constexpr float kThinnestRibbon = 0.01f;

} // namespace

RenderHandoff::RenderHandoff(const GenerationRun& run, const HRendSettings& settings, HRB_Thick& raster,
                             StrandShading* shading, const KnotColors* knotColors, const std::atomic<bool>* abort)
    : run_(run), settings_(settings), raster_(raster), shading_(shading), knotColors_(knotColors), abort_(abort),
      image_(*run.request.image), samples_(shading ? shading->WidthSamples() : 1),
      filterWidth_(run.params->On(pid_widthFiltering)) {
    screenWidth_.Resize(run.maxPoints);
    handed_.resize(size_t(run.knots));
    shaded_.resize(size_t(run.maxPoints));
    color_.resize(size_t(run.maxPoints) * size_t(samples_));
    opacity_.resize(size_t(run.maxPoints) * size_t(samples_));
    raster_.SetWidthSamples(samples_, filterWidth_);
}

void RenderHandoff::OnStrand(StrandContext& c) {
    if (!MeasureWidths(c)) return;
    ChooseSegments(c);
    if (shading_)
        Shade(c);
    else if (knotColors_)
        BlendKnotColors(c);
    Draw(c);
    ++strandsDrawn_;
}

Point2 RenderHandoff::Screen(float x, float y, float z) const {
    return image_.MapCamToScreen(Point3(x, y, z));
}

// Width on screen of every point; false when the strand has none. Flat cross sections narrow as they turn edge-on.
bool RenderHandoff::MeasureWidths(const StrandContext& c) {
    const bool flat = run_.params->Int(pid_crossSec) == 1;
    largestWidth_ = 0;
    for (int i = 0; i < c.points; ++i) {
        float w = Screen(c.width[i], 0.0f, c.position.z[i]).x - image_.centreX;
        if (flat) {
            const float cosine = DotProd(c.orientation, Normalize(CrossProd(c.tangent[i], c.position[i])));
            const float rest = 1.0f - cosine * cosine;
            w = w * std::max(kThinnestRibbon, rest > 0.0f ? std::sqrt(rest) : 0.0f);
        }
        screenWidth_[i] = w;
        largestWidth_ = largestWidth_ < w ? w : largestWidth_;
    }
    return largestWidth_ > 0.0f;
}

bool RenderHandoff::FarEnough(const StrandContext& c, int segment) const {
    if (!run_.request.perspective) return true;
    const bool curled = run_.params->On(pid_useCurliness);
    const float* z = curled ? c.position.z.Data() + segment * run_.steps : c.control.z.Data() + 3 * segment;
    const int last = curled ? StepsOf(c, segment) : 3;
    for (int i = 0; i <= last; ++i)
        if (!(z[i] <= kNearestDrawn)) return false;
    return true;
}

void RenderHandoff::ChooseSegments(const StrandContext& c) {
    for (int s = 0; s < c.segments; ++s) handed_[size_t(s)] = c.segmentVisible[size_t(s)] && FarEnough(c, s);
}

// Shades point i into its samples, once. A degenerate tangent repeats the point `stride` before; the strand's first
// point is then black and opaque.
void RenderHandoff::ShadePoint(const StrandContext& c, int i, int stride) {
    if (shaded_[size_t(i)]) return;
    shaded_[size_t(i)] = 1;
    Color* color = &color_[size_t(i * samples_)];
    float* opacity = &opacity_[size_t(i * samples_)];
    if (!StrandShading::Degenerate(c.tangent[i])) {
        const int n = run_.params->On(pid_uvLenRandCut) ? run_.maxPoints : c.points;
        const float v = float(i) / float(n - 1);
        shading_->ShadeSamples(i, c.width[i], v, color, opacity);
    } else if (i == 0) {
        std::fill(color, color + samples_, Color(0, 0, 0));
        std::fill(opacity, opacity + samples_, 1.0f);
    } else {
        const int before = std::max(0, i - stride);
        ShadePoint(c, before, stride);
        std::copy_n(&color_[size_t(before * samples_)], samples_, color);
        std::copy_n(&opacity_[size_t(before * samples_)], samples_, opacity);
    }
}

// Inner points of a segment between its two shaded ends.
void RenderHandoff::BlendPoints(int first, int steps) {
    const Color *c0 = &color_[size_t(first * samples_)], *c1 = &color_[size_t((first + steps) * samples_)];
    const float *o0 = &opacity_[size_t(first * samples_)], *o1 = &opacity_[size_t((first + steps) * samples_)];
    for (int j = 1; j < steps; ++j) {
        const float t = float(j) / float(steps);
        for (int k = 0; k < samples_; ++k) {
            color_[size_t((first + j) * samples_ + k)] = (1.0f - t) * c0[k] + t * c1[k];
            opacity_[size_t((first + j) * samples_ + k)] = (1.0f - t) * o0[k] + t * o1[k];
        }
    }
}

void RenderHandoff::Shade(StrandContext& c) {
    StrandSurface s;
    s.base = c.base, s.tip = c.tip;
    s.bary = c.bary;
    s.orientation = c.orientation;
    s.mapRoot = c.mapRoot.data(), s.mapRootCount = int(c.mapRoot.size());
    s.materialId = c.materialId;
    s.face = c.face->face;
    shading_->SetStrand(s);
    shading_->SetPoints(c.position, c.tangent, c.points);
    std::fill_n(shaded_.begin(), c.points, char(0));
    const bool everyPoint = run_.params->On(pid_shadeBezSegs);
    for (int seg = 0; seg < c.segments; ++seg) {
        if (!handed_[size_t(seg)]) continue;
        const int first = seg * run_.steps, steps = StepsOf(c, seg);
        if (everyPoint) {
            for (int j = 0; j <= steps; ++j) ShadePoint(c, first + j, 1);
        } else {
            ShadePoint(c, first, run_.steps);
            ShadePoint(c, first + steps, steps);
            BlendPoints(first, steps);
        }
    }
}

// Colours of a strand that is not shaded itself: the corner strands' at their knots, blended by the root's weights.
void RenderHandoff::BlendKnotColors(const StrandContext& c) {
    const auto at = [&](int corner, int knot) {
        return size_t(c.vertex[corner]) * size_t(knotColors_->knots) + size_t(knot);
    };
    const auto blend = [&](int knot, Color& color, float& opacity) {
        color = knotColors_->color[at(0, knot)] * c.bary.x + knotColors_->color[at(1, knot)] * c.bary.y +
                knotColors_->color[at(2, knot)] * c.bary.z;
        opacity = c.bary.x * knotColors_->opacity[at(0, knot)] + c.bary.y * knotColors_->opacity[at(1, knot)] +
                  c.bary.z * knotColors_->opacity[at(2, knot)];
    };
    Color c0, c1;
    float o0, o1;
    blend(0, c0, o0);
    for (int seg = 0; seg < c.segments; ++seg, c0 = c1, o0 = o1) {
        blend(seg + 1, c1, o1);
        const int first = seg * run_.steps, steps = StepsOf(c, seg);
        const float end = seg == c.segments - 1 ? c.fraction : 1.0f;
        for (int j = 0; j <= steps; ++j) {
            const float t = end * (float(j) / float(steps));
            color_[size_t(first + j)] = (1.0f - t) * c0 + t * c1;
            opacity_[size_t(first + j)] = (1.0f - t) * o0 + t * o1;
        }
    }
}

void RenderHandoff::Draw(const StrandContext& c) {
    if (!settings_.useThick || largestWidth_ <= settings_.thickLimit)
        DrawThin(c);
    else
        DrawThick(c);
}

// A gap of segments that are not handed over ends the strand; the next one begins a new one.
void RenderHandoff::DrawThin(const StrandContext& c) {
    const auto vertex = [&](int i) {
        ThinVertex v;
        const Point2 p = Screen(c.position.x[i], c.position.y[i], c.position.z[i]);
        v.x = p.x, v.y = p.y, v.z = c.position.z[i];
        v.width = screenWidth_[i];
        const size_t at = size_t(i * samples_);
        if (samples_ > 1 && filterWidth_) {
            Color sum;
            for (int k = 0; k < samples_; ++k) sum += color_[at + size_t(k)], v.opacity += opacity_[at + size_t(k)];
            v.color = Point3(sum / float(samples_));
            v.opacity = v.opacity / float(samples_);
        } else {
            const size_t middle = at + size_t((samples_ - 1) / 2);
            v.color = Point3(color_[middle]);
            v.opacity = opacity_[middle];
        }
        ++verticesDrawn_;
        return v;
    };
    bool open = false;
    for (int seg = 0; seg < c.segments; ++seg) {
        if (!handed_[size_t(seg)]) {
            open = false;
            continue;
        }
        const int first = seg * run_.steps, steps = StepsOf(c, seg);
        if (!open) raster_.BeginThin(vertex(first));
        for (int j = 1; j <= steps; ++j) raster_.AddThin(vertex(first + j), PixelOperation::Image);
        open = true;
    }
}

void RenderHandoff::DrawThick(const StrandContext& c) {
    const auto vertex = [&](int i) -> const StrandVertex& {
        const Point2 p = Screen(c.position.x[i], c.position.y[i], c.position.z[i]);
        vertex_.x = p.x, vertex_.y = p.y, vertex_.z = c.position.z[i];
        vertex_.width = screenWidth_[i];
        const size_t at = size_t(i * samples_);
        for (int k = 0; k < samples_; ++k) {
            vertex_.opacity[k] = opacity_[at + size_t(k)];
            vertex_.color[k] = Point3(color_[at + size_t(k)]);
        }
        ++verticesDrawn_;
        return vertex_;
    };
    bool open = false;
    for (int seg = 0; seg < c.segments; ++seg) {
        if (!handed_[size_t(seg)]) {
            if (open) raster_.End(PixelOperation::Image);
            open = false;
            continue;
        }
        const int first = seg * run_.steps, steps = StepsOf(c, seg);
        if (!open) raster_.Begin(vertex(first));
        for (int j = 1; j <= steps; ++j) raster_.Add(vertex(first + j), PixelOperation::Image);
        open = true;
    }
    if (open) raster_.End(PixelOperation::Image);
}
