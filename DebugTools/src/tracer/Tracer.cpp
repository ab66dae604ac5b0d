// The table of tracers; entering and leaving scopes.
#include "DebugTools/Assert.h"
#include "DebugTools/platform/System.h"
#include "logger/LogState.h"
#include "tracer/TracerState.h"

#include <algorithm>
#include <exception>
#include <new>

using namespace diag;

namespace {

// Plain storage, so that scopes may be left while the process ends.
Tracer* Table() {
    alignas(Tracer) static std::byte storage[sizeof(Tracer) * kMaxTracers];
    static Tracer* table = [] {
        auto* tracers = reinterpret_cast<Tracer*>(storage);
        for (int i = 0; i < kMaxTracers; ++i) new (tracers + i) Tracer;
        return tracers;
    }();
    return table;
}

// What reports ask of the default tracer.
constexpr ProfilerReports kReports = {
    [](uint32_t threadId) { return tracer::GetStackDepth(tracer::Default(), threadId); },
    [] { tracer::DumpStacks(tracer::Default()); }, [] { tracer::WriteProfile(tracer::Default()); }};

// The first of the table is the profiler of the process's reports too.
void SetDefault(Tracer* t) {
    defaultTracer.store(t, std::memory_order_release);
    GetDiagSystem()->profiler = t ? &kReports : nullptr;
}

uint32_t MachineTicks() {
    uint64_t ticks = 0, perSecond = 0;
    if (!PerformanceCounter(ticks, perSecond)) return 0;
    return static_cast<uint32_t>(ticks / perSecond * 1000000 + ticks % perSecond * 1000000 / perSecond);
}

bool MakeTables(Tracer& t) {
    const uint32_t capacity = t.setup.capacity;
    t.locations.reset(new (std::nothrow) TraceLocation[capacity]());
    t.index.reset(new (std::nothrow) std::atomic<uint16_t>[capacity]);
    if (!t.locations || !t.index) return false;
    for (uint32_t i = 0; i < capacity; ++i) t.index[i].store(kNoLocation, std::memory_order_relaxed);
    t.mask = (capacity & (capacity - 1)) == 0 ? capacity - 1 : 0;
    return true;
}

void ClearThreads(Tracer& t) {
    for (int slot = 0; slot < ThreadSlots::kCount; ++slot) {
        t.slots.Release(slot);
        TraceThread& thread = t.threads[slot];
        thread.depth = 0;
        thread.tracerTicks = 0;
        thread.lastLogged = kNoLocation;
        thread.repeats = 0;
        thread.crashed = false;
    }
}

// Default ticks are asked directly, without a call through the setup.
uint32_t Now(const Tracer& t) {
    return t.setup.ticks ? t.setup.ticks() : MachineTicks();
}

void CountEntry(Tracer& t, TraceThread& thread, uint16_t location, int depth, uint32_t ticks) {
    TraceLocation& place = t.locations[location];
    place.calls.fetch_add(1, std::memory_order_relaxed);
    place.lastEntry.store(ticks, std::memory_order_relaxed);
    thread.entered[depth] = thread.resumed[depth] = ticks;
    if (depth == 0) return;
    TraceLocation& around = t.locations[thread.stack[depth - 1].load(std::memory_order_relaxed)];
    around.selfTicks.fetch_add(ticks - thread.resumed[depth - 1], std::memory_order_relaxed);
}

// A location that is entered again inside itself gets the outermost scope's ticks only.
bool EnteredBelow(const TraceThread& thread, uint16_t location, int depth) {
    return std::any_of(thread.stack, thread.stack + depth, [&](const std::atomic<uint16_t>& entry) {
        return entry.load(std::memory_order_relaxed) == location;
    });
}

void CountExit(Tracer& t, TraceThread& thread, int depth, uint32_t now) {
    const uint16_t location = thread.stack[depth].load(std::memory_order_relaxed);
    TraceLocation& place = t.locations[location];
    place.selfTicks.fetch_add(now - thread.resumed[depth], std::memory_order_relaxed);
    if (!EnteredBelow(thread, location, depth))
        place.totalTicks.fetch_add(now - thread.entered[depth], std::memory_order_relaxed);
    if (depth > 0) thread.resumed[depth - 1] = now;
}

void Pop(Tracer& t, TraceThread& thread, uint32_t now) {
    const int depth = thread.depth.load(std::memory_order_relaxed) - 1;
    const uint16_t location = thread.stack[depth].load(std::memory_order_relaxed);
    const uint32_t mode = t.mode.load(std::memory_order_relaxed);
    if (mode == kTracerProfile) CountExit(t, thread, depth, now);
    thread.depth.store(depth, std::memory_order_release);
    if (mode == kTracerLog) LogLeft(t, thread, location);
}

void WriteStackLine(Tracer& t, const TraceThread& thread) {
    LogWrite(t.setup.log, "currently on the stack: ", 0);
    const int depth = thread.depth.load(std::memory_order_relaxed);
    for (int i = 0; i < depth; ++i)
        LogPrintf(t.setup.log, 0, "%s%s", i ? ", " : "", t.locations[thread.stack[i].load()].name);
    LogWrite(t.setup.log, nullptr, kLogEndLine);
}

void NoteMismatch(Tracer& t, TraceThread& thread, uint16_t location, bool unwinding) {
    const TraceLocation& place = t.locations[location];
    const LogHold together(t.setup.log);
    LogPrintf(t.setup.log, kLogEndLine, "%s%s %s(%d)",
              unwinding ? "Exception mode, unwinding stack to " : "Trace exit/enter id mismatch, exiting:", place.name,
              place.file, place.line);
    if (!unwinding) WriteStackLine(t, thread);
}

// The stack's entry of a location nearest to the top, or -1.
int FindOnStack(const TraceThread& thread, uint16_t location) {
    int at = thread.depth.load(std::memory_order_relaxed) - 1;
    while (at >= 0 && thread.stack[at].load(std::memory_order_relaxed) != location) --at;
    return at;
}

} // namespace

TraceThread* Tracer::Thread(bool take) {
    if (!setup.threads) {
        if (take && !slots.Taken(0)) slots.Take(0);
        return &threads[0];
    }
    const uint32_t id = setup.threads->currentId();
    int slot = slots.Find(id);
    if (slot < 0 && take) {
        const OpsLock lock(setup.threads);
        slot = slots.Take(id);
        if (slot >= 0) threads[slot].id = id;
    }
    return slot < 0 ? nullptr : &threads[slot];
}

Tracer* tracer::Create(const TracerSetup& setup) {
    static std::atomic<uint32_t> uses{0};
    if (setup.capacity < 1 || setup.capacity > kNoLocation - 1u) return nullptr;
    Tracer* table = Table();
    Tracer* t = std::find_if(table, table + kMaxTracers, [](Tracer& entry) { return !entry.inUse.exchange(true); });
    if (t == table + kMaxTracers) return nullptr;
    t->setup = setup;
    t->used = t->collisions = t->probeSteps = 0;
    t->mode = kTracerOff;
    ClearThreads(*t);
    if (!MakeTables(*t)) {
        t->inUse = false;
        return nullptr;
    }
    t->serial = ++uses;
    if (t == table) SetDefault(t);
    return t;
}

// The tables stay until the slot is used again: scopes that are open will still be left.
void tracer::Close(Tracer* tracer) {
    if (!tracer || !tracer->inUse) return;
    if (tracer == Table()) SetDefault(nullptr);
    if (tracer->mode == kTracerLog)
        for (TraceThread& thread : tracer->threads) FlushRepeats(*tracer, thread);
    tracer->mode = kTracerOff;
    tracer->inUse = false;
}

Tracer* tracer::Default() {
    return defaultTracer.load(std::memory_order_acquire);
}

uint32_t tracer::Ticks(Tracer* tracer) {
    return tracer ? Now(*tracer) : 0;
}

void tracer::Enter(Tracer* tracer, uint16_t index, uint32_t ticksAtCall) {
    if (!tracer || !tracer->inUse || tracer->mode == kTracerOff || !tracer->Knows(index)) return;
    Tracer& t = *tracer;
    TraceThread* thread = t.Thread(true);
    if (!thread) return;
    const int depth = thread->depth.load(std::memory_order_relaxed);
    if (depth < kMaxTraceDepth) {
        const uint32_t mode = t.mode.load(std::memory_order_relaxed);
        if (mode == kTracerLog) LogEntered(t, *thread, index);
        if (mode == kTracerProfile) CountEntry(t, *thread, index, depth, ticksAtCall);
        thread->stack[depth].store(index, std::memory_order_relaxed);
    }
    thread->depth.store(depth + 1, std::memory_order_release);
    const uint32_t spent = Now(t) - ticksAtCall;
    thread->tracerTicks.store(thread->tracerTicks.load(std::memory_order_relaxed) + spent, std::memory_order_relaxed);
}

void tracer::Exit(Tracer* tracer, uint16_t index) {
    if (!tracer || !tracer->inUse || !tracer->Knows(index)) return;
    Tracer& t = *tracer;
    TraceThread* thread = t.Thread(false);
    if (!thread) return;
    const int depth = thread->depth.load(std::memory_order_relaxed);
    if (depth > kMaxTraceDepth) {
        thread->depth.store(depth - 1, std::memory_order_release);
        return;
    }
    if (depth == 0) return; // entered while the tracer was off
    const uint32_t now = Now(t);
    const int at = FindOnStack(*thread, index);
    if (at != depth - 1) {
        const bool unwinding = std::uncaught_exceptions() > 0 || thread->crashed;
        NoteMismatch(t, *thread, index, unwinding);
        if (at < 0) return; // nothing to unwind to
        thread->crashed = false;
    }
    while (thread->depth.load(std::memory_order_relaxed) > at) Pop(t, *thread, now);
}

void tracer::SetMode(Tracer* tracer, uint32_t mode) {
    if (!tracer) return;
    if (mode == kTracerCrashed) {
        if (TraceThread* thread = tracer->Thread(false)) thread->crashed = true;
        return;
    }
    tracer->mode = mode;
}

uint32_t tracer::GetMode(Tracer* tracer) {
    return tracer ? tracer->mode.load() : kTracerOff;
}

void TraceScope::Begin(TraceSite& site) {
    const uint32_t ticks = tracer::Ticks(tracer_);
    if (tracer::GetMode(tracer_) == kTracerOff) {
        tracer_ = nullptr;
        return;
    }
    const uint64_t known = site.known.load(std::memory_order_relaxed);
    if (known >> 16 == tracer_->serial) {
        index_ = static_cast<uint16_t>(known);
    } else {
        index_ = tracer::RegisterLocation(tracer_, site.file, site.line, site.name, site.flags);
        if (index_ != kNoLocation)
            site.known.store(uint64_t{tracer_->serial} << 16 | index_, std::memory_order_relaxed);
    }
    if (index_ == kNoLocation)
        tracer_ = nullptr;
    else
        tracer::Enter(tracer_, index_, ticks);
}
