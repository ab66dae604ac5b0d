// The assertion routine.
#include "DebugTools/Assert.h"

#include "AssertParts.h"
#include "DebugTools/CrashReport.h"
#include "DebugTools/platform/System.h"
#include "LogState.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr size_t kPromptSize = 1024;
constexpr size_t kPromptSizeForQuestion = 994;

struct Prompt {
    char text[kPromptSize];
    size_t length = 0;

    // A line that does not fit is left out as a whole.
    void Add(const char* title, const char* value) {
        if (!value || length + std::strlen(title) + std::strlen(value) + 1 >= kPromptSize) return;
        length += static_cast<size_t>(std::snprintf(text + length, kPromptSize - length, "%s%s\n", title, value));
    }
};

void Compose(Prompt& prompt, const char* file, int line, const AssertDetails& details) {
    const int size = std::snprintf(prompt.text, kPromptSize, "File: %s\nLine: %d\n", file, line);
    prompt.length = size < 0                                  ? 0
                    : static_cast<size_t>(size) < kPromptSize ? static_cast<size_t>(size)
                                                              : kPromptSize - 1;
    prompt.Add("Function: ", details.function);
    prompt.Add("Condition: ", details.condition);
    prompt.Add("Message: ", details.message);
    if (prompt.length < kPromptSizeForQuestion)
        std::snprintf(prompt.text + prompt.length, kPromptSize - prompt.length, "\nContinue showing asserts?");
}

// True when the user wants no more prompts.
bool AskUser(DiagSystem& system, const char* file, int line, const AssertDetails& details) {
    Prompt prompt;
    Compose(prompt, file, line, details);
    system.noPromptYet = false;
    const auto callback = system.assertCallback.load();
    return !(callback ? callback(prompt.text) : diag::AskYesNo("Assert Failed", prompt.text));
}

void WriteDetail(Log* log, const char* title, const char* value) {
    if (!value) return;
    LogWrite(log, title, 0);
    LogWrite(log, value, 0);
}

void WriteFailure(Log* log, const char* file, int line, const AssertDetails& details) {
    LogHeader(log, file, line, "sAssert failed", 0);
    WriteDetail(log, ", function: ", details.function);
    WriteDetail(log, ", condition: ", details.condition);
    WriteDetail(log, ", message: ", details.message);
    LogSetCopyOnClose(log, true);
}

void EndFailureLine(Log* log, bool framed) {
    if (!framed) {
        LogWrite(log, nullptr, kLogEndLine);
        return;
    }
    const uint32_t ticks = LogTicks();
    LogPrintf(log, 0, ", time: %6u.%03u\n", ticks / 1000, ticks % 1000);
}

} // namespace

void sAssert(DiagSystem* system, const char* file, int line) {
    sAssert(system, file, line, {});
}

void sAssert(DiagSystem* system, const char* file, int line, const AssertDetails& details) {
    if (!system) system = GetDiagSystem();
    if (!file) file = "unknown file";
    Log* log = system->log;
    const ProfilerReports* profiler = system->profiler;
    const bool framed = !system->systemInfoWritten || !system->moduleListWritten || profiler;
    LogHold together(log);
    diag::EntryFrame frame(log);
    if (framed) frame.Begin();
    WriteFailure(log, file, line, details);
    if (system->assertsShown) {
        together.Release(); // the user takes his time; other threads may log meanwhile
        const bool stopPrompts = AskUser(*system, file, line, details);
        together.Take();
        if (stopPrompts) {
            system->assertsShown = false;
            LogWrite(log, ", all sAsserts disabled", 0);
        }
    }
    EndFailureLine(log, framed);
    WriteSystemInfo(system);
    WriteModuleList(system);
    if (profiler) profiler->dumpStacks();
    if (framed) frame.End();
    LogFlush(log);
}

void ReportAssertOnce(std::atomic<bool>& reported, const char* source, int line) {
    if (!reported.exchange(true)) sAssert(nullptr, source, line);
}
