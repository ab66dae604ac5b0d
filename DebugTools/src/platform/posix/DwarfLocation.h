// Where debug information says that a variable is.
#pragma once

#include "DebugTools/platform/Stack.h"
#include "Dwfl.h"

namespace diag::dw {

struct Location {
    enum Kind { kUnknown, kMemory, kValue, kStatic };
    Kind kind = kUnknown;
    uint64_t value = 0; ///< an address, or for kValue the value itself
};

/// What a location is relative to.
struct LocationBase {
    const StackFrame& frame;
    uint64_t frameBase = 0;
    bool frameBaseKnown = false;
    uint64_t loadOffset = 0; ///< added to static addresses
};

/// Runs a location's operations. kUnknown for what needs a register that was not kept, or an operation that this
/// program does not know (values at the function's entry, variables in pieces).
Location Evaluate(const Operation* operations, size_t count, const LocationBase& base);

} // namespace diag::dw
