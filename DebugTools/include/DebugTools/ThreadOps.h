// How the memory tracker and the tracer tell threads apart and lock what threads share.
#pragma once

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

/// Holds the lock of a set for a scope; no set, no lock.
class OpsLock {
public:
    explicit OpsLock(const ThreadOps* ops) : ops_(ops) {
        if (ops_) ops_->lock();
    }
    ~OpsLock() {
        if (ops_) ops_->unlock();
    }
    OpsLock(const OpsLock&) = delete;
    OpsLock& operator=(const OpsLock&) = delete;

private:
    const ThreadOps* ops_;
};

} // namespace diag
