// What the memory tracker and the tracer add to the reports of the process's own system, and what faults leave of them.
#include "ReportFiles.h"

#include "DebugTools/BiasedSection.h"
#include "DebugTools/MemTracker.h"
#include "DebugTools/Tracer.h"
#include "memMgr/BlockTree.h"

#include <sys/mman.h>

namespace {

using namespace crash_test;

uint32_t now = 0;

struct Links : testing::Test {
    Links() {
        LogSetSizeLimit(nullptr, 100000000);
        hadInfo = GetDiagSystem()->systemInfoWritten.exchange(true);
        hadList = GetDiagSystem()->moduleListWritten.exchange(true);
    }
    ~Links() override {
        tracer::Close(profiler);
        GetDiagSystem()->systemInfoWritten = hadInfo;
        GetDiagSystem()->moduleListWritten = hadList;
    }

    void MakeProfiler() {
        now = 0;
        TracerSetup setup;
        setup.threads = OsThreadOps();
        setup.capacity = 64;
        setup.ticks = [] { return now; };
        profiler = tracer::Create(setup);
        tracer::SetMode(profiler, kTracerProfile);
    }
    uint16_t At(const char* name, int line) const {
        return tracer::RegisterLocation(profiler, "file.cpp", line, name, 0);
    }
    int Depth() const { return tracer::GetStackDepth(profiler, diag::CurrentThreadId()); }
    std::string Text() const { return Slurp(log.path); }
    /// The line with the tracker's amounts.
    static std::string Amounts() {
        const MemAmounts amounts = TrackerAmounts();
        return "Allocated memory: " + std::to_string(amounts.allocated) +
               ", allocated peak: " + std::to_string(amounts.peak) + "\r\n";
    }
    /// What follows the message, up to the call stack.
    std::string AfterMessage() const {
        const std::string text = Text();
        const size_t from = text.find("\r\nMessage: in dynamics\r\n");
        return text.substr(from + 24, text.find(kStackHead) - from - 24);
    }
    static std::string ThreadHead() {
        char text[64];
        std::snprintf(text, sizeof text, "Thread: %x\r\n", diag::CurrentThreadId());
        return kBar + text;
    }

    DefaultLogIn log;
    Tracer* profiler = nullptr;
    bool hadInfo, hadList; ///< whether the process's system has written its blocks
};

/// A set of thread operations whose lock counts.
int held = 0;
const ThreadOps kCountedOps = {[] { return 1u; }, [] { ++held; }, [] { --held; }};

TEST_F(Links, ReportsTellTheTrackersAmounts) {
    void* block = memAllocShared(nullptr, 3000, __LINE__, "file.cpp");
    void* gone = memAllocShared(nullptr, 70000, __LINE__, "file.cpp");
    memFreeShared(nullptr, gone);
    EXPECT_GE(TrackerAmounts().peak, 73000u);
    EXPECT_FALSE(diag::Guarded("in dynamics", WriteToAddress16));
    EXPECT_EQ(AfterMessage(), Amounts() + "\r\n" + ThreadHead());
    memFreeShared(nullptr, block);
}

TEST_F(Links, ReportsTellTheDefaultTracersStacksAndProfile) {
    EXPECT_EQ(GetDiagSystem()->profiler, nullptr);
    MakeProfiler();
    const uint16_t outer = At("outer", 1), inner = At("inner", 2);
    tracer::Enter(profiler, outer, 0);
    tracer::Enter(profiler, inner, now = 4);
    EXPECT_FALSE(diag::Guarded("in dynamics", WriteToAddress16));
    EXPECT_EQ(AfterMessage(), Amounts() +
                                  "--- Thread 0 stack trace:\r\nouter\r\ninner\r\n"
                                  "Trace hash table usage: 2 / 64\r\n"
                                  "Trace hash table collisions/misses: 0 / 0\r\n"
                                  "Tracer ticks: 0, %0.00\r\nCode profiling results:\r\nTotal ticks: 4\r\n"
                                  "Location name:\tFile(line)\tcalls\ttotal ticks\tself ticks\tpercent\tticks/call\r\n"
                                  "outer\tfile.cpp(1)\t1\t0\t4\t100.00\t0.00\r\n"
                                  "inner\tfile.cpp(2)\t1\t0\t0\t0.00\t0.00\r\n" +
                                  ThreadHead() + "Thread stack: 2\r\n");
    tracer::Exit(profiler, inner);
    tracer::Exit(profiler, outer);
    tracer::Close(profiler);
    profiler = nullptr;
    EXPECT_EQ(GetDiagSystem()->profiler, nullptr);
}

TEST_F(Links, AssertionsWriteTheDefaultTracersStacks) {
    FixedTicks ticks(65432);
    sAssert(nullptr, "a.cpp", 7);
    EXPECT_EQ(Text(), "a.cpp(7): sAssert failed\r\n");
    MakeProfiler();
    tracer::Enter(profiler, At("outer", 1), 0);
    sAssert(nullptr, "a.cpp", 8);
    EXPECT_EQ(Text(), "a.cpp(7): sAssert failed\r\n\r\n" + kOpening +
                          "a.cpp(8): sAssert failed, time:     65.432\r\n--- Thread 0 stack trace:\r\nouter\r\n" +
                          kClosing + "\r\n");
}

TEST_F(Links, AFaultMarksTheThreadSoThatItsScopesAreUnwound) {
    MakeProfiler();
    const uint16_t outer = At("outer", 1), inner = At("inner", 2);
    tracer::Enter(profiler, outer, 0);
    EXPECT_FALSE(diag::Guarded("in dynamics", [&] {
        tracer::Enter(profiler, inner, 0);
        WriteToAddress16();
    }));
    EXPECT_EQ(Depth(), 2);
    const size_t before = Text().size();
    tracer::Exit(profiler, outer);
    EXPECT_EQ(Text().substr(before), "Exception mode, unwinding stack to outer file.cpp(1)\r\n");
    EXPECT_EQ(Depth(), 0);
    // The mark is used up: the next scope that is missed counts as a mistake.
    tracer::Enter(profiler, outer, 0);
    tracer::Enter(profiler, inner, 0);
    tracer::Exit(profiler, outer);
    EXPECT_NE(Text().find("Trace exit/enter id mismatch, exiting:outer file.cpp(1)"), std::string::npos);
}

TEST_F(Links, WithoutAFaultNoThreadIsMarked) {
    MakeProfiler();
    const uint16_t outer = At("outer", 1), inner = At("inner", 2);
    EXPECT_TRUE(diag::Guarded("in dynamics", [] {}));
    tracer::Enter(profiler, outer, 0);
    tracer::Enter(profiler, inner, 0);
    tracer::Exit(profiler, outer);
    EXPECT_NE(Text().find("Trace exit/enter id mismatch, exiting:outer file.cpp(1)"), std::string::npos);
}

TEST_F(Links, AFaultGivesTheLockOfThreadOperationsBack) {
    held = 0;
    EXPECT_FALSE(diag::Guarded("in dynamics", [] {
        const diag::OpsLock outer(&kCountedOps);
        const diag::OpsLock none(nullptr);
        const diag::OpsLock inner(&kCountedOps);
        EXPECT_EQ(held, 2);
        WriteToAddress16();
    }));
    EXPECT_EQ(held, 0);
    { const diag::OpsLock lock(&kCountedOps); }
    EXPECT_EQ(held, 0);
}

// The tree of a record is damaged: whoever walks it fails, and others must not wait for it forever.
TEST_F(Links, AFaultInsideTheTrackerLeavesItUsable) {
    MemTracker* const tracker = CreateMemTracker({});
    void* blocks[3];
    for (void*& block : blocks) block = memAllocShared(tracker, 16, __LINE__, "file.cpp");
    auto* const root = reinterpret_cast<diag::BlockHeader*>(blocks[2]) - 1;
    diag::BlockHeader* const left = root->left;
    diag::BlockHeader* const right = root->right;
    void* const page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    root->left = root->right = static_cast<diag::BlockHeader*>(page);
    EXPECT_FALSE(diag::Guarded("in dynamics", [&] { memFreeShared(tracker, blocks[0]); }));
    root->left = left;
    root->right = right;
    munmap(page, 4096);
    diag::Thread other;
    ASSERT_TRUE(other.Start([&] {
        for (void* block : blocks) memFreeShared(tracker, block);
    }));
    other.Join();
    EXPECT_EQ(TrackerAmounts(tracker).live, 0u);
    DestroyMemTracker(tracker);
}

TEST_F(Links, AFaultInsideABiasedSectionLetsOthersIn) {
    diag::BiasedSection section;
    bool entered = false;
    for (int i = 0; i < 2; ++i) { // as the owner, and when the section has become an ordinary one
        EXPECT_FALSE(diag::Guarded("in dynamics", [&] { section.Run(WriteToAddress16); }));
        entered = false;
        diag::Thread other;
        ASSERT_TRUE(other.Start([&] { section.Run([&] { entered = true; }); }));
        other.Join();
        EXPECT_TRUE(entered);
    }
}

} // namespace
