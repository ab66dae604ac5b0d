// The system information block and the facts it is made of.
#include "TestFiles.h"

#include "DebugTools/platform/System.h"
#include "logger/SystemInfoText.h"
#include "platform/WindowsNames.h"

#include <cstdlib>
#include <gmock/gmock.h>

namespace {

TEST(SystemInfo, ExactLinesFromGivenFacts) {
    TestLog log;
    diag::MachineDescription machine;
    machine.systemName = "Microsoft Windows 7";
    machine.versionMajor = 6;
    machine.versionMinor = 1;
    machine.build = 7601;
    machine.servicePack = "Service Pack 1";
    machine.processorType = 8664;
    machine.architecture = 9;
    machine.processorLevel = 0x1f;
    machine.processorRevision = 0xcf02;
    // One byte above 4 GiB counts as the next mebibyte.
    const diag::MemoryAmounts memory = {(uint64_t{4096} << 20) + 1, uint64_t{3} << 19, uint64_t{10} << 20, 0};
    diag::WriteSystemInfoText(log.log, machine, 8, memory);
    EXPECT_EQ(log.Text(), "========================\r\n"
                          "System information:\r\n"
                          "Microsoft Windows 7, Version 6.1 (build 7601), Service Pack 1\r\n"
                          "8 processor(s), type AMD_X8664 (8664).\r\n"
                          "Processor architecture, level, revision: AMD64 1f cf02 \r\n"
                          "Physical memory - total, available: 4097, 1.5\r\n"
                          "Page file memory - total, available: 10.0, 0.0\r\n");
}

TEST(SystemInfo, WrittenOncePerSystem) {
    TestLog log;
    DiagSystem system(log.log);
    WriteSystemInfo(&system);
    const std::string text = log.Text();
    WriteSystemInfo(&system);
    EXPECT_EQ(log.Text(), text);
    EXPECT_THAT(text, testing::MatchesRegex("={24}\r\nSystem information:\r\n"
                                            "Linux, Version [0-9]+\\.[0-9]+ \\(build [0-9]+\\), [^\r\n]+\r\n"
                                            "[0-9]+ processor\\(s\\), type \\w+ \\([0-9]+\\)\\.\r\n"
                                            "Processor architecture, level, revision: \\w+ [0-9a-f]+ [0-9a-f]+ \r\n"
                                            "Physical memory - total, available: [0-9]+, [0-9]+\\.[0-9]\r\n"
                                            "Page file memory - total, available: [0-9]+\\.[0-9], [0-9]+\\.[0-9]\r\n"));
}

TEST(SystemInfo, NamesByNumber) {
    EXPECT_STREQ(diag::ProcessorTypeName(103), "SHx_SH3");
    EXPECT_STREQ(diag::ProcessorTypeName(586), "INTEL_PENTIUM");
    EXPECT_STREQ(diag::ProcessorTypeName(10004), "HITACHI_SH3E");
    EXPECT_STREQ(diag::ProcessorTypeName(70001), "ARM_7TDMI");
    EXPECT_STREQ(diag::ProcessorTypeName(1), "Unknown");
    EXPECT_STREQ(diag::ArchitectureName(0), "INTEL");
    EXPECT_STREQ(diag::ArchitectureName(10), "IA32_ON_WIN64");
    EXPECT_STREQ(diag::ArchitectureName(0xFFFF), "Unknown");
}

TEST(SystemInfo, WindowsProducts) {
    const std::string windows = "Microsoft Windows";
    EXPECT_EQ(diag::WindowsName(true, 3, 51), windows + " NT");
    EXPECT_EQ(diag::WindowsName(true, 4, 0), windows + " NT");
    EXPECT_EQ(diag::WindowsName(true, 5, 0), windows + " 2000");
    EXPECT_EQ(diag::WindowsName(true, 5, 1), windows + " XP");
    EXPECT_EQ(diag::WindowsName(true, 5, 2), windows + " Server 2003");
    EXPECT_EQ(diag::WindowsName(true, 5, 3), windows + " 'Too New For Me' :)");
    EXPECT_EQ(diag::WindowsName(true, 6, 1), windows + " Vista");
    EXPECT_EQ(diag::WindowsName(true, 7, 0), windows + " 7");
    EXPECT_EQ(diag::WindowsName(true, 10, 0), windows + " Unknown");
    EXPECT_EQ(diag::WindowsName(false, 4, 0), windows + " 95");
    EXPECT_EQ(diag::WindowsName(false, 4, 10), windows + " 98");
    EXPECT_EQ(diag::WindowsName(false, 4, 90), windows + " ME");
    EXPECT_EQ(diag::WindowsName(false, 4, 5), windows + " Unknown");
}

TEST(System, MemoryAndProcessors) {
    EXPECT_GE(diag::ProcessorCount(), 1);
    const diag::MemoryAmounts memory = diag::GetMemoryAmounts();
    EXPECT_GT(memory.physicalAvailable, 0u);
    EXPECT_LE(memory.physicalAvailable, memory.physicalTotal);
    EXPECT_LE(memory.physicalTotal, memory.pageFileTotal);
    EXPECT_LE(memory.pageFileAvailable, memory.pageFileTotal);
}

TEST(System, TickCountsMilliseconds) {
    const uint32_t start = diag::TickMs();
    diag::SleepMs(30);
    const uint32_t passed = diag::TickMs() - start;
    EXPECT_GE(passed, 29u);
    EXPECT_LT(passed, 5000u);
}

TEST(System, ModulePathNamesTheFileThatHoldsAnAddress) {
    static const int here = 0;
    EXPECT_EQ(diag::ModulePath(&here), std::filesystem::canonical("/proc/self/exe").string());
    EXPECT_NE(diag::ModulePath(reinterpret_cast<const void*>(&std::fopen)).find(".so"), std::string::npos);
    int onStack = 0;
    EXPECT_EQ(diag::ModulePath(&onStack), "");
}

TEST(System, Environment) {
    std::string value = "untouched";
    EXPECT_FALSE(diag::GetEnvironment("VELMAR_TEST_NO_SUCH_VARIABLE", value));
    EXPECT_FALSE(diag::GetEnvironment(nullptr, value));
    EXPECT_EQ(value, "untouched");
    setenv("VELMAR_TEST_VARIABLE", "some text", 1);
    EXPECT_TRUE(diag::GetEnvironment("VELMAR_TEST_VARIABLE", value));
    EXPECT_EQ(value, "some text");
    unsetenv("VELMAR_TEST_VARIABLE");
}

} // namespace
