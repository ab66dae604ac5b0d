// Call logging.
#include "logger/LogState.h"
#include "tracer/TracerState.h"

using namespace diag;

namespace {

uint32_t Channels(const Tracer& t, uint16_t location) {
    return t.locations[location].flags & kLogChannels;
}

bool Logged(const Tracer& t, uint16_t location) {
    return (t.locations[location].flags & kTraceNoLog) == 0;
}

} // namespace

void diag::FlushRepeats(Tracer& t, TraceThread& thread) {
    if (thread.lastLogged != kNoLocation && thread.repeats > 1)
        LogPrintf(t.setup.log, Channels(t, thread.lastLogged), " %u calls", thread.repeats);
    thread.lastLogged = kNoLocation;
    thread.repeats = 0;
}

void diag::LogEntered(Tracer& t, TraceThread& thread, uint16_t location) {
    const LogHold hold(t.setup.log);
    Log* log = hold.Get();
    if (Logged(t, location) && location == thread.lastLogged) {
        ++thread.repeats;
    } else if (Logged(t, location)) {
        FlushRepeats(t, thread);
        if (log && !log->atLineStart) LogWrite(log, nullptr, kLogEndLine);
        LogWrite(log, t.locations[location].name, Channels(t, location));
        thread.lastLogged = location;
        thread.repeats = 1;
    }
    LogIndent(log);
}

void diag::LogLeft(Tracer& t, TraceThread& thread, uint16_t location) {
    const LogHold hold(t.setup.log);
    if (LogGetIndent(hold.Get()) > 0) LogUnindent(hold.Get());
    // The location may be entered again at once; only leaving what is around it ends its count.
    if (Logged(t, location) && location != thread.lastLogged) FlushRepeats(t, thread);
}
