// Guarded operations: a fault becomes a crash report, an exception a line in the log, and both an empty result.
#include "AssertParts.h"
#include "DebugTools/CrashReport.h"
#include "DebugTools/Tracer.h"

namespace diag {

namespace {

struct Operation {
    void (*body)(void*);
    void* context;
    const char* message;
    GuardReports reports;
    DiagSystem* system;
    bool good;
};

void RunBody(void* argument) {
    auto& operation = *static_cast<Operation*>(argument);
    try {
        operation.body(operation.context);
        operation.good = true;
    } catch (...) {
        ReportException(operation.message, operation.system);
    }
}

void OnFault(const FaultRecord& fault, void* argument) {
    const auto& operation = *static_cast<const Operation*>(argument);
    const uint64_t place = operation.reports == GuardReports::kOncePerPlace ? fault.address : 0;
    if (operation.reports == GuardReports::kEvery || FirstReport(operation.message, place))
        ReportCrash(operation.system, &fault, operation.message);
}

} // namespace

bool RunReported(void (*body)(void*), void* context, const char* message, GuardReports reports, DiagSystem* system) {
    Operation operation{body, context, message ? message : "", reports, system, false};
    if (RunGuarded(&RunBody, &operation, &OnFault, &operation)) return operation.good;
    tracer::SetMode(tracer::Default(), kTracerCrashed); // the scopes in between were not left
    return false;
}

} // namespace diag
