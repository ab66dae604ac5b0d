// The module list of reports.
#include "DebugTools/CrashReport.h"
#include "DebugTools/platform/Modules.h"
#include "LogState.h"
#include "ReportParts.h"

void diag::WriteModuleLine(Log* log, uint64_t base, const char* path, const ModuleFileFacts& facts) {
    char time[96];
    std::snprintf(time, sizeof time, "%d-%02d-%02d %02d:%02d:%02d\t%x:%x", facts.year, facts.month, facts.day,
                  facts.hour, facts.minute, facts.second, facts.timeHigh, facts.timeLow);
    LogWrite(log, path, 0);
    LogPrintf(log, 0, "\t0x%08x\t%d\t%s\n", static_cast<uint32_t>(base), static_cast<int>(facts.size), time);
}

void WriteModuleList(DiagSystem* system) {
    if (!system) system = GetDiagSystem();
    if (!system->moduleListEnabled || system->moduleListWritten.exchange(true)) return;
    Log* log = system->log;
    LogHold together(log);
    LogWrite(log, "========================", kLogEndLine);
    LogWrite(log, "Module list:", kLogEndLine);
    LogWrite(log, "name\taddress\tsize\tfile time (UTC)\tfile time (sys):", kLogEndLine);
    // intended: modules above the lowest 4 GiB are not listed.
    diag::ForEachLowModule(
        [](uint64_t base, const char* path, void* target) {
            diag::WriteModuleLine(static_cast<Log*>(target), base, path, diag::FactsOf(path));
        },
        log);
    LogFlush(log);
}
