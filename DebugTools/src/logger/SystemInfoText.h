// The lines of the system information block, from given facts.
#pragma once

#include "DebugTools/Log.h"
#include "DebugTools/platform/System.h"

namespace diag {

const char* ProcessorTypeName(int number);
const char* ArchitectureName(int number);
void WriteSystemInfoText(Log* log, const MachineDescription& machine, int processors, const MemoryAmounts& memory);

} // namespace diag
