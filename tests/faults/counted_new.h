// The general allocator of this test program, which can be told to run out of memory.
#pragma once

#include <atomic>
#include <cstdint>

namespace faults {

/// Every allocation of operator new and of the memory tracker, on any thread, is numbered while this is armed.
struct Allocations {
    std::atomic<bool> armed{false};
    std::atomic<int64_t> count{0};
    std::atomic<int64_t> failAt{INT64_MAX}; ///< number of the first that fails, from 0
    std::atomic<int64_t> failures{1};       ///< how many fail from there on
    std::atomic<int64_t> refused{0};

    bool Refuse() {
        if (!armed.load(std::memory_order_relaxed)) return false;
        const int64_t n = count.fetch_add(1, std::memory_order_relaxed) - failAt.load(std::memory_order_relaxed);
        if (n < 0 || n >= failures.load(std::memory_order_relaxed)) return false;
        refused.fetch_add(1, std::memory_order_relaxed);
        return true;
    }
};

inline Allocations allocations;

/// Numbers allocations for a scope.
class Armed {
public:
    Armed() { allocations.armed = true; }
    ~Armed() { allocations.armed = false; }
    Armed(const Armed&) = delete;
    Armed& operator=(const Armed&) = delete;
};

} // namespace faults
