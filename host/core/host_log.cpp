#include "core/host_log.h"

#include <cstdio>

#include "core/error.h"

namespace host {

void HostLog::LogEntry(int type, bool, const char* title, const char* text) {
    const char* const kind = type == SYSLOG_ERROR   ? "error: "
                             : type == SYSLOG_WARN  ? "warning: "
                             : type == SYSLOG_DEBUG ? "debug: "
                                                    : "";
    std::string line = std::string("velmar: ") + kind;
    if (title && *title) line += OneLine(title) + ": ";
    line += OneLine(text ? text : "");
    const std::lock_guard<std::mutex> lock(mutex_);
    if (type == SYSLOG_DEBUG && !debug_) return;
    if (sink_)
        sink_(type, line);
    else
        std::fprintf(stderr, "%s\n", line.c_str());
}

void HostLog::SetSink(Sink sink) {
    const std::lock_guard<std::mutex> lock(mutex_);
    sink_ = std::move(sink);
}

void HostLog::SetDebug(bool on) {
    const std::lock_guard<std::mutex> lock(mutex_);
    debug_ = on;
}

} // namespace host
