// The tracer: registry, stacks, profile and call logging, byte for byte.
#include "DebugTools/Tracer.h"
#include "DebugTools/platform/Thread.h"
#include "TestFiles.h"

#include <stdexcept>
#include <vector>

namespace {

uint32_t tick = 0;

class TracerTest : public testing::Test {
protected:
    explicit TracerTest(uint32_t capacity = 64) {
        tick = 0;
        setup.log = log.log;
        setup.capacity = capacity;
        setup.ticks = [] { return tick; };
        t = tracer::Create(setup);
    }
    ~TracerTest() override { tracer::Close(t); }

    uint16_t At(const char* name, int line = 1, uint32_t flags = 0) {
        return tracer::RegisterLocation(t, "file.cpp", line, name, flags);
    }
    void EnterAt(uint16_t location, uint32_t at) {
        tick = at;
        tracer::Enter(t, location, at);
    }
    void ExitAt(uint16_t location, uint32_t at) {
        tick = at;
        tracer::Exit(t, location);
    }
    int Depth() const { return tracer::GetStackDepth(t, 0); }

    TestLog log;
    TracerSetup setup;
    Tracer* t = nullptr;
};

TEST_F(TracerTest, FourTracersTheFirstIsTheDefault) {
    EXPECT_EQ(tracer::Default(), t);
    std::vector<Tracer*> more;
    for (int i = 0; i < 3; ++i) more.push_back(tracer::Create(setup));
    for (Tracer* tracer : more) EXPECT_NE(tracer, nullptr);
    EXPECT_EQ(tracer::Create(setup), nullptr);
    EXPECT_EQ(tracer::Default(), t);
    for (Tracer* tracer : more) tracer::Close(tracer);
    tracer::Close(t);
    EXPECT_EQ(tracer::Default(), nullptr);
    t = tracer::Create(setup);
    EXPECT_EQ(tracer::Default(), t);
}

TEST_F(TracerTest, OffItDoesNothing) {
    EXPECT_EQ(tracer::GetMode(t), kTracerOff);
    EXPECT_EQ(At("a"), kNoLocation);
    tracer::Enter(t, 0, 0);
    tracer::Exit(t, 0);
    EXPECT_EQ(Depth(), 0);
    EXPECT_EQ(tracer::RegisterLocation(nullptr, "f", 1, "a", 0), kNoLocation);
    EXPECT_EQ(tracer::GetStackDepth(nullptr, 0), 0);
}

TEST_F(TracerTest, TheSamePlaceHasOneIndex) {
    tracer::SetMode(t, kTracerProfile);
    const uint16_t first = At("a", 1);
    EXPECT_EQ(At("a", 1), first);
    EXPECT_NE(At("a", 2), first);
    EXPECT_NE(At("b", 1), first);
    EXPECT_NE(tracer::RegisterLocation(t, "other.cpp", 1, "a", 0), first);
}

TEST_F(TracerTest, ByNameFileAndLineDoNotMatter) {
    tracer::SetMode(t, kTracerProfile);
    static const char name[] = "named";
    const uint16_t first = tracer::RegisterLocation(t, "a.cpp", 1, name, kTraceByName);
    EXPECT_EQ(tracer::RegisterLocation(t, "b.cpp", 2, name, kTraceByName), first);
    EXPECT_NE(tracer::RegisterLocation(t, "a.cpp", 1, name, 0), first);
}

TEST_F(TracerTest, AFullTableAssertsAndGivesNothing) {
    tracer::SetMode(t, kTracerProfile);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(At("a", i + 1), i);
    const int before = LogInternalAssertCount();
    EXPECT_EQ(At("a", 100), kNoLocation);
    EXPECT_EQ(LogInternalAssertCount(), before + 1);
    EXPECT_EQ(At("a", 64), 63); // what is there is still found
    const std::string text = log.Text();
    EXPECT_NE(text.find(" DebugTools/src/tracer/Locations.cpp("), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("): assert failed\r\n")) << text;
}

TEST_F(TracerTest, ATableWhoseSizeIsNoPowerOfTwo) {
    tracer::Close(t);
    setup.capacity = 10;
    t = tracer::Create(setup);
    tracer::SetMode(t, kTracerProfile);
    // All have the same hash; 137 and 10 share no factor, so that every slot is reached.
    alignas(256) static const char names[256] = {};
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < 10; ++i) EXPECT_EQ(At(names + i, 1, kTraceByName), i);
    tracer::WriteProfile(t);
    // 1 + 2 + ... + 9 steps.
    EXPECT_TRUE(log.Text().starts_with("Trace hash table usage: 10 / 10\r\n"
                                       "Trace hash table collisions/misses: 9 / 45\r\n"))
        << log.Text();
}

TEST_F(TracerTest, Beyond100LevelsOnlyTheDepthCounts) {
    tracer::SetMode(t, kTracerProfile);
    const uint16_t a = At("a"), deep = At("deep", 2);
    for (int i = 0; i < 100; ++i) EnterAt(a, 0);
    EXPECT_EQ(Depth(), 100);
    EnterAt(deep, 0);
    EXPECT_EQ(Depth(), 101);
    EXPECT_EQ(tracer::ScopeName(t, 0), nullptr); // not on the stack
    EXPECT_STREQ(tracer::ScopeName(t, 1), "a");
    ExitAt(deep, 0);
    EXPECT_EQ(Depth(), 100);
    for (int i = 0; i < 100; ++i) ExitAt(a, 0);
    EXPECT_EQ(Depth(), 0);
    EXPECT_FALSE(diag::FileExists(log.path));
}

TEST_F(TracerTest, Profile) {
    tracer::SetMode(t, kTracerProfile);
    const uint16_t outer = At("outer", 1), inner = At("inner", 2, kTraceNoLog);
    At("never", 3);
    EnterAt(outer, 100);
    EnterAt(inner, 130);
    ExitAt(inner, 150);
    EnterAt(inner, 160);
    ExitAt(inner, 200);
    ExitAt(outer, 250);
    tracer::WriteProfile(t);
    EXPECT_EQ(log.Text(), "Trace hash table usage: 3 / 64\r\nTrace hash table collisions/misses: 0 / 0\r\n"
                          "Tracer ticks: 0, %0.00\r\nCode profiling results:\r\nTotal ticks: 150\r\n"
                          "Location name:\tFile(line)\tcalls\ttotal ticks\tself ticks\tpercent\tticks/call\r\n"
                          "outer\tfile.cpp(1)\t1\t150\t90\t60.00\t150.00\r\n"
                          "excluded\tinner\tfile.cpp(2)\t2\t60\t60\t40.00\t30.00\r\n");
}

TEST_F(TracerTest, RecursionCountsTheOutermostTicks) {
    tracer::SetMode(t, kTracerProfile);
    const uint16_t a = At("a");
    EnterAt(a, 0);
    EnterAt(a, 10);
    ExitAt(a, 30);
    ExitAt(a, 40);
    tracer::WriteProfile(t);
    EXPECT_NE(log.Text().find("\r\na\tfile.cpp(1)\t2\t40\t40\t100.00\t20.00\r\n"), std::string::npos) << log.Text();
}

TEST_F(TracerTest, TheTracersOwnTicksAreCounted) {
    tracer::SetMode(t, kTracerProfile);
    const uint16_t a = At("a");
    tick = 15;
    tracer::Enter(t, a, 10);
    ExitAt(a, 110);
    tracer::WriteProfile(t);
    EXPECT_NE(log.Text().find("Tracer ticks: 5, %5.00\r\n"), std::string::npos) << log.Text();
}

TEST_F(TracerTest, RepeatedCallsAreCountedOnTheLine) {
    tracer::SetMode(t, kTracerLog);
    const uint16_t a = At("a"), b = At("b", 2);
    for (int i = 0; i < 3; ++i) EnterAt(a, 0), ExitAt(a, 0);
    EnterAt(b, 0);
    ExitAt(b, 0);
    tracer::Close(t);
    EXPECT_EQ(log.Text(), "a 3 calls\r\nb");
    EXPECT_EQ(LogGetIndent(log.log), 0);
}

TEST_F(TracerTest, CallsAreIndentedAndCountsEndWithTheScopeAround) {
    tracer::SetMode(t, kTracerLog);
    const uint16_t outer = At("outer"), inner = At("inner", 2), hidden = At("hidden", 3, kTraceNoLog);
    EnterAt(outer, 0);
    for (int i = 0; i < 2; ++i) EnterAt(inner, 0), ExitAt(inner, 0);
    ExitAt(outer, 0);
    EnterAt(inner, 0);
    EnterAt(hidden, 0);
    ExitAt(hidden, 0);
    EnterAt(outer, 0);
    ExitAt(outer, 0);
    ExitAt(inner, 0);
    EXPECT_EQ(log.Text(), "outer\r\n\tinner 2 calls\r\ninner\r\n\touter");
}

TEST_F(TracerTest, CallsGoToTheirChannels) {
    tracer::SetMode(t, kTracerLog);
    LogSetDefaultFlags(log.log, 0x101);
    const uint16_t on = At("on", 1, 1), off = At("off", 2, 2);
    for (int i = 0; i < 2; ++i) EnterAt(off, 0), ExitAt(off, 0);
    EnterAt(on, 0);
    ExitAt(on, 0);
    EXPECT_EQ(log.Text(), "on");
}

TEST_F(TracerTest, LeavingAnotherScopeIsLoggedAndUnwinds) {
    tracer::SetMode(t, kTracerProfile);
    const uint16_t a = At("a", 1), b = At("b", 2), c = At("c", 3);
    for (uint16_t location : {a, b, c}) EnterAt(location, 0);
    ExitAt(b, 0);
    EXPECT_EQ(Depth(), 1);
    ExitAt(c, 0); // not on the stack any more: nothing to unwind to
    EXPECT_EQ(Depth(), 1);
    ExitAt(a, 0);
    EXPECT_EQ(log.Text(), "Trace exit/enter id mismatch, exiting:b file.cpp(2)\r\n"
                          "currently on the stack: a, b, c\r\n"
                          "Trace exit/enter id mismatch, exiting:c file.cpp(3)\r\ncurrently on the stack: a\r\n");
}

TEST_F(TracerTest, ExceptionsUnwindWithoutComplaint) {
    tracer::SetMode(t, kTracerProfile);
    const uint16_t a = At("a", 1), b = At("b", 2);
    struct Leave {
        Tracer* tracer;
        uint16_t location;
        ~Leave() { tracer::Exit(tracer, location); }
    };
    try {
        EnterAt(a, 0);
        const Leave leave{t, a};
        EnterAt(b, 0);
        throw std::runtime_error("out of b");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(Depth(), 0);
    EXPECT_EQ(log.Text(), "Exception mode, unwinding stack to a file.cpp(1)\r\n");
}

TEST_F(TracerTest, ACrashedThreadUnwindsTheSameWay) {
    tracer::SetMode(t, kTracerProfile);
    const uint16_t a = At("a", 1), b = At("b", 2);
    EnterAt(a, 0);
    EnterAt(b, 0);
    tracer::SetMode(t, kTracerCrashed); // b will never be left
    EXPECT_EQ(tracer::GetMode(t), kTracerProfile);
    ExitAt(a, 0);
    EXPECT_EQ(Depth(), 0);
    EXPECT_EQ(log.Text(), "Exception mode, unwinding stack to a file.cpp(1)\r\n");
}

TEST_F(TracerTest, StacksOfAllThreads) {
    setup.threads = OsThreadOps();
    tracer::Close(t);
    t = tracer::Create(setup);
    tracer::SetMode(t, kTracerProfile);
    const uint16_t a = At("a", 1), b = At("b", 2);
    EnterAt(a, 0);
    diag::AutoResetEvent inside, done;
    uint32_t id = 0;
    diag::Thread thread;
    thread.Start([&] {
        id = diag::CurrentThreadId();
        tracer::Enter(t, b, 0);
        tracer::Enter(t, a, 0);
        inside.Set();
        done.Wait();
    });
    inside.Wait();
    EXPECT_EQ(tracer::GetStackDepth(t, id), 2);
    EXPECT_EQ(tracer::GetStackDepth(t, diag::CurrentThreadId()), 1);
    EXPECT_EQ(tracer::GetStackDepth(t, 1), 0);
    tracer::DumpStacks(t);
    tracer::DumpStacks(t, 1);
    EXPECT_EQ(log.Text(), "--- Thread 0 stack trace:\r\na\r\n--- Thread 1 stack trace:\r\nb\r\na\r\n"
                          "--- Thread 1 stack trace:\r\nb\r\na\r\n");
    done.Set();
    thread.Join();
}

TEST_F(TracerTest, DumpOnCrashWritesWithoutTimeStampsAndCloses) {
    tracer::SetMode(t, kTracerProfile);
    LogSetDefaultFlags(log.log, kLogInitialFlags | kLogTimeStamp);
    EnterAt(At("a"), 0);
    tracer::DumpOnCrash(t, true);
    EXPECT_EQ(log.Text(), "Crash occurred, dumping the stack\r\n--- Thread 0 stack trace:\r\na\r\n");
    EXPECT_EQ(LogGetDefaultFlags(log.log), kLogInitialFlags | kLogTimeStamp);
    EXPECT_EQ(tracer::Default(), nullptr);
    Tracer* again = tracer::Create(setup);
    tracer::DumpOnCrash(again, false);
    EXPECT_EQ(tracer::Default(), nullptr);
}

void Marked() {
    TRACE_SCOPE("Marked");
    EXPECT_EQ(tracer::GetStackDepth(tracer::Default(), 0), tracer::Default() ? 1 : 0);
}

TEST_F(TracerTest, ScopesFollowTheDefaultTracer) {
    tracer::SetMode(t, kTracerProfile);
    Marked();
    Marked();
    EXPECT_EQ(Depth(), 0);
    tracer::WriteProfile(t);
    EXPECT_NE(log.Text().find("\r\nMarked\ttests/DebugTools/Tracer_test.cpp("), std::string::npos) << log.Text();
    EXPECT_NE(log.Text().find(")\t2\t0\t0\t"), std::string::npos) << log.Text();
    tracer::Close(t);
    Marked();
    // Another tracer in the same place of the table numbers its own locations.
    t = tracer::Create(setup);
    tracer::SetMode(t, kTracerProfile);
    At("first of its table");
    Marked();
    EXPECT_EQ(Depth(), 0);
}

TEST(TracerThreads, ManyThreadsRegisterAndEnterAtOnce) {
    TracerSetup setup;
    TestLog log;
    setup.log = log.log;
    setup.threads = OsThreadOps();
    setup.capacity = 256;
    Tracer* t = tracer::Create(setup);
    tracer::SetMode(t, kTracerProfile);
    std::atomic<int> wrong{0};
    diag::Thread threads[8];
    for (diag::Thread& thread : threads)
        thread.Start([&] {
            uint16_t mine[100];
            for (int i = 0; i < 100; ++i) mine[i] = tracer::RegisterLocation(t, "f", i, "n", 0);
            for (int i = 0; i < 100; ++i) wrong += tracer::RegisterLocation(t, "f", i, "n", 0) != mine[i];
            for (int round = 0; round < 50; ++round) {
                for (uint16_t location : mine) tracer::Enter(t, location, tracer::Ticks(t));
                for (int i = 100; i-- > 0;) tracer::Exit(t, mine[i]);
            }
        });
    for (diag::Thread& thread : threads) thread.Join();
    EXPECT_EQ(wrong, 0);
    tracer::WriteProfile(t);
    const std::string text = log.Text();
    EXPECT_TRUE(text.starts_with("Trace hash table usage: 100 / 256\r\n")) << text;
    size_t lines = 0;
    for (size_t at = 0; (at = text.find("\t400\t", at)) != std::string::npos; ++at) ++lines;
    EXPECT_GE(lines, 100u); // every location 8 * 50 times
    tracer::Close(t);
}

} // namespace
