#pragma once
// The host's own log.

#include <functional>
#include <mutex>
#include <string>

#include "sdk/core.h"

namespace host {

/// Writes one line an entry, "velmar: KIND: TITLE: TEXT", to standard error or to a sink. Any thread.
class HostLog : public LogSys {
public:
    /// One entry, as OneLine. Debug entries need SetDebug(true).
    void LogEntry(int type, bool dialogue, const char* title, const char* text) override;
    /// Receives the lines instead of standard error; an empty function gives standard error back.
    using Sink = std::function<void(int type, const std::string& line)>;
    void SetSink(Sink sink);
    void SetDebug(bool on);

private:
    std::mutex mutex_;
    Sink sink_;
    bool debug_ = false;
};

} // namespace host
