// Call stacks from a thread's context.
#pragma once

#include "DebugTools/platform/Stack.h"
#include "Win32.h"

namespace diag {

/// Walks the stack that belongs to a context, without the symbol library: by the modules' unwind tables.
void CaptureContext(HANDLE thread, const CONTEXT& context, CapturedStack& stack);

} // namespace diag
