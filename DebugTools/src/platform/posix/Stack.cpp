// Call stacks on POSIX systems, by the compiler's unwinder.
#include "DebugTools/platform/Stack.h"

#include "Memory.h"
#include "ThreadFaults.h"

#include <dlfcn.h>
#include <string_view>
#include <unwind.h>

namespace diag {

namespace {

// By the numbers of debug information: rbx, rbp, r12 to r15 keep their values over calls.
constexpr uint32_t kKeptRegisters = 1u << 3 | 1u << 6 | 1u << 12 | 1u << 13 | 1u << 14 | 1u << 15;
constexpr int kStackPointer = 7;

struct Walk {
    CapturedStack& stack;
    uint64_t from; ///< address of the instruction to start at; 0: start at the caller's caller
    int skip = 0;
    bool started = false;
};

void AddRegisters(_Unwind_Context* context, bool innermost, StackFrame& frame) {
#if defined(__x86_64__)
    frame.knownRegisters = innermost ? 0xFFFFu : kKeptRegisters | 1u << kStackPointer;
    for (int i = 0; i < kFrameRegisters; ++i)
        if ((frame.knownRegisters >> i & 1u) && i != kStackPointer) frame.registers[i] = _Unwind_GetGR(context, i);
    frame.registers[kStackPointer] = frame.stackPointer;
#endif
}

_Unwind_Reason_Code Visit(_Unwind_Context* context, void* argument) {
    auto& walk = *static_cast<Walk*>(argument);
    CapturedStack& stack = walk.stack;
    const uint64_t instruction = _Unwind_GetIP(context);
    const uint64_t stackPointer = _Unwind_GetCFA(context);
    if (!walk.started) {
        if (walk.from ? instruction != walk.from : walk.skip-- > 0) return _URC_NO_REASON;
        walk.started = true;
    } else if (stack.count > 0) {
        // Where this frame's stack begins is where the one inside it had been called.
        stack.frames[stack.count - 1].frame = stackPointer;
    }
    if (instruction == 0) return _URC_END_OF_STACK;
    if (stack.count == kMaxStackFrames) {
        stack.tooBig = true;
        return _URC_END_OF_STACK;
    }
    StackFrame& frame = stack.frames[stack.count++];
    frame = StackFrame{};
    frame.instruction = instruction;
    frame.stackPointer = frame.frame = stackPointer;
    AddRegisters(context, walk.from != 0 && stack.count == 1, frame);
    return _URC_NO_REASON;
}

#if defined(__x86_64__)
bool IsCode(uint64_t address) {
    Dl_info info;
    return dladdr(reinterpret_cast<const void*>(address), &info) != 0;
}

void AddInterrupted(const ucontext_t& context, CapturedStack& stack) {
    // Register numbers of debug information in the order of this array.
    constexpr int order[kFrameRegisters] = {REG_RAX, REG_RDX, REG_RCX, REG_RBX, REG_RSI, REG_RDI, REG_RBP, REG_RSP,
                                            REG_R8,  REG_R9,  REG_R10, REG_R11, REG_R12, REG_R13, REG_R14, REG_R15};
    StackFrame& frame = stack.frames[stack.count++];
    frame = StackFrame{};
    frame.instruction = InstructionOf(context);
    for (int i = 0; i < kFrameRegisters; ++i)
        frame.registers[i] = static_cast<uint64_t>(context.uc_mcontext.gregs[order[i]]);
    frame.knownRegisters = 0xFFFFu;
    frame.stackPointer = frame.registers[kStackPointer];
    frame.frame = frame.stackPointer + 8;
}
#endif

} // namespace

void CaptureStack(CapturedStack& stack) {
    stack.count = 0;
    stack.tooBig = false;
    Walk walk{stack, 0, 1};
    _Unwind_Backtrace(Visit, &walk);
}

void CaptureInterrupted(ucontext_t& context, CapturedStack& stack) {
    stack.count = 0;
    stack.tooBig = false;
    Walk walk{stack, InstructionOf(context)};
#if defined(__x86_64__)
    // A call through a bad pointer stops at an address that is no code, which the unwinder cannot pass. Its caller's
    // address was just pushed: the walk starts there, in the interrupted state as it would be after a return.
    greg_t* registers = context.uc_mcontext.gregs;
    if (!IsCode(walk.from) && (registers[REG_RSP] & 7) == 0 && registers[REG_RSP] != 0) {
        const auto before = registers[REG_RIP];
        greg_t returnTo = 0;
        if (ReadMemory(static_cast<uint64_t>(registers[REG_RSP]), &returnTo, sizeof returnTo) &&
            IsCode(static_cast<uint64_t>(returnTo))) {
            AddInterrupted(context, stack);
            registers[REG_RIP] = returnTo;
            registers[REG_RSP] += 8;
            walk.from = static_cast<uint64_t>(returnTo);
            _Unwind_Backtrace(Visit, &walk);
            registers[REG_RSP] -= 8;
            registers[REG_RIP] = before;
            return;
        }
    }
    _Unwind_Backtrace(Visit, &walk);
    // The unwinder may know nothing here; the instruction itself is always known.
    if (stack.count == 0) AddInterrupted(context, stack);
#else
    _Unwind_Backtrace(Visit, &walk);
#endif
}

bool InAllocator(const CapturedStack& stack) {
    constexpr std::string_view names[] = {"malloc",        "free",           "calloc",   "realloc", "cfree",
                                          "aligned_alloc", "posix_memalign", "memalign", "valloc",  "__libc_memalign",
                                          "malloc_trim",   "malloc_info"};
    for (int i = 0; i < stack.count && i < 6; ++i) {
        Dl_info info;
        const uint64_t call = stack.frames[i].instruction - (i > 0 ? 1 : 0);
        if (dladdr(reinterpret_cast<const void*>(call), &info) == 0 || !info.dli_sname) continue;
        for (const std::string_view name : names)
            if (name == info.dli_sname) return true;
    }
    return false;
}

} // namespace diag
