// Many threads on one log.
#include "TestFiles.h"

#include <cstdio>
#include <gmock/gmock.h>
#include <map>
#include <sstream>
#include <vector>

namespace {

constexpr int kThreads = 8;
constexpr int kLines = 1500;

void RunThreads(const std::function<void(int)>& body) {
    diag::Thread threads[kThreads];
    for (int t = 0; t < kThreads; ++t) ASSERT_TRUE(threads[t].Start([&, t] { body(t); }));
    for (diag::Thread& thread : threads) thread.Join();
}

// Every line is whole, and each thread's lines stand in the order of their writing. `form` reads thread and number
// back, `make` writes the line that must then be found.
void CheckLines(const std::string& text, const char* form, const std::function<std::string(int, int)>& make) {
    std::istringstream stream(text);
    std::string line;
    std::map<int, int> next;
    while (std::getline(stream, line)) {
        int thread = -1, number = -1;
        ASSERT_EQ(std::sscanf(line.c_str(), form, &thread, &number), 2) << line;
        ASSERT_TRUE(line.ends_with(make(thread, number))) << line;
        EXPECT_EQ(number, next[thread]++);
    }
    EXPECT_EQ(next.size(), size_t{kThreads});
    for (const auto& [thread, count] : next) EXPECT_EQ(count, kLines) << thread;
}

TEST(LogThreads, NoTornLine) {
    for (const LogFileOps* files : {LogOsFileOps(), LogStdFileOps()}) {
        TestLog log(files);
        RunThreads([&](int t) {
            for (int i = 0; i < kLines; ++i) LogPrintf(log.log, kLogEndLine, "thread %d line %d.", t, i);
        });
        LogFlush(log.log);
        const std::string end = files == LogOsFileOps() ? ".\r" : ".";
        CheckLines(log.Text(), "thread %d line %d.",
                   [&](int t, int i) { return "thread " + std::to_string(t) + " line " + std::to_string(i) + end; });
    }
}

TEST(LogThreads, HeadersOfSeveralPiecesStayWhole) {
    TestLog log;
    LogSetSizeLimit(log.log, 10000000);
    RunThreads([&](int t) {
        const std::string file = "thread" + std::to_string(t);
        for (int i = 0; i < kLines; ++i)
            LogHeader(log.log, file.c_str(), i, "text", kLogEndLine | kLogThreadId | kLogTimeStamp);
    });
    CheckLines(log.Text(), "[%*x] %*d.%*d thread%d(%d",
               [](int t, int i) { return " thread" + std::to_string(t) + "(" + std::to_string(i) + "): text\r"; });
}

// The last part of a number in a line "thread t line n", or -1 for any other line.
int NumberOfLine(std::string_view line, int& thread) {
    constexpr std::string_view head = "thread ", middle = " line ";
    if (line.size() < head.size() + middle.size() + 3 || !line.starts_with(head) || !line.ends_with("\r")) return -1;
    thread = line[head.size()] - '0';
    line.remove_prefix(head.size() + 1);
    if (!line.starts_with(middle)) return -1;
    line.remove_prefix(middle.size());
    int number = 0;
    for (const char c : line.substr(0, line.size() - 1)) {
        if (c < '0' || c > '9') return -1;
        number = number * 10 + (c - '0');
    }
    return number;
}

TEST(LogThreads, AMillionLinesAndOneLimitNotice) {
    constexpr int kEach = 1000000 / kThreads;
    constexpr uint32_t kLimit = 20000000; // about nine tenths of what is written
    TestLog log;
    LogSetSizeLimit(log.log, kLimit);
    RunThreads([&](int t) {
        for (int i = 0; i < kEach; ++i) LogPrintf(log.log, kLogEndLine, "thread %d line %d", t, i);
    });
    const std::string text = log.Text();
    const std::string notice = "\r\n\r\nLog file limit reached, logging disabled!\r\n";
    ASSERT_TRUE(text.ends_with(notice));
    EXPECT_EQ(text.find("limit reached"), text.rfind("limit reached"));
    // The line that crosses the limit is the last one.
    const size_t written = text.size() - notice.size();
    EXPECT_GE(written, kLimit);
    EXPECT_LT(written, kLimit + 30);
    int next[kThreads] = {};
    for (size_t at = 0; at < written;) {
        const size_t end = text.find('\n', at);
        int thread = -1;
        const int number = NumberOfLine(std::string_view(text).substr(at, end - at), thread);
        ASSERT_TRUE(thread >= 0 && thread < kThreads && number == next[thread]) << text.substr(at, end - at);
        ++next[thread];
        at = end + 1;
    }
}

TEST(LogThreads, ThreadsThatMeetTheDefaultLogFirstShareOne) {
    LogClose(nullptr);
    std::atomic<Log*> seen[kThreads] = {};
    RunThreads([&](int t) { seen[t] = LogDefault(); });
    for (auto& log : seen) EXPECT_EQ(log.load(), LogDefault());
    LogClose(nullptr);
}

TEST(LogThreads, FailingAssertionsOfManyThreadsStayWholeOncePromptsAreOff) {
    TestLog log;
    DiagSystem system(log.log);
    system.assertCallback = [](const char*) { return false; };
    sAssert(&system, "first", 0);
    const size_t start = log.Text().size();
    RunThreads([&](int t) {
        for (int i = 0; i < 20; ++i) sAssert(&system, ("thread" + std::to_string(t)).c_str(), i);
    });
    std::istringstream stream(log.Text().substr(start));
    std::string line;
    int count = 0;
    for (; std::getline(stream, line); ++count)
        EXPECT_THAT(line, testing::MatchesRegex("thread[0-7]\\([0-9]+\\): sAssert failed\r"));
    EXPECT_EQ(count, kThreads * 20);
}

} // namespace
