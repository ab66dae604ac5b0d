// A critical section that is nearly free for the thread that uses it alone.
#pragma once

#include "DebugTools/platform/Thread.h"

#include <atomic>

namespace diag {

/// A lock that leans towards the first thread that enters: this owner marks itself inside by plain stores, without the
/// locked instruction that any other lock costs. The first other thread that comes takes that away, once and for all:
/// it stops the owner by a barrier on all processors, and from then on both use an ordinary critical section. Where
/// the system has no such barrier the section is ordinary from the start. A thread must not enter twice.
class BiasedSection {
public:
    BiasedSection();
    BiasedSection(const BiasedSection&) = delete;
    BiasedSection& operator=(const BiasedSection&) = delete;

    /// True when the thread entered as the owner; to be handed to Leave.
    bool Enter() {
        if (owner_.load(std::memory_order_relaxed) == ThisThread()) {
            inside_.store(true, std::memory_order_relaxed);
            // The other half of this fence is the barrier of the thread that takes the ownership away.
            std::atomic_signal_fence(std::memory_order_seq_cst);
            if (!ordinary_.load(std::memory_order_acquire)) return true;
            inside_.store(false, std::memory_order_release);
        }
        return EnterSlowly();
    }
    void Leave(bool asOwner) {
        if (asOwner)
            inside_.store(false, std::memory_order_release);
        else
            section_.Leave();
    }

private:
    static void* ThisThread() {
#if defined(__linux__)
        return __builtin_thread_pointer();
#else
        return nullptr; // no thread is ever the owner
#endif
    }
    bool EnterSlowly();

    std::atomic<void*> owner_{nullptr};
    std::atomic<bool> inside_{false};
    std::atomic<bool> ordinary_{false};
    CriticalSection section_;
};

/// Holds a section for a scope, and gives it back also on a fault.
class BiasedLock {
public:
    explicit BiasedLock(BiasedSection& section) : hold_(section), cleanup_(&Release, &hold_) {}
    BiasedLock(const BiasedLock&) = delete;
    BiasedLock& operator=(const BiasedLock&) = delete;

private:
    struct Hold {
        explicit Hold(BiasedSection& s) : section(s), asOwner(s.Enter()) {}
        ~Hold() { Leave(); }
        void Leave() const { section.Leave(asOwner); }
        BiasedSection& section;
        bool asOwner;
    };
    static void Release(void* hold) { static_cast<const Hold*>(hold)->Leave(); }

    Hold hold_;
    FaultCleanup cleanup_; // off the list before the section is left
};

} // namespace diag
