// Processor exceptions: how one is described, how a guarded operation survives it, and what must be given back then.
#pragma once

#include <cstdint>

namespace diag {

struct CapturedStack;

/// The codes that reports name; other codes of the operating system may occur.
enum FaultCode : uint32_t {
    kFaultGuardPage = 0x80000001,
    kFaultMisalignment = 0x80000002,
    kFaultBreakpoint = 0x80000003,
    kFaultSingleStep = 0x80000004,
    kFaultAccessViolation = 0xC0000005,
    kFaultInPageError = 0xC0000006,
    kFaultIllegalInstruction = 0xC000001D,
    kFaultArrayBounds = 0xC000008C,
    kFaultFloatDivide = 0xC000008E,
    kFaultFloatInexact = 0xC000008F,
    kFaultFloatInvalid = 0xC0000090,
    kFaultFloatOverflow = 0xC0000091,
    kFaultFloatUnderflow = 0xC0000093,
    kFaultIntDivide = 0xC0000094,
    kFaultIntOverflow = 0xC0000095,
    kFaultPrivilegedInstruction = 0xC0000096,
    kFaultStackOverflow = 0xC00000FD
};

/// One processor exception.
struct FaultRecord {
    uint32_t code = 0;
    uint64_t address = 0;                 ///< of the instruction
    int parameterCount = 0;               ///< 2 for an access violation
    uint64_t parameters[2] = {};          ///< whether it wrote, and where
    const CapturedStack* stack = nullptr; ///< of the thread, from the instruction outwards; null: unknown
    bool heapMayBeLocked = false;         ///< it struck inside the allocator: a report must not allocate
};

/// Looks at a fault while the stack beneath it still stands, on the thread it struck.
using FaultFilter = void (*)(const FaultRecord& fault, void* argument);

/// Runs `body(context)`. A processor exception inside it, on this thread, calls the filter, runs the cleanups
/// registered since, gives the thread back its signal mask and its floating-point control, and returns false; objects
/// of the frames that are left this way are not destroyed. C++ exceptions pass. Guards nest: the innermost one answers.
/// What the guard can and cannot promise is told in docs/crash-reports.md.
bool RunGuarded(void (*body)(void*), void* context, FaultFilter filter, void* argument);

/// True between entering and leaving RunGuarded, on this thread.
bool InGuard();

/// Calls the filter for faults outside all guards, before whoever would have handled them without this library. Null
/// ends that. The one set before comes back.
struct UnhandledFault {
    FaultFilter filter = nullptr;
    void* argument = nullptr;
};
UnhandledFault SetUnhandledFault(UnhandledFault handler);

/// What must be given back even when a fault ends the scope that took it: a lock, a flag. Made on the stack, inside the
/// scope; `release` runs on the thread, on a fault only, innermost first.
class FaultCleanup {
public:
    FaultCleanup(void (*release)(void*), void* what);
    ~FaultCleanup();
    FaultCleanup(const FaultCleanup&) = delete;
    FaultCleanup& operator=(const FaultCleanup&) = delete;

    /// Used by guards: runs and forgets all that were made after `last`.
    static void RunDownTo(FaultCleanup* last);
    /// The innermost one of this thread; null when there is none.
    static FaultCleanup* Innermost();

private:
    void (*release_)(void*);
    void* what_;
    FaultCleanup* outer_;
};

} // namespace diag
