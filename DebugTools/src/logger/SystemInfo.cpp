// The system information block.
#include "DebugTools/Assert.h"
#include "DebugTools/platform/System.h"
#include "SystemInfoText.h"

#include "LogState.h"

namespace diag {

namespace {

struct NumberName {
    int number;
    const char* name;
};

template <size_t N>
const char* NameOf(const NumberName (&names)[N], int number) {
    for (const NumberName& entry : names)
        if (entry.number == number) return entry.name;
    return "Unknown";
}

constexpr NumberName kProcessorTypes[] = {
    {103, "SHx_SH3"},       {104, "SHx_SH4"},       {386, "INTEL_386"},      {486, "INTEL_486"},
    {586, "INTEL_PENTIUM"}, {601, "PPC_601"},       {603, "PPC_603"},        {604, "PPC_604"},
    {620, "PPC_620"},       {821, "MOTOROLA_821"},  {1824, "ARM720"},        {2080, "ARM820"},
    {2200, "INTEL_IA64"},   {2336, "ARM920"},       {2577, "STRONGARM"},     {4000, "MIPS_R4000"},
    {8664, "AMD_X8664"},    {10003, "HITACHI_SH3"}, {10004, "HITACHI_SH3E"}, {10005, "HITACHI_SH4"},
    {21064, "ALPHA_21064"}, {70001, "ARM_7TDMI"},
};

constexpr NumberName kArchitectures[] = {
    {0, "INTEL"}, {1, "MIPS"},  {2, "ALPHA"},          {3, "PPC"}, {4, "SHX"}, {5, "ARM"}, {6, "IA64"}, {7, "ALPHA64"},
    {8, "MSIL"},  {9, "AMD64"}, {10, "IA32_ON_WIN64"},
};

double Mebibytes(uint64_t bytes) {
    return static_cast<double>(bytes) / (1 << 20);
}

} // namespace

const char* ProcessorTypeName(int number) {
    return NameOf(kProcessorTypes, number);
}
const char* ArchitectureName(int number) {
    return NameOf(kArchitectures, number);
}

void WriteSystemInfoText(Log* log, const MachineDescription& machine, int processors, const MemoryAmounts& memory) {
    LogHold together(log);
    LogWrite(log, "========================", kLogEndLine);
    LogWrite(log, "System information:", kLogEndLine);
    LogPrintf(log, kLogEndLine, "%s, Version %d.%d (build %d), %s", machine.systemName.c_str(), machine.versionMajor,
              machine.versionMinor, machine.build, machine.servicePack.c_str());
    LogPrintf(log, 0, "%d processor(s), type %s (%d).\n", processors, ProcessorTypeName(machine.processorType),
              machine.processorType);
    LogPrintf(log, 0, "Processor architecture, level, revision: %s %x %x \n", ArchitectureName(machine.architecture),
              static_cast<unsigned>(machine.processorLevel), static_cast<unsigned>(machine.processorRevision));
    LogPrintf(log, 0, "Physical memory - total, available: %d, %.1f\n",
              static_cast<int>((memory.physicalTotal + 0xFFFFF) >> 20), Mebibytes(memory.physicalAvailable));
    LogPrintf(log, 0, "Page file memory - total, available: %.1f, %.1f\n", Mebibytes(memory.pageFileTotal),
              Mebibytes(memory.pageFileAvailable));
    LogFlush(log);
}

} // namespace diag

void WriteSystemInfo(DiagSystem* system) {
    if (!system) system = GetDiagSystem();
    if (system->systemInfoWritten.exchange(true)) return;
    diag::WriteSystemInfoText(system->log, diag::DescribeMachine(), diag::ProcessorCount(), diag::GetMemoryAmounts());
}
