// The ways into a biased section that are not the owner's.
#include "DebugTools/BiasedSection.h"

#if defined(__linux__)
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace diag {

namespace {

#if defined(__linux__)
bool Membarrier(int command) {
    return syscall(SYS_membarrier, command, 0, 0) == 0;
}
// Asked for once; a forked child keeps it.
bool HasBarrier() {
    static const bool has = Membarrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED);
    return has;
}
void BarrierOnAllProcessors() {
    Membarrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED);
}
#else
bool HasBarrier() {
    return false;
}
void BarrierOnAllProcessors() {}
#endif

} // namespace

BiasedSection::BiasedSection() {
    ordinary_ = !HasBarrier();
    // Where threads cannot be told apart, null must not look like the owner.
    if (ordinary_) owner_ = this;
}

bool BiasedSection::TakeOwnership() {
    if (ordinary_.load(std::memory_order_acquire)) return false;
    const ScopedLock lock(section_);
    if (ordinary_.load(std::memory_order_relaxed)) return false;
    if (!owner_.load(std::memory_order_relaxed)) {
        owner_.store(ThisThread(), std::memory_order_relaxed);
        return true;
    }
    ordinary_.store(true, std::memory_order_seq_cst);
    BarrierOnAllProcessors();
    while (inside_.load(std::memory_order_acquire)) YieldThread();
    owner_.store(this, std::memory_order_relaxed); // the earlier owner need not try any more
    return false;
}

// The owner has left by a fault, which ends no scope.
void BiasedSection::OnFault(void* section) {
    auto& self = *static_cast<BiasedSection*>(section);
    if (self.owner_.load(std::memory_order_relaxed) == ThisThread())
        self.inside_.store(false, std::memory_order_release);
}

} // namespace diag
