// Exact bytes of assertion entries and their prompts.
#include "TestFiles.h"

#include "DebugTools/platform/System.h"

#include <gmock/gmock.h>
#include <vector>

namespace {

std::vector<std::string> prompts;
bool answer = true;
bool Prompt(const char* text) {
    prompts.push_back(text);
    return answer;
}

struct AssertTest : testing::Test {
    TestLog log;
    DiagSystem system{log.log};
    FixedTicks ticks{65432};

    AssertTest() {
        prompts.clear();
        answer = true;
        system.assertCallback = Prompt;
    }
    // Asserts after the information blocks are written are not framed.
    void WithoutBlocks() {
        system.systemInfoWritten = true;
        system.moduleListWritten = true;
    }
};

const std::string kOpening = "//=====================================================\r\n";
// This program lies high in memory, as everything it loads: no module is listed.
const std::string kModules = "========================\r\nModule list:\r\n"
                             "name\taddress\tsize\tfile time (UTC)\tfile time (sys):\r\n";
const std::string kClosing = "\\\\=====================================================\r\n";

TEST_F(AssertTest, FirstEntryIsFramedAndHoldsTheSystemInformation) {
    LogWrite(log.log, "before", kLogEndLine);
    sAssert(&system, "src/a.cpp", 12);
    const std::string text = log.Text();
    const std::string head = "before\r\n\r\n" + kOpening + "src/a.cpp(12): sAssert failed, time:     65.432\r\n" +
                             "========================\r\nSystem information:\r\n";
    EXPECT_EQ(text.substr(0, head.size()), head);
    EXPECT_TRUE(text.ends_with("\r\n" + kModules + kClosing + "\r\n")) << text;
    EXPECT_TRUE(system.moduleListWritten);
    EXPECT_TRUE(system.systemInfoWritten);
    EXPECT_FALSE(system.noPromptYet);
    EXPECT_TRUE(LogGetCopyOnClose(log.log));
    EXPECT_EQ(prompts, std::vector<std::string>{"File: src/a.cpp\nLine: 12\n\nContinue showing asserts?"});
}

TEST_F(AssertTest, FrameLinesHold53EqualsSigns) {
    sAssert(&system, "a", 1);
    EXPECT_NE(log.Text().find("\r\n//" + std::string(53, '=') + "\r\n"), std::string::npos);
    EXPECT_NE(log.Text().find("\r\n\\\\" + std::string(53, '=') + "\r\n\r\n"), std::string::npos);
}

TEST_F(AssertTest, LaterEntriesAreBareLines) {
    sAssert(&system, "a", 1);
    const size_t start = log.Text().size();
    sAssert(&system, "b", 2);
    EXPECT_EQ(log.Text().substr(start), "b(2): sAssert failed\r\n");
    EXPECT_EQ(prompts.size(), 2u);
}

TEST_F(AssertTest, SystemInformationWrittenBeforeIsNotRepeatedButTheFrameStays) {
    WriteSystemInfo(&system);
    const size_t start = log.Text().size();
    sAssert(&system, "a", 1);
    EXPECT_EQ(log.Text().substr(start),
              "\r\n" + kOpening + "a(1): sAssert failed, time:     65.432\r\n" + kModules + kClosing + "\r\n");
}

TEST_F(AssertTest, AnsweredNoIsLoggedAndEndsThePrompts) {
    WithoutBlocks();
    answer = false;
    sAssert(&system, "a", 1);
    sAssert(&system, "b", 2);
    EXPECT_EQ(log.Text(), "a(1): sAssert failed, all sAsserts disabled\r\nb(2): sAssert failed\r\n");
    EXPECT_EQ(prompts.size(), 1u);
    EXPECT_FALSE(system.assertsShown);
}

TEST_F(AssertTest, AnsweredNoInsideAFrame) {
    answer = false;
    sAssert(&system, "a", 1);
    EXPECT_NE(log.Text().find("a(1): sAssert failed, all sAsserts disabled, time:     65.432\r\n"), std::string::npos);
}

TEST_F(AssertTest, TimeStampsAreOffInsideTheFrameAndBackAfterIt) {
    LogSetDefaultFlags(log.log, kLogInitialFlags | kLogTimeStamp);
    WriteSystemInfo(&system);
    const size_t start = log.Text().size();
    sAssert(&system, "a", 1);
    // The blank line before the frame is written without a stamp too.
    EXPECT_EQ(log.Text().substr(start),
              "\r\n" + kOpening + "a(1): sAssert failed, time:     65.432\r\n" + kModules + kClosing + "\r\n");
    EXPECT_EQ(LogGetDefaultFlags(log.log), kLogInitialFlags | kLogTimeStamp);
    sAssert(&system, "b", 2);
    EXPECT_TRUE(log.Text().ends_with("\r\n    65.432 b(2): sAssert failed\r\n"));
}

TEST_F(AssertTest, GeneralFormNamesFunctionConditionAndMessage) {
    WithoutBlocks();
    sAssert(&system, "a", 1, {"Grow", "n > 0", "no strands"});
    sAssert(&system, "a", 2, {nullptr, "n > 0", nullptr});
    EXPECT_EQ(log.Text(), "a(1): sAssert failed, function: Grow, condition: n > 0, message: no strands\r\n"
                          "a(2): sAssert failed, condition: n > 0\r\n");
    ASSERT_EQ(prompts.size(), 2u);
    EXPECT_EQ(prompts[0], "File: a\nLine: 1\nFunction: Grow\nCondition: n > 0\nMessage: no strands\n\n"
                          "Continue showing asserts?");
    EXPECT_EQ(prompts[1], "File: a\nLine: 2\nCondition: n > 0\n\nContinue showing asserts?");
}

TEST_F(AssertTest, LongPromptsLeaveOutWhatDoesNotFit) {
    WithoutBlocks();
    const std::string start = "File: a\nLine: 1\n";
    // Together 1023 characters: the last line that still fits, and no room for the question.
    const std::string fits(1023 - start.size() - std::string("Condition: \n").size(), 'c');
    sAssert(&system, "a", 1, {nullptr, fits.c_str(), "m"});
    sAssert(&system, "a", 1, {nullptr, (fits + "c").c_str(), "m"});
    ASSERT_EQ(prompts.size(), 2u);
    EXPECT_EQ(prompts[0], start + "Condition: " + fits + "\n");
    EXPECT_EQ(prompts[1], start + "Message: m\n\nContinue showing asserts?");
}

TEST_F(AssertTest, QuestionIsAskedBelow994Characters) {
    WithoutBlocks();
    const std::string start = "File: a\nLine: 1\nMessage: \n";
    const std::string last(993 - start.size(), 'm');
    sAssert(&system, "a", 1, {nullptr, nullptr, last.c_str()});
    sAssert(&system, "a", 1, {nullptr, nullptr, (last + "m").c_str()});
    ASSERT_EQ(prompts.size(), 2u);
    EXPECT_EQ(prompts[0].size(), 993u + std::string("\nContinue showing asserts?").size());
    EXPECT_EQ(prompts[1].size(), 994u);
}

TEST_F(AssertTest, WithoutACallbackThePromptGoesToStandardErrorAndStays) {
    WithoutBlocks();
    system.assertCallback = nullptr;
    testing::internal::CaptureStderr();
    sAssert(&system, "a", 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Assert Failed\nFile: a\nLine: 1\n\nContinue showing asserts?\n");
    EXPECT_TRUE(system.assertsShown);
}

TEST_F(AssertTest, NullFileIsUnknown) {
    WithoutBlocks();
    sAssert(&system, nullptr, 4);
    EXPECT_EQ(log.Text(), "unknown file(4): sAssert failed\r\n");
}

TEST(AssertMacros, ReportTheirPlaceThroughTheProcessSystem) {
    DefaultLogIn own;
    GetDiagSystem()->systemInfoWritten = true;
    GetDiagSystem()->moduleListWritten = true;
    int evaluated = 0;
    SASSERT(++evaluated == 1);
    const int line = __LINE__ + 1;
    SASSERT(++evaluated == 1);
    EXPECT_EQ(evaluated, 2);
    for (int i = 0; i < 5; ++i) SASSERT_ONCE(i > 10);
    static std::atomic<bool> reported{false};
    ReportAssertOnce(reported, "include/Base/CtlHairMesh", 90);
    ReportAssertOnce(reported, "include/Base/CtlHairMesh", 90);
    const std::string here = "tests/DebugTools/Assert_test.cpp(";
    EXPECT_EQ(Slurp(own.path), here + std::to_string(line) + "): sAssert failed\r\n" + here + std::to_string(line + 2) +
                                   "): sAssert failed\r\ninclude/Base/CtlHairMesh(90): sAssert failed\r\n");
}

void FailSometimes(const char* what) {
    if (what) throw std::runtime_error(what);
    throw 5;
}

int infoCalls = 0;

TEST(ReportException, IsLoggedOncePerContext) {
    TestLog log;
    DiagSystem system(log.log);
    FixedTicks ticks(65432);
    system.systemInfoWritten = true;
    infoCalls = 0;
    system.crashInfoCallback = [](Log* target) {
        ++infoCalls;
        LogWrite(target, "Render threads: 2", kLogEndLine);
    };
    for (int i = 0; i < 3; ++i) {
        try {
            FailSometimes("out of strands");
        } catch (...) {
            EXPECT_EQ(diag::ReportException("in rendering thread", &system), i == 0);
        }
    }
    try {
        FailSometimes(nullptr);
    } catch (...) {
        EXPECT_TRUE(diag::ReportException("in BuildMesh", &system));
    }
    EXPECT_EQ(infoCalls, 2);
    EXPECT_TRUE(LogGetCopyOnClose(log.log));
    const std::string time = "Time: [0-9]+:[0-9]{2}:[0-9]{2},     65\\.432\r\n";
    const std::string frame = "={53}\r\n";
    const std::string form = "\r\n//" + frame + "C\\+\\+ exception: out of strands\r\n" + time +
                             "Message: in rendering thread\r\nRender threads: 2\r\n\\\\\\\\" + frame + "\r\n" +
                             "\r\n//" + frame + "C\\+\\+ exception of unknown type\r\n" + time +
                             "Message: in BuildMesh\r\nRender threads: 2\r\n\\\\\\\\" + frame + "\r\n";
    EXPECT_THAT(log.Text(), testing::MatchesRegex(form));
}

TEST(CrashCopyPattern, TakesTheLocalTimeInOrder) {
    TestLog log;
    DiagSystem system(log.log);
    // Both sides may see different seconds: the pattern is tried until it was filled within one.
    diag::CalendarTime before, after;
    do {
        before = diag::LocalCalendarTime();
        SetCrashCopyPattern(&system, "/100%/x%s%%/velmarCrash_%d-%02d-%02d_%02d-%02d-%02d.log%d");
        after = diag::LocalCalendarTime();
    } while (before.second != after.second);
    char expected[128];
    std::snprintf(expected, sizeof expected, "/100%%/x%%s%%%%/velmarCrash_%d-%02d-%02d_%02d-%02d-%02d.log%%d",
                  after.year, after.month, after.day, after.hour, after.minute, after.second);
    EXPECT_STREQ(LogGetCrashCopyName(log.log), expected);
}

} // namespace
