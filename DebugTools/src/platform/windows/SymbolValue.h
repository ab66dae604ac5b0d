// The values of variables that the symbol library describes.
#pragma once

#include "DbgHelp.h"
#include "DebugTools/platform/Symbols.h"

namespace diag {

/// Fills in type and value; the type stays unknown when they cannot be shown.
void ReadSymbolValue(const DbgHelp& help, const SYMBOL_INFO& symbol, const StackFrame& frame, FrameVariable& variable);

} // namespace diag
