// Call stacks and suspended threads on Windows.
#include "DebugTools/platform/Stack.h"

#include "DebugTools/platform/Thread.h"
#include "StackWalk.h"

#include <new>

namespace diag {

namespace {

// Registers in the order of debug information on other systems, so that frames look the same everywhere.
void CopyRegisters(const CONTEXT& context, StackFrame& frame) {
    const DWORD64 values[kFrameRegisters] = {
        context.Rax, context.Rdx, context.Rcx, context.Rbx, context.Rsi, context.Rdi, context.Rbp, context.Rsp,
        context.R8,  context.R9,  context.R10, context.R11, context.R12, context.R13, context.R14, context.R15};
    for (int i = 0; i < kFrameRegisters; ++i) frame.registers[i] = values[i];
    frame.knownRegisters = 0xFFFF;
}

// Turns a context into its caller's. False at the end of the stack.
bool Unwind(CONTEXT& context) {
    DWORD64 base = 0;
    PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
    if (!function) {
        // A function that calls nothing, or no code at all: its return address lies on top.
        SIZE_T got = 0;
        DWORD64 caller = 0;
        if (!ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(context.Rsp), &caller, sizeof caller,
                               &got) ||
            got != sizeof caller)
            return false;
        context.Rip = caller;
        context.Rsp += 8;
        return caller != 0;
    }
    void* handlerData = nullptr;
    DWORD64 establisher = 0;
    RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handlerData, &establisher, nullptr);
    return context.Rip != 0;
}

} // namespace

void CaptureContext(HANDLE, const CONTEXT& start, CapturedStack& stack) {
    CONTEXT context = start;
    stack.count = 0;
    stack.tooBig = false;
    do {
        if (stack.count == kMaxStackFrames) {
            stack.tooBig = true;
            return;
        }
        StackFrame& frame = stack.frames[stack.count++];
        frame = StackFrame{};
        frame.instruction = context.Rip;
        frame.stackPointer = context.Rsp;
        CopyRegisters(context, frame);
        const bool more = Unwind(context);
        frame.frame = context.Rsp;
        if (!more) return;
    } while (true);
}

void CaptureStack(CapturedStack& stack) {
    CONTEXT context;
    RtlCaptureContext(&context);
    CaptureContext(GetCurrentThread(), context, stack);
}

SuspendedThread::SuspendedThread(ThreadHandle handle, uint32_t id) : handle_(handle) {
    if (!handle || id == CurrentThreadId() || SuspendThread(handle) == DWORD(-1)) return;
    // From the system: the thread may hold the lock of the C library's memory.
    void* memory = VirtualAlloc(nullptr, sizeof(CapturedStack), MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_FULL;
    if (!memory || !GetThreadContext(handle, &context)) {
        if (memory) VirtualFree(memory, 0, MEM_RELEASE);
        ResumeThread(handle);
        return;
    }
    stack_ = new (memory) CapturedStack;
    CaptureContext(handle, context, *stack_);
    held_ = true;
}

SuspendedThread::~SuspendedThread() {
    Resume();
}

void SuspendedThread::Resume() {
    if (!held_) return;
    ResumeThread(handle_);
    VirtualFree(stack_, 0, MEM_RELEASE);
    stack_ = nullptr;
    held_ = false;
}

} // namespace diag
