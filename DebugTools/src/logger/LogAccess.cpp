// Names, flags, limits, indentation and the tick counter.
#include "DebugTools/SourceName.h"
#include "DebugTools/platform/System.h"
#include "LogState.h"

#include <atomic>
#include <cstdio>
#include <cstring>

void LogSetFileName(Log* target, const char* name) {
    LogHold hold(target);
    Log* log = hold.Get();
    if (!log) return;
    char cut[kLogNameSize];
    std::snprintf(cut, sizeof cut, "%s", name ? name : kLogDefaultName);
    if (std::strcmp(cut, log->fileName) == 0) return;
    if (log->file) {
        log->files->flush(log->file);
        log->files->close(log->file);
        log->file = nullptr;
        log->atLineStart = true;
    }
    std::memcpy(log->fileName, cut, sizeof cut);
    log->truncateOnOpen = true;
}

void LogSetCrashCopyName(Log* target, const char* name) {
    LogHold hold(target);
    if (Log* log = hold.Get())
        std::snprintf(log->crashCopyName, sizeof log->crashCopyName, "%s", name ? name : kLogDefaultCrashName);
}

namespace {

template <class T>
void SetField(Log* target, T Log::*field, T value) {
    LogHold hold(target);
    if (Log* log = hold.Get()) log->*field = value;
}

template <class T>
T GetField(Log* target, T Log::*field) {
    LogHold hold(target);
    return hold.Get() ? hold.Get()->*field : T{};
}

const char* GetName(Log* target, char (Log::*name)[kLogNameSize]) {
    LogHold hold(target);
    return hold.Get() ? hold.Get()->*name : "";
}

} // namespace

const char* LogGetFileName(Log* log) {
    return GetName(log, &Log::fileName);
}
const char* LogGetCrashCopyName(Log* log) {
    return GetName(log, &Log::crashCopyName);
}
void LogSetDefaultFlags(Log* log, uint32_t flags) {
    SetField(log, &Log::defaultFlags, flags);
}
uint32_t LogGetDefaultFlags(Log* log) {
    return GetField(log, &Log::defaultFlags);
}
void LogSetSizeLimit(Log* log, uint32_t bytes) {
    SetField(log, &Log::sizeLimit, bytes);
}
void LogSetCopyOnClose(Log* log, bool on) {
    SetField(log, &Log::copyOnClose, on);
}
bool LogGetCopyOnClose(Log* log) {
    return GetField(log, &Log::copyOnClose);
}
uint32_t LogGetMode(Log* log) {
    return GetField(log, &Log::mode);
}
void LogSetFirstWord(Log* log, int32_t word) {
    SetField(log, &Log::firstWord, word);
}
int32_t LogGetFirstWord(Log* log) {
    return GetField(log, &Log::firstWord);
}
void LogSetSecondWord(Log* log, int32_t word) {
    SetField(log, &Log::secondWord, word);
}
int32_t LogGetSecondWord(Log* log) {
    return GetField(log, &Log::secondWord);
}
int LogGetIndent(Log* log) {
    return GetField(log, &Log::indent);
}

void LogIndent(Log* target) {
    LogHold hold(target);
    if (Log* log = hold.Get(); log && log->indent < kLogMaxIndent) ++log->indent;
}

void LogUnindent(Log* target) {
    LogHold hold(target);
    Log* log = hold.Get();
    if (!log) return;
    if (log->indent > 0)
        --log->indent;
    else
        LogInternalAssert(log, diag::SourceName(__FILE__), __LINE__);
}

namespace {
std::atomic<uint64_t> startTicks{0};
std::atomic<uint64_t> ticksPerMs{0}; // 0: not started, or no counter
std::atomic<uint32_t (*)()> tickSource{nullptr};
} // namespace

void LogStartTicks() {
    uint64_t ticks = 0;
    uint64_t perSecond = 0;
    if (ticksPerMs != 0 || !diag::PerformanceCounter(ticks, perSecond)) return;
    startTicks = ticks;
    ticksPerMs = perSecond / 1000;
}

uint32_t LogTicks() {
    if (auto source = tickSource.load()) return source();
    const uint64_t divisor = ticksPerMs;
    uint64_t ticks = 0;
    uint64_t perSecond = 0;
    if (divisor == 0 || !diag::PerformanceCounter(ticks, perSecond)) return 0;
    return static_cast<uint32_t>((ticks - startTicks) / divisor);
}

void LogSetTickSource(uint32_t (*source)()) {
    tickSource = source;
}
