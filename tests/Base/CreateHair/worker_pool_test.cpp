// The pool of generation threads.

#include "Base/CreateHair/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <vector>

#include "DebugTools/Assert.h"

namespace {

TEST(WorkerPool, EveryThreadWorksOnce) {
    WorkerPool& pool = WorkerPool::Get();
    for (const int threads : {1, 2, 16, 3, 1}) {
        std::vector<int> calls(size_t(threads), 0);
        EXPECT_TRUE(pool.Run(CMD_BUILD_FACES, threads, [&](int i) { ++calls[size_t(i)]; }));
        for (const int n : calls) EXPECT_EQ(n, 1);
    }
    EXPECT_EQ(pool.WorkerCount(), 15) << "threads stay for the next run";
    pool.Stop();
    EXPECT_EQ(pool.WorkerCount(), 0);
    std::atomic<int> again{0};
    EXPECT_TRUE(pool.Run(CMD_BUILD_FACES, 4, [&](int) { ++again; }));
    EXPECT_EQ(again, 4);
    pool.Stop();
    pool.Stop();
}

TEST(WorkerPool, ThreadZeroIsTheCaller) {
    const auto caller = std::this_thread::get_id();
    std::vector<char> isCaller(4, 0), isWorker(4, 0);
    WorkerPool::Get().Run(CMD_BUILD_FACES, 4, [&](int i) {
        isCaller[size_t(i)] = std::this_thread::get_id() == caller;
        isWorker[size_t(i)] = IsHairWorkerThread();
    });
    EXPECT_EQ(isCaller, (std::vector<char>{1, 0, 0, 0}));
    EXPECT_EQ(isWorker, (std::vector<char>{0, 1, 1, 1}));
    EXPECT_FALSE(IsHairWorkerThread());
    WorkerPool::Get().Stop();
}

TEST(WorkerPool, AnEscapedExceptionEndsItsThreadOnly) {
    const auto logFile = std::filesystem::temp_directory_path() / "velmar_worker_pool_test.log";
    LogSetFileName(nullptr, logFile.c_str());
    LogSetCrashCopyName(nullptr, logFile.c_str());
    const auto former = GetDiagSystem()->assertCallback.exchange([](const char*) { return true; });
    WorkerPool& pool = WorkerPool::Get();
    for (int round = 0; round < 3; ++round) {
        std::atomic<int> done{0};
        EXPECT_FALSE(pool.Run(CMD_BUILD_FACES, 4, [&](int i) {
            if (i == round) throw std::runtime_error("broken");
            ++done;
        }));
        EXPECT_EQ(done, 3);
        EXPECT_TRUE(pool.Run(CMD_BUILD_FACES, 4, [&](int) { ++done; }));
        EXPECT_EQ(done, 7);
    }
    pool.Stop();
    GetDiagSystem()->assertCallback = former;
    LogSetCopyOnClose(nullptr, false);
    LogSetFileName(nullptr, nullptr); // closes the file
    std::filesystem::remove(logFile);
}

} // namespace
