// Which thread owns which of 32 records.
#pragma once

#include "platform/ThreadValue.h"

#include <atomic>
#include <cstdint>

namespace diag {

/// A map from thread ids to slots. Find may run on any thread at any time; Take and Release only under the lock that
/// guards the records, and Release only by the owner or when it is gone.
class ThreadSlots {
public:
    static constexpr int kCount = 32;

    /// The slot of a thread, or -1. Looks first where this thread was found last, in whatever map.
    int Find(uint32_t id) const {
        const uint64_t wanted = kTaken | id;
        if (owners_[lastFound_].load(std::memory_order_acquire) == wanted) return lastFound_;
        for (int slot = 0; slot < kCount; ++slot)
            if (owners_[slot].load(std::memory_order_acquire) == wanted) return lastFound_ = slot;
        return -1;
    }
    /// The first free slot, now this thread's; -1 when all are taken.
    int Take(uint32_t id) {
        for (int slot = 0; slot < kCount; ++slot)
            if (owners_[slot].load(std::memory_order_relaxed) == 0) {
                owners_[slot].store(kTaken | id, std::memory_order_release);
                return slot;
            }
        return -1;
    }
    void Release(int slot) { owners_[slot].store(0, std::memory_order_release); }
    bool Taken(int slot) const { return owners_[slot].load(std::memory_order_acquire) != 0; }

private:
    static constexpr uint64_t kTaken = uint64_t{1} << 32;
    static inline constinit THREAD_VALUE int lastFound_ = 0;

    std::atomic<uint64_t> owners_[kCount] = {};
};

} // namespace diag
