// The parts of a crash report.
#pragma once

#include "DebugTools/Log.h"
#include "DebugTools/platform/Fault.h"
#include "DebugTools/platform/Modules.h"
#include "DebugTools/platform/Stack.h"
#include "DebugTools/platform/Symbols.h"

#include <cstdio>

namespace diag {

/// Name of an exception code; null for one that has none here.
const char* ExceptionName(uint32_t code);
/// The exception's code, its access and its address.
void WriteFault(Log* log, const FaultRecord& fault);
void WriteModuleLine(Log* log, uint64_t base, const char* path, const ModuleFileFacts& facts);
/// The call stack, and with it the local variables where symbols allow them. `interrupted` tells a stack that begins at
/// an instruction and not at a call.
void WriteCallStack(Log* log, SymbolReader& symbols, const CapturedStack& stack, bool interrupted);
/// One variable's line.
void WriteVariable(Log* log, const FrameVariable& variable);
/// The kind and the file of the symbols of the module that holds an address.
void WriteSymbolSource(Log* log, SymbolReader& symbols, uint64_t address);

} // namespace diag
