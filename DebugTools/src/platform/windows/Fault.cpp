// The fault guard on Windows: a vectored exception handler that jumps back into the thread's innermost guard.
#include "DebugTools/platform/Fault.h"

#include "DebugTools/platform/Stack.h"
#include "DebugTools/platform/Thread.h"
#include "StackWalk.h"
#include "platform/ThreadValue.h"

#include <cfloat>
#include <csetjmp>
#include <malloc.h>

namespace diag {

namespace {

struct GuardFrame {
    jmp_buf place;
    GuardFrame* outer = nullptr;
    FaultCleanup* cleanups = nullptr;
    FaultFilter filter = nullptr;
    void* argument = nullptr;
};

THREAD_VALUE GuardFrame* innermost = nullptr;
THREAD_VALUE bool reporting = false;

// Room that the system leaves for handlers when a stack is full.
constexpr ULONG kHandlerRoom = 64u << 10;

// Exceptions of the processor; others (those of languages, of debuggers) are not ours.
bool IsFault(DWORD code) {
    switch (code) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_GUARD_PAGE:
    case EXCEPTION_DATATYPE_MISALIGNMENT:
    case EXCEPTION_BREAKPOINT:
    case EXCEPTION_SINGLE_STEP:
    case EXCEPTION_IN_PAGE_ERROR:
    case EXCEPTION_ILLEGAL_INSTRUCTION:
    case EXCEPTION_NONCONTINUABLE_EXCEPTION:
    case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
    case EXCEPTION_FLT_DENORMAL_OPERAND:
    case EXCEPTION_FLT_DIVIDE_BY_ZERO:
    case EXCEPTION_FLT_INEXACT_RESULT:
    case EXCEPTION_FLT_INVALID_OPERATION:
    case EXCEPTION_FLT_OVERFLOW:
    case EXCEPTION_FLT_STACK_CHECK:
    case EXCEPTION_FLT_UNDERFLOW:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_INT_OVERFLOW:
    case EXCEPTION_PRIV_INSTRUCTION:
    case EXCEPTION_STACK_OVERFLOW:
        return true;
    default:
        return false;
    }
}

FaultRecord Describe(const EXCEPTION_RECORD& exception) {
    FaultRecord fault;
    fault.code = exception.ExceptionCode;
    fault.address = reinterpret_cast<uint64_t>(exception.ExceptionAddress);
    fault.parameterCount = static_cast<int>(exception.NumberParameters < 2 ? exception.NumberParameters : 2);
    for (int i = 0; i < fault.parameterCount; ++i) fault.parameters[i] = exception.ExceptionInformation[i];
    return fault;
}

void Report(FaultFilter filter, void* argument, const EXCEPTION_POINTERS& exception) {
    if (!filter) return;
    FaultRecord fault = Describe(*exception.ExceptionRecord);
    CapturedStack stack;
    CaptureContext(GetCurrentThread(), *exception.ContextRecord, stack);
    fault.stack = &stack;
    reporting = true;
    filter(fault, argument);
    reporting = false;
}

// Where a faulting thread goes on: on its own stack, which a full one has room enough for.
[[noreturn]] void LeaveToGuard() {
    GuardFrame* guard = innermost;
    innermost = guard->outer;
    FaultCleanup::RunDownTo(guard->cleanups);
    longjmp(guard->place, 1);
}

LONG CALLBACK OnException(EXCEPTION_POINTERS* exception) {
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    // intended: a report is not guarded itself; a fault inside it goes to the other handlers.
    if (!innermost || reporting || !IsFault(code)) return EXCEPTION_CONTINUE_SEARCH;
    Report(innermost->filter, innermost->argument, *exception);
    // The handler returns first, so that the system's own bookkeeping of the exception ends.
    exception->ContextRecord->Rip = reinterpret_cast<DWORD64>(&LeaveToGuard);
    exception->ContextRecord->Rsp = (exception->ContextRecord->Rsp & ~DWORD64{15}) - 8;
    return EXCEPTION_CONTINUE_EXECUTION;
}

class Handler {
public:
    Handler() : handle_(AddVectoredExceptionHandler(1, OnException)) {}
    ~Handler() {
        if (handle_) RemoveVectoredExceptionHandler(handle_);
    }

private:
    void* handle_;
};

void InstallHandler() {
    static Handler handler;
}

class Entered {
public:
    explicit Entered(GuardFrame& frame) : frame_(frame) { innermost = &frame; }
    ~Entered() { innermost = frame_.outer; }

private:
    GuardFrame& frame_;
};

__attribute__((noinline)) void RunBody(GuardFrame& frame, void (*body)(void*), void* context) {
    Entered entered(frame);
    body(context);
}

UnhandledFault unhandled;
LPTOP_LEVEL_EXCEPTION_FILTER earlierFilter = nullptr;
bool filterInstalled = false;

LONG WINAPI OnUnhandled(EXCEPTION_POINTERS* exception) {
    if (!reporting) Report(unhandled.filter, unhandled.argument, *exception);
    return earlierFilter ? earlierFilter(exception) : EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

bool RunGuarded(void (*body)(void*), void* context, FaultFilter filter, void* argument) {
    InstallHandler();
    ULONG room = kHandlerRoom;
    SetThreadStackGuarantee(&room);
    GuardFrame frame;
    frame.outer = innermost;
    frame.cleanups = FaultCleanup::Innermost();
    frame.filter = filter;
    frame.argument = argument;
    const unsigned control = _controlfp(0, 0);
    // Without a frame the jump back restores registers and unwinds nothing: the frames it leaves may be damaged.
    if (_setjmp(frame.place, nullptr) == 0) {
        RunBody(frame, body, context);
        return true;
    }
    _resetstkoflw(); // gives a full stack its guard page back; does nothing otherwise
    _clearfp();
    _controlfp(control, _MCW_DN | _MCW_EM | _MCW_RC);
    return false;
}

bool InGuard() {
    return innermost != nullptr;
}

UnhandledFault SetUnhandledFault(UnhandledFault handler) {
    const UnhandledFault before = unhandled;
    unhandled = handler;
    if (handler.filter && !filterInstalled)
        earlierFilter = SetUnhandledExceptionFilter(OnUnhandled);
    else if (!handler.filter && filterInstalled)
        SetUnhandledExceptionFilter(earlierFilter);
    filterInstalled = handler.filter != nullptr;
    return before;
}

} // namespace diag
