// What a report tells about the exception itself.
#include "DebugTools/platform/System.h"
#include "ReportParts.h"

#include <cinttypes>

namespace diag {

namespace {

struct CodeName {
    uint32_t code;
    const char* name;
};

constexpr CodeName kNames[] = {
    {0xC0000005, "ACCESS_VIOLATION"},
    {0x80000001, "GUARD_PAGE"},
    {0x80000002, "DATATYPE_MISALIGNMENT"},
    {0x80000003, "BREAKPOINT"},
    {0x80000004, "SINGLE_STEP"},
    {0xC0000006, "IN_PAGE_ERROR"},
    {0xC0000008, "INVALID_HANDLE"},
    {0xC000001D, "ILLEGAL_INSTRUCTION"},
    {0xC0000025, "NONCONTINUABLE_EXCEPTION"},
    {0xC0000026, "INVALID_DISPOSITION"},
    {0xC000008C, "ARRAY_BOUNDS_EXCEEDED"},
    {0xC000008D, "FLT_DENORMAL_OPERAND"},
    {0xC000008E, "FLT_DIVIDE_BY_ZERO"},
    {0xC000008F, "FLT_INEXACT_RESULT"},
    {0xC0000090, "FLT_INVALID_OPERATION"},
    {0xC0000091, "FLT_OVERFLOW"},
    {0xC0000092, "FLT_STACK_CHECK"},
    {0xC0000093, "FLT_UNDERFLOW"},
    {0xC0000094, "INT_DIVIDE_BY_ZERO"},
    {0xC0000095, "INT_OVERFLOW"},
    {0xC0000096, "PRIV_INSTRUCTION"},
    {0xC00000FD, "STACK_OVERFLOW"},
};

} // namespace

const char* ExceptionName(uint32_t code) {
    for (const CodeName& entry : kNames)
        if (entry.code == code) return entry.name;
    return nullptr;
}

void WriteFault(Log* log, const FaultRecord& fault) {
    char text[512];
    const char* name = ExceptionName(fault.code);
    if (!name) {
        SystemExceptionText(fault.code, text, sizeof text);
        name = text;
    }
    LogPrintf(log, 0, "Exception code: %08X %s\n", fault.code, name);
    if (fault.code == kFaultAccessViolation && fault.parameterCount >= 2) {
        LogWrite(log, fault.parameters[0] ? "Write to address " : "Read from address ", 0);
        LogPrintf(log, 0, "%08" PRIx64 "\n", fault.parameters[1]);
    }
    const ModulePlace place = PlaceOf(fault.address);
    LogPrintf(log, 0, "Fault address:  %08" PRIX64 " %02X:%08" PRIX64 " %08" PRIX64 " ", fault.address, place.section,
              place.sectionOffset, place.moduleOffset);
    LogWrite(log, place.path, kLogEndLine);
}

} // namespace diag
