// The table of locations and its hash.
#include "logger/LogState.h"
#include "tracer/TracerState.h"

using namespace diag;

namespace {

constexpr uint32_t kProbeStep = 137;

uint32_t AddressBits(const char* text) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(text));
}

uint16_t HashOf(const char* file, int line, const char* name, uint32_t flags) {
    if (flags & kTraceByName) return static_cast<uint16_t>(AddressBits(name) >> 8);
    return static_cast<uint16_t>((AddressBits(file) >> 4) ^ static_cast<uint32_t>(line));
}

uint32_t Wrap(const Tracer& t, uint32_t slot) {
    return t.mask ? slot & t.mask : slot % t.setup.capacity;
}

bool SamePlace(const TraceLocation& place, const char* file, int line, const char* name, uint32_t flags) {
    if (flags & kTraceByName) return place.name == name && (place.flags & kTraceByName) != 0;
    return place.line == line && place.name == name && place.file == file && (place.flags & kTraceByName) == 0;
}

void Fill(TraceLocation& place, const char* file, int line, const char* name, uint32_t flags) {
    place.file = file;
    place.line = line;
    place.flags = flags;
    place.name = name;
    place.calls = place.lastEntry = 0;
    place.totalTicks = place.selfTicks = 0;
}

} // namespace

uint16_t tracer::RegisterLocation(Tracer* tracer, const char* file, int line, const char* name, uint32_t flags) {
    if (!tracer || !tracer->inUse || tracer->mode == kTracerOff) return kNoLocation;
    Tracer& t = *tracer;
    const uint32_t start = Wrap(t, HashOf(file, line, name, flags));
    uint32_t steps = 0;
    for (uint32_t slot = start;;) {
        uint16_t found = t.index[slot].load(std::memory_order_acquire);
        if (found == kNoLocation) {
            const OpsLock lock(t.setup.threads);
            found = t.index[slot].load(std::memory_order_acquire);
            if (found == kNoLocation) { // still free, now under the lock
                const uint32_t next = t.used.load(std::memory_order_relaxed);
                if (next >= t.setup.capacity) return kNoLocation;
                Fill(t.locations[next], file, line, name, flags);
                t.used.store(next + 1, std::memory_order_release);
                if (steps > 0) ++t.collisions, t.probeSteps += steps;
                t.index[slot].store(static_cast<uint16_t>(next), std::memory_order_release);
                return static_cast<uint16_t>(next);
            }
        }
        if (SamePlace(t.locations[found], file, line, name, flags)) return found;
        slot = Wrap(t, slot + kProbeStep);
        ++steps;
        if (slot == start) {
            LogInternalAssert(t.setup.log ? t.setup.log : LogDefault(), SourceName(__FILE__), __LINE__);
            return kNoLocation;
        }
    }
}
