#include "interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>

#include "core/core.h"
#include "failure.h"

namespace velmar {

namespace {

std::mutex gCoreLock;
host::Core* gCore = nullptr; // guarded by gCoreLock
std::atomic<Phase> gPhase{Phase::kLoading};
std::atomic<bool> gInterrupted{false};

// The rest of the second that a render has to stop.
constexpr std::chrono::milliseconds kPatience{900};

sigset_t Signals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

void StopRender() {
    const std::lock_guard lock(gCoreLock);
    if (gCore) gCore->RequestRenderAbort();
}

void SetCore(host::Core* core) {
    const std::lock_guard lock(gCoreLock);
    gCore = core;
}

// Waits for a signal, which no other thread takes: a thread that draws strands may be long in doing nothing else. Later
// ones change nothing.
void Watch() {
    const sigset_t set = Signals();
    int signal = 0;
    sigwait(&set, &signal);
    gInterrupted.store(true);
    if (gPhase.load() == Phase::kLoading) _exit(kInterrupted);
    StopRender();
    std::this_thread::sleep_for(kPatience);
    if (gPhase.load() != Phase::kWriting) _exit(kInterrupted);
}

} // namespace

void CatchInterrupts() {
    const sigset_t set = Signals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    try {
        std::thread(Watch).detach();
    } catch (const std::system_error&) {
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr); // signals then end the process as they do any other
    }
}

CoreWatch::CoreWatch(host::Core* core) {
    SetCore(core);
}

CoreWatch::~CoreWatch() {
    SetCore(nullptr);
}

void SetPhase(Phase phase) {
    gPhase.store(phase);
}

bool Interrupted() {
    return gInterrupted.load();
}

} // namespace velmar
