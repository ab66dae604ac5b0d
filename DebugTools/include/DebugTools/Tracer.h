// The profiling tracer: follows marked scopes, counts their calls and ticks or logs them, and keeps each thread's stack
// of scopes for reports. Without a tracer, which is the rule, a scope costs one test. Ticks are microseconds.
#pragma once

#include "DebugTools/Log.h"
#include "DebugTools/SourceName.h"
#include "DebugTools/ThreadOps.h"

#include <atomic>
#include <cstdint>

struct Tracer;

/// What a tracer does.
enum TracerMode : uint32_t {
    kTracerOff = 0,
    kTracerProfile = 2,  ///< counts calls and ticks of every location
    kTracerLog = 3,      ///< logs entered scopes with indentation
    kTracerCrashed = 255 ///< given to SetMode: the calling thread lost scopes by a crash; the mode stays
};

/// Flags of a location, beside the log's channel bits 0 to 5.
enum TracerFlags : uint32_t {
    kTraceNoLog = 0x10000, ///< never logged as a call
    kTraceByName = 0x40000 ///< known by its name alone; file and line do not matter
};

constexpr uint16_t kNoLocation = 0xFFFF;

struct TracerSetup {
    Log* log = nullptr;                 ///< null: the default log
    const ThreadOps* threads = nullptr; ///< null: all threads share record 0, and nothing is locked
    uint32_t capacity = 1024;           ///< locations, 1 to 65534
    uint32_t (*ticks)() = nullptr;      ///< null: microseconds of the high-resolution counter
};

namespace tracer {

/// Makes a tracer, switched off. Null when four exist or there is no memory. The first in the table is the default.
/// File names and names of locations must stay alive as long as the tracer.
Tracer* Create(const TracerSetup& setup);
/// Writes what call logging still holds back and gives the table slot back. No thread may enter scopes meanwhile;
/// scopes that are open may still be left. Null is ignored.
void Close(Tracer* tracer);
/// The first tracer of the table; null when there is none.
Tracer* Default();
uint32_t Ticks(Tracer* tracer);

/// The location's index; kNoLocation when the tracer is off or its table is full. Texts are compared by address.
uint16_t RegisterLocation(Tracer* tracer, const char* file, int line, const char* name, uint32_t flags);
/// Marks entering a location at the tick the call was made. Beyond 100 levels only the depth counts.
void Enter(Tracer* tracer, uint16_t index, uint32_t ticksAtCall);
/// Marks leaving it. When it is not the top of the stack, that is logged, and the stack unwound to it.
void Exit(Tracer* tracer, uint16_t index);
void SetMode(Tracer* tracer, uint32_t mode);
uint32_t GetMode(Tracer* tracer);

/// Scopes the thread is in; 0 for an unknown thread and without a tracer.
int GetStackDepth(Tracer* tracer, uint32_t threadId);
/// Name of the scope `above` levels below the calling thread's top; null when the stack is not that deep.
const char* ScopeName(Tracer* tracer, int above);
/// The scopes of a thread record, or of all (-1), one a line from the outermost.
void DumpStacks(Tracer* tracer, int threadSlot = -1);
/// Table usage, own cost, and a line for every location that was called: ticks are inclusive (the total) and without
/// those of scopes entered inside (self); percent is of the self ticks of all.
void WriteProfile(Tracer* tracer);
/// With `on`, writes the stacks of all threads without time stamps. Closes the tracer in any case.
void DumpOnCrash(Tracer* tracer, bool on);

} // namespace tracer

/// A place in the code that scopes are entered at.
struct TraceSite {
    const char* file;
    int line;
    const char* name;
    uint32_t flags;
    std::atomic<uint64_t> known{0}; ///< which tracer gave which index
};

namespace diag {

/// The default tracer, for the test that a scope costs.
inline std::atomic<Tracer*> defaultTracer{nullptr};

} // namespace diag

/// Enters a site for the length of a C++ scope.
class TraceScope {
public:
    explicit TraceScope(TraceSite& site) : TraceScope(diag::defaultTracer.load(std::memory_order_acquire), site) {}
    TraceScope(Tracer* tracer, TraceSite& site) : tracer_(tracer) {
        if (tracer_) [[unlikely]]
            Begin(site);
    }
    ~TraceScope() {
        if (tracer_) [[unlikely]]
            tracer::Exit(tracer_, index_);
    }
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

private:
    void Begin(TraceSite& site);

    Tracer* tracer_; ///< null when nothing was entered
    uint16_t index_ = kNoLocation;
};

#define TRACE_JOIN2(a, b) a##b
#define TRACE_JOIN(a, b) TRACE_JOIN2(a, b)
/// Follows the rest of the enclosing block under a name.
#define TRACE_SCOPE(name)                                                                                              \
    static TraceSite TRACE_JOIN(traceSite, __LINE__){diag::SourceName(__FILE__), __LINE__, name, 0};                   \
    const TraceScope TRACE_JOIN(traceScope, __LINE__)(TRACE_JOIN(traceSite, __LINE__))
