// Stacks and the profile.
#include "logger/LogState.h"
#include "tracer/TracerState.h"

#include <algorithm>

using namespace diag;

namespace {

int LevelsOf(const TraceThread& thread) {
    return std::min(thread.depth.load(std::memory_order_acquire), kMaxTraceDepth);
}

void DumpThread(const Tracer& t, int slot) {
    const TraceThread& thread = t.threads[slot];
    LogPrintf(t.setup.log, kLogEndLine, "--- Thread %d stack trace:", slot);
    const int levels = LevelsOf(thread);
    for (int i = 0; i < levels; ++i) {
        const uint16_t location = thread.stack[i].load(std::memory_order_relaxed);
        if (t.Knows(location)) LogWrite(t.setup.log, t.locations[location].name, kLogEndLine);
    }
}

double Percent(uint64_t part, uint64_t whole) {
    return whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

void WriteLocation(Log* log, const TraceLocation& place, uint64_t allTicks) {
    const uint32_t calls = place.calls.load(std::memory_order_relaxed);
    if (calls == 0) return;
    const uint64_t total = place.totalTicks.load(std::memory_order_relaxed);
    const uint64_t self = place.selfTicks.load(std::memory_order_relaxed);
    LogPrintf(log, kLogEndLine, "%s%s\t%s(%d)\t%u\t%llu\t%llu\t%.2f\t%.2f",
              (place.flags & kTraceNoLog) != 0 ? "excluded\t" : "", place.name, place.file, place.line, calls,
              static_cast<unsigned long long>(total), static_cast<unsigned long long>(self), Percent(self, allTicks),
              static_cast<double>(total) / calls);
}

} // namespace

int tracer::GetStackDepth(Tracer* tracer, uint32_t threadId) {
    if (!tracer || !tracer->inUse) return 0;
    for (int slot = 0; slot < ThreadSlots::kCount; ++slot)
        if (tracer->slots.Taken(slot) && (!tracer->setup.threads || tracer->threads[slot].id == threadId))
            return tracer->threads[slot].depth;
    return 0;
}

const char* tracer::ScopeName(Tracer* tracer, int above) {
    const TraceThread* thread = tracer && tracer->inUse ? tracer->Thread(false) : nullptr;
    const int at = thread ? thread->depth.load(std::memory_order_relaxed) - 1 - above : -1;
    if (at < 0 || at >= kMaxTraceDepth) return nullptr;
    return tracer->locations[thread->stack[at].load(std::memory_order_relaxed)].name;
}

void tracer::DumpStacks(Tracer* tracer, int threadSlot) {
    if (!tracer || !tracer->inUse) return;
    const LogHold together(tracer->setup.log);
    for (int slot = 0; slot < ThreadSlots::kCount; ++slot)
        if (tracer->slots.Taken(slot) && (threadSlot < 0 || threadSlot == slot)) DumpThread(*tracer, slot);
}

void tracer::WriteProfile(Tracer* tracer) {
    if (!tracer || !tracer->inUse) return;
    Log* log = tracer->setup.log;
    const uint32_t used = tracer->used.load(std::memory_order_acquire);
    uint64_t all = 0, own = 0;
    for (uint32_t i = 0; i < used; ++i) all += tracer->locations[i].selfTicks.load(std::memory_order_relaxed);
    for (const TraceThread& thread : tracer->threads) own += thread.tracerTicks.load(std::memory_order_relaxed);
    const LogHold together(log);
    LogPrintf(log, kLogEndLine, "Trace hash table usage: %u / %u", used, tracer->setup.capacity);
    LogPrintf(log, kLogEndLine, "Trace hash table collisions/misses: %u / %u", tracer->collisions.load(),
              tracer->probeSteps.load());
    LogPrintf(log, kLogEndLine, "Tracer ticks: %llu, %%%.2f", static_cast<unsigned long long>(own), Percent(own, all));
    LogWrite(log, "Code profiling results:", kLogEndLine);
    LogPrintf(log, kLogEndLine, "Total ticks: %llu", static_cast<unsigned long long>(all));
    LogWrite(log, "Location name:\tFile(line)\tcalls\ttotal ticks\tself ticks\tpercent\tticks/call", kLogEndLine);
    for (uint32_t i = 0; i < used; ++i) WriteLocation(log, tracer->locations[i], all);
}

void tracer::DumpOnCrash(Tracer* tracer, bool on) {
    if (!tracer || !tracer->inUse) return;
    if (on) {
        Log* log = tracer->setup.log;
        const LogHold together(log);
        const uint32_t flags = LogGetDefaultFlags(log);
        LogSetDefaultFlags(log, flags & ~uint32_t{kLogTimeStamp});
        LogWrite(log, "Crash occurred, dumping the stack", kLogEndLine);
        DumpStacks(tracer);
        LogSetDefaultFlags(log, flags);
        LogFlush(log);
    }
    Close(tracer);
}
