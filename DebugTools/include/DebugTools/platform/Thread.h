// Threads and what they wait on: critical sections, auto-reset events, a mutex shared between processes.
#pragma once

#include "DebugTools/platform/Fault.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace diag {

/// Recursive lock of this process. The thread that holds it may enter again and must leave as often as it entered.
class CriticalSection {
public:
    CriticalSection();
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void Enter();
    bool TryEnter();
    void Leave();
    void lock() { Enter(); }
    void unlock() { Leave(); }

private:
    // Room for the operating system's own object, which the header does not name.
    alignas(16) std::byte storage_[64];
};

/// Holds a critical section, or anything else with `lock` and `unlock`, for the length of a scope; gives it back also
/// when a fault ends the scope and a guard outside of it takes over.
template <class Lockable = CriticalSection>
class ScopedLock {
public:
    explicit ScopedLock(Lockable& lockable) : hold_(lockable), cleanup_(&Release, &lockable) {}
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    static void Release(void* lockable) { static_cast<Lockable*>(lockable)->unlock(); }

    struct Hold {
        explicit Hold(Lockable& l) : lockable(l) { lockable.lock(); }
        ~Hold() { lockable.unlock(); }
        Lockable& lockable;
    };
    Hold hold_;
    FaultCleanup cleanup_; // off the list before the lock is given back
};

/// An event that releases exactly one waiting thread per Set and then resets itself. Setting a set event changes
/// nothing.
class AutoResetEvent {
public:
    explicit AutoResetEvent(bool set = false);
    ~AutoResetEvent();
    AutoResetEvent(const AutoResetEvent&) = delete;
    AutoResetEvent& operator=(const AutoResetEvent&) = delete;

    void Set();
    void Reset();
    /// Waits without limit.
    void Wait();
    /// Waits at most so many milliseconds; 0 only looks. False when the event was not set in time.
    bool WaitFor(uint32_t milliseconds);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// A lock known by its name to all processes of the user. It is freed when its process dies. The same thread may lock
/// one object again (and unlocks it as often), but must not lock a second object of that name meanwhile.
class NamedMutex {
public:
    /// Any text; characters that a file name cannot carry count as '_'.
    explicit NamedMutex(const std::string& name);
    ~NamedMutex();
    NamedMutex(const NamedMutex&) = delete;
    NamedMutex& operator=(const NamedMutex&) = delete;

    /// Waits for the lock. False when the operating system has no such lock to give.
    bool Lock();
    /// Takes the lock when it is free at once.
    bool TryLock();
    void Unlock();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// One thread of execution. The destructor joins. An exception that leaves the body ends the process.
class Thread {
public:
    Thread();
    ~Thread();
    Thread(Thread&&) noexcept;
    Thread& operator=(Thread&&) noexcept;

    /// Starts `body` on a new thread, after joining one that this object still holds. False when no thread can be had.
    bool Start(std::function<void()> body);
    /// Waits for the end of the body. Does nothing when no thread was started.
    void Join();
    bool Joinable() const { return state_ != nullptr; }

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The operating system's id of the calling thread.
uint32_t CurrentThreadId();
/// Offers the processor to another thread that is ready to run.
void YieldThread();
void SleepMs(uint32_t milliseconds);

} // namespace diag
