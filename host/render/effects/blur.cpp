#include "render/effects/blur.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

/// Where the bell ends, in standard deviations.
constexpr float kReach = 3;

/// One half of the bell, the middle first; the whole adds up to 1.
std::vector<float> Bell(float deviation) {
    std::vector<double> bell;
    double sum = 0;
    for (int i = 0; i <= int(std::ceil(kReach * deviation)); ++i) {
        bell.push_back(std::exp(-0.5 * i * i / (double(deviation) * double(deviation))));
        sum += i == 0 ? bell.back() : 2 * bell.back();
    }
    std::vector<float> weights;
    for (const double b : bell) weights.push_back(float(b / sum));
    return weights;
}

void Add(EffectPixel& sum, const EffectPixel& p, float weight) {
    sum.own.r += p.own.r * weight;
    sum.own.g += p.own.g * weight;
    sum.own.b += p.own.b * weight;
    sum.own.a += p.own.a * weight;
    sum.background += p.background * weight;
}

/// The pixel at place `at` of a row of `count`, blurred along it.
EffectPixel Blurred(const EffectPixel* row, size_t step, int count, int at, const std::vector<float>& bell) {
    EffectPixel sum{{0, 0, 0, 0}, {}};
    const int reach = int(bell.size()) - 1;
    float weights = 0;
    for (int i = std::max(at - reach, 0); i <= std::min(at + reach, count - 1); ++i) {
        const float weight = bell[size_t(std::abs(i - at))];
        Add(sum, row[size_t(i) * step], weight);
        weights += weight;
    }
    EffectPixel out{{0, 0, 0, 0}, {}};
    Add(out, sum, 1.0f / weights);
    return out;
}

} // namespace

ClassDesc2& Blur::Desc() {
    static BlockClassDesc<Blur> desc("Blur", "blur", RENDER_EFFECT_CLASS_ID, kClassId,
                                     WithShared({FloatParam(kRadius, "radius", 2, 0, 100)}));
    return desc;
}

Blur::Blur() {
    Desc().MakeAutoParamBlocks(this);
}

// First along the lines, into a copy, then down its columns.
void Blur::Apply(TimeValue t, Bitmap* bitmap, RenderGlobalContext*, RendProgressCallback* progress) {
    const float radius = Float(kRadius, t);
    if (!(radius > 0.0f)) return;
    const int width = bitmap->Width(), height = bitmap->Height();
    const std::vector<float> bell = Bell(radius);
    std::vector<EffectPixel> line(static_cast<size_t>(width)), lines(size_t(width) * size_t(height));
    for (int y = 0; y < height; ++y) {
        if (!Tell(progress, y, 2 * height)) return;
        for (int x = 0; x < width; ++x) line[size_t(x)] = PixelAt(*bitmap, x, y);
        for (int x = 0; x < width; ++x)
            lines[size_t(y) * size_t(width) + size_t(x)] = Blurred(line.data(), 1, width, x, bell);
    }
    EachPixel(t, *bitmap, progress,
              [&](int x, int y, EffectPixel& p) { p = Blurred(&lines[size_t(x)], size_t(width), height, y, bell); });
}

} // namespace host
