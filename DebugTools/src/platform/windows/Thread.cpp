// Threads, locks and events on Windows.
#include "DebugTools/platform/Thread.h"

#include "Win32.h"

#include <new>
#include <process.h>

namespace diag {

namespace {
CRITICAL_SECTION* SectionIn(std::byte* storage) {
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}
} // namespace

CriticalSection::CriticalSection() {
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof storage_);
    static_assert(alignof(CRITICAL_SECTION) <= 16);
    InitializeCriticalSection(new (storage_) CRITICAL_SECTION);
}

CriticalSection::~CriticalSection() {
    DeleteCriticalSection(SectionIn(storage_));
}
void CriticalSection::Enter() {
    EnterCriticalSection(SectionIn(storage_));
}
bool CriticalSection::TryEnter() {
    return TryEnterCriticalSection(SectionIn(storage_)) != 0;
}
void CriticalSection::Leave() {
    LeaveCriticalSection(SectionIn(storage_));
}

struct AutoResetEvent::State {
    HANDLE handle;
};

AutoResetEvent::AutoResetEvent(bool set) : state_(std::make_unique<State>()) {
    state_->handle = CreateEventA(nullptr, FALSE, set, nullptr);
}

AutoResetEvent::~AutoResetEvent() {
    CloseHandle(state_->handle);
}
void AutoResetEvent::Set() {
    SetEvent(state_->handle);
}
void AutoResetEvent::Reset() {
    ResetEvent(state_->handle);
}
void AutoResetEvent::Wait() {
    WaitForSingleObject(state_->handle, INFINITE);
}
bool AutoResetEvent::WaitFor(uint32_t milliseconds) {
    return WaitForSingleObject(state_->handle, milliseconds) == WAIT_OBJECT_0;
}

struct NamedMutex::State {
    HANDLE handle;
};

NamedMutex::NamedMutex(const std::string& name) : state_(std::make_unique<State>()) {
    std::string objectName = name;
    for (char& c : objectName)
        if (c == '\\' || c == '/' || static_cast<unsigned char>(c) < 32) c = '_';
    state_->handle = CreateMutexA(nullptr, FALSE, objectName.c_str());
}

NamedMutex::~NamedMutex() {
    if (state_->handle) CloseHandle(state_->handle);
}

namespace {
bool WaitForMutex(HANDLE handle, DWORD milliseconds) {
    if (!handle) return false;
    const DWORD result = WaitForSingleObject(handle, milliseconds);
    // An abandoned mutex is ours: its process died while it held the lock.
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}
} // namespace

bool NamedMutex::Lock() {
    return WaitForMutex(state_->handle, INFINITE);
}
bool NamedMutex::TryLock() {
    return WaitForMutex(state_->handle, 0);
}
void NamedMutex::Unlock() {
    ReleaseMutex(state_->handle);
}

struct Thread::State {
    HANDLE handle = nullptr;
    std::function<void()> body;

    static unsigned __stdcall Run(void* state) {
        static_cast<State*>(state)->body();
        return 0;
    }
};

Thread::Thread() = default;
Thread::~Thread() {
    Join();
}
Thread::Thread(Thread&&) noexcept = default;

Thread& Thread::operator=(Thread&& other) noexcept {
    Join();
    state_ = std::move(other.state_);
    return *this;
}

bool Thread::Start(std::function<void()> body) {
    Join();
    state_ = std::make_unique<State>();
    state_->body = std::move(body);
    state_->handle = reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, &State::Run, state_.get(), 0, nullptr));
    if (state_->handle) return true;
    state_.reset();
    return false;
}

void Thread::Join() {
    if (!state_) return;
    WaitForSingleObject(state_->handle, INFINITE);
    CloseHandle(state_->handle);
    state_.reset();
}

uint32_t CurrentThreadId() {
    return GetCurrentThreadId();
}
void YieldThread() {
    SwitchToThread();
}
void SleepMs(uint32_t milliseconds) {
    Sleep(milliseconds);
}

} // namespace diag
