// The crash report.
#include "DebugTools/CrashReport.h"

#include "AssertParts.h"
#include "LogState.h"
#include "ReportParts.h"

#include <new>

namespace {

using namespace diag;

constexpr int kMaxSuspended = 32;

// The listed threads, held still. In place, because a report must not allocate more than it has to.
class Suspended {
public:
    Suspended(int count, const ThreadHandle* handles, const uint32_t* ids) : ids_(ids) {
        for (int i = 0; i < count && i < kMaxSuspended; ++i, ++count_)
            new (At(i)) SuspendedThread(handles ? handles[i] : nullptr, ids[i]);
    }
    ~Suspended() {
        for (int i = 0; i < count_; ++i) At(i)->~SuspendedThread();
    }
    Suspended(const Suspended&) = delete;
    Suspended& operator=(const Suspended&) = delete;

    int Count() const { return count_; }
    uint32_t Id(int i) const { return ids_[i]; }
    SuspendedThread& operator[](int i) { return *At(i); }

private:
    SuspendedThread* At(int i) { return reinterpret_cast<SuspendedThread*>(storage_) + i; }

    alignas(SuspendedThread) std::byte storage_[kMaxSuspended * sizeof(SuspendedThread)];
    const uint32_t* ids_;
    int count_ = 0;
};

void WriteThread(Log* log, const DiagSystem& system, uint32_t id, SymbolReader& symbols, const CapturedStack& stack,
                 bool interrupted) {
    LogWrite(log, "========================", kLogEndLine);
    LogPrintf(log, 0, "Thread: %x\n", id);
    if (const ProfilerReports* profiler = system.profiler)
        LogPrintf(log, 0, "Thread stack: %d\n", profiler->stackDepth(id));
    WriteCallStack(log, symbols, stack, interrupted);
}

// What the rest of the program knows.
void WriteProgramState(Log* log, DiagSystem& system) {
    uint64_t allocated = 0, peak = 0;
    if (auto memory = system.memoryCallback.load(); memory && memory(allocated, peak))
        LogPrintf(log, 0, "Allocated memory: %llu, allocated peak: %llu\n", static_cast<unsigned long long>(allocated),
                  static_cast<unsigned long long>(peak));
    if (const ProfilerReports* profiler = system.profiler) {
        profiler->dumpStacks();
        profiler->writeProfile();
    } else {
        LogWrite(log, nullptr, kLogEndLine);
    }
}

void WriteReport(Log* log, DiagSystem& system, const FaultRecord& fault, const char* message, bool interrupted,
                 Suspended& threads) {
    WriteFault(log, fault);
    WriteReportTime(log);
    if (message) LogPrintf(log, 0, "Message: %s\n", message);
    LogFlush(log); // what follows may need memory that is not there
    if (auto callback = system.crashInfoCallback.load()) callback(log);
    WriteSystemInfo(&system);
    SymbolReader symbols(!fault.heapMayBeLocked);
    if (symbols.Level() == 0)
        LogWrite(log, "DbgHelp.dll not loaded or too old version, additional info not available", kLogEndLine);
    WriteModuleList(&system);
    WriteProgramState(log, system);
    WriteThread(log, system, CurrentThreadId(), symbols, *fault.stack, interrupted);
    WriteSymbolSource(log, symbols, fault.address);
    for (int i = 0; i < threads.Count(); ++i) {
        if (!threads[i].Held()) continue;
        WriteThread(log, system, threads.Id(i), symbols, threads[i].Stack(), true);
        threads[i].Resume();
    }
}

} // namespace

void ReportCrash(DiagSystem* system, const diag::FaultRecord* fault, const char* message, int threadCount,
                 const diag::ThreadHandle* threadHandles, const uint32_t* threadIds) {
    if (!system) system = GetDiagSystem();
    Log* log = system->log;
    // The log's lock comes first everywhere: a thread may have faulted while it wrote a line.
    LogHold together(log);
    ScopedLock lock(system->crashLock);
    const bool suspend = system->suspendThreads && threadIds;
    Suspended threads(suspend ? threadCount : 0, threadHandles, threadIds);
    LogSetCopyOnClose(log, true);
    EntryFrame frame(log);
    frame.Begin();
    FaultRecord record = fault ? *fault : FaultRecord{};
    const bool interrupted = record.stack != nullptr;
    CapturedStack here;
    if (!interrupted) {
        CaptureStack(here);
        record.stack = &here;
        if (record.address == 0 && here.count > 0) record.address = here.frames[0].instruction;
    }
    WriteReport(log, *system, record, message, interrupted, threads);
    frame.End();
    LogFlush(log);
}

void InstallUnhandledFilter(DiagSystem* system, bool on) {
    if (!system) system = GetDiagSystem();
    if (!on) {
        SetUnhandledFault({});
        return;
    }
    SetUnhandledFault({[](const FaultRecord& fault, void* target) {
                           ReportCrash(static_cast<DiagSystem*>(target), &fault, "Unhandled exception");
                       },
                       system});
}
