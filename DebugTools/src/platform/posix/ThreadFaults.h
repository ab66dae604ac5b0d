// What the fault guard keeps for each thread, and the parts it is made of.
#pragma once

#include "DebugTools/platform/Fault.h"

#include <csetjmp>
#include <csignal>
#include <cstddef>
#include <ucontext.h>

namespace diag {

/// A guarded operation that runs on this thread.
struct GuardFrame {
    sigjmp_buf place;
    GuardFrame* outer = nullptr;
    FaultCleanup* cleanups = nullptr; ///< the innermost one at the time of entry
    FaultFilter filter = nullptr;
    void* argument = nullptr;
};

/// The thread's own stack for handlers, so that a full stack can be reported. Put in place at the thread's first guard,
/// taken away when the thread ends.
class HandlerStack {
public:
    HandlerStack();
    ~HandlerStack();
    HandlerStack(const HandlerStack&) = delete;
    HandlerStack& operator=(const HandlerStack&) = delete;

private:
    stack_t before_ = {};
    void* memory_ = nullptr;
};

/// Address range in which a fault counts as a full stack: the lowest pages of the thread's stack and what is below.
struct StackEnd {
    uintptr_t low = 0;
    uintptr_t high = 0;
};
StackEnd FindStackEnd();

/// Describes a signal that the processor caused. False for one that somebody sent.
bool DescribeFault(int signal, const siginfo_t& info, const ucontext_t& context, const StackEnd& end,
                   FaultRecord& fault);
/// The stack that the calling handler interrupted, from the interrupted instruction outwards.
void CaptureInterrupted(ucontext_t& context, CapturedStack& stack);
/// True when one of the innermost frames belongs to the allocator.
bool InAllocator(const CapturedStack& stack);

uint64_t InstructionOf(const ucontext_t& context);

/// Hands a signal to the handler that was in place before ours, or to the system.
void CallEarlierHandler(const struct sigaction& earlier, int signal, siginfo_t* info, void* context);

} // namespace diag
