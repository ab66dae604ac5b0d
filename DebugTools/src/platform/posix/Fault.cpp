// The fault guard on POSIX systems: handlers for the processor's signals that jump back into the innermost guard.
#include "DebugTools/platform/Fault.h"

#include "DebugTools/platform/Stack.h"
#include "DebugTools/platform/Thread.h"
#include "ThreadFaults.h"
#include "platform/Immortal.h"
#include "platform/ThreadValue.h"

#include <atomic>
#include <cerrno>
#include <pthread.h>

#if !defined(__x86_64__)
#include <cfenv>
#endif

namespace diag {

namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP};
constexpr int kSignalCount = sizeof kSignals / sizeof kSignals[0];

THREAD_VALUE GuardFrame* innermost = nullptr;
THREAD_VALUE bool reporting = false;
THREAD_VALUE StackEnd stackEnd;

struct sigaction earlierActions[kSignalCount];
CriticalSection& UnhandledLock() {
    return Immortal<CriticalSection, struct UnhandledLockTag>();
}
UnhandledFault unhandled;

// The floating-point unit's control: rounding, masks, flush to zero. A handler starts with the system's own values.
struct FloatControl {
#if defined(__x86_64__)
    uint32_t vector;
    uint16_t stack;

    void Save() {
        asm volatile("stmxcsr %0\n\tfnstcw %1" : "=m"(vector), "=m"(stack));
    }
    // Old flags go first: unmasking one of them would raise it again.
    void Restore() const {
        asm volatile("fnclex\n\tldmxcsr %0\n\tfldcw %1" : : "m"(vector), "m"(stack));
    }
#else
    fenv_t all;

    void Save() {
        fegetenv(&all);
    }
    void Restore() const {
        fesetenv(&all);
    }
#endif
};

const struct sigaction& EarlierAction(int signal) {
    int i = 0;
    while (i + 1 < kSignalCount && kSignals[i] != signal) ++i;
    return earlierActions[i];
}

// Never returns: runs what the guarded operation must give back and jumps into its guard.
[[noreturn]] void LeaveToGuard(GuardFrame& guard, const ucontext_t& context) {
    innermost = guard.outer;
    FaultCleanup::RunDownTo(guard.cleanups);
    pthread_sigmask(SIG_SETMASK, &context.uc_sigmask, nullptr);
    siglongjmp(guard.place, 1);
}

struct Capture {
    ucontext_t& context;
    CapturedStack& stack;

    static void Run(void* capture) {
        auto& self = *static_cast<Capture*>(capture);
        CaptureInterrupted(self.context, self.stack);
    }
};

void Report(const FaultFilter filter, void* argument, FaultRecord& fault, ucontext_t& context) {
    if (!filter) return;
    CapturedStack stack;
    Capture capture{context, stack};
#if defined(__SANITIZE_THREAD__)
    // This sanitizer forgets the jumps prepared on one stack when another one is prepared on a second stack.
    Capture::Run(&capture);
#else
    // Walking a damaged stack may fault again; then the frames found so far must do.
    RunGuarded(&Capture::Run, &capture, nullptr, nullptr);
#endif
    fault.stack = &stack;
    fault.heapMayBeLocked = InAllocator(stack);
    reporting = true;
    filter(fault, argument);
    reporting = false;
}

// Alignment checks, which the interrupted code may have turned on, would strike the handler too.
void ClearAlignmentCheck() {
#if defined(__x86_64__)
    constexpr unsigned long long kAlignmentCheck = 1u << 18;
    if (const auto flags = __builtin_ia32_readeflags_u64(); flags & kAlignmentCheck)
        __builtin_ia32_writeeflags_u64(flags & ~kAlignmentCheck);
#endif
}

void OnSignal(int signal, siginfo_t* info, void* data) {
    ClearAlignmentCheck();
    const int error = errno;
    auto& context = *static_cast<ucontext_t*>(data);
    FaultRecord fault;
    // intended: a report is not guarded itself; a fault inside it goes to the earlier handler.
    if (!reporting && DescribeFault(signal, *info, context, stackEnd, fault)) {
        if (GuardFrame* guard = innermost) {
            Report(guard->filter, guard->argument, fault, context);
            LeaveToGuard(*guard, context);
        }
        UnhandledFault handler;
        {
            ScopedLock lock(UnhandledLock());
            handler = unhandled;
        }
        if (handler.filter) Report(handler.filter, handler.argument, fault, context);
    }
    errno = error;
    CallEarlierHandler(EarlierAction(signal), signal, info, data);
}

// The handlers of the process, put back when the library goes.
class Handlers {
public:
    Handlers() {
        struct sigaction action = {};
        action.sa_sigaction = OnSignal;
        // A fault inside a report must reach the earlier handler, so the signal stays open while we handle it.
        action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
        sigemptyset(&action.sa_mask);
        for (int i = 0; i < kSignalCount; ++i) sigaction(kSignals[i], &action, &earlierActions[i]);
    }
    ~Handlers() {
        for (int i = 0; i < kSignalCount; ++i) {
            struct sigaction now;
            if (sigaction(kSignals[i], nullptr, &now) == 0 && (now.sa_flags & SA_SIGINFO) &&
                now.sa_sigaction == OnSignal)
                sigaction(kSignals[i], &earlierActions[i], nullptr);
        }
    }
};

void InstallHandlers() {
    static Handlers handlers;
}

void PrepareThread() {
    thread_local HandlerStack handlerStack;
    if (stackEnd.high == 0) stackEnd = FindStackEnd();
}

// Takes the guard off the list also when a C++ exception passes.
class Entered {
public:
    explicit Entered(GuardFrame& frame) : frame_(frame) { innermost = &frame; }
    ~Entered() { innermost = frame_.outer; }

private:
    GuardFrame& frame_;
};

// Apart from the jump's target, so that the compiler keeps nothing of it in registers there.
__attribute__((noinline)) void RunBody(GuardFrame& frame, void (*body)(void*), void* context) {
    Entered entered(frame);
    body(context);
}

} // namespace

bool RunGuarded(void (*body)(void*), void* context, FaultFilter filter, void* argument) {
    InstallHandlers();
    PrepareThread();
    GuardFrame frame;
    frame.outer = innermost;
    frame.cleanups = FaultCleanup::Innermost();
    frame.filter = filter;
    frame.argument = argument;
    FloatControl control;
    control.Save();
    // The handler restores the signal mask itself, which keeps a system call out of every entry.
    if (sigsetjmp(frame.place, 0) == 0) {
        RunBody(frame, body, context);
        return true;
    }
    control.Restore();
    return false;
}

bool InGuard() {
    return innermost != nullptr;
}

UnhandledFault SetUnhandledFault(UnhandledFault handler) {
    InstallHandlers();
    ScopedLock lock(UnhandledLock());
    const UnhandledFault before = unhandled;
    unhandled = handler;
    return before;
}

} // namespace diag
