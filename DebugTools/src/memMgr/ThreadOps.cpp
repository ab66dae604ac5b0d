// The operating system's threads as a set of thread operations.
#include "DebugTools/ThreadOps.h"

#include "DebugTools/platform/Thread.h"
#include "platform/Immortal.h"

namespace {

diag::CriticalSection& ProcessLock() {
    // Memory is freed until the very end of the process.
    return diag::Immortal<diag::CriticalSection, struct ProcessLockTag>();
}

// The lock is held for some counters only: trying again is cheaper than being put to sleep.
void EnterProcessLock() {
    constexpr int kTries = 100;
    for (int i = 0; i < kTries; ++i)
        if (ProcessLock().TryEnter()) return;
    ProcessLock().Enter();
}

// Asked for at every allocation, so it is kept: the operating system's own answer costs a call into it. In a forked
// child the one thread goes on with its parent's id, which is right here: its records are the parent's.
uint32_t KeptThreadId() {
    static thread_local const uint32_t id = diag::CurrentThreadId();
    return id;
}

constexpr ThreadOps kOsThreads = {KeptThreadId, EnterProcessLock, [] { ProcessLock().Leave(); }};

} // namespace

const ThreadOps* OsThreadOps() {
    return &kOsThreads;
}
