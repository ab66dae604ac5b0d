// A critical section that is nearly free for the thread that uses it alone.
#pragma once

#include "DebugTools/platform/FaultWatch.h"
#include "DebugTools/platform/Thread.h"

#include <atomic>

namespace diag {

/// A lock that leans towards the first thread that enters: this owner marks itself inside by plain stores, without the
/// locked instruction that any other lock costs. The first other thread that comes takes that away, once and for all:
/// it stops the owner by a barrier on all processors, and from then on both use an ordinary critical section. Where
/// the system has no such barrier the section is ordinary from the start.
class BiasedSection {
public:
    BiasedSection();
    BiasedSection(const BiasedSection&) = delete;
    BiasedSection& operator=(const BiasedSection&) = delete;

    /// Gives what `body()` gives, run inside the section. A fault in it gives the section back. The body must not
    /// enter a biased section again, nor a guard.
    template <class Body>
    auto Run(const Body& body) {
        if (EnterAsOwner()) {
            const Inside inside{inside_};
            return body();
        }
        const ScopedLock lock(section_);
        return body();
    }

private:
    struct Inside {
        ~Inside() { flag.store(false, std::memory_order_release); }
        std::atomic<bool>& flag;
    };

    static void* ThisThread() {
#if defined(__linux__)
        return __builtin_thread_pointer();
#else
        return nullptr; // no thread is ever the owner
#endif
    }
    bool EnterAsOwner() {
        if (owner_.load(std::memory_order_relaxed) != ThisThread() && !TakeOwnership()) return false;
        inside_.store(true, std::memory_order_relaxed);
        // The other half of this fence is the barrier of the thread that takes the ownership away.
        std::atomic_signal_fence(std::memory_order_seq_cst);
        if (!ordinary_.load(std::memory_order_acquire)) return true;
        inside_.store(false, std::memory_order_release);
        return false;
    }
    // For a thread that is not the owner; one that comes second makes the section ordinary.
    bool TakeOwnership();
    static void OnFault(void* section);

    std::atomic<void*> owner_{nullptr};
    std::atomic<bool> inside_{false};
    std::atomic<bool> ordinary_{false};
    CriticalSection section_;
    FaultWatch watch_{&OnFault, this};
};

} // namespace diag
