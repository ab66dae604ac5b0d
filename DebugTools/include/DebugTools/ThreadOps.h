// How the memory tracker and the tracer tell threads apart and lock what threads share.
#pragma once

#include "DebugTools/platform/Fault.h"

#include <cstdint>

/// A set of thread operations. `lock` may be entered again by the thread that holds it.
struct ThreadOps {
    uint32_t (*currentId)();
    void (*lock)();
    void (*unlock)();
};

/// The operating system's threads, with one lock for the whole process.
const ThreadOps* OsThreadOps();

namespace diag {

/// Holds the lock of a set for a scope, and gives it back also on a fault; no set, no lock.
class OpsLock {
public:
    explicit OpsLock(const ThreadOps* ops) : hold_(ops), cleanup_(&Release, &hold_) {}
    OpsLock(const OpsLock&) = delete;
    OpsLock& operator=(const OpsLock&) = delete;

private:
    struct Hold {
        explicit Hold(const ThreadOps* o) : ops(o) {
            if (ops) ops->lock();
        }
        ~Hold() { Unlock(); }
        void Unlock() const {
            if (ops) ops->unlock();
        }
        const ThreadOps* ops;
    };
    static void Release(void* hold) { static_cast<const Hold*>(hold)->Unlock(); }

    Hold hold_;
    FaultCleanup cleanup_; // off the list before the lock is given back
};

} // namespace diag
