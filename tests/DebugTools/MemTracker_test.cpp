// The memory tracker: what it logs, byte for byte, and what it does with blocks.
#include "DebugTools/MemTracker.h"
#include "DebugTools/Tracer.h"
#include "TestFiles.h"
#include "TrackerFixture.h"
#include "memMgr/TrackerState.h"

#include <algorithm>
#include <cstring>

namespace {

using tracker_test::AllocAt;
using tracker_test::raw;
using tracker_test::TrackerTest;

TEST_F(TrackerTest, BlockLayout) {
    auto* data = static_cast<unsigned char*>(AllocAt(tracker, 10, 77, "a.cpp"));
    ASSERT_EQ(raw.lastSize, 10u + 57);
    EXPECT_EQ(data, raw.last + 56);
    const auto word = [&](size_t at) {
        uint32_t value;
        std::memcpy(&value, raw.last + at, sizeof value);
        return value;
    };
    EXPECT_EQ(word(0), 0x7EFDFCFBu);
    EXPECT_EQ(word(4), 1u); // id
    EXPECT_EQ(word(8), 77u);
    const char* file;
    std::memcpy(&file, raw.last + 16, sizeof file);
    EXPECT_STREQ(file, "a.cpp");
    EXPECT_EQ(word(24), 10u);
    EXPECT_EQ(word(52), 0x7EFDFCFBu);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(data[i], 0xCD);
    EXPECT_EQ(data[10], 0xFD);
    memFree(tracker, data);
}

TEST_F(TrackerTest, WithoutALocationMemoryIsRawAndNotCounted) {
    void* block = memAlloc(tracker, 40);
    EXPECT_EQ(raw.lastSize, 40u);
    EXPECT_EQ(TrackerAmounts(tracker).allocated, 0u);
    EXPECT_EQ(TrackerAmounts(tracker).requests, 0u);
    memFree(tracker, block);
    EXPECT_EQ(raw.live, 0);
}

TEST_F(TrackerTest, TheLocationServesOneAllocation) {
    SetSourceLocation(tracker, 5, "a.cpp");
    void* tracked = memAlloc(tracker, 1);
    void* plain = memAlloc(tracker, 1);
    EXPECT_EQ(TrackerAmounts(tracker).live, 1u);
    memFree(tracker, plain);
    memFree(tracker, tracked);
    EXPECT_EQ(TrackerAmounts(tracker).live, 0u);
    EXPECT_EQ(raw.live, 0);
}

TEST_F(TrackerTest, SkippedAllocationsAreRawAndTakeTheLocation) {
    SkipNext(tracker);
    SkipNext(tracker);
    for (int i = 0; i < 2; ++i) {
        SetSourceLocation(tracker, 5, "a.cpp");
        void* block = memAlloc(tracker, 8);
        EXPECT_EQ(raw.lastSize, 8u);
        memFree(tracker, block);
    }
    void* unlocated = memAlloc(tracker, 8); // both locations were taken
    EXPECT_EQ(raw.lastSize, 8u);
    memFree(tracker, unlocated);
    memFree(tracker, AllocAt(tracker, 8, 5, "a.cpp"));
    EXPECT_EQ(TrackerAmounts(tracker).requests, 1u);
}

TEST_F(TrackerTest, WithoutFileAndProfilerTheLocationIsUnknown) {
    TrackerSettings(tracker).verbose = true;
    memFree(tracker, AllocAt(tracker, 3, -7, nullptr));
    memFree(tracker, AllocAt(tracker, 4, 0, "b.cpp"));
    memFree(tracker, AllocAt(tracker, 5, 12, nullptr));
    EXPECT_EQ(log.Text(), "unknown(100001): +3\r\nunknown(100001): -3\r\nb.cpp(100001): +4\r\nb.cpp(100001): -4\r\n"
                          "unknown(12): +5\r\nunknown(12): -5\r\n");
}

TEST_F(TrackerTest, WithoutFileTheScopeAroundNamesThePlace) {
    Tracer* profiler = MakeProfiler();
    MemTracker* profiled = Profiled(profiler);
    TrackerSettings(profiled).verbose = true;
    memFree(profiled, AllocAt(profiled, 1, 9, nullptr)); // only memAlloc's own scope
    const uint16_t scope = tracer::RegisterLocation(profiler, "f", 1, "Growing", 0);
    tracer::Enter(profiler, scope, 0);
    memFree(profiled, AllocAt(profiled, 2, 9, nullptr));
    tracer::Exit(profiler, scope);
    EXPECT_EQ(log.Text(), "unknown(9): +1\r\nunknown(9): -1\r\nGrowing(9): +2\r\nGrowing(9): -2\r\n");
    tracer::WriteProfile(profiler);
    EXPECT_NE(log.Text().find("\r\nmemAlloc\tDebugTools/src/memMgr/TrackedBlocks.cpp("), std::string::npos);
    EXPECT_NE(log.Text().find("\r\nmemFree\tDebugTools/src/memMgr/TrackedBlocks.cpp("), std::string::npos);
    DestroyMemTracker(profiled);
    tracer::Close(profiler);
}

TEST_F(TrackerTest, BreakIdsAreLogged) {
    TrackerSettings(tracker).breakAtAllocation = 5;
    TrackerSettings(tracker).breakAtFree = 3;
    void* blocks[6];
    for (int i = 0; i < 6; ++i) blocks[i] = AllocAt(tracker, 1, 20 + i, "a.cpp");
    for (void* block : blocks) memFree(tracker, block);
    EXPECT_EQ(log.Text(), "a.cpp(24): Break at memory allocation id 5\r\nBreak at free memory id 3\r\n");
}

TEST_F(TrackerTest, IdsSkipZeroWhenTheyWrap) {
    tracker->records[0].nextId = 0xFFFFFFFF;
    void* last = AllocAt(tracker, 1, 1, "a");
    void* first = AllocAt(tracker, 1, 1, "a");
    WriteLeaks(log.log, 0, tracker);
    EXPECT_EQ(IdsIn(log.Text()), (std::vector<uint32_t>{1, 0xFFFFFFFF}));
    memFree(tracker, last);
    memFree(tracker, first);
}

TEST_F(TrackerTest, WithThreadsIdsStepBy32FromTheSlotOn) {
    MemTracker* threaded = Threaded();
    void* first = AllocAt(threaded, 1, 1, "a");
    void* second = AllocAt(threaded, 1, 1, "a");
    WriteLeaks(log.log, 0, threaded);
    EXPECT_EQ(IdsIn(log.Text()), (std::vector<uint32_t>{32, 64}));
    memFree(threaded, first);
    memFree(threaded, second);
    DestroyMemTracker(threaded);
}

TEST_F(TrackerTest, TooLargeRequestsAreRefused) {
    EXPECT_EQ(AllocAt(tracker, 0xFFFFFFDDu, 3, "a.cpp"), nullptr);
    TrackerSettings(tracker).verbose = true;
    EXPECT_EQ(AllocAt(tracker, 0xFFFFFFDDu, 3, "a.cpp"), nullptr);
    EXPECT_EQ(AllocAt(tracker, 0x123456789ABu, 3, "a.cpp"), nullptr);
    EXPECT_EQ(raw.requests, 0);
    EXPECT_EQ(log.Text(), "a.cpp(3): Allocation request exceeds the maximum: ffffffdd / ffffffdc\r\n"
                          "a.cpp(3): Allocation request exceeds the maximum: 123456789ab / ffffffdc\r\n");
}

TEST_F(TrackerTest, TheMaximumTotalHolds) {
    TrackerSettings(tracker).maximumTotal = 100;
    void* block = AllocAt(tracker, 60, 1, "a.cpp");
    EXPECT_EQ(AllocAt(tracker, 41, 2, "b.cpp"), nullptr);
    void* fits = AllocAt(tracker, 40, 3, "c.cpp");
    EXPECT_NE(fits, nullptr);
    EXPECT_EQ(log.Text(), "b.cpp(2): Memory allocation failed! Currently allocated amount: 60, new size: 41\r\n");
    memFree(tracker, fits);
    memFree(tracker, block);
}

TEST_F(TrackerTest, TheFirstFailureDumpsTheStacksOnce) {
    Tracer* profiler = MakeProfiler();
    MemTracker* profiled = Profiled(profiler);
    raw.left = 0;
    EXPECT_EQ(AllocAt(profiled, 7, 2, "b.cpp"), nullptr);
    EXPECT_EQ(AllocAt(profiled, 8, 2, "b.cpp"), nullptr);
    EXPECT_EQ(log.Text(), "b.cpp(2): Memory allocation failed! Currently allocated amount: 0, new size: 7\r\n"
                          "--- Thread 0 stack trace:\r\nmemAlloc\r\n"
                          "b.cpp(2): Memory allocation failed! Currently allocated amount: 0, new size: 8\r\n");
    DestroyMemTracker(profiled);
    tracer::Close(profiler);
}

TEST_F(TrackerTest, TheCriticalAmountIsReportedOnce) {
    TrackerSettings(tracker).criticalAmount = 50;
    void* a = AllocAt(tracker, 30, 1, "a.cpp");
    EXPECT_FALSE(diag::FileExists(log.path));
    void* b = AllocAt(tracker, 20, 2, "b.cpp");
    void* c = AllocAt(tracker, 20, 3, "c.cpp");
    EXPECT_EQ(TrackerSettings(tracker).criticalAmount, 0u);
    EXPECT_EQ(log.Text(), "b.cpp(2): Critical memory amount reached, new request is for 20\r\n"
                          "Memory allocations in thread 0\r\nFile(Line)\tcount\tFirst ID\tsize\ttotal\tptr\r\n"
                          "a.cpp(1)\t1\t1\t30\t30\t" +
                              Address(a) + "\r\nTotal size: 30\r\n");
    for (void* block : {a, b, c}) memFree(tracker, block);
}

TEST_F(TrackerTest, CountsFollowBlocks) {
    void* a = AllocAt(tracker, 30, 1, "a.cpp");
    void* b = AllocAt(tracker, 20, 2, "b.cpp");
    memFree(tracker, a);
    void* c = AllocAt(tracker, 5, 2, "b.cpp");
    const MemAmounts now = TrackerAmounts(tracker);
    EXPECT_EQ(now.allocated, 25u);
    EXPECT_EQ(now.peak, 50u);
    EXPECT_EQ(now.live, 2u);
    EXPECT_EQ(now.peakLive, 2u);
    EXPECT_EQ(now.requests, 3u);
    memFree(tracker, b);
    memFree(tracker, c);
    EXPECT_EQ(TrackerAmounts(tracker).allocated, 0u);
    EXPECT_EQ(raw.live, 0);
}

TEST_F(TrackerTest, FreeingNullDoesNothing) {
    memFree(tracker, nullptr);
    memFreeShared(tracker, nullptr);
    EXPECT_EQ(raw.frees, 0);
    EXPECT_FALSE(diag::FileExists(log.path));
}

TEST_F(TrackerTest, AnOverrunBlockStaysAndIsAsserted) {
    auto* data = static_cast<unsigned char*>(AllocAt(tracker, 10, 1, "a.cpp"));
    data[10] = 0;
    memFree(tracker, data);
    EXPECT_EQ(TrackerAmounts(tracker).allocated, 10u);
    EXPECT_EQ(TrackerAmounts(tracker).live, 1u);
    EXPECT_EQ(raw.frees, 0);
    ExpectOneAssert();
    data[10] = 0xFD;
    memFree(tracker, data);
    EXPECT_EQ(raw.live, 0);
}

TEST_F(TrackerTest, TheOtherFrontGuardIsGoodAnyOtherIsNot) {
    auto* data = static_cast<unsigned char*>(AllocAt(tracker, 10, 1, "a.cpp"));
    data[-56] = 0xFC;
    memFree(tracker, data);
    EXPECT_EQ(raw.frees, 0);
    data[-56] = 0xFD;
    memFree(tracker, data);
    EXPECT_EQ(raw.frees, 1);
    ExpectOneAssert();
}

TEST_F(TrackerTest, SharedMemoryIsFilledAtItsBeginning) {
    for (const size_t size : {10u, 256u, 257u, 5000u}) {
        void* first = memAllocShared(tracker, size, 1, "a.cpp");
        const auto* data = static_cast<unsigned char*>(first);
        const size_t filled = std::min<size_t>(size, 256);
        for (size_t i = 0; i < filled; ++i) ASSERT_EQ(data[i], 0xCD) << i;
        EXPECT_EQ(data[size], 0xFD);
        std::memset(first, 0x11, size);
        raw.inspectSize = size + 57;
        memFreeShared(tracker, first);
        const std::string expected = std::string(56 + filled, '\xDD');
        EXPECT_EQ(raw.inspected.substr(0, expected.size()), expected) << size;
        // Beyond that nothing is touched, but for the guard of a block that is filled whole.
        const std::string rest = size < 256 ? "\xDD" : std::string(size - filled, '\x11') + "\xFD";
        EXPECT_EQ(raw.inspected.substr(expected.size()), rest) << size;
    }
}

TEST_F(TrackerTest, FreedMemoryReads0xDDThroughout) {
    void* block = AllocAt(tracker, 100, 1, "a.cpp");
    raw.inspectSize = 157;
    memFree(tracker, block);
    EXPECT_EQ(raw.inspected, std::string(157, '\xDD'));
}

TEST_F(TrackerTest, LeaksAreListedBehindAnId) {
    void* a = AllocAt(tracker, 30, 1, "a.cpp");
    void* b = AllocAt(tracker, 20, 2, "b.cpp");
    void* c = AllocAt(tracker, 0, 3, "c.cpp");
    memFree(tracker, b);
    WriteLeaks(log.log, 1, tracker);
    EXPECT_EQ(log.Text(),
              "Leaks found after id 1\r\nFile(Line)\tid\tsize\tptr\r\nc.cpp(3)\t3\t0\t" + Address(c) + "\r\n");
    memFree(tracker, a);
    memFree(tracker, c);
}

TEST_F(TrackerTest, ThreadAllocationsAreAddedUpByLocation) {
    void* a = AllocAt(tracker, 3, 1, "a.cpp");
    void* b = AllocAt(tracker, 20, 2, "b.cpp");
    void* c = AllocAt(tracker, 5, 1, "a.cpp");
    std::memcpy(a, "\x01\xfe\x10", 3);
    WriteThreadAllocations(log.log, 0, true, tracker);
    EXPECT_EQ(log.Text(), "Memory allocations in thread 0\r\n"
                          "File(Line)\tcount\tFirst ID\tsize\ttotal\tptr\tcontents\r\n"
                          "a.cpp(1)\t2\t1\t3\t8\t" +
                              Address(a) +
                              "\t01fe10\r\n"
                              "b.cpp(2)\t1\t2\t20\t20\t" +
                              Address(b) + "\tcdcdcdcdcdcdcdcdcdcdcdcdcdcdcdcd\r\nTotal size: 28\r\n");
    for (void* block : {a, b, c}) memFree(tracker, block);
}

TEST_F(TrackerTest, StatisticsOfASmallLife) {
    void* a = AllocAt(tracker, 30, 1, "a.cpp");
    memFree(tracker, a);
    WriteStatistics(log.log, tracker);
    std::vector<std::string> lines = Lines();
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines[0], "Maximum memory requested: 30");
    EXPECT_EQ(lines[1], "Maximum number of simulateneously allocated tracked blocks: 1");
    EXPECT_EQ(lines[2], "Total number of allocation requests: 1");
    EXPECT_EQ(lines[3].rfind("Amount of additional memory used by the tracker: ", 0), 0u);
    EXPECT_EQ(lines[4], "Maximum splay rotations: 0");
    EXPECT_EQ(lines[5], "Average splay rotations: 0.00");
    EXPECT_EQ(lines[6], "Maximum memory footprint");
}

TEST_F(TrackerTest, StatisticsTellLeaksAndTheLargestFootprint) {
    TrackerSettings(tracker).footprintThreshold = 40;
    void* a = AllocAt(tracker, 30, 1, "a.cpp");
    void* b = AllocAt(tracker, 20, 2, "b.cpp");
    memFree(tracker, b); // 50 above 40: kept
    void* c = AllocAt(tracker, 15, 3, "c.cpp");
    memFree(tracker, c); // 45 is less than what was kept
    WriteStatistics(log.log, tracker);
    const std::string text = log.Text();
    EXPECT_NE(text.find("Maximum memory footprint\r\nMemory allocations in thread 0\r\n"
                        "File(Line)\tcount\tFirst ID\tsize\ttotal\tptr\r\na.cpp(1)\t1\t1\t30\t30\t" +
                        Address(a) + "\r\nb.cpp(2)\t1\t2\t20\t20\t" + Address(b) +
                        "\r\nTotal size: 50\r\nMemory leaks detected, total unfreed memory: 30\r\n"),
              std::string::npos)
        << text;
    memFree(tracker, a);
}

} // namespace
