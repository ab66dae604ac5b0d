// Being told of faults that guards take over, by what has no time to register a cleanup at every use.
#pragma once

namespace diag {

/// While it lives, `tell(what)` is called for every fault that a guard takes over, on the thread that it struck, after
/// the cleanups. It must only write plain values: several threads may fault at once, and the lock of all watches is
/// held.
class FaultWatch {
public:
    FaultWatch(void (*tell)(void*), void* what);
    ~FaultWatch();
    FaultWatch(const FaultWatch&) = delete;
    FaultWatch& operator=(const FaultWatch&) = delete;

    /// Used by guards.
    static void TellAll();

private:
    void (*tell_)(void*);
    void* what_;
    FaultWatch* next_;
    FaultWatch* before_ = nullptr;
};

} // namespace diag
