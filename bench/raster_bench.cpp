// Samples rasterised a second and fragments inserted a second, one core.

#include <benchmark/benchmark.h>

#include <bit>

#include "Base/HUtil/HairRandom.h"
#include "HRB_Thick/HRB_Thick.h"
#include "HRendBuf/FragmentList.h"

namespace {

constexpr int kWidth = 1280, kHeight = 720, kStrands = 2000, kPoints = 16;

// Counts samples and keeps the compiler from leaving them out.
struct CountingSink {
    static constexpr bool kWantsVelocity = false;
    int64_t samples = 0;
    float sum = 0;
    void InsertImage(int, int, float z, const Point3& color, float coverage, float, Point2) {
        ++samples;
        sum += z + color.x + coverage;
    }
    void InsertShadow(int, int, float z, float, float coverage) { ++samples, sum += z + coverage; }
    template <bool InColumn>
    void InsertLanes(int, int, unsigned flags, const SampleLane* lanes) {
        samples += std::popcount(flags);
        sum += lanes[0].values[0];
    }
};

// Gently bent strands of about 60 pixels.
template <class Begin, class Add, class End>
void DrawStrands(const Begin& begin, const Add& add, const End& end) {
    HairRandom random;
    random.Seed(1);
    for (int s = 0; s < kStrands; ++s) {
        const float x = RandomUnit(random) * kWidth, y = RandomUnit(random) * kHeight;
        const float dx = RandomSignedUnit(random) * 3.0f, dy = RandomSignedUnit(random) * 3.0f;
        begin(x, y);
        for (int i = 1; i < kPoints; ++i) {
            const float t = float(i);
            add(x + dx * t, y + dy * t + 0.02f * t * t);
        }
        end();
    }
}

template <class Draw>
void Rasterise(benchmark::State& state, const Draw& draw) {
    CountingSink sink;
    BasicThick<CountingSink> raster(0, sink);
    const LineFilterCone cone(1.5f), fallback(1.0f);
    raster.SetTarget({{0, 0, kWidth, kHeight}, &cone, 1.5f, &fallback});
    raster.SetWidthSamples(1, false);
    for (auto _ : state) draw(raster);
    benchmark::DoNotOptimize(sink.sum);
    state.SetItemsProcessed(sink.samples);
}

void BM_ThinSamples(benchmark::State& state) {
    Rasterise(state, [](BasicThick<CountingSink>& r) {
        ThinVertex v;
        v.z = -10.0f, v.width = 0.8f, v.opacity = 1.0f, v.color = {0.5f, 0.4f, 0.3f};
        DrawStrands([&](float x, float y) { v.x = x, v.y = y, r.BeginThin(v); },
                    [&](float x, float y) { v.x = x, v.y = y, r.AddThin(v, PixelOperation::Image); }, [] {});
    });
}

void BM_WideSamples(benchmark::State& state) {
    Rasterise(state, [](BasicThick<CountingSink>& r) {
        static StrandVertex v;
        v.z = -10.0f, v.width = 1.2f, v.opacity[0] = 1.0f, v.color[0] = {0.5f, 0.4f, 0.3f};
        DrawStrands([&](float x, float y) { v.x = x, v.y = y, r.Begin(v); },
                    [&](float x, float y) { v.x = x, v.y = y, r.Add(v, PixelOperation::Image); },
                    [&] { r.End(PixelOperation::Image); });
    });
}

// Samples at random depths into lists of up to about 20 fragments.
void BM_FragmentInsertions(benchmark::State& state) {
    constexpr int kPixels = 4096, kSamplesPerPixel = 64;
    HairRandom random;
    random.Seed(1);
    int64_t inserted = 0;
    for (auto _ : state) {
        FragmentAllocator pool(sizeof(HairFragment), 16384);
        const FragmentStore store{&pool, 0, 0.05f, true};
        std::vector<HairFragment*> heads(kPixels, nullptr);
        for (int i = 0; i < kPixels * kSamplesPerPixel; ++i) {
            const ImagePoint p{-10.0f - RandomUnit(random), 1.0f, 0.05f, {0.5f, 0.4f, 0.3f}};
            InsertPoint(heads[size_t(i % kPixels)], p, store);
        }
        benchmark::DoNotOptimize(heads.data());
        inserted += kPixels * kSamplesPerPixel;
    }
    state.SetItemsProcessed(inserted);
}

BENCHMARK(BM_ThinSamples)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WideSamples)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FragmentInsertions)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
