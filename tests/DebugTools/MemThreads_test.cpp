// The memory tracker and threads; random lives of blocks.
#include "DebugTools/MemMgr.h"
#include "DebugTools/MemTracker.h"
#include "DebugTools/platform/Thread.h"
#include "TrackerFixture.h"
#include "memMgr/BlockTree.h"

#include <cstring>
#include <map>
#include <rapidcheck/gtest.h>
#include <set>

namespace {

using tracker_test::AllocAt;
using tracker_test::raw;
using tracker_test::TrackerTest;

void OnAThread(const std::function<void()>& body) {
    diag::Thread thread;
    ASSERT_TRUE(thread.Start(body));
    thread.Join();
}

class MemThreads : public TrackerTest {
protected:
    MemThreads() {
        DestroyMemTracker(tracker);
        tracker = Threaded();
    }
};

TEST_F(MemThreads, ABlockOfAnotherThreadIsAnErrorAndStays) {
    void* mine = AllocAt(tracker, 10, 1, "a.cpp");
    OnAThread([&] { memFree(tracker, mine); });
    EXPECT_EQ(raw.frees, 0);
    EXPECT_EQ(TrackerAmounts(tracker).allocated, 10u);
    ExpectOneAssert();
    memFree(tracker, mine);
    EXPECT_EQ(raw.live, 0);
}

TEST_F(MemThreads, UntrackedMemoryMayBeFreedByAnyThread) {
    void* plain = memAlloc(tracker, 10);
    void* tracked = AllocAt(tracker, 10, 1, "a.cpp");
    OnAThread([&] { memFree(tracker, plain); });
    EXPECT_EQ(raw.frees, 1);
    EXPECT_FALSE(diag::FileExists(log.path));
    memFree(tracker, tracked);
}

TEST_F(MemThreads, SharedBlocksAreFreedByAnyThreadAndChargedToRecord0) {
    void* shared = nullptr;
    OnAThread([&] { shared = memAllocShared(tracker, 10, 7, "pool.cpp"); });
    WriteThreadAllocations(log.log, 0, false, tracker);
    EXPECT_EQ(log.Text(), "Memory allocations in thread 0\r\nFile(Line)\tcount\tFirst ID\tsize\ttotal\tptr\r\n"
                          "pool.cpp(7)\t1\t32\t10\t10\t" +
                              Address(shared) + "\r\nTotal size: 10\r\n");
    OnAThread([&] { memFreeShared(tracker, shared); });
    EXPECT_EQ(raw.live, 0);
    EXPECT_EQ(TrackerAmounts(tracker).allocated, 0u);
}

TEST_F(MemThreads, FreeingUnknownMemoryAsSharedIsAnError) {
    int notABlock = 0;
    memFreeShared(tracker, &notABlock);
    EXPECT_EQ(raw.frees, 0);
    ExpectOneAssert();
}

// 32 threads hold a block each; the next one gets nothing until one of them lets go.
TEST_F(MemThreads, The33rdThreadGetsNothingUntilARecordIsReleased) {
    constexpr int kThreads = 32;
    diag::Thread threads[kThreads];
    diag::AutoResetEvent held[kThreads], go[kThreads];
    void* first = AllocAt(tracker, 1, 1, "a.cpp"); // this thread owns record 0
    for (int i = 1; i < kThreads; ++i)
        threads[i].Start([&, i] {
            void* block = AllocAt(tracker, 1, 1, "a.cpp");
            EXPECT_NE(block, nullptr);
            held[i].Set();
            go[i].Wait();
            memFree(tracker, block);
            held[i].Set();
            go[i].Wait();
        });
    for (int i = 1; i < kThreads; ++i) held[i].Wait();
    WriteLeaks(log.log, 0, tracker);
    std::set<uint32_t> slots;
    for (uint32_t id : IdsIn(log.Text())) slots.insert(id % 32);
    EXPECT_EQ(slots.size(), 32u); // every record once
    OnAThread([&] {
        EXPECT_EQ(AllocAt(tracker, 1, 1, "a.cpp"), nullptr);
        EXPECT_EQ(memAlloc(tracker, 1), nullptr);
    });
    go[5].Set();
    held[5].Wait();
    OnAThread([&] {
        void* block = AllocAt(tracker, 1, 1, "a.cpp");
        EXPECT_NE(block, nullptr);
        memFree(tracker, block);
    });
    for (int i = 1; i < kThreads; ++i) go[i].Set();
    for (int i = 1; i < kThreads; ++i)
        if (i != 5) go[i].Set(), held[i].Wait(), go[i].Set();
    for (diag::Thread& thread : threads) thread.Join();
    memFree(tracker, first);
    EXPECT_EQ(raw.live, 0);
}

TEST_F(MemThreads, ManyThreadsAtOnceLoseNothing) {
    const int assertsBefore = LogInternalAssertCount();
    diag::Thread threads[8];
    for (int n = 0; n < 8; ++n)
        threads[n].Start([&, n] {
            std::vector<void*> blocks;
            for (int i = 0; i < 2000; ++i) {
                blocks.push_back(AllocAt(tracker, size_t(i % 50), n + 1, "worker.cpp"));
                if (i % 3 != 0) memFree(tracker, blocks.back()), blocks.pop_back();
                if (i % 50 == 0) memFreeShared(tracker, memAllocShared(tracker, 16, 1, "shared.cpp"));
            }
            for (void* block : blocks) memFree(tracker, block);
        });
    LogSetFileName(log.log, log.folder.File("reports.log").c_str());
    for (int i = 0; i < 20; ++i) WriteLeaks(log.log, 0, tracker);
    for (diag::Thread& thread : threads) thread.Join();
    const MemAmounts amounts = TrackerAmounts(tracker);
    EXPECT_EQ(amounts.allocated, 0u);
    EXPECT_EQ(amounts.live, 0u);
    EXPECT_EQ(amounts.requests, 8u * 2040);
    EXPECT_EQ(LogInternalAssertCount(), assertsBefore);
}

TEST_F(MemThreads, BlockAllocatorsAreTrackedAndEndOnAnyThread) {
    auto memory = std::make_unique<MemoryManager>(32, 256, tracker);
    OnAThread([&] { EXPECT_NE(memory->Alloc(3), nullptr); });
    EXPECT_EQ(TrackerAmounts(tracker).live, 1u);
    EXPECT_GE(TrackerAmounts(tracker).allocated, 32u * 256);
    memory.reset();
    EXPECT_EQ(TrackerAmounts(tracker).allocated, 0u);
    EXPECT_EQ(raw.live, 0);
}

// The tree against a map: what is in it, in which order, and that it finds only that.
RC_GTEST_PROP(BlockTreeProperty, HoldsWhatWasPutIn, (std::vector<uint8_t> steps)) {
    std::vector<diag::BlockHeader> headers(256);
    diag::BlockTree tree;
    std::set<diag::BlockHeader*> model;
    for (const uint8_t step : steps) {
        diag::BlockHeader* block = &headers[step];
        const auto address = reinterpret_cast<uintptr_t>(block);
        RC_ASSERT(tree.Holds(address) == (model.count(block) == 1));
        if (model.count(block)) {
            RC_ASSERT(tree.Find(address) == block);
            tree.RemoveRoot();
            model.erase(block);
        } else {
            RC_ASSERT(tree.Find(address) == nullptr);
            tree.Insert(block);
            RC_ASSERT(tree.Root() == block);
            model.insert(block);
        }
        std::vector<diag::BlockHeader*> visited;
        tree.ForEach([&](diag::BlockHeader& b) { visited.push_back(&b); });
        RC_ASSERT(visited == std::vector<diag::BlockHeader*>(model.begin(), model.end()));
    }
}

} // namespace
