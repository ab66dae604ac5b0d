// Holding another thread still on POSIX systems: a signal makes it write its own stack down and wait.
#include "DebugTools/platform/Stack.h"
#include "DebugTools/platform/Thread.h"
#include "ThreadFaults.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <new>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace diag {

namespace {

enum SlotState : int { kAsked, kWriting, kHeld, kReleased, kLeft, kGivenUp };

// What the two threads share. Pages of their own: a thread that answers late still finds it.
struct Slot {
    std::atomic<int> state{kAsked};
    CapturedStack stack;
};

// Orders a slot's making before its use: the system's own order of sending and receiving is not the language's.
std::atomic<unsigned> sent{0};

void SleepMillisecond() {
    const timespec time = {0, 1000000};
    nanosleep(&time, nullptr);
}

void OnHold(int, siginfo_t* info, void* context) {
    if (info->si_code != SI_QUEUE || !info->si_value.sival_ptr) return;
    const int error = errno;
    sent.load(std::memory_order_acquire);
    auto& slot = *static_cast<Slot*>(info->si_value.sival_ptr);
    int asked = kAsked;
    if (slot.state.compare_exchange_strong(asked, kWriting)) {
        CaptureInterrupted(*static_cast<ucontext_t*>(context), slot.stack);
        slot.state = kHeld;
        while (slot.state == kHeld) SleepMillisecond();
        slot.state = kLeft;
    }
    errno = error;
}

int HoldSignal() {
    return SIGRTMAX - 3;
}

// Stays until the library goes: a signal that arrives late must find it.
class HoldHandler {
public:
    HoldHandler() {
        struct sigaction action = {};
        action.sa_sigaction = OnHold;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
        sigfillset(&action.sa_mask);
        sigaction(HoldSignal(), &action, &earlier_);
    }
    ~HoldHandler() { sigaction(HoldSignal(), &earlier_, nullptr); }

private:
    struct sigaction earlier_;
};

bool SendHold(uint32_t id, Slot* slot) {
    static HoldHandler handler;
    sent.fetch_add(1, std::memory_order_acq_rel);
    siginfo_t info = {};
    info.si_signo = HoldSignal();
    info.si_code = SI_QUEUE;
    info.si_pid = getpid();
    info.si_uid = getuid();
    info.si_value.sival_ptr = slot;
    return syscall(SYS_rt_tgsigqueueinfo, getpid(), static_cast<pid_t>(id), HoldSignal(), &info) == 0;
}

// True when the thread stands still.
bool WaitUntilHeld(Slot& slot) {
    for (int waited = 0; waited < 500 && slot.state != kHeld; ++waited) SleepMillisecond();
    int asked = kAsked;
    if (slot.state.compare_exchange_strong(asked, kGivenUp)) return false;
    while (slot.state == kWriting) SleepMillisecond();
    return true;
}

} // namespace

SuspendedThread::SuspendedThread(ThreadHandle handle, uint32_t id) : handle_(handle) {
    if (id == 0 || id == CurrentThreadId()) return;
    void* memory = mmap(nullptr, sizeof(Slot), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return;
    auto* slot = new (memory) Slot;
    if (!SendHold(id, slot)) {
        munmap(memory, sizeof(Slot));
        return;
    }
    if (!WaitUntilHeld(*slot)) return; // its pages stay for the late answer
    slot_ = slot;
    stack_ = &slot->stack;
    held_ = true;
}

SuspendedThread::~SuspendedThread() {
    Resume();
}

void SuspendedThread::Resume() {
    if (!held_) return;
    auto* slot = static_cast<Slot*>(slot_);
    slot->state = kReleased;
    while (slot->state != kLeft) SleepMillisecond();
    munmap(slot, sizeof(Slot));
    held_ = false;
}

} // namespace diag
