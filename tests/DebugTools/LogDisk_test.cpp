// Disks that are full or read-only: every operation of the log fails somewhere here, and nobody notices.
#include "TestFiles.h"

#include <csignal>
#include <fstream>
#include <functional>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace {

/// All that a program does with a log, with an assertion in the middle.
void UseLog(Log* log) {
    DiagSystem system(log);
    system.assertCallback = [](const char*) { return true; };
    LogWrite(log, "one", kLogEndLine);
    LogHeader(log, "file", 2, "two", kLogEndLine);
    LogFlush(log);
    LogIndent(log);
    LogPrintf(log, kLogEndLine | kLogTimeStamp | kLogThreadId, "three %d", 3);
    LogUnindent(log);
    sAssert(&system, "file", 4);
    LogUnindent(log); // below 0: an internal assertion
    LogFlush(log);
}

/// Runs `body` in a process of its own and expects it to end with 0 and without a word.
void ExpectSilent(const std::function<bool()>& body) {
    int out[2];
    ASSERT_EQ(pipe(out), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(out[1], 1);
        dup2(out[1], 2);
        close(out[0]);
        close(out[1]);
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit most = {1 << 20, 1 << 20}; // a mistake here must not fill a real disk
        setrlimit(RLIMIT_FSIZE, &most);
        std::exit(body() ? 0 : 1);
    }
    close(out[1]);
    std::string words;
    char piece[256];
    for (ssize_t got; (got = read(out[0], piece, sizeof piece)) > 0;) words.append(piece, static_cast<size_t>(got));
    close(out[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(words, "");
}

TEST(LogDisk, AFileThatCannotBeMade) {
    // Neither folder takes files from anybody, the superuser included.
    for (const char* name : {"/proc/velmar.log", "/sys/velmar.log", "/no/such/folder/velmar.log", "/"})
        for (const LogFileOps* files : {LogOsFileOps(), LogStdFileOps()})
            ExpectSilent([=] {
                Log* log = LogOpen(files);
                LogSetFileName(log, name);
                UseLog(log);
                LogClose(log);
                return !diag::FileExists(name);
            });
}

TEST(LogDisk, ADeviceThatIsAlwaysFull) {
    TempFolder folder;
    for (const LogFileOps* files : {LogOsFileOps(), LogStdFileOps()})
        ExpectSilent([&] {
            Log* log = LogOpen(files);
            LogSetFileName(log, "/dev/full");
            LogSetCrashCopyName(log, folder.File("copy").c_str());
            UseLog(log);
            LogClose(log);
            // A device is not copied: it may have no end.
            return !diag::FileExists(folder.File("copy"));
        });
}

TEST(LogDisk, LostTextDoesNotCount) {
    TempFolder folder;
    Log* log = LogOpen(LogOsFileOps());
    LogSetFileName(log, "/dev/full");
    LogSetSizeLimit(log, 20);
    for (int i = 0; i < 10; ++i) LogWrite(log, "lost and forgotten", kLogEndLine);
    const std::string path = folder.File("f");
    LogSetFileName(log, path.c_str());
    LogWrite(log, "kept", kLogEndLine);
    LogClose(log);
    EXPECT_EQ(Slurp(path), "kept\r\n");
}

// The operating system cuts the file at a size: a write ends in the middle, all later ones fail.
TEST(LogDisk, ADiskThatFillsUpInTheMiddleOfALine) {
    TempFolder folder;
    const std::string path = folder.File("f"), copy = folder.File("copy");
    ExpectSilent([&] {
        const rlimit limit = {100, 100};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
        Log* log = LogOpen(LogOsFileOps());
        LogSetFileName(log, path.c_str());
        LogSetCrashCopyName(log, copy.c_str());
        for (int i = 0; i < 9; ++i) LogWrite(log, "12345678901", kLogEndLine);
        UseLog(log);
        LogClose(log);
        return true;
    });
    std::string expected;
    for (int i = 0; i < 9; ++i) expected += "12345678901\r\n";
    EXPECT_EQ(Slurp(path), expected.substr(0, 100));
    EXPECT_EQ(Slurp(copy), expected.substr(0, 100));
}

TEST(LogDisk, ACrashCopyThatCannotBeMade) {
    TempFolder folder;
    const std::string path = folder.File("f");
    for (const char* copy : {"/proc/copy.log", "/dev/full", "/no/such/folder/copy.log", path.c_str()}) {
        ExpectSilent([&] {
            Log* log = LogOpen(LogOsFileOps());
            LogSetFileName(log, path.c_str());
            LogSetCrashCopyName(log, copy);
            LogWrite(log, "text", kLogEndLine);
            LogSetCopyOnClose(log, true);
            LogClose(log);
            return true;
        });
        EXPECT_EQ(Slurp(path), "text\r\n") << copy;
    }
}

TEST(LogDisk, ALogThatWasRemovedMeanwhile) {
    TempFolder folder;
    ExpectSilent([&] {
        Log* log = LogOpen(LogOsFileOps());
        LogSetFileName(log, folder.File("f").c_str());
        LogSetCrashCopyName(log, folder.File("copy").c_str());
        LogWrite(log, "text", kLogEndLine);
        diag::FileDelete(folder.File("f"));
        UseLog(log);
        LogClose(log);
        return !diag::FileExists(folder.File("f")) && !diag::FileExists(folder.File("copy"));
    });
}

/// Gives this process a file system of 8 KiB of its own at `disk`; who is not the superuser gets a user namespace
/// first.
bool MountSmallDisk(const std::string& disk) {
    const std::string user = "0 " + std::to_string(getuid()) + " 1", group = "0 " + std::to_string(getgid()) + " 1";
    if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
        std::ofstream("/proc/self/uid_map") << user;
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/gid_map") << group;
    }
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", disk.c_str(), "tmpfs", 0, "size=8k") == 0;
}

// The disk fills up, then it is read-only.
TEST(LogDisk, ASmallFileSystemThatFillsUpAndTurnsReadOnly) {
    TempFolder folder;
    const std::string disk = folder.File("disk");
    std::filesystem::create_directory(disk);
    const pid_t probe = fork();
    if (probe == 0) _exit(MountSmallDisk(disk) ? 0 : 1);
    int status = 0;
    waitpid(probe, &status, 0);
    // Why it may be skipped: a container may forbid mounts even in a user namespace. The tests above meet full and
    // read-only disks without any, so that only the kernel's own answers are missing then.
    if (status != 0) GTEST_SKIP() << "this process may not mount file systems, also not in a user namespace";
    ExpectSilent([&] {
        if (!MountSmallDisk(disk)) return false;
        Log* log = LogOpen(LogOsFileOps());
        const std::string path = disk + "/velmar.log";
        LogSetFileName(log, path.c_str());
        LogSetCrashCopyName(log, (disk + "/copy.log").c_str());
        for (int i = 0; i < 1000; ++i) LogWrite(log, "a line of text", kLogEndLine);
        UseLog(log);
        LogClose(log); // there is no room for the copy
        if (std::filesystem::file_size(path) != 8192) return false;
        if (mount("none", disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) return false;
        log = LogOpen(LogOsFileOps());
        LogSetFileName(log, path.c_str());
        UseLog(log);
        LogClose(log);
        return std::filesystem::file_size(path) == 8192;
    });
}

} // namespace
