// The list of all watches.
#include "DebugTools/platform/FaultWatch.h"

#include "DebugTools/platform/Thread.h"
#include "platform/Immortal.h"

namespace diag {

namespace {

CriticalSection& ListLock() {
    return Immortal<CriticalSection, struct FaultWatchTag>();
}
FaultWatch* first = nullptr;

} // namespace

FaultWatch::FaultWatch(void (*tell)(void*), void* what) : tell_(tell), what_(what) {
    const ScopedLock lock(ListLock());
    next_ = first;
    if (next_) next_->before_ = this;
    first = this;
}

FaultWatch::~FaultWatch() {
    const ScopedLock lock(ListLock());
    (before_ ? before_->next_ : first) = next_;
    if (next_) next_->before_ = before_;
}

void FaultWatch::TellAll() {
    const ScopedLock lock(ListLock());
    for (FaultWatch* watch = first; watch; watch = watch->next_) watch->tell_(watch->what_);
}

} // namespace diag
