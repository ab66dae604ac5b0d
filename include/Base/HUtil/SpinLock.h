#pragma once
// A lock for a few instructions, taken a million times a second: waiting threads do not sleep.

#include <atomic>
#include <thread>

class SpinLock {
public:
    void lock() {
        for (int tries = 0; flag_.test_and_set(std::memory_order_acquire); ++tries)
            if (tries % kTriesBeforeYield == kTriesBeforeYield - 1) std::this_thread::yield();
    }
    void unlock() { flag_.clear(std::memory_order_release); }

private:
    // The holder may have been put to sleep itself.
    static constexpr int kTriesBeforeYield = 64;
    std::atomic_flag flag_;
};
