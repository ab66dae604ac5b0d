// Call stacks as they were at one moment, and threads held still while theirs is read.
#pragma once

#include <cstdint>

namespace diag {

/// Frames that a stack trace holds at most.
constexpr int kMaxStackFrames = 20;
/// Registers by the numbers that debug information uses for the processor; 64-bit x86: the 16 general ones.
constexpr int kFrameRegisters = 16;

struct StackFrame {
    uint64_t instruction = 0; ///< address of the next instruction; in the innermost frame, of the one that faulted
    uint64_t frame = 0;       ///< frame address: the stack pointer before the call of this function
    uint64_t stackPointer = 0;
    uint64_t registers[kFrameRegisters] = {};
    uint32_t knownRegisters = 0; ///< a bit for each register whose value belongs to this frame
};

struct CapturedStack {
    int count = 0;
    bool tooBig = false; ///< there are more frames than these
    StackFrame frames[kMaxStackFrames];
};

/// The calling thread's stack, from the caller of this function outwards.
void CaptureStack(CapturedStack& stack);

/// A thread as the operating system hands it out: HANDLE on Windows, pthread_t elsewhere.
using ThreadHandle = void*;

/// A thread that stands still while this object lives.
class SuspendedThread {
public:
    /// The calling thread is never suspended. A thread that does not answer within half a second keeps running.
    SuspendedThread(ThreadHandle handle, uint32_t id);
    ~SuspendedThread();
    SuspendedThread(const SuspendedThread&) = delete;
    SuspendedThread& operator=(const SuspendedThread&) = delete;

    bool Held() const { return held_; }
    /// The stack it stands on. Good only while held.
    const CapturedStack& Stack() const { return *stack_; }
    /// Lets it run on.
    void Resume();

private:
    ThreadHandle handle_;
    CapturedStack* stack_ = nullptr;
    void* slot_ = nullptr;
    bool held_ = false;
};

} // namespace diag
