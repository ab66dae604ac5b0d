#include "Base/CreateHair/RenderDriver.h"

#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "Base/CreateHair/RenderHandoff.h"
#include "Base/CreateHair/VertexStrands.h"
#include "Base/CreateHair/WorkUnits.h"
#include "Base/CreateHair/WorkerPool.h"
#include "DebugTools/Tracer.h"
#include "HRendBuf/HRendBuf.h"

namespace {

// Strands of one work unit: enough to make handing it out cheap, few enough to share out evenly.
constexpr int kStrandsPerUnit = 128;

/// All threads of one render run.
class RenderJob {
public:
    RenderJob(GenerationRun& run, const ShadingSetup& setup, HRendBuf& buffer, const std::atomic<bool>* abort,
              uint32_t firstUnit)
        : run_(run), setup_(setup), buffer_(buffer), abort_(abort), threads_(buffer.ThreadCount()), base_(firstUnit) {}

    RenderStats Run();
    uint32_t UnitsUsed() const { return unitsUsed_; }

private:
    void MakeThreads();
    void DrawVertexStrands();
    void DrawUnits(WorkerCommand command, int count, const std::function<void(int thread, int unit)>& draw);
    bool Aborted() const { return abort_ && abort_->load(std::memory_order_relaxed); }

    GenerationRun& run_;
    const ShadingSetup& setup_;
    HRendBuf& buffer_;
    const std::atomic<bool>* abort_;
    int threads_;
    uint32_t base_, unitsUsed_ = 0;
    std::deque<StrandContext> contexts_;
    std::deque<StrandShading> shading_;
    std::deque<RenderHandoff> handoff_;
    KnotColors knotColors_;
    RenderStats stats_;
};

void RenderJob::MakeThreads() {
    const bool shade = run_.request.pass == PASS_COLOR && run_.request.shading;
    for (int i = 0; i < threads_; ++i) {
        contexts_.emplace_back(run_, i);
        if (run_.request.pass == PASS_COLOR) shading_.emplace_back(setup_, *run_.params);
    }
    const KnotColors* knotColors = run_.request.pass == PASS_COLOR && !shade ? &knotColors_ : nullptr;
    for (int i = 0; i < threads_; ++i)
        handoff_.emplace_back(run_, buffer_.Settings(), buffer_.Rasteriser(i), shade ? &shading_[size_t(i)] : nullptr,
                              knotColors, abort_);
}

// Draws numbered units on all threads, batch by batch: draw until a thread's samples fill its share, then merge.
void RenderJob::DrawUnits(WorkerCommand command, int count, const std::function<void(int, int)>& draw) {
    std::atomic<int> next{0};
    std::atomic<bool> full{false};
    const uint32_t base = base_ + unitsUsed_;
    const auto work = [&](int thread) {
        for (;;) {
            if (Aborted() || full.load(std::memory_order_relaxed)) return;
            const int unit = next.fetch_add(1, std::memory_order_relaxed);
            if (unit >= count) return;
            TRACE_SCOPE("DrawStrands");
            buffer_.BeginUnit(thread, base + uint32_t(unit));
            draw(thread, unit);
            if (buffer_.BatchFull(thread, base + uint32_t(next.load(std::memory_order_relaxed)))) full = true;
        }
    };
    int64_t reported = 0;
    while (next < count && !Aborted()) {
        if (!WorkerPool::Get().Run(command, threads_, work)) stats_.failed = true;
        const auto merge = [&](int thread) {
            TRACE_SCOPE("MergeSamples");
            buffer_.MergeTiles(thread);
        };
        if (!WorkerPool::Get().Run(CMD_MERGE_SAMPLES, threads_, merge)) stats_.failed = true;
        if (next > count) next = count;
        full = false;
        buffer_.EndBatch(base + uint32_t(next.load()));
        int64_t made = 0;
        for (const StrandContext& c : contexts_) made += c.strandsMade;
        if (!buffer_.Advance(int(made - reported)) || stats_.failed) break;
        reported = made;
    }
    unitsUsed_ += uint32_t(count);
}

void RenderJob::DrawVertexStrands() {
    if (run_.request.pass == PASS_COLOR && run_.request.shading) return;
    const VertexStrandList list(run_);
    if (run_.request.pass == PASS_COLOR)
        WorkerPool::Get().Run(CMD_VERTEX_STRANDS, threads_, [&](int thread) {
            ShadeKnots(list, thread, threads_, contexts_[size_t(thread)], shading_[size_t(thread)], knotColors_);
        });
    DrawUnits(CMD_VERTEX_STRANDS, list.UnitCount(kStrandsPerUnit), [&](int thread, int unit) {
        list.BuildUnit(contexts_[size_t(thread)], unit, kStrandsPerUnit, handoff_[size_t(thread)]);
    });
}

RenderStats RenderJob::Run() {
    TRACE_SCOPE("RenderHair");
    MakeThreads();
    DrawStrandCounts(run_, contexts_[0]);
    if (run_.request.pass == PASS_COLOR && !run_.request.shading) {
        knotColors_.knots = run_.knots;
        knotColors_.color.resize(size_t(run_.mesh->getNumVerts()) * size_t(run_.knots));
        knotColors_.opacity.resize(knotColors_.color.size());
    }
    DrawVertexStrands();
    const std::vector<WorkUnit> units = MakeWorkUnits(run_, kStrandsPerUnit);
    DrawUnits(CMD_BUILD_FACES, int(units.size()), [&](int thread, int unit) {
        BuildUnit(contexts_[size_t(thread)], units[size_t(unit)], handoff_[size_t(thread)]);
    });
    for (const RenderHandoff& h : handoff_) {
        stats_.strands += h.StrandsDrawn();
        stats_.vertices += h.VerticesDrawn();
    }
    return stats_;
}

} // namespace

RenderStats RenderHair(GenerationRun& run, const ShadingSetup& shading, HRendBuf& buffer,
                       const std::atomic<bool>* abort, uint32_t& firstUnit) {
    RenderJob job(run, shading, buffer, abort, firstUnit);
    const RenderStats stats = job.Run();
    firstUnit += job.UnitsUsed();
    return stats;
}
