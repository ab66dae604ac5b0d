// The process's diagnostics system, the crash copy's name, and the report on a caught exception.
#include "AssertParts.h"
#include "DebugTools/platform/System.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

DiagSystem* GetDiagSystem() {
    // Never destroyed: a check may fail while the process ends. It writes to the default log, which is closed then.
    alignas(DiagSystem) static std::byte storage[sizeof(DiagSystem)];
    static DiagSystem* system = new (storage) DiagSystem;
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

// The texts reported so far, kept without allocating: memory may be what has run out. Contexts are few and fixed; one
// that finds no room counts as reported.
bool FirstReport(const char* context) {
    constexpr int kMaxContexts = 32;
    static char reported[kMaxContexts][96];
    static int count = 0;
    for (int i = 0; i < count; ++i)
        if (std::strncmp(reported[i], context, sizeof reported[i] - 1) == 0) return false;
    if (count == kMaxContexts) return false;
    std::snprintf(reported[count++], sizeof reported[0], "%s", context);
    return true;
}

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

// What memory has run out for is missing in the report.
bool diag::ReportException(const char* context, DiagSystem* system) try {
    if (!system) system = GetDiagSystem();
    if (!context) context = "";
    // One lock for all systems: the list of texts is the process's.
    ScopedLock lock(GetDiagSystem()->crashLock);
    if (!FirstReport(context)) return false;
    Log* log = system->log;
    LogSetCopyOnClose(log, true);
    EntryFrame frame(log);
    frame.Begin();
    WriteExceptionLine(log);
    const CalendarTime now = LocalCalendarTime();
    const uint32_t ticks = LogTicks();
    LogPrintf(log, 0, "Time: %d:%02d:%02d, %6u.%03u\n", now.hour, now.minute, now.second, ticks / 1000, ticks % 1000);
    LogPrintf(log, kLogEndLine, "Message: %s", context);
    if (auto callback = system->crashInfoCallback.load()) callback(log);
    WriteSystemInfo(system);
    frame.End();
    LogFlush(log);
    return true;
} catch (...) {
    return true;
}
