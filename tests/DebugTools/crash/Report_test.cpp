// Exact bytes of crash reports.
#include "ReportFiles.h"

#include "DebugTools/platform/Symbols.h"
#include "logger/ReportParts.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

namespace {

using namespace crash_test;
using diag::FaultRecord;

struct CrashReport : ReportTest {
    FixedTicks ticks{65432};
    const diag::CapturedStack noStack;

    FaultRecord Fault(uint32_t code) const {
        FaultRecord fault;
        fault.code = code;
        fault.address = 0x20;
        fault.stack = &noStack;
        return fault;
    }
    FaultRecord WriteTo(uint64_t address) const {
        FaultRecord fault = Fault(diag::kFaultAccessViolation);
        fault.parameterCount = 2;
        fault.parameters[0] = 1;
        fault.parameters[1] = address;
        return fault;
    }
    /// The text with the time of day cut out.
    std::string Text() const {
        std::string text = log.Text();
        const std::string title = "\r\nTime: ";
        for (size_t at = 0; (at = text.find(title, at)) != std::string::npos;) {
            at += title.size();
            int hour = -1, minute = -1, second = -1, length = 0;
            std::sscanf(text.c_str() + at, "%d:%2d:%2d%n", &hour, &minute, &second, &length);
            EXPECT_TRUE(hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second <= 60);
            text.replace(at, static_cast<size_t>(length), "now");
        }
        return text;
    }
    static std::string ThreadHead() {
        char text[64];
        std::snprintf(text, sizeof text, "Thread: %x\r\n", diag::CurrentThreadId());
        return kBar + text;
    }
    /// What follows the message in a report without stack.
    static std::string Tail() {
        return "\r\n" + ThreadHead() + kStackHead + kBar + "Local variables:\r\n" +
               "Symbols: type SymNone, loaded from: \r\n" + kClosing + "\r\n";
    }
};

TEST_F(CrashReport, WriteToAddress16) {
    WithoutBlocks();
    const FaultRecord fault = WriteTo(0x10);
    ReportCrash(&system, &fault, "in BuildMesh");
    EXPECT_EQ(Text(), "\r\n" + kOpening +
                          "Exception code: C0000005 ACCESS_VIOLATION\r\nWrite to address 00000010\r\n"
                          "Fault address:  00000020 00:00000000 00000000 \r\nTime: now,     65.432\r\n"
                          "Message: in BuildMesh\r\n" +
                          Tail());
    EXPECT_TRUE(LogGetCopyOnClose(log.log));
}

TEST_F(CrashReport, ReadsAndLongAddressesKeepAllDigits) {
    WithoutBlocks();
    FaultRecord fault = WriteTo(0x7fff12345678);
    fault.parameters[0] = 0;
    fault.address = 0xABCDEF012345;
    ReportCrash(&system, &fault, nullptr);
    EXPECT_EQ(Text(), "\r\n" + kOpening +
                          "Exception code: C0000005 ACCESS_VIOLATION\r\nRead from address 7fff12345678\r\n"
                          "Fault address:  ABCDEF012345 00:00000000 00000000 \r\nTime: now,     65.432\r\n" +
                          Tail());
}

TEST_F(CrashReport, OnlyAccessViolationsWithParametersTellTheirAccess) {
    WithoutBlocks();
    FaultRecord fault = WriteTo(0x10);
    fault.parameterCount = 1;
    ReportCrash(&system, &fault, nullptr);
    fault = WriteTo(0x10);
    fault.code = diag::kFaultInPageError;
    ReportCrash(&system, &fault, nullptr);
    EXPECT_EQ(Text().find("address 00000010"), std::string::npos);
    EXPECT_NE(Text().find("C0000006 IN_PAGE_ERROR\r\nFault address:"), std::string::npos);
}

TEST_F(CrashReport, BlocksStandInTheFirstReportOnly) {
    const FaultRecord fault = WriteTo(0x10);
    ReportCrash(&system, &fault, "first");
    const std::string first = Text();
    const size_t info = first.find(kBar + "System information:\r\n"), list = first.find(kBar + "Module list:\r\n");
    EXPECT_LT(first.find("Message: first\r\n"), info);
    EXPECT_LT(info, list);
    EXPECT_LT(list, first.find("Thread: "));
    ReportCrash(&system, &fault, "second");
    EXPECT_EQ(Text().substr(first.size()), "\r\n" + kOpening +
                                               "Exception code: C0000005 ACCESS_VIOLATION\r\n"
                                               "Write to address 00000010\r\n"
                                               "Fault address:  00000020 00:00000000 00000000 \r\n"
                                               "Time: now,     65.432\r\nMessage: second\r\n" +
                                               Tail());
}

TEST_F(CrashReport, SystemInformationWrittenBeforeIsNotRepeated) {
    WriteSystemInfo(&system);
    const FaultRecord fault = WriteTo(0x10);
    ReportCrash(&system, &fault, nullptr);
    EXPECT_EQ(Count(log.Text(), "System information:"), 1u);
    EXPECT_EQ(Count(log.Text(), "Module list:"), 1u);
}

// This program lies at a fixed low address; what it loads does not.
TEST_F(CrashReport, ModuleListNamesThisProgramAlone) {
    WriteModuleList(&system);
    WriteModuleList(&system);
    const std::string program = std::filesystem::canonical("/proc/self/exe").string();
    const diag::ModuleFileFacts facts = diag::FactsOf(program.c_str());
    EXPECT_EQ(facts.size, std::filesystem::file_size(program));
    char line[256];
    std::snprintf(line, sizeof line, "\t0x00400000\t%d\t%d-%02d-%02d %02d:%02d:%02d\t%x:%x\r\n",
                  static_cast<int>(facts.size), facts.year, facts.month, facts.day, facts.hour, facts.minute,
                  facts.second, facts.timeHigh, facts.timeLow);
    EXPECT_EQ(log.Text(),
              kBar + "Module list:\r\nname\taddress\tsize\tfile time (UTC)\tfile time (sys):\r\n" + program + line);
}

TEST_F(CrashReport, ModuleListCanBeDisabled) {
    system.moduleListEnabled = false;
    WriteModuleList(&system);
    EXPECT_FALSE(diag::FileExists(log.path));
    EXPECT_FALSE(system.moduleListWritten);
}

TEST(ModuleLine, ExactBytes) {
    TestLog log;
    const diag::ModuleFileFacts facts = {2009, 7, 4, 3, 2, 1, 0x1c9fc53, 0x0a0b0c0d, 123456};
    diag::WriteModuleLine(log.log, 0xFFFF10000000, "C:\\velmar.dlu", facts);
    EXPECT_EQ(log.Text(), "C:\\velmar.dlu\t0x10000000\t123456\t2009-07-04 03:02:01\t1c9fc53:a0b0c0d\r\n");
}

TEST(ModuleFacts, CountFrom1601) {
    TempFolder folder;
    const std::string path = folder.File("f");
    ASSERT_TRUE(diag::FileWriteAtomic(path, "12345"));
    const timespec times[2] = {{0, 0}, {1000000000, 500}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const diag::ModuleFileFacts facts = diag::FactsOf(path.c_str());
    EXPECT_EQ(facts.size, 5u);
    EXPECT_EQ(facts.year, 2001);
    EXPECT_EQ(facts.month, 9);
    EXPECT_EQ(facts.day, 9);
    EXPECT_EQ(facts.hour, 1);
    EXPECT_EQ(facts.minute, 46);
    EXPECT_EQ(facts.second, 40);
    const uint64_t units = (1000000000ull + 11644473600ull) * 10000000ull + 5;
    EXPECT_EQ(uint64_t{facts.timeHigh} << 32 | facts.timeLow, units);
    EXPECT_EQ(diag::FactsOf("/no/such/file").size, 0u);
}

TEST(ExceptionNames, ByCode) {
    EXPECT_STREQ(diag::ExceptionName(0x80000001), "GUARD_PAGE");
    EXPECT_STREQ(diag::ExceptionName(0x80000002), "DATATYPE_MISALIGNMENT");
    EXPECT_STREQ(diag::ExceptionName(0x80000003), "BREAKPOINT");
    EXPECT_STREQ(diag::ExceptionName(0x80000004), "SINGLE_STEP");
    EXPECT_STREQ(diag::ExceptionName(0xC0000005), "ACCESS_VIOLATION");
    EXPECT_STREQ(diag::ExceptionName(0xC0000006), "IN_PAGE_ERROR");
    EXPECT_STREQ(diag::ExceptionName(0xC0000008), "INVALID_HANDLE");
    EXPECT_STREQ(diag::ExceptionName(0xC000001D), "ILLEGAL_INSTRUCTION");
    EXPECT_STREQ(diag::ExceptionName(0xC0000025), "NONCONTINUABLE_EXCEPTION");
    EXPECT_STREQ(diag::ExceptionName(0xC0000026), "INVALID_DISPOSITION");
    EXPECT_STREQ(diag::ExceptionName(0xC000008C), "ARRAY_BOUNDS_EXCEEDED");
    EXPECT_STREQ(diag::ExceptionName(0xC000008D), "FLT_DENORMAL_OPERAND");
    EXPECT_STREQ(diag::ExceptionName(0xC000008E), "FLT_DIVIDE_BY_ZERO");
    EXPECT_STREQ(diag::ExceptionName(0xC000008F), "FLT_INEXACT_RESULT");
    EXPECT_STREQ(diag::ExceptionName(0xC0000090), "FLT_INVALID_OPERATION");
    EXPECT_STREQ(diag::ExceptionName(0xC0000091), "FLT_OVERFLOW");
    EXPECT_STREQ(diag::ExceptionName(0xC0000092), "FLT_STACK_CHECK");
    EXPECT_STREQ(diag::ExceptionName(0xC0000093), "FLT_UNDERFLOW");
    EXPECT_STREQ(diag::ExceptionName(0xC0000094), "INT_DIVIDE_BY_ZERO");
    EXPECT_STREQ(diag::ExceptionName(0xC0000095), "INT_OVERFLOW");
    EXPECT_STREQ(diag::ExceptionName(0xC0000096), "PRIV_INSTRUCTION");
    EXPECT_STREQ(diag::ExceptionName(0xC00000FD), "STACK_OVERFLOW");
    EXPECT_EQ(diag::ExceptionName(0xC00000FE), nullptr);
}

TEST_F(CrashReport, ProgramAndProfilerSayTheirPartInOrder) {
    WithoutBlocks();
    static Log* target = nullptr;
    target = log.log;
    static const ProfilerReports profiler = {[](uint32_t) { return 3; },
                                             [] { LogWrite(target, "stacks", kLogEndLine); },
                                             [] { LogWrite(target, "profile", kLogEndLine); }};
    system.profiler = &profiler;
    system.crashInfoCallback = [](Log* to) { LogWrite(to, "Render threads: 2\n", 0); };
    system.memoryCallback = [](uint64_t& allocated, uint64_t& peak) {
        allocated = 1000, peak = 5000000000;
        return true;
    };
    const FaultRecord fault = Fault(diag::kFaultIntDivide);
    ReportCrash(&system, &fault, "in dynamics");
    EXPECT_EQ(Text(), "\r\n" + kOpening +
                          "Exception code: C0000094 INT_DIVIDE_BY_ZERO\r\n"
                          "Fault address:  00000020 00:00000000 00000000 \r\nTime: now,     65.432\r\n"
                          "Message: in dynamics\r\nRender threads: 2\r\n"
                          "Allocated memory: 1000, allocated peak: 5000000000\r\nstacks\r\nprofile\r\n" +
                          ThreadHead() + "Thread stack: 3\r\n" + kStackHead + kBar + "Local variables:\r\n" +
                          "Symbols: type SymNone, loaded from: \r\n" + kClosing + "\r\n");
}

TEST_F(CrashReport, AProfilerFramesEveryAssertion) {
    WithoutBlocks();
    static Log* target = nullptr;
    target = log.log;
    static const ProfilerReports profiler = {[](uint32_t) { return 0; },
                                             [] { LogWrite(target, "stacks", kLogEndLine); }, [] {}};
    system.profiler = &profiler;
    system.assertCallback = [](const char*) { return true; };
    sAssert(&system, "a", 1);
    EXPECT_EQ(log.Text(),
              "\r\n" + kOpening + "a(1): sAssert failed, time:     65.432\r\nstacks\r\n" + kClosing + "\r\n");
}

TEST_F(CrashReport, TimeStampsAreOffInsideAndBackAfterwards) {
    WithoutBlocks();
    LogSetDefaultFlags(log.log, kLogInitialFlags | kLogTimeStamp);
    const FaultRecord fault = WriteTo(0x10);
    ReportCrash(&system, &fault, nullptr);
    EXPECT_EQ(Text().find("65.432 "), std::string::npos);
    EXPECT_EQ(LogGetDefaultFlags(log.log), kLogInitialFlags | kLogTimeStamp);
}

TEST_F(CrashReport, WithoutAllocatingTheLibraryForSymbolsIsLeftAlone) {
    WithoutBlocks();
    FaultRecord fault = Fault(diag::kFaultAccessViolation);
    diag::CapturedStack stack;
    diag::CaptureStack(stack);
    fault.stack = &stack;
    fault.heapMayBeLocked = true;
    ReportCrash(&system, &fault, nullptr);
    EXPECT_NE(Text().find("     65.432\r\nDbgHelp.dll not loaded or too old version, additional info not available\r\n"
                          "\r\n" +
                          ThreadHead() + kStackHead),
              std::string::npos)
        << Text();
    EXPECT_EQ(Text().find("Local variables:"), std::string::npos);
}

TEST(Variables, ExactLines) {
    using diag::FrameVariable;
    TestLog log;
    const auto write = [&](FrameVariable::Kind kind, FrameVariable::Type type, uint64_t bits, double number,
                           const char* text) {
        FrameVariable variable;
        variable.kind = kind;
        variable.type = type;
        variable.name = "v";
        variable.bits = bits;
        variable.number = number;
        std::snprintf(variable.text, sizeof variable.text, "%s", text);
        diag::WriteVariable(log.log, variable);
    };
    using Kind = FrameVariable::Kind;
    using Type = FrameVariable::Type;
    write(Kind::kParameter, Type::kInteger, 0xFFFFFFFF, 0, "");
    write(Kind::kLocal, Type::kInteger64, 0x123456789A, 0, "");
    write(Kind::kLocal, Type::kFloat, 0, 0.5, "");
    write(Kind::kLocal, Type::kDouble, 0, -2.25, "");
    write(Kind::kLocal, Type::kText8, 0, 0, "a text of more than 31 characters");
    write(Kind::kLocal, Type::kText16, 0, 0, "wide");
    write(Kind::kLocal, Type::kUnknown, 0, 0, "");
    write(Kind::kOther, Type::kInteger, 1, 0, "");
    EXPECT_EQ(log.Text(), "Parameter 'v' = FFFFFFFF\r\nLocal 'v' = 123456789A\r\nLocal 'v' = 0.500000\r\n"
                          "Local 'v' = -2.250000\r\nLocal 'v' = \"a text of more than 31 characte\"\r\n"
                          "Local 'v' wide\r\npunting on symbol v\r\n\tv\r\n");
}

// Held still by the report, listed in it, and running on afterwards.
TEST_F(CrashReport, ListedThreadsAreHeldAndWritten) {
    WithoutBlocks();
    std::atomic<uint32_t> id{0};
    std::atomic<int> turns{0};
    std::atomic<bool> stop{false};
    diag::Thread other;
    ASSERT_TRUE(other.Start([&] {
        id = diag::CurrentThreadId();
        while (!stop) ++turns, diag::SleepMs(1);
    }));
    while (turns < 3) diag::SleepMs(1);
    const uint32_t ids[] = {diag::CurrentThreadId(), id};
    {
        diag::SuspendedThread held(nullptr, id);
        ASSERT_TRUE(held.Held());
        const int seen = turns;
        diag::SleepMs(30);
        EXPECT_EQ(turns, seen);
    }
    const FaultRecord fault = Fault(diag::kFaultBreakpoint);
    ReportCrash(&system, &fault, nullptr, 2, nullptr, ids);
    const int after = turns;
    while (turns < after + 3) diag::SleepMs(1);
    stop = true;
    other.Join();
    char head[64];
    std::snprintf(head, sizeof head, "Thread: %x\r\n", id.load());
    EXPECT_EQ(Count(log.Text(), head), 1u);
    EXPECT_EQ(Count(log.Text(), kBar + "Thread: "), 2u);
    EXPECT_LT(log.Text().find("Symbols: type"), log.Text().find(head));
    system.suspendThreads = false;
    const size_t before = log.Text().size();
    ReportCrash(&system, &fault, nullptr, 2, nullptr, ids);
    EXPECT_EQ(Count(log.Text().substr(before), kBar + "Thread: "), 1u);
}

} // namespace
