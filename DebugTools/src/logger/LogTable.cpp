// The table of logs: making, closing, the default log, internal assertions.
#include "DebugTools/SourceName.h"
#include "DebugTools/platform/Thread.h"
#include "LogState.h"
#include "platform/Immortal.h"

#include <atomic>
#include <cstdio>

namespace {

constexpr int kMaxLogs = 4;

// Plain memory, never destroyed: a log may still be asked for while the process ends.
Log table[kMaxLogs];
std::atomic<Log*> defaultLog{nullptr};
std::atomic<bool> processEnded{false};
std::atomic<int> internalAsserts{0};

diag::CriticalSection& TableLock() {
    return diag::Immortal<diag::CriticalSection, struct TableLockTag>();
}

void Init(Log& log, const LogFileOps* files, const LogLockOps* locks, uint32_t mode) {
    log = Log{};
    log.files = files;
    log.locks = locks;
    log.mode = mode;
    log.lock = locks->create();
    log.defaultFlags = kLogInitialFlags;
    log.firstWord = -6;
    log.secondWord = 16;
    log.truncateOnOpen = true;
    log.atLineStart = true;
    log.sizeLimit = 1000000;
    std::snprintf(log.fileName, sizeof log.fileName, "%s", kLogDefaultName);
    std::snprintf(log.crashCopyName, sizeof log.crashCopyName, "%s", kLogDefaultCrashName);
    log.inUse = true;
}

// Closes the default log when the process ends.
struct ProcessEnd {
    ~ProcessEnd() {
        processEnded = true;
        if (Log* log = defaultLog.load()) LogClose(log);
    }
};

} // namespace

Log* LogOpen(const LogFileOps* files, const LogLockOps* locks, uint32_t mode) {
    if (!files) files = LogStdFileOps();
    if (!locks) locks = LogOsLockOps();
    {
        diag::ScopedLock lock(TableLock());
        LogStartTicks();
        for (Log& log : table) {
            if (log.inUse) continue;
            Init(log, files, locks, mode);
            return &log;
        }
    }
    LogInternalAssert(LogExistingDefault(), diag::SourceName(__FILE__), __LINE__);
    return nullptr;
}

Log* LogExistingDefault() {
    return defaultLog.load(std::memory_order_acquire);
}

Log* LogDefault() {
    if (Log* log = LogExistingDefault()) return log;
    if (processEnded) return nullptr;
    diag::ScopedLock lock(TableLock());
    if (Log* log = LogExistingDefault()) return log;
    static ProcessEnd atEnd;
    Log* log = LogOpen(LogOsFileOps(), LogOsLockOps(), 3);
    defaultLog.store(log, std::memory_order_release);
    return log;
}

void LogClose(Log* log) {
    if (!log) log = LogExistingDefault();
    if (!log || !log->inUse) return;
    diag::ScopedLock lock(TableLock());
    log->locks->lock(log->lock);
    if (log->file) {
        log->files->flush(log->file);
        log->files->close(log->file);
        log->file = nullptr;
        // Without a file of its own a log would copy one that an earlier process left.
        if (log->copyOnClose && log->files->copy) log->files->copy(log->fileName, log->crashCopyName);
    }
    log->locks->unlock(log->lock);
    log->locks->destroy(log->lock);
    log->lock = nullptr;
    if (defaultLog.load() == log) defaultLog.store(nullptr);
    log->inUse = false;
}

void LogInternalAssert(Log* log, const char* file, int line) {
    ++internalAsserts;
    if (!log) return;
    LogHeader(log, file, line, "assert failed", kLogEndLine | kLogTimeStamp | kLogThreadId);
    LogFlush(log);
    LogSetCopyOnClose(log, true);
}

int LogInternalAssertCount() {
    return internalAsserts;
}
