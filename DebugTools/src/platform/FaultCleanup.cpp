// The cleanups of each thread, as a list through their stack frames.
#include "DebugTools/platform/Fault.h"
#include "DebugTools/platform/FaultWatch.h"
#include "platform/ThreadValue.h"

namespace diag {

namespace {
THREAD_VALUE FaultCleanup* innermost = nullptr;
} // namespace

FaultCleanup::FaultCleanup(void (*release)(void*), void* what) : release_(release), what_(what), outer_(innermost) {
    innermost = this;
}

FaultCleanup::~FaultCleanup() {
    innermost = outer_;
}

FaultCleanup* FaultCleanup::Innermost() {
    return innermost;
}

void FaultCleanup::RunDownTo(FaultCleanup* last) {
    while (innermost != last && innermost) {
        FaultCleanup* const next = innermost;
        // Off the list first: a release that faults itself must not run again.
        innermost = next->outer_;
        next->release_(next->what_);
    }
    FaultWatch::TellAll();
}

} // namespace diag
