// Making, naming, opening and closing logs.
#include "TestFiles.h"

#include <vector>

namespace {

TEST(LogTable, NewLogHasItsInitialValues) {
    Log* log = LogOpen(nullptr, nullptr, 9);
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(LogGetDefaultFlags(log), 0x13Fu);
    EXPECT_EQ(LogGetFirstWord(log), -6);
    EXPECT_EQ(LogGetSecondWord(log), 16);
    EXPECT_EQ(LogGetMode(log), 9u);
    EXPECT_EQ(LogGetIndent(log), 0);
    EXPECT_FALSE(LogGetCopyOnClose(log));
    EXPECT_STREQ(LogGetFileName(log), "Log.txt");
    EXPECT_STREQ(LogGetCrashCopyName(log), "LogCrash.txt");
    LogSetFirstWord(log, 3);
    LogSetSecondWord(log, -4);
    EXPECT_EQ(LogGetFirstWord(log), 3);
    EXPECT_EQ(LogGetSecondWord(log), -4);
    LogClose(log);
}

TEST(LogTable, DefaultLogIsOneWithMode3) {
    DefaultLogIn own;
    EXPECT_EQ(LogDefault(), LogDefault());
    EXPECT_EQ(LogGetMode(nullptr), 3u);
    LogWrite(nullptr, "to the default log", kLogEndLine);
    EXPECT_EQ(Slurp(own.path), "to the default log\r\n");
}

TEST(LogTable, FifthLogIsAnInternalAssertion) {
    DefaultLogIn own;
    LogDefault();
    std::vector<Log*> logs;
    for (int i = 0; i < 3; ++i) logs.push_back(LogOpen());
    for (Log* log : logs) ASSERT_NE(log, nullptr);
    const int before = LogInternalAssertCount();
    FixedTicks ticks(1);
    EXPECT_EQ(LogOpen(), nullptr);
    EXPECT_EQ(LogInternalAssertCount(), before + 1);
    EXPECT_TRUE(LogGetCopyOnClose(nullptr));
    const std::string text = Slurp(own.path);
    EXPECT_TRUE(text.starts_with("[")) << text;
    EXPECT_NE(text.find("]      0.001 DebugTools/src/logger/LogTable.cpp("), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("): assert failed\r\n")) << text;
    // A slot given back serves again.
    LogClose(logs.back());
    logs.back() = LogOpen();
    EXPECT_NE(logs.back(), nullptr);
    for (Log* log : logs) LogClose(log);
}

TEST(LogTable, FullTableWithoutADefaultLogOnlyCounts) {
    LogClose(nullptr);
    std::vector<Log*> logs;
    for (int i = 0; i < 4; ++i) logs.push_back(LogOpen());
    const int before = LogInternalAssertCount();
    EXPECT_EQ(LogOpen(), nullptr);
    LogWrite(nullptr, "nowhere", kLogEndLine);
    EXPECT_EQ(LogInternalAssertCount(), before + 2);
    for (Log* log : logs) LogClose(log);
}

TEST(LogTable, UnindentBelowZeroIsAnInternalAssertion) {
    TestLog log;
    const int before = LogInternalAssertCount();
    FixedTicks ticks(65432);
    LogIndent(log.log);
    LogUnindent(log.log);
    EXPECT_EQ(LogInternalAssertCount(), before);
    LogUnindent(log.log);
    EXPECT_EQ(LogInternalAssertCount(), before + 1);
    EXPECT_EQ(LogGetIndent(log.log), 0);
    EXPECT_TRUE(LogGetCopyOnClose(log.log));
    EXPECT_TRUE(log.Text().ends_with("): assert failed\r\n"));
    EXPECT_NE(log.Text().find("]     65.432 DebugTools/src/logger/LogAccess.cpp("), std::string::npos);
}

TEST(LogFile, FirstWriteTruncatesAndAnotherNameDoesAgain) {
    TestLog log;
    const std::string other = log.folder.File("other.log");
    ASSERT_TRUE(diag::FileWriteAtomic(log.path, "old"));
    ASSERT_TRUE(diag::FileWriteAtomic(other, "old"));
    EXPECT_EQ(log.Text(), "old");
    LogWrite(log.log, "a", 0);
    EXPECT_EQ(log.Text(), "a");
    LogSetFileName(log.log, log.path.c_str()); // the same name changes nothing
    LogWrite(log.log, "b", 0);
    EXPECT_EQ(log.Text(), "ab");
    LogSetFileName(log.log, other.c_str());
    LogWrite(log.log, "c", 0);
    EXPECT_EQ(Slurp(other), "c");
    EXPECT_EQ(log.Text(), "ab");
    LogSetFileName(log.log, log.path.c_str());
    LogWrite(log.log, "d", 0);
    EXPECT_EQ(log.Text(), "d");
}

TEST(LogFile, OperationSetsAppendWhenNotTruncating) {
    TempFolder folder;
    const std::string path = folder.File("f");
    for (const LogFileOps* files : {LogOsFileOps(), LogStdFileOps()}) {
        ASSERT_TRUE(diag::FileWriteAtomic(path, "old "));
        void* file = files->open(path.c_str(), false);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(files->write(file, "new"), 3u);
        files->close(file);
        EXPECT_EQ(Slurp(path), "old new");
    }
    EXPECT_EQ(LogStdFileOps()->copy, nullptr);
}

TEST(LogFile, ABigTextIsConvertedPieceByPiece) {
    TempFolder folder;
    const std::string path = folder.File("f");
    std::string text, expected;
    for (int i = 0; i < 5000; ++i) {
        text += i % 3 ? "\n" : "\r\nxy";
        expected += i % 3 ? "\r\n" : "\r\nxy";
    }
    void* file = LogOsFileOps()->open(path.c_str(), true);
    EXPECT_EQ(LogOsFileOps()->write(file, text.c_str()), expected.size());
    LogOsFileOps()->close(file);
    EXPECT_EQ(Slurp(path), expected);
}

TEST(LogFile, NamesAreCutAt511CharactersAndNullRestoresThem) {
    Log* log = LogOpen();
    const std::string name(600, 'n');
    LogSetFileName(log, name.c_str());
    LogSetCrashCopyName(log, name.c_str());
    EXPECT_EQ(LogGetFileName(log), name.substr(0, 511));
    EXPECT_EQ(LogGetCrashCopyName(log), name.substr(0, 511));
    LogSetFileName(log, nullptr);
    LogSetCrashCopyName(log, nullptr);
    EXPECT_STREQ(LogGetFileName(log), "Log.txt");
    EXPECT_STREQ(LogGetCrashCopyName(log), "LogCrash.txt");
    LogClose(log);
}

TEST(LogFile, UnopenableFileSwallowsWrites) {
    TestLog log;
    LogSetFileName(log.log, log.folder.File("missing/dir/x.log").c_str());
    LogSetSizeLimit(log.log, 5);
    log.Line("lost, and not counted");
    LogFlush(log.log);
    LogSetFileName(log.log, log.path.c_str());
    LogWrite(log.log, "kept", 0);
    EXPECT_EQ(log.Text(), "kept");
}

TEST(LogClose, CopiesOnlyWhenAsked) {
    TestLog log;
    log.Line("text");
    log.Close();
    EXPECT_FALSE(diag::FileExists(log.crashPath));

    TestLog second;
    second.Line("text");
    ASSERT_TRUE(diag::FileWriteAtomic(second.crashPath, "an older and longer copy"));
    LogSetCopyOnClose(second.log, true);
    second.Close();
    EXPECT_EQ(Slurp(second.crashPath), "text\r\n");
}

TEST(LogClose, StandardSetCannotCopy) {
    TestLog log(LogStdFileOps());
    log.Line("text");
    LogSetCopyOnClose(log.log, true);
    log.Close();
    EXPECT_EQ(log.Text(), "text\n");
    EXPECT_FALSE(diag::FileExists(log.crashPath));
}

TEST(LogClose, NeverCopiesAFileOfAnEarlierProcess) {
    TestLog log;
    ASSERT_TRUE(diag::FileWriteAtomic(log.path, "from another run"));
    LogSetCopyOnClose(log.log, true);
    log.Close();
    EXPECT_FALSE(diag::FileExists(log.crashPath));
}

int held = 0, taken = 0, destroyed = 0;

TEST(LogLock, EveryWriteTakesTheLockOfTheSetAndCloseReleasesIt) {
    held = taken = destroyed = 0;
    const LogLockOps locks = {[]() -> void* { return &held; }, [](void*) { ++destroyed; },
                              [](void* lock) { ++*static_cast<int*>(lock), ++taken; },
                              [](void* lock) { --*static_cast<int*>(lock); }};
    TempFolder folder;
    Log* log = LogOpen(LogOsFileOps(), &locks);
    LogSetFileName(log, folder.File("f").c_str());
    const int before = taken;
    LogWrite(log, "x", 0);
    EXPECT_EQ(taken, before + 1);
    LogWrite(log, "y", 0);
    EXPECT_EQ(taken, before + 2);
    EXPECT_EQ(held, 0);
    EXPECT_EQ(destroyed, 0);
    LogClose(log);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(held, 0);
}

TEST(LogTicks, CountMillisecondsSinceTheFirstLog) {
    LogClose(LogOpen());
    const uint32_t first = LogTicks();
    diag::SleepMs(30);
    const uint32_t passed = LogTicks() - first;
    EXPECT_GE(passed, 29u);
    EXPECT_LT(passed, 5000u);
}

// The default log closes itself when the process ends, after everything that was made after it.
TEST(LogProcessEnd, WritesTheCrashCopyAfterAnAssertionOnly) {
    TempFolder folder;
    auto run = [&](bool fail) {
        LogSetFileName(nullptr, folder.File("p.log").c_str());
        LogSetCrashCopyName(nullptr, folder.File(fail ? "crash" : "none").c_str());
        LogSetCopyOnClose(nullptr, false);
        static struct Late {
            ~Late() { LogWrite(nullptr, "last words", kLogEndLine); }
        } late;
        GetDiagSystem()->assertCallback = [](const char*) { return true; };
        if (fail) sAssert(nullptr, "file", 3);
        LogWrite(nullptr, "end", kLogEndLine);
        std::exit(0);
    };
    EXPECT_EXIT(run(true), testing::ExitedWithCode(0), "");
    const std::string text = Slurp(folder.File("p.log"));
    EXPECT_TRUE(text.ends_with("end\r\nlast words\r\n")) << text;
    EXPECT_EQ(Slurp(folder.File("crash")), text);
    EXPECT_EXIT(run(false), testing::ExitedWithCode(0), "");
    EXPECT_EQ(Slurp(folder.File("p.log")), "end\r\nlast words\r\n");
    EXPECT_FALSE(diag::FileExists(folder.File("none")));
}

} // namespace
