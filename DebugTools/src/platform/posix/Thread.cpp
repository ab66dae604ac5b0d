// Threads, locks and events on POSIX systems.
#include "DebugTools/platform/Thread.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <new>
#include <pthread.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#if defined(__linux__)
#include <sys/syscall.h>
#endif

namespace diag {

namespace {
pthread_mutex_t* MutexIn(std::byte* storage) {
    return std::launder(reinterpret_cast<pthread_mutex_t*>(storage));
}
} // namespace

CriticalSection::CriticalSection() {
    static_assert(sizeof(pthread_mutex_t) <= sizeof storage_);
    static_assert(alignof(pthread_mutex_t) <= 16);
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (storage_) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

CriticalSection::~CriticalSection() {
    pthread_mutex_destroy(MutexIn(storage_));
}
void CriticalSection::Enter() {
    pthread_mutex_lock(MutexIn(storage_));
}
bool CriticalSection::TryEnter() {
    return pthread_mutex_trylock(MutexIn(storage_)) == 0;
}
void CriticalSection::Leave() {
    pthread_mutex_unlock(MutexIn(storage_));
}

struct AutoResetEvent::State {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t changed;
    bool set = false;
};

AutoResetEvent::AutoResetEvent(bool set) : state_(std::make_unique<State>()) {
    state_->set = set;
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    // A timed wait must not change its length when the wall clock is set.
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&state_->changed, &attributes);
    pthread_condattr_destroy(&attributes);
}

AutoResetEvent::~AutoResetEvent() {
    pthread_cond_destroy(&state_->changed);
    pthread_mutex_destroy(&state_->mutex);
}

void AutoResetEvent::Set() {
    pthread_mutex_lock(&state_->mutex);
    state_->set = true;
    pthread_cond_signal(&state_->changed);
    pthread_mutex_unlock(&state_->mutex);
}

void AutoResetEvent::Reset() {
    pthread_mutex_lock(&state_->mutex);
    state_->set = false;
    pthread_mutex_unlock(&state_->mutex);
}

void AutoResetEvent::Wait() {
    pthread_mutex_lock(&state_->mutex);
    while (!state_->set) pthread_cond_wait(&state_->changed, &state_->mutex);
    state_->set = false;
    pthread_mutex_unlock(&state_->mutex);
}

bool AutoResetEvent::WaitFor(uint32_t milliseconds) {
    timespec until;
    clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += milliseconds / 1000;
    until.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
    if (until.tv_nsec >= 1000000000) {
        until.tv_nsec -= 1000000000;
        ++until.tv_sec;
    }
    pthread_mutex_lock(&state_->mutex);
    while (!state_->set)
        if (pthread_cond_timedwait(&state_->changed, &state_->mutex, &until) == ETIMEDOUT) break;
    const bool set = state_->set;
    state_->set = false;
    pthread_mutex_unlock(&state_->mutex);
    return set;
}

// A lock on a file: the only kind that the system frees when its process dies and that knows processes by name.
struct NamedMutex::State {
    std::string path;
    CriticalSection inside; // orders the threads that share this object; the file lock does not
    int depth = 0;
    int file = -1;
};

NamedMutex::NamedMutex(const std::string& name) : state_(std::make_unique<State>()) {
    std::string fileName = name;
    for (char& c : fileName)
        if (c == '/' || static_cast<unsigned char>(c) < 32) c = '_';
    state_->path = "/tmp/" + fileName + "." + std::to_string(getuid()) + ".lock";
}

NamedMutex::~NamedMutex() {
    if (state_->file >= 0) close(state_->file);
}

namespace {

// The owner removes the file when it unlocks, so a lock counts only on the file that still bears the name.
bool BearsName(int file, const std::string& path) {
    struct stat opened, named;
    return fstat(file, &opened) == 0 && stat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

bool LockFile(int& file, const std::string& path, int operation) {
    for (;;) {
        file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (file < 0) return false;
        int result;
        do result = flock(file, operation);
        while (result != 0 && errno == EINTR);
        const bool named = result == 0 && BearsName(file, path);
        if (named) return true;
        close(file);
        file = -1;
        if (result != 0) return false;
    }
}

} // namespace

bool NamedMutex::Lock() {
    state_->inside.Enter();
    if (state_->depth > 0 || LockFile(state_->file, state_->path, LOCK_EX)) {
        ++state_->depth;
        return true;
    }
    state_->inside.Leave();
    return false;
}

bool NamedMutex::TryLock() {
    if (!state_->inside.TryEnter()) return false;
    if (state_->depth > 0 || LockFile(state_->file, state_->path, LOCK_EX | LOCK_NB)) {
        ++state_->depth;
        return true;
    }
    state_->inside.Leave();
    return false;
}

void NamedMutex::Unlock() {
    if (--state_->depth == 0) {
        unlink(state_->path.c_str());
        close(state_->file);
        state_->file = -1;
    }
    state_->inside.Leave();
}

struct Thread::State {
    pthread_t handle;
    std::function<void()> body;
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
    auto run = [](void* state) -> void* {
        static_cast<State*>(state)->body();
        return nullptr;
    };
    if (pthread_create(&state_->handle, nullptr, run, state_.get()) == 0) return true;
    state_.reset();
    return false;
}

void Thread::Join() {
    if (!state_) return;
    pthread_join(state_->handle, nullptr);
    state_.reset();
}

uint32_t CurrentThreadId() {
#if defined(__linux__)
    // Asked anew each time: a forked child keeps its parent's thread-local values.
    return static_cast<uint32_t>(syscall(SYS_gettid));
#else
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pthread_self()));
#endif
}

void YieldThread() {
    sched_yield();
}

void SleepMs(uint32_t milliseconds) {
    timespec left = {static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

} // namespace diag
