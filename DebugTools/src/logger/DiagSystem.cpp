// The process's diagnostics system, the crash copy's name, and the report on a caught exception.
#include "AssertParts.h"
#include "DebugTools/MemTracker.h"
#include "DebugTools/platform/System.h"
#include "LogState.h"
#include "platform/Immortal.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

namespace {

bool TellMemory(uint64_t& allocated, uint64_t& peak) {
    const MemAmounts amounts = TrackerAmounts();
    allocated = amounts.allocated;
    peak = amounts.peak;
    return true;
}

// Brings the log and the memory tracker along. A tracer announces itself when it is made.
DiagSystem* MakeProcessSystem() {
    // A check may fail while the process ends. It writes to the default log, which is closed then.
    DiagSystem& system = diag::Immortal<DiagSystem, struct ProcessTag>();
    LogDefault();
    GetMemTracker();
    system.memoryCallback = TellMemory;
    return &system;
}

} // namespace

DiagSystem* GetDiagSystem() {
    static DiagSystem* const system = MakeProcessSystem();
    return system;
}

namespace {

// Reads "%d" or "%0Nd" at `at`; gives the number of characters and the width, or 0 characters for any other text.
size_t NumberPlace(const char* at, int& width) {
    size_t length = 1;
    width = 0;
    if (at[length] == '0' && std::isdigit(static_cast<unsigned char>(at[length + 1]))) {
        width = at[length + 1] - '0';
        length += 2;
    }
    return at[length] == 'd' ? length + 1 : 0;
}

} // namespace

// Not printf: the pattern holds a folder's name, in which a '%' means itself.
void SetCrashCopyPattern(DiagSystem* system, const char* pattern) {
    if (!system) system = GetDiagSystem();
    const diag::CalendarTime now = diag::LocalCalendarTime();
    const int values[] = {now.year, now.month, now.day, now.hour, now.minute, now.second};
    size_t next = 0;
    std::string name;
    while (*pattern) {
        int width = 0;
        const size_t place = *pattern == '%' && next < std::size(values) ? NumberPlace(pattern, width) : 0;
        if (place == 0) {
            name += *pattern++;
            continue;
        }
        char number[16];
        std::snprintf(number, sizeof number, "%0*d", width, values[next++]);
        name += number;
        pattern += place;
    }
    LogSetCrashCopyName(system->log, name.c_str());
}

namespace {

void WriteExceptionLine(Log* log) {
    try {
        if (std::current_exception()) throw;
        LogWrite(log, "C++ exception: none", kLogEndLine);
    } catch (const std::exception& exception) {
        LogPrintf(log, kLogEndLine, "C++ exception: %s", exception.what());
    } catch (...) {
        LogWrite(log, "C++ exception of unknown type", kLogEndLine);
    }
}

} // namespace

// The texts and places reported so far, kept without allocating: memory may be what has run out. Contexts are few and
// fixed; one that finds no room counts as reported.
bool diag::FirstReport(const char* context, uint64_t place) {
    struct Reported {
        char context[96];
        uint64_t place;
    };
    constexpr int kMaxReports = 64;
    static Reported reported[kMaxReports];
    static int count = 0;
    ScopedLock lock(GetDiagSystem()->crashLock);
    for (int i = 0; i < count; ++i)
        if (reported[i].place == place &&
            std::strncmp(reported[i].context, context, sizeof reported[i].context - 1) == 0)
            return false;
    if (count == kMaxReports) return false;
    std::snprintf(reported[count].context, sizeof reported[count].context, "%s", context);
    reported[count++].place = place;
    return true;
}

void diag::WriteReportTime(Log* log) {
    const CalendarTime now = LocalCalendarTime();
    const uint32_t ticks = LogTicks();
    LogPrintf(log, 0, "Time: %d:%02d:%02d, %6u.%03u\n", now.hour, now.minute, now.second, ticks / 1000, ticks % 1000);
}

// What memory has run out for is missing in the report.
bool diag::ReportException(const char* context, DiagSystem* system) try {
    if (!system) system = GetDiagSystem();
    if (!context) context = "";
    if (!FirstReport(context, 0)) return false;
    Log* log = system->log;
    LogHold together(log); // before the other lock, as everywhere
    ScopedLock lock(system->crashLock);
    LogSetCopyOnClose(log, true);
    EntryFrame frame(log);
    frame.Begin();
    WriteExceptionLine(log);
    WriteReportTime(log);
    LogPrintf(log, kLogEndLine, "Message: %s", context);
    if (auto callback = system->crashInfoCallback.load()) callback(log);
    WriteSystemInfo(system);
    frame.End();
    LogFlush(log);
    return true;
} catch (...) {
    return true;
}
