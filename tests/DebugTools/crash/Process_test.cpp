// What crashes do to a whole process: the end's crash copy, earlier handlers, faults outside of guards.
#include "ReportFiles.h"

#include <cstdlib>
#include <cstring>

namespace {

using namespace crash_test;

struct CrashProcess : testing::Test {
    TempFolder folder;
    std::string path = folder.File("velmar.log"), copy = folder.File("velmarCrash.log");

    /// As the library's attach does, in the child.
    void Attach() const {
        LogSetFileName(nullptr, path.c_str());
        LogSetCrashCopyName(nullptr, copy.c_str());
        LogSetSizeLimit(nullptr, 100000000);
        LogWrite(nullptr, "velmar log begin", kLogEndLine);
        WriteSystemInfo(nullptr);
    }
};

/// An operation as the program has them: empty when it fails.
std::vector<int> Operation(const Crash* crash) {
    std::vector<int> strands;
    const bool good = diag::Guarded("in BuildMesh", [&] {
        strands.assign(10, 1);
        if (crash) crash->run();
    });
    return good ? strands : std::vector<int>{};
}

TEST_F(CrashProcess, LivesThroughEveryCrashAndLeavesACopyOfItsLog) {
    const int status = InChild([&] {
        Attach();
        for (const Crash& crash : Crashes())
            if (!Operation(&crash).empty()) return 1;
        std::atomic<int> empty{0};
        diag::Thread threads[4];
        for (diag::Thread& thread : threads)
            thread.Start([&] {
                for (const Crash& crash : Crashes())
                    if (Operation(&crash).empty()) ++empty;
            });
        for (diag::Thread& thread : threads) thread.Join();
        if (empty != 4 * static_cast<int>(Crashes().size())) return 2;
        if (Operation(nullptr).size() != 10) return 3;
        LogWrite(nullptr, "velmar log end", kLogEndLine);
        return 0;
    });
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 0);
    const std::string text = Slurp(path);
    EXPECT_TRUE(text.starts_with("velmar log begin\r\n"));
    EXPECT_TRUE(text.ends_with("velmar log end\r\n"));
    EXPECT_EQ(Slurp(copy), text);
    EXPECT_EQ(Count(text, kOpening), 5 * Crashes().size());
    EXPECT_EQ(Count(text, kClosing), 5 * Crashes().size());
    EXPECT_EQ(Count(text, "System information:"), 1u);
    EXPECT_EQ(Count(text, "Module list:"), 1u);
    for (const Crash& crash : Crashes()) {
        char code[128];
        std::snprintf(code, sizeof code, "Exception code: %08X %s\r\n", crash.code, crash.exception);
        size_t same = 0;
        for (const Crash& other : Crashes()) same += other.code == crash.code;
        EXPECT_EQ(Count(text, code), 5 * same) << crash.name;
    }
}

TEST_F(CrashProcess, WithoutACrashThereIsNoCopy) {
    const int status = InChild([&] {
        Attach();
        return Operation(nullptr).size() == 10 ? 0 : 1;
    });
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(diag::FileExists(copy));
}

TEST_F(CrashProcess, FaultsOutsideOfGuardsEndItAsBefore) {
    const int status = InChild([&] {
        Attach();
        Operation(nullptr);
        WriteToAddress16();
        return 0;
    });
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), SIGSEGV);
    EXPECT_EQ(Count(Slurp(path), kOpening), 0u);
}

TEST_F(CrashProcess, TheUnhandledFilterReportsThemFirst) {
    const int status = InChild([&] {
        Attach();
        InstallUnhandledFilter(nullptr, true);
        WriteToAddress16();
        return 0;
    });
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), SIGSEGV);
    const std::string text = Slurp(path);
    EXPECT_EQ(Count(text, kOpening), 1u);
    EXPECT_NE(text.find("Write to address 00000010\r\n"), std::string::npos);
    EXPECT_NE(text.find("\r\nMessage: Unhandled exception\r\n"), std::string::npos);
}

TEST_F(CrashProcess, TheUnhandledFilterCanBeTakenAway) {
    const int status = InChild([&] {
        Attach();
        InstallUnhandledFilter(nullptr, true);
        InstallUnhandledFilter(nullptr, false);
        WriteToAddress16();
        return 0;
    });
    EXPECT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(Count(Slurp(path), kOpening), 0u);
}

volatile int handled = 0;

TEST_F(CrashProcess, AnEarlierHandlerGetsWhatNoGuardTakes) {
    // In a new process: this one may have its handlers in place already.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto body = [&] {
        Attach();
        struct sigaction action = {};
        action.sa_flags = SA_SIGINFO;
        action.sa_sigaction = [](int signal, siginfo_t* info, void*) {
            handled = handled + 1;
            const bool fault = signal == SIGSEGV && info->si_addr == reinterpret_cast<void*>(uintptr_t{0x10});
            if (fault) _exit(Count(Slurp(LogGetFileName(nullptr)), kOpening) == 1 ? 40 + handled : 4);
        };
        sigaction(SIGSEGV, &action, nullptr);
        const Crash& first = Crashes().front();
        if (!Operation(&first).empty() || handled != 0) _exit(1);
        // One that a program sends is no fault, guard or not.
        if (!diag::Guarded("in BuildMesh", [] { raise(SIGSEGV); }) || handled != 1) _exit(2);
        WriteToAddress16();
        _exit(3);
    };
    EXPECT_EXIT(body(), testing::ExitedWithCode(42), "");
}

TEST_F(CrashProcess, ASentSignalEndsItWhenNobodyElseWantsIt) {
    const int status = InChild([&] {
        Operation(nullptr);
        diag::Guarded("in BuildMesh", [] { raise(SIGFPE); });
        return 0;
    });
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), SIGFPE);
}

// A guard on a thread that is not the first one, in a full stack, with the report's own needs.
TEST_F(CrashProcess, AFaultInsideTheReportGoesToTheEarlierHandler) {
    const int status = InChild([&] {
        Attach();
        GetDiagSystem()->crashInfoCallback = [](Log*) { WriteToAddress16(); };
        const Crash& first = Crashes().front();
        Operation(&first);
        return 0;
    });
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), SIGSEGV);
    // What was known by then is in the file.
    EXPECT_NE(Slurp(path).find("Message: in BuildMesh\r\n"), std::string::npos);
}

} // namespace
