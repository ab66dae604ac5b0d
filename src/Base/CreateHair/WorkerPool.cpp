#include "Base/CreateHair/WorkerPool.h"

#include "DebugTools/CrashReport.h"
#include "DebugTools/Platform.h"

namespace {

// Set on the pool's own threads.
thread_local bool tlIsWorker = false;

} // namespace

struct WorkerPool::Worker {
    diag::AutoResetEvent start, done;
    diag::Thread thread;
    std::atomic<bool> ended{false};
};

WorkerPool::WorkerPool() = default;
WorkerPool::~WorkerPool() {
    Stop();
}

WorkerPool& WorkerPool::Get() {
    static WorkerPool pool;
    return pool;
}

bool WorkerPool::IsHairWorkerThread() const {
    return tlIsWorker;
}

bool IsHairWorkerThread() {
    return tlIsWorker;
}

bool WorkerPool::Guarded(int index) noexcept {
    if (diag::Guarded(
            "in rendering thread", [&] { (*work_)(index); }, diag::GuardReports::kOnce))
        return true;
    failed_ = true;
    return false;
}

void WorkerPool::Body(Worker& worker, int index) {
    tlIsWorker = true;
    for (;;) {
        worker.start.Wait();
        if (command_ == CMD_EXIT) return;
        const bool ok = Guarded(index);
        worker.ended = !ok;
        worker.done.Set();
        if (!ok) return;
    }
}

bool WorkerPool::EnsureWorkers(int count) {
    while (int(workers_.size()) < count) workers_.push_back(std::make_unique<Worker>());
    for (int i = 0; i < count; ++i) {
        Worker& w = *workers_[size_t(i)];
        if (w.thread.Joinable() && !w.ended) continue;
        w.ended = true; // until it runs: starting may fail, and also throw
        if (!w.thread.Start([this, &w, i] { Body(w, i + 1); })) return false;
        w.ended = false;
    }
    return true;
}

bool WorkerPool::Run(WorkerCommand command, int threads, const std::function<void(int)>& work) {
    const int extra = threads > 1 ? threads - 1 : 0;
    if (!EnsureWorkers(extra)) return false;
    command_ = command;
    work_ = &work;
    failed_ = false;
    for (int i = 0; i < extra; ++i) workers_[size_t(i)]->start.Set();
    const bool ok = Guarded(0);
    for (int i = 0; i < extra; ++i) workers_[size_t(i)]->done.Wait();
    work_ = nullptr;
    return ok && !failed_;
}

void WorkerPool::Stop() {
    command_ = CMD_EXIT;
    for (auto& w : workers_) w->start.Set();
    for (auto& w : workers_) w->thread.Join();
    workers_.clear();
}
