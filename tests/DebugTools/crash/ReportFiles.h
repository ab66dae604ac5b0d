#pragma once
// What the tests of this folder share.

#include "../TestFiles.h"
#include "DebugTools/CrashReport.h"
#include "crashes.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>

namespace crash_test {

inline const std::string kOpening = "//=====================================================\r\n";
inline const std::string kClosing = "\\\\=====================================================\r\n";
inline const std::string kBar = "========================\r\n";
inline const std::string kStackHead =
    "DbgHelp call stack:\r\nAddress           Frame             Function       RVA       SourceFile\r\n";

inline size_t Count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
    return count;
}

/// Runs `body` in a process of its own, which ends with its result; gives what waitpid gave.
template <class Body>
int InChild(Body&& body) {
    const pid_t child = fork();
    if (child == 0) {
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_CORE, &none);
        std::exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

/// A log with room for many reports, and a system that writes to it.
struct ReportTest : testing::Test {
    ReportTest() { LogSetSizeLimit(log.log, 100000000); }
    /// As after a first report.
    void WithoutBlocks() {
        system.systemInfoWritten = true;
        system.moduleListWritten = true;
    }
    template <class Body>
    bool Guarded(const char* message, Body&& body) {
        return diag::Guarded(message, body, diag::GuardReports::kEvery, &system);
    }

    TestLog log;
    DiagSystem system{log.log};
};

} // namespace crash_test
