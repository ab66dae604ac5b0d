// The operating system's threads as a set of thread operations.
#include "DebugTools/ThreadOps.h"

#include "DebugTools/platform/Thread.h"
#include "platform/ThreadValue.h"

#include <atomic>

namespace {

// Asked for at every allocation, so it is kept: the operating system's own answer costs a call into it. In a forked
// child the one thread goes on with its parent's id, which is right here: its records are the parent's.
uint32_t KeptThreadId() {
    static THREAD_VALUE uint32_t id = 0;
    if (id == 0) id = diag::CurrentThreadId();
    return id;
}

// Held for some counters only, so it is waited for by looking again; only looking, until it seems free, leaves its
// cache line to the holder. Memory is freed until the very end of the process, so the lock has nothing to destroy.
class ProcessLock {
public:
    void Enter() {
        const uint32_t self = KeptThreadId();
        if (holder_.load(std::memory_order_relaxed) != self)
            while (!TryTake(self))
                while (holder_.load(std::memory_order_relaxed) != 0) diag::YieldThread();
        ++depth_;
    }
    void Leave() {
        if (--depth_ == 0) holder_.store(0, std::memory_order_release);
    }

private:
    bool TryTake(uint32_t self) {
        uint32_t nobody = 0;
        return holder_.compare_exchange_strong(nobody, self, std::memory_order_acquire);
    }

    std::atomic<uint32_t> holder_{0}; // id of the thread inside
    int depth_ = 0;
};

// Alone on its cache line.
alignas(64) constinit ProcessLock processLock;

constexpr ThreadOps kOsThreads = {KeptThreadId, [] { processLock.Enter(); }, [] { processLock.Leave(); }};

} // namespace

const ThreadOps* OsThreadOps() {
    return &kOsThreads;
}
