#pragma once
// The process-wide pool of generation threads.

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

/// What the workers are told to do.
enum WorkerCommand { CMD_VERTEX_STRANDS = 0, CMD_BUILD_FACES = 1, CMD_EXIT = 2, CMD_MERGE_SAMPLES = 3 };

/// Generation threads, created on first use and kept, blocked on their start events, until Stop(). One run at a time:
/// the caller holds the lock of the object whose hair it makes, and render runs are serialised by the render buffer.
class WorkerPool {
public:
    static WorkerPool& Get();
    ~WorkerPool();

    /// Runs `work(i)` for i = 0..threads-1, thread 0 being the caller, and waits for all. An exception that escapes the
    /// work is logged once per process with "in rendering thread"; its worker ends and is started anew by the next run.
    /// False when any part of the work ended that way.
    bool Run(WorkerCommand command, int threads, const std::function<void(int)>& work);
    /// Ends all workers and waits for them.
    void Stop();
    /// Whether the calling thread is one of the pool's.
    bool IsHairWorkerThread() const;
    int WorkerCount() const { return int(workers_.size()); }

private:
    struct Worker;
    WorkerPool();
    bool EnsureWorkers(int count);
    void Body(Worker& worker, int index);
    bool Guarded(int index) noexcept;

    std::vector<std::unique_ptr<Worker>> workers_;
    const std::function<void(int)>* work_ = nullptr;
    WorkerCommand command_ = CMD_BUILD_FACES;
    std::atomic<bool> failed_{false};
};

/// Whether the calling thread is one of the generation threads.
bool IsHairWorkerThread();
