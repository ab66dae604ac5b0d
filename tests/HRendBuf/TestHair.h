#pragma once
// Random strands, a renderer's stand-in that owns them, and a small driver for the ordered path.

#include <barrier>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "HRendBuf/HRendBuf.h"

/// Strands in runs that lie close together, as those of a face do. Every eighth run is thick.
struct TestStrands {
    static constexpr int kUnit = 16;
    std::vector<std::vector<StrandVertex>> strands;
    int Units() const { return int(strands.size() + kUnit - 1) / kUnit; }

    TestStrands(int count, int width, int height, unsigned seed, float depth = 0.5f) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> u(0.0f, 1.0f);
        float faceX = 0, faceY = 0;
        for (int i = 0; i < count; ++i) {
            if (i % kUnit == 0) faceX = u(random) * float(width), faceY = u(random) * float(height);
            std::vector<StrandVertex> strand;
            float x = faceX + 10 * u(random), y = faceY + 10 * u(random), angle = 6.28f * u(random);
            const Point3 color(u(random), u(random), u(random));
            for (int k = 0; k < 8; ++k) {
                StrandVertex v;
                v.x = x, v.y = y, v.z = -10 - depth * u(random);
                v.width = (i / kUnit % 8 == 0 ? 4.0f : 0.4f) * (1 - float(k) / 8);
                v.opacity[0] = i % 5 ? 0.7f : 1.0f;
                v.color[0] = color;
                strand.push_back(v);
                angle += u(random) - 0.5f;
                x += 5 * std::cos(angle), y += 5 * std::sin(angle);
            }
            strands.push_back(strand);
        }
    }

    template <class Thick>
    void Draw(int strand, Thick& thick, PixelOperation op) const {
        const auto& v = strands[size_t(strand)];
        if (v[0].width > 1) {
            thick.Begin(v[0]);
            for (size_t i = 1; i < v.size(); ++i) thick.Add(v[i], op);
            thick.End(op);
        } else {
            thick.BeginThin(ThinOf(v[0]));
            for (size_t i = 1; i < v.size(); ++i) thick.AddThin(ThinOf(v[i]), op);
        }
    }
    static ThinVertex ThinOf(const StrandVertex& v) {
        return {v.x, v.y, v.z, v.width, v.opacity[0], v.velocity, v.color[0]};
    }
};

/// Draws numbered units on several threads by the ordered path's protocol.
template <class Ordered, class Merge>
void DriveUnits(Ordered& ordered, int threads, uint32_t units, const std::function<void(int, uint32_t)>& draw,
                const Merge& merge) {
    std::atomic<uint32_t> next{0};
    std::atomic<bool> full{false}, done{false};
    std::barrier barrier(threads);
    const auto work = [&](int thread) {
        while (!done) {
            while (!full) {
                const uint32_t unit = next.fetch_add(1);
                if (unit >= units) break;
                ordered.BeginUnit(thread, unit);
                draw(thread, unit);
                if (ordered.BatchFull(thread, next)) full = true;
            }
            barrier.arrive_and_wait();
            merge(thread);
            barrier.arrive_and_wait();
            if (thread == 0) {
                done = next >= units;
                full = false;
                ordered.EndBatch(next);
            }
            barrier.arrive_and_wait();
        }
    };
    std::vector<std::jthread> pool;
    for (int i = 1; i < threads; ++i) pool.emplace_back(work, i);
    work(0);
}

/// Hair that draws test strands into a buffer.
class TestSource : public IHairSource {
public:
    explicit TestSource(TestStrands s) : strands(std::move(s)) {}
    TestStrands strands;
    float minHairDist = 0;
    bool renderable = true, direct = false;
    int updates = 0, renders = 0;
    float tolerance = 0;
    std::function<void(HRendBuf&)> onRender;

    bool Update(TimeValue) override {
        ++updates;
        return renderable;
    }
    int StrandCount() override { return int(strands.strands.size()); }
    float MinHairDist() override { return minHairDist; }
    int Render(HRendBuf& buffer) override {
        ++renders;
        tolerance = buffer.DepthTolerance();
        if (onRender) {
            onRender(buffer);
            return 1;
        }
        const auto op = buffer.Mode() == HRM_SHADOW ? PixelOperation::Shadow : PixelOperation::Image;
        DriveUnits(
            buffer, buffer.ThreadCount(), uint32_t(strands.Units()),
            [&](int thread, uint32_t unit) {
                const int end = std::min(int(unit + 1) * TestStrands::kUnit, StrandCount());
                for (int i = int(unit) * TestStrands::kUnit; i < end; ++i)
                    strands.Draw(i, buffer.Rasteriser(thread), op);
            },
            [&](int thread) { buffer.MergeTiles(thread); });
        buffer.Advance(StrandCount());
        return StrandCount();
    }
};

/// A renderer with hair. Its clock stands until it is set.
class TestOwner : public IHRendOwner {
public:
    TestOwner() {
        settings.filter = &cone;
        settings.tick = [] { return now; };
        now = 1000;
    }
    static inline uint32_t now = 0;
    LineFilterCone cone{1.5f};
    HRendSettings settings;
    std::vector<IHairSource*> sources;
    RendParams params;
    bool aborted = false, tight = false;
    std::vector<std::string> asserts;

    HRendSettings& Settings() override { return settings; }
    std::vector<IHairSource*> HairSources() override { return sources; }
    RendParams RenderParams() override { return params; }
    bool Aborted() override { return aborted; }
    bool MemoryIsTight() override { return tight; }
    void Assert(const char* what) override { asserts.push_back(what); }
};

/// A view and picture of the given size, 0 .. 100 deep.
struct TestView {
    HairImageInfo image;
    ViewParamsEx view;
    TestView(int width, int height) {
        image.SetSize(width, height, 1);
        view.nearRange = 0, view.farRange = 100;
        image.ComputeScales(view);
    }
    int Render(HRendBuf& buffer, int x, int y, HRendMode mode = HRM_IMAGE, IProgressIndicator* progress = nullptr,
               const char* title = nullptr, DrawnBucket* drawn = nullptr) const {
        return buffer.RenderBucket(mode, 0, image, view, x, y, progress, title, nullptr, drawn);
    }
    void RenderAll(HRendBuf& buffer, HRendMode mode = HRM_IMAGE) const {
        for (int y = 0; y < image.height; ++y)
            for (int x = 0; x < image.width; ++x) Render(buffer, x, y, mode);
    }
};

/// A fragment without its link, for comparing.
struct Plain {
    float zMin, zMax;
    uint16_t opacity, coverage;
    RealPixel color;
    friend bool operator==(const Plain&, const Plain&) = default;
};

inline Plain PlainOf(const HairFragment& f) {
    return {f.zMin, f.zMax, f.opacity, f.coverage, f.color};
}
inline Plain PlainOf(const ShadowFragment& f) {
    return {f.zMin, f.zMax, f.opacity, f.coverage, {}};
}
template <class Fragment>
std::vector<Plain> PlainList(FragmentReader<Fragment> reader) {
    std::vector<Plain> list;
    for (; !reader.Done(); reader.Next()) list.push_back(PlainOf(reader.Get()));
    return list;
}
template <class Fragment>
std::vector<Plain> PlainList(const Fragment* f) {
    return PlainList(FragmentReader<Fragment>(f));
}
