// What a signal of the processor means, and who else wants it.
#include "Memory.h"
#include "ThreadFaults.h"

#include <pthread.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace diag {

namespace {

constexpr size_t kHandlerStackSize = size_t{256} << 10;

uint32_t ArithmeticCode(int code) {
    switch (code) {
    case FPE_INTDIV:
        return kFaultIntDivide;
    case FPE_INTOVF:
        return kFaultIntOverflow;
    case FPE_FLTDIV:
        return kFaultFloatDivide;
    case FPE_FLTOVF:
        return kFaultFloatOverflow;
    case FPE_FLTUND:
        return kFaultFloatUnderflow;
    case FPE_FLTRES:
        return kFaultFloatInexact;
    case FPE_FLTSUB:
        return kFaultArrayBounds;
    default:
        return kFaultFloatInvalid;
    }
}

// A general protection fault tells no reason. On this processor the instruction does: those that user programs may not
// execute start with one of these bytes.
bool IsPrivileged(uint64_t instruction) {
#if defined(__x86_64__)
    unsigned char first = 0;
    if (!ReadMemory(instruction, &first, 1)) return false;
    const bool portInOut = (first >= 0xE4 && first <= 0xE7) || (first >= 0xEC && first <= 0xEF);
    return first == 0xF4 || first == 0xFA || first == 0xFB || portInOut;
#else
    return false;
#endif
}

// Whether the access was a write, where the processor tells.
bool IsWrite(const ucontext_t& context) {
#if defined(__x86_64__)
    return (context.uc_mcontext.gregs[REG_ERR] & 2) != 0;
#else
    return false;
#endif
}

bool ExecutesAt(const ucontext_t& context, uint64_t address) {
    return InstructionOf(context) == address;
}

void DescribeAccess(const siginfo_t& info, const ucontext_t& context, const StackEnd& end, FaultRecord& fault) {
    const auto address = reinterpret_cast<uintptr_t>(info.si_addr);
    fault.code = kFaultAccessViolation;
    fault.parameterCount = 2;
    fault.parameters[0] = IsWrite(context);
    fault.parameters[1] = address;
    if (info.si_code == SI_KERNEL) {
        // An address outside the usable range: the system does not tell which.
        fault.parameters[0] = 0;
        fault.parameters[1] = UINT64_MAX;
        if (IsPrivileged(fault.address)) fault.code = kFaultPrivilegedInstruction;
    } else if (address >= end.low && address < end.high && !ExecutesAt(context, address)) {
        fault.code = kFaultStackOverflow;
    }
    if (fault.code != kFaultAccessViolation) fault.parameterCount = 0;
}

} // namespace

uint64_t InstructionOf(const ucontext_t& context) {
#if defined(__x86_64__)
    return static_cast<uint64_t>(context.uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
    return context.uc_mcontext.pc;
#else
    return 0;
#endif
}

bool DescribeFault(int signal, const siginfo_t& info, const ucontext_t& context, const StackEnd& end,
                   FaultRecord& fault) {
    if (info.si_code <= 0) return false; // sent by a program
    fault.address = InstructionOf(context);
    switch (signal) {
    case SIGSEGV:
        DescribeAccess(info, context, end, fault);
        return true;
    case SIGBUS:
        fault.code = info.si_code == BUS_ADRALN ? kFaultMisalignment : kFaultInPageError;
        return true;
    case SIGFPE:
        fault.code = ArithmeticCode(info.si_code);
        return true;
    case SIGILL:
        fault.code = info.si_code == ILL_PRVOPC || info.si_code == ILL_PRVREG ? kFaultPrivilegedInstruction
                                                                              : kFaultIllegalInstruction;
        return true;
    case SIGTRAP:
        fault.code = info.si_code == TRAP_TRACE ? kFaultSingleStep : kFaultBreakpoint;
        return true;
    default:
        return false;
    }
}

StackEnd FindStackEnd() {
    constexpr uintptr_t kBelow = uintptr_t{2} << 20; // the system keeps that much free below the first thread's stack
    constexpr uintptr_t kAbove = uintptr_t{64} << 10;
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {};
    void* lowest = nullptr;
    size_t size = 0, guard = 0;
    pthread_attr_getstack(&attributes, &lowest, &size);
    pthread_attr_getguardsize(&attributes, &guard);
    pthread_attr_destroy(&attributes);
    const auto low = reinterpret_cast<uintptr_t>(lowest);
    return {low > kBelow ? low - kBelow : 0, low + guard + kAbove};
}

HandlerStack::HandlerStack() {
    sigaltstack(nullptr, &before_);
    if (!(before_.ss_flags & SS_DISABLE) && before_.ss_size >= kHandlerStackSize) return; // large enough for us too
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void* memory = mmap(nullptr, page + kHandlerStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return;
    mprotect(memory, page, PROT_NONE);
    stack_t ours = {};
    ours.ss_sp = static_cast<char*>(memory) + page;
    ours.ss_size = kHandlerStackSize;
    if (sigaltstack(&ours, nullptr) == 0)
        memory_ = memory;
    else
        munmap(memory, page + kHandlerStackSize);
}

HandlerStack::~HandlerStack() {
    if (!memory_) return;
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    stack_t now = {};
    sigaltstack(nullptr, &now);
    // Somebody else's, put in place later, stays.
    if (now.ss_sp == static_cast<char*>(memory_) + page) sigaltstack(&before_, nullptr);
    munmap(memory_, page + kHandlerStackSize);
}

void CallEarlierHandler(const struct sigaction& earlier, int signal, siginfo_t* info, void* context) {
    const bool sent = info->si_code <= 0;
    const bool isDefault = !(earlier.sa_flags & SA_SIGINFO) && earlier.sa_handler == SIG_DFL;
    const bool isIgnored = !(earlier.sa_flags & SA_SIGINFO) && earlier.sa_handler == SIG_IGN;
    if (isIgnored && sent) return;
    if (isDefault || isIgnored) {
        // The system's own answer, which is the end: it comes when the instruction faults again.
        struct sigaction system = {};
        system.sa_handler = SIG_DFL;
        sigaction(signal, &system, nullptr);
        if (sent) syscall(SYS_tgkill, getpid(), syscall(SYS_gettid), signal);
        return;
    }
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &earlier.sa_mask, &before);
    if (earlier.sa_flags & SA_SIGINFO)
        earlier.sa_sigaction(signal, info, context);
    else
        earlier.sa_handler(signal);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace diag
