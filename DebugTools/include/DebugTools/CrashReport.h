// Crash reports, and operations guarded against processor exceptions.
#pragma once

#include "DebugTools/Assert.h"
#include "DebugTools/platform/Fault.h"
#include "DebugTools/platform/Stack.h"

/// Writes a crash report into the system's log: exception, place, time, message, system information and module list
/// (each once), memory and profiler facts, the call stack with local variables; then, when the system allows it, the
/// stacks of the listed threads, which stand still meanwhile. Sets the log's copy-on-close flag. A null system is the
/// process's; a null fault reports the calling thread's stack with code 0; `message` may be null. To be called on the
/// thread that faulted, before its stack is left.
void ReportCrash(DiagSystem* system, const diag::FaultRecord* fault, const char* message, int threadCount = 0,
                 const diag::ThreadHandle* threadHandles = nullptr, const uint32_t* threadIds = nullptr);

/// Makes the system report faults outside all guards ("Unhandled exception") before the earlier handler gets them, or
/// ends that. A null system is the process's.
void InstallUnhandledFilter(DiagSystem* system, bool on);

/// Writes the modules below 4 GiB into the log, once per process and only when the system's list is enabled.
void WriteModuleList(DiagSystem* system);

namespace diag {

/// How often a guard reports.
enum class GuardReports {
    kEvery,        ///< each fault
    kOncePerPlace, ///< the first fault of each instruction with this message: for work done millions of times
    kOnce          ///< the first fault with this message in the process
};

/// See Guarded.
bool RunReported(void (*body)(void*), void* context, const char* message, GuardReports reports, DiagSystem* system);

/// Runs `body()`; false when a processor exception or a C++ exception ended it. The first is reported as a crash with
/// `message` ("in BuildMesh"), the second is logged at its first time. The caller then returns its empty result.
template <class Body>
bool Guarded(const char* message, Body&& body, GuardReports reports = GuardReports::kEvery,
             DiagSystem* system = nullptr) {
    auto call = [&body] { body(); };
    return RunReported([](void* c) { (*static_cast<decltype(call)*>(c))(); }, &call, message, reports, system);
}

} // namespace diag
