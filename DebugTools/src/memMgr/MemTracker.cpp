// Making trackers, and which record is whose.
#include "DebugTools/MemTracker.h"

#include "DebugTools/Tracer.h"
#include "memMgr/TrackerState.h"

#include <cstdlib>
#include <new>

using namespace diag;

namespace {

constexpr RawAllocator kGeneralAllocator = {std::malloc, std::free};

// The first id of every record. 0 is no id: record 0 begins one step later.
void NumberRecords(MemTracker& t) {
    const uint32_t step = t.IdStep();
    for (uint32_t slot = 0; slot < ThreadSlots::kCount; ++slot) t.records[slot].nextId = slot == 0 ? step : slot;
}

void SetUp(MemTracker& t, const MemTrackerSetup& setup) {
    t.log = setup.log;
    t.profiler = setup.profiler;
    t.threads = setup.threads;
    t.raw = setup.raw ? setup.raw : &kGeneralAllocator;
    NumberRecords(t);
}

MemTracker* MakeProcessTracker(void* storage) {
    MemTracker* t = new (storage) MemTracker;
    MemTrackerSetup setup;
    setup.threads = OsThreadOps();
    SetUp(*t, setup);
    t->defaultProfiler = true;
    return t;
}

} // namespace

Tracer* MemTracker::Profiler() const {
    return defaultProfiler ? tracer::Default() : profiler;
}

MemTracker* GetMemTracker() {
    // Never destroyed: blocks are freed until the very end of the process.
    alignas(MemTracker) static std::byte storage[sizeof(MemTracker)];
    static MemTracker* tracker = MakeProcessTracker(storage);
    return tracker;
}

MemTracker* CreateMemTracker(const MemTrackerSetup& setup) {
    MemTracker* t = new (std::nothrow) MemTracker;
    if (t) SetUp(*t, setup);
    return t;
}

void DestroyMemTracker(MemTracker* tracker) {
    if (tracker != GetMemTracker()) delete tracker;
}

void SetRawAllocator(const RawAllocator* allocator) {
    GetMemTracker()->raw = allocator ? allocator : &kGeneralAllocator;
}

MemSettings& TrackerSettings(MemTracker* tracker) {
    return TheTracker(tracker).settings;
}

MemAmounts TrackerAmounts(MemTracker* tracker) {
    const MemTracker& t = TheTracker(tracker);
    return {t.allocated, t.peak, t.live, t.peakLive, t.requests};
}
