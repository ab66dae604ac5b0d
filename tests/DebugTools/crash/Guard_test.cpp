// Guarded operations that really crash: reports, results, and the thread's state afterwards.
#include "ReportFiles.h"

#include "DebugTools/platform/Modules.h"

#include <cfenv>
#include <gmock/gmock.h>
#include <mutex>
#include <stdexcept>
#include <xmmintrin.h>

namespace {

using namespace crash_test;

constexpr int kThreads = 4;

struct Guard : ReportTest {
    size_t Reports() const { return diag::FileExists(log.path) ? Count(log.Text(), kOpening) : 0; }
};

/// A report's text from its opening to its closing line, by number.
std::string ReportNumber(const std::string& text, size_t number) {
    size_t start = text.find(kOpening);
    for (size_t i = 0; i < number && start != std::string::npos; ++i) start = text.find(kOpening, start + 1);
    if (start == std::string::npos) return {};
    return text.substr(start, text.find(kClosing, start) - start);
}

void CheckReport(const std::string& report, const Crash& crash) {
    char code[128];
    std::snprintf(code, sizeof code, "Exception code: %08X %s\r\n", crash.code, crash.exception);
    EXPECT_TRUE(report.starts_with(kOpening + code + crash.access + "Fault address:  ")) << crash.name << report;
    const bool tellsAccess = report.find(" address ") < report.find("Fault address:");
    EXPECT_EQ(tellsAccess, !crash.access.empty()) << report;
    EXPECT_NE(report.find("\r\nMessage: in BuildShape\r\n"), std::string::npos) << crash.name;
    EXPECT_NE(report.find(kStackHead), std::string::npos) << crash.name;
    EXPECT_NE(report.find("\r\nSymbols: type "), std::string::npos) << crash.name;
}

TEST_F(Guard, EveryCrashBecomesAReportAndTheThreadWorksOn) {
    WithoutBlocks();
    size_t number = 0;
    for (const Crash& crash : Crashes()) {
        bool after = false;
        EXPECT_FALSE(Guarded("in BuildShape", [&] {
            crash.run();
            after = true;
        })) << crash.name;
        EXPECT_FALSE(after) << crash.name;
        CheckReport(ReportNumber(log.Text(), number++), crash);
        int result = 0;
        EXPECT_TRUE(Guarded("in BuildShape", [&] { result = 5; }));
        EXPECT_EQ(result, 5);
    }
    EXPECT_EQ(Count(log.Text(), kOpening), Crashes().size());
    EXPECT_FALSE(diag::InGuard());
}

TEST_F(Guard, EveryCrashOnSeveralThreadsAtOnce) {
    WithoutBlocks();
    for (const Crash& crash : Crashes()) {
        const size_t before = Reports();
        std::atomic<int> ready{0}, failed{0};
        diag::Thread threads[kThreads];
        for (diag::Thread& thread : threads)
            ASSERT_TRUE(thread.Start([&] {
                ++ready;
                while (ready < kThreads) diag::YieldThread();
                if (!Guarded("in BuildShape", crash.run)) ++failed;
            }));
        for (diag::Thread& thread : threads) thread.Join();
        EXPECT_EQ(failed, kThreads) << crash.name;
        const std::string text = log.Text();
        ASSERT_EQ(Count(text, kOpening), before + kThreads) << crash.name;
        for (size_t i = before; i < before + kThreads; ++i) CheckReport(ReportNumber(text, i), crash);
    }
}

TEST_F(Guard, ReportTellsFunctionLineAndVariables) {
    WithoutBlocks();
    EXPECT_FALSE(Guarded("in BuildMesh", [] { CrashWithVariables(5, "a label", 0.5f); }));
    const std::string text = log.Text();
    const std::string line = std::string("  crash_test::CrashWithVariables(int, char const*, float)+");
    const std::string place = "DebugTools/crash/crashes.cpp line " + std::to_string(CrashLine()) + "\r\n";
    const size_t first = text.find(line);
    ASSERT_NE(first, std::string::npos) << text;
    EXPECT_NE(text.find(place, first), std::string::npos) << text;
    // Both passes list it, and the second one its variables.
    const size_t second = text.find(line, text.find("Local variables:\r\n"));
    ASSERT_NE(second, std::string::npos) << text;
    const std::string variables = text.substr(text.find("\r\n", second) + 2);
    EXPECT_TRUE(variables.starts_with("Parameter 'count' = 5\r\nParameter 'label' = \"a label\"\r\n"
                                      "Parameter 'weight' = 0.500000\r\nLocal 'half' = 0.250000\r\n"
                                      "Local 'large' = FFFFFFFFFFFFFFFE\r\nLocal 'wide' w\xC3\xA4\r\n"
                                      "Local 'buffer' = \"inside\"\r\n\tcalls\r\npunting on symbol pack\r\n"))
        << variables;
    const std::string program = std::filesystem::canonical("/proc/self/exe").string();
    EXPECT_NE(text.find("\r\nSymbols: type SymDia, loaded from: " + program + "\r\n"), std::string::npos);
}

TEST_F(Guard, FaultAddressIsFoundInTheProgramsSections) {
    WithoutBlocks();
    EXPECT_FALSE(Guarded("in BuildMesh", WriteToAddress16));
    const std::string text = log.Text();
    const std::string program = std::filesystem::canonical("/proc/self/exe").string();
    unsigned address = 0, section = 0, inSection = 0, inModule = 0;
    char path[1024];
    ASSERT_EQ(std::sscanf(text.c_str() + text.find("Fault address:"), "Fault address:  %8X %2X:%8X %8X %1023s",
                          &address, &section, &inSection, &inModule, path),
              5);
    EXPECT_EQ(path, program);
    EXPECT_EQ(address - 0x400000, inModule);
    EXPECT_GE(address, static_cast<unsigned>(reinterpret_cast<uintptr_t>(&WriteToAddress16)));
    EXPECT_LT(address, static_cast<unsigned>(reinterpret_cast<uintptr_t>(&WriteToAddress16)) + 100);
    const diag::ModulePlace place = diag::PlaceOf(address - inSection);
    EXPECT_EQ(place.section, section);
    EXPECT_EQ(place.sectionOffset, 0u);
}

TEST_F(Guard, DeepStacksEndAfter20Frames) {
    WithoutBlocks();
    EXPECT_FALSE(Guarded("in BuildMesh", [] { CrashDeep(40); }));
    const std::string text = log.Text();
    const size_t start = text.find(kStackHead) + kStackHead.size();
    const std::string stop = "DbgHelp stack too big, aborting trace\r\n";
    const std::string frames = text.substr(start, text.find(stop) - start);
    EXPECT_EQ(Count(frames, "\r\n"), 20u) << frames;
    EXPECT_EQ(Count(text, stop), 2u);
}

TEST_F(Guard, NestedGuardsAnswerInnermostFirst) {
    WithoutBlocks();
    bool inner = true, reached = false;
    EXPECT_FALSE(Guarded("outer", [&] {
        inner = Guarded("inner", WriteToAddress16);
        reached = true;
        WriteToAddress16();
    }));
    EXPECT_FALSE(inner);
    EXPECT_TRUE(reached);
    const std::string text = log.Text();
    EXPECT_LT(text.find("Message: inner\r\n"), text.find("Message: outer\r\n"));
    EXPECT_EQ(Count(text, kOpening), 2u);
}

TEST_F(Guard, SignalMaskAndFloatControlAreRestored) {
    WithoutBlocks();
    sigset_t before, after;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    const unsigned control = _mm_getcsr();
    fenv_t environment;
    EXPECT_FALSE(Guarded("in BuildMesh", [&] {
        fesetround(FE_TOWARDZERO);
        _mm_setcsr(_mm_getcsr() | 0x8040); // flush to zero
        WriteToAddress16();
    }));
    EXPECT_EQ(_mm_getcsr(), control);
    EXPECT_EQ(fegetround(), FE_TONEAREST);
    EXPECT_EQ(fegetexcept(), 0);
    fegetenv(&environment);
    EXPECT_EQ(environment.__control_word & 0xC3F, 0x3F); // nearest, all exceptions masked
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (int signal = 1; signal < 32; ++signal)
        EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
    stack_t stack;
    sigaltstack(nullptr, &stack);
    EXPECT_FALSE(stack.ss_flags & SS_ONSTACK);
}

TEST_F(Guard, ThreadsGetTheirOwnHandlerStackBack) {
    WithoutBlocks();
    diag::Thread thread;
    stack_t own = {}, after = {};
    static char memory[65536];
    own.ss_sp = memory;
    own.ss_size = sizeof memory;
    struct AtEnd {
        stack_t* after;
        stack_t original = {};
        explicit AtEnd(stack_t* target) : after(target) { sigaltstack(nullptr, &original); }
        ~AtEnd() { sigaltstack(&original, after); } // sanitizers want theirs back
    };
    ASSERT_TRUE(thread.Start([&] {
        thread_local AtEnd atEnd(&after); // made before the guard's stack, so it goes after it
        sigaltstack(&own, nullptr);
        EXPECT_FALSE(Guarded("in dynamics", Crashes().back().run));
    }));
    thread.Join();
    EXPECT_EQ(after.ss_sp, own.ss_sp);
    EXPECT_EQ(after.ss_size, own.ss_size);
}

TEST_F(Guard, LocksOfTheLeftFramesAreGivenBack) {
    WithoutBlocks();
    diag::CriticalSection section;
    std::mutex mutex;
    std::vector<int> order;
    EXPECT_FALSE(Guarded("in BuildMesh", [&] {
        diag::ScopedLock first(section);
        diag::ScopedLock second(mutex);
        { diag::ScopedLock again(section); }
        WriteToAddress16();
    }));
    EXPECT_TRUE(mutex.try_lock());
    mutex.unlock();
    bool free = false;
    diag::Thread thread;
    ASSERT_TRUE(thread.Start([&] {
        free = section.TryEnter();
        if (free) section.Leave();
    }));
    thread.Join();
    EXPECT_TRUE(free);
}

TEST_F(Guard, CleanupsRunInnermostFirstAndOnlyThoseInside) {
    WithoutBlocks();
    static std::vector<int> order;
    order.clear();
    static int numbers[] = {1, 2, 3};
    const auto note = [](void* number) { order.push_back(*static_cast<int*>(number)); };
    diag::FaultCleanup outside(note, &numbers[0]);
    EXPECT_FALSE(Guarded("in BuildMesh", [&] {
        diag::FaultCleanup first(note, &numbers[1]);
        { diag::FaultCleanup gone(note, &numbers[0]); }
        diag::FaultCleanup second(note, &numbers[2]);
        WriteToAddress16();
    }));
    EXPECT_EQ(order, (std::vector<int>{3, 2}));
    EXPECT_EQ(diag::FaultCleanup::Innermost(), &outside);
}

// The log is locked while it reads a text; a text at a bad address must not lock everybody out.
TEST_F(Guard, ABadTextLeavesTheLogUsable) {
    WithoutBlocks();
    EXPECT_FALSE(Guarded("in BuildMesh",
                         [&] { LogWrite(log.log, reinterpret_cast<const char*>(uintptr_t{0x10}), kLogEndLine); }));
    diag::Thread thread;
    ASSERT_TRUE(thread.Start([&] { log.Line("from another thread"); }));
    thread.Join();
    EXPECT_TRUE(log.Text().ends_with("from another thread\r\n"));
}

TEST_F(Guard, ExceptionsAreLoggedAndFail) {
    WithoutBlocks();
    EXPECT_FALSE(Guarded("thrown in a guard", [] { throw std::runtime_error("out of strands"); }));
    EXPECT_NE(log.Text().find("C++ exception: out of strands\r\n"), std::string::npos);
    EXPECT_FALSE(diag::InGuard());
}

TEST_F(Guard, RepeatedFaultsAreReportedAsOftenAsAsked) {
    WithoutBlocks();
    const auto reports = [&](const char* message, diag::GuardReports often) {
        const size_t before = Reports();
        for (int i = 0; i < 3; ++i) {
            EXPECT_FALSE(diag::Guarded(message, WriteToAddress16, often, &system));
            EXPECT_FALSE(diag::Guarded(message, Crashes()[1].run, often, &system));
        }
        return Reports() - before;
    };
    EXPECT_EQ(reports("every fault", diag::GuardReports::kEvery), 6u);
    EXPECT_EQ(reports("once per place", diag::GuardReports::kOncePerPlace), 2u);
    EXPECT_EQ(reports("once", diag::GuardReports::kOnce), 1u);
}

} // namespace
