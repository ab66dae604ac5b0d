// What reports on failed assertions and on exceptions share.
#pragma once

#include "DebugTools/Assert.h"

namespace diag {

/// The lines around an entry. Between Begin and End the log's lines carry no time stamps.
class EntryFrame {
public:
    explicit EntryFrame(Log* log) : log_(log) {}

    void Begin() {
        const uint32_t flags = LogGetDefaultFlags(log_);
        hadTimeStamps_ = (flags & kLogTimeStamp) != 0;
        LogSetDefaultFlags(log_, flags & ~uint32_t{kLogTimeStamp});
        LogWrite(log_, nullptr, kLogEndLine);
        LogWrite(log_, "//=====================================================", kLogEndLine);
    }
    void End() {
        LogWrite(log_, "\\\\=====================================================", kLogEndLine);
        LogWrite(log_, nullptr, kLogEndLine);
        // Only this bit is put back: another entry may have begun meanwhile and must not lose it.
        if (hadTimeStamps_) LogSetDefaultFlags(log_, LogGetDefaultFlags(log_) | kLogTimeStamp);
    }

private:
    Log* log_;
    bool hadTimeStamps_ = false;
};

/// Writes the time of day and the tick counter.
void WriteReportTime(Log* log);
/// True the first time this text is seen with this place, in the process.
bool FirstReport(const char* context, uint64_t place);

} // namespace diag
