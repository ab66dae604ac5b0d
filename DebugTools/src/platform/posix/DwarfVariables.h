// Parameters and local variables of a frame, by its debug information.
#pragma once

#include "DebugTools/platform/Symbols.h"
#include "Dwfl.h"

namespace diag::dw {

/// Calls `visit` for the variables of all scopes of the function that holds `address`, the function's own first.
void VisitVariables(const Library& library, DwflModule* module, uint64_t address, const StackFrame& frame,
                    void (*visit)(const FrameVariable&, void*), void* argument);

} // namespace diag::dw
