// What a log holds, and what the files of the logger share.
#pragma once

#include "DebugTools/Log.h"
#include "DebugTools/platform/Fault.h"

constexpr size_t kLogNameSize = 512;
constexpr int kLogMaxIndent = 64;
constexpr const char* kLogDefaultName = "Log.txt";
constexpr const char* kLogDefaultCrashName = "LogCrash.txt";

struct Log {
    bool inUse;
    const LogFileOps* files;
    const LogLockOps* locks;
    uint32_t mode;
    void* file;
    void* lock;
    uint32_t defaultFlags;
    int32_t firstWord;
    int32_t secondWord;
    int indent;
    bool copyOnClose;
    bool truncateOnOpen;
    bool atLineStart;
    bool silent; // the size limit was reached
    uint32_t sizeLimit;
    uint32_t bytesWritten;
    char fileName[kLogNameSize];
    char crashCopyName[kLogNameSize];
};

/// Holds a log's lock for a scope; null means the default log. `Get` gives null when there is no log to be had.
class LogHold {
public:
    explicit LogHold(Log* log) : log_(log ? log : LogDefault()), cleanup_(&GiveBack, this) { Take(); }
    ~LogHold() {
        if (held_) Release();
    }
    LogHold(const LogHold&) = delete;
    LogHold& operator=(const LogHold&) = delete;

    Log* Get() const { return log_; }
    /// Lets other threads in, until Take.
    void Release() {
        held_ = false;
        if (log_) log_->locks->unlock(log_->lock);
    }
    void Take() {
        if (log_) log_->locks->lock(log_->lock);
        held_ = true;
    }

private:
    static void GiveBack(void* hold) {
        auto& self = *static_cast<LogHold*>(hold);
        if (self.held_) self.Release();
    }

    Log* log_;
    bool held_ = false;
    diag::FaultCleanup cleanup_; // a text at a bad address must not leave the log locked
};

/// A failed check of the library itself: counted, and written to `log` as "file(line): assert failed" when there is
/// one.
void LogInternalAssert(Log* log, const char* file, int line);
/// The default log if it exists already.
Log* LogExistingDefault();
/// Starts the tick counter unless it runs.
void LogStartTicks();
