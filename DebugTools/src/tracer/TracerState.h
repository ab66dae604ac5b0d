// What a tracer holds, and what its files share.
#pragma once

#include "DebugTools/Tracer.h"
#include "memMgr/ThreadSlots.h"

#include <memory>

namespace diag {

constexpr int kMaxTracers = 4;
constexpr int kMaxTraceDepth = 100;

/// A place in the code. The counts of all threads add up here.
struct TraceLocation {
    const char* file;
    int32_t line;
    uint32_t flags;
    const char* name;
    std::atomic<uint32_t> calls;
    std::atomic<uint32_t> lastEntry; ///< tick
    std::atomic<uint64_t> totalTicks;
    std::atomic<uint64_t> selfTicks;
};
static_assert(sizeof(TraceLocation) == 48);

/// A thread's stack of scopes. Only its own thread writes, and no other thread's lies on its cache lines.
struct alignas(64) TraceThread {
    std::atomic<uint32_t> id{0};
    std::atomic<int> depth{0};
    std::atomic<uint64_t> tracerTicks{0}; ///< spent on tracing itself
    uint16_t lastLogged = kNoLocation;
    uint32_t repeats = 0; ///< of the location logged last
    bool crashed = false; ///< scopes were lost; the next one left unwinds without complaint
    std::atomic<uint16_t> stack[kMaxTraceDepth] = {};
    uint32_t entered[kMaxTraceDepth] = {}; ///< tick of each entry
    uint32_t resumed[kMaxTraceDepth] = {}; ///< tick from which self ticks count
};

} // namespace diag

struct Tracer {
    std::atomic<bool> inUse{false};
    std::atomic<uint32_t> mode{kTracerOff};
    uint32_t serial = 0; ///< of this use of the table slot; never 0
    TracerSetup setup;

    std::unique_ptr<diag::TraceLocation[]> locations;
    std::unique_ptr<std::atomic<uint16_t>[]> index; ///< hash slots: a location or kNoLocation
    uint32_t mask = 0;                              ///< of the hash slots; 0 when their number is no power of two
    std::atomic<uint32_t> used{0};
    std::atomic<uint32_t> collisions{0}, probeSteps{0};

    diag::ThreadSlots slots;
    diag::TraceThread threads[diag::ThreadSlots::kCount];

    /// The calling thread's record; null when it has none, or when `take` is set and none is free.
    diag::TraceThread* Thread(bool take);
    bool Knows(uint16_t location) const { return location < used.load(std::memory_order_acquire); }
};

namespace diag {

/// Writes the pending repeat count of call logging and forgets the location logged last.
void FlushRepeats(Tracer& t, TraceThread& thread);
/// Call logging's part of entering and leaving.
void LogEntered(Tracer& t, TraceThread& thread, uint16_t location);
void LogLeft(Tracer& t, TraceThread& thread, uint16_t location);

} // namespace diag
