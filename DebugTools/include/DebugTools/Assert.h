// Failed checks and caught exceptions: logged with their place, with system information, and shown to the user until he
// asks for no more of them.
#pragma once

#include "DebugTools/Log.h"
#include "DebugTools/SourceName.h"
#include "DebugTools/platform/Thread.h"

#include <atomic>

/// What reports ask of the profiler.
struct ProfilerReports {
    int (*stackDepth)(uint32_t threadId); ///< scopes that a thread is in
    void (*dumpStacks)();                 ///< writes the scopes of all threads
    void (*writeProfile)();
};

/// The diagnostics system: one per process (GetDiagSystem); tests make their own.
struct DiagSystem {
    /// Shows the prompt text and returns true to keep showing prompts.
    using AssertCallback = bool (*)(const char* prompt);
    /// Writes extra lines into a crash report.
    using CrashInfoCallback = void (*)(Log* log);
    /// Gives the memory tracker's amounts in bytes; false when there is no tracker.
    using MemoryCallback = bool (*)(uint64_t& allocated, uint64_t& peak);

    explicit DiagSystem(Log* logToWrite = nullptr) : log(logToWrite) {}

    diag::CriticalSection crashLock;      ///< serialises the reports on faults and exceptions
    Log* log;                             ///< null: the default log
    std::atomic<bool> assertsShown{true}; ///< failed assertions open a prompt; goes from on to off only
    std::atomic<bool> noPromptYet{true};  ///< cleared when a prompt is composed
    std::atomic<bool> systemInfoWritten{false};
    std::atomic<bool> moduleListWritten{false};
    std::atomic<bool> moduleListEnabled{true};
    std::atomic<bool> suspendThreads{true}; ///< a crash report may hold the threads still that are handed to it
    std::atomic<const ProfilerReports*> profiler{nullptr};
    std::atomic<MemoryCallback> memoryCallback{nullptr};
    std::atomic<AssertCallback> assertCallback{nullptr};
    std::atomic<CrashInfoCallback> crashInfoCallback{nullptr};
};

/// The process's system, made on first use together with the default log and the memory tracker, whose amounts it
/// reports; the default tracer is its profiler while there is one. Never null.
DiagSystem* GetDiagSystem();

/// What a failed assertion tells beside its place; any may be null.
struct AssertDetails {
    const char* function = nullptr;
    const char* condition = nullptr;
    const char* message = nullptr;
};

/// Reports a failed check: logs it framed by lines, prompts the user while prompts are on, writes the system
/// information once, sets the log's copy-on-close flag and flushes. A null system is the process's.
void sAssert(DiagSystem* system, const char* file, int line);
void sAssert(DiagSystem* system, const char* file, int line, const AssertDetails& details);

/// Reports to the process's system, at the first call with this flag only.
void ReportAssertOnce(std::atomic<bool>& reported, const char* source, int line);

/// Checks a condition, also in release builds; the expression is evaluated once.
#define SASSERT(condition) ((condition) ? (void)0 : sAssert(nullptr, diag::SourceName(__FILE__), __LINE__))

/// The same, but this place reports only once per process.
#define SASSERT_ONCE(condition)                                                                                        \
    do {                                                                                                               \
        static std::atomic<bool> reportedHere{false};                                                                  \
        if (!(condition)) ReportAssertOnce(reportedHere, diag::SourceName(__FILE__), __LINE__);                        \
    } while (false)

/// Writes the operating system, processor and memory block into the log, once per process.
void WriteSystemInfo(DiagSystem* system);

/// Puts the local year, month, day, hour, minute and second, in this order, into the pattern's "%d" and "%02d" places
/// and makes the result the name of the log's crash copy. Other text stays as it stands, "%" signs too.
void SetCrashCopyPattern(DiagSystem* system, const char* pattern);

namespace diag {

/// To be called while a C++ exception is handled: logs what it says, with a text that names the work it ended ("in
/// rendering thread"), at the first time this text is reported in the process. False when it was reported before. A
/// null system is the process's.
bool ReportException(const char* context, DiagSystem* system = nullptr);

} // namespace diag
