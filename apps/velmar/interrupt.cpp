#include "interrupt.h"

#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>

#include "core/core.h"
#include "failure.h"

namespace velmar {

namespace {

std::atomic<host::Core*> gCore{nullptr};
std::atomic<Phase> gPhase{Phase::kLoading};
std::atomic<bool> gInterrupted{false};

static_assert(std::atomic<Phase>::is_always_lock_free && std::atomic<host::Core*>::is_always_lock_free);

// The rest of the second that a render has to stop.
constexpr itimerval kPatience = {{0, 0}, {0, 900'000}};

void OnInterrupt(int) {
    gInterrupted.store(true);
    const Phase phase = gPhase.load();
    if (phase == Phase::kLoading) _exit(kInterrupted);
    if (host::Core* const core = gCore.load()) core->RequestRenderAbort();
    if (phase == Phase::kRendering) setitimer(ITIMER_REAL, &kPatience, nullptr);
}

void OnPatienceEnd(int) {
    if (gPhase.load() != Phase::kWriting) _exit(kInterrupted);
}

void Install(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

} // namespace

void CatchInterrupts() {
    Install(SIGINT, OnInterrupt);
    Install(SIGTERM, OnInterrupt);
    Install(SIGALRM, OnPatienceEnd);
}

void WatchCore(host::Core* core) {
    gCore.store(core);
}

void SetPhase(Phase phase) {
    gPhase.store(phase);
}

bool Interrupted() {
    return gInterrupted.load();
}

} // namespace velmar
