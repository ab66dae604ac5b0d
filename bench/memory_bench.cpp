// Pairs of allocating and freeing: the general allocator, the tracker, the block allocators; the cost of a trace scope.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <vector>

#include "DebugTools/MemMgr.h"
#include "DebugTools/MemTracker.h"
#include "DebugTools/Tracer.h"
#include "DebugTools/platform/Thread.h"
#include "HRendBuf/HairFragment.h"

namespace {

// Pools serve batches: a stretch of fragments is made, used, and given back.
constexpr size_t kBatch = 4096;
constexpr size_t kSize = sizeof(HairFragment);
constexpr size_t kChunk = 16384;

template <class Alloc, class Free>
void Pairs(benchmark::State& state, const Alloc& alloc, const Free& free) {
    std::vector<void*> blocks(kBatch);
    for (auto _ : state) {
        for (void*& block : blocks) {
            block = alloc();
            *static_cast<volatile char*>(block) = 1; // it is used
        }
        for (void* block : blocks) free(block);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kBatch));
}

void BM_Malloc(benchmark::State& state) {
    Pairs(
        state, [] { return std::malloc(kSize); }, [](void* block) { std::free(block); });
}
BENCHMARK(BM_Malloc)->Threads(1)->Threads(2)->UseRealTime();

void BM_Tracked(benchmark::State& state) {
    Pairs(
        state,
        [] {
            MEM_LOCATION();
            return memAlloc(nullptr, kSize);
        },
        [](void* block) { memFree(nullptr, block); });
}
BENCHMARK(BM_Tracked)->Threads(1)->Threads(2)->UseRealTime();

void BM_Pool(benchmark::State& state) {
    Pool pool(kSize, kChunk);
    Pairs(
        state, [&] { return pool.Alloc(0); }, [&](void* block) { pool.Free(block, 0); });
}
BENCHMARK(BM_Pool)->UseRealTime();

void BM_MemoryManager(benchmark::State& state) {
    static MemoryManager pool(kSize, kChunk);
    const int slot = state.thread_index();
    Pairs(
        state, [&] { return pool.Alloc(slot); }, [&](void* block) { pool.Free(block, slot); });
}
BENCHMARK(BM_MemoryManager)->Threads(1)->Threads(2)->UseRealTime();

void BM_NoScope(benchmark::State& state) {
    for (auto _ : state) benchmark::ClobberMemory();
    state.SetItemsProcessed(int64_t(state.iterations()));
}
BENCHMARK(BM_NoScope);

void BM_ScopeTracerOff(benchmark::State& state) {
    for (auto _ : state) {
        TRACE_SCOPE("bench");
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
}
BENCHMARK(BM_ScopeTracerOff);

} // namespace

int main(int argc, char** argv) {
    // A host always has other threads, which the general allocator makes allowance for.
    std::atomic<bool> stop{false};
    diag::Thread other;
    other.Start([&] {
        while (!stop) diag::SleepMs(20);
    });
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    stop = true;
}
