// File operations, above all that an atomic write never leaves a part.
#include "TestFiles.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

TEST(File, CreateExistDeleteReadCopy) {
    TempFolder folder;
    const std::string a = folder.File("a"), b = folder.File("b");
    EXPECT_FALSE(diag::FileExists(a));
    EXPECT_FALSE(diag::FileDelete(a));
    EXPECT_TRUE(diag::FileCreate(a));
    EXPECT_TRUE(diag::FileExists(a));
    EXPECT_EQ(Slurp(a), "");
    const std::string data(100000, '\0');
    ASSERT_TRUE(diag::FileWriteAtomic(a, data));
    EXPECT_EQ(Slurp(a), data);
    ASSERT_TRUE(diag::FileWriteAtomic(b, data + "longer"));
    EXPECT_TRUE(diag::FileCopy(a, b));
    EXPECT_EQ(Slurp(b), data);
    EXPECT_TRUE(diag::FileCreate(a)); // empties
    EXPECT_EQ(Slurp(a), "");
    EXPECT_TRUE(diag::FileDelete(a));
    EXPECT_FALSE(diag::FileExists(a));
    std::string text = "old";
    EXPECT_FALSE(diag::FileRead(a, text));
    EXPECT_EQ(text, "");
}

TEST(File, FailuresAreResults) {
    TempFolder folder;
    const std::string missing = folder.File("no/such/file"), here = folder.File("here");
    std::string text;
    EXPECT_FALSE(diag::FileCreate(missing));
    EXPECT_FALSE(diag::FileCopy(missing, here));
    EXPECT_FALSE(diag::FileExists(here));
    ASSERT_TRUE(diag::FileWriteAtomic(here, "kept"));
    EXPECT_FALSE(diag::FileCopy(here, missing));
    EXPECT_FALSE(diag::FileCopy(here, here));
    EXPECT_EQ(Slurp(here), "kept");
    EXPECT_FALSE(diag::FileExists(folder.File("")));
    EXPECT_FALSE(diag::FileRead(folder.File(""), text));
    EXPECT_EQ(diag::OutputFile::Open(missing.c_str(), true), nullptr);
}

TEST(FileWriteAtomic, KeepsTheModeAndTheLink) {
    TempFolder folder;
    const std::string file = folder.File("file"), link = folder.File("link");
    ASSERT_TRUE(diag::FileWriteAtomic(file, "1"));
    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    std::filesystem::create_symlink(file, link);
    ASSERT_TRUE(diag::FileWriteAtomic(link, "2"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(Slurp(file), "2");
    struct stat facts;
    ASSERT_EQ(stat(file.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0640u);
    EXPECT_EQ(folder.FileCount(), 2u);
}

TEST(FileWriteAtomic, FailureKeepsTheOldContentAndLeavesNothingBeside) {
    TempFolder folder;
    const std::string file = folder.File("file");
    ASSERT_TRUE(diag::FileWriteAtomic(file, "old"));
    EXPECT_FALSE(diag::FileWriteAtomic(folder.File("no/such/file"), "x"));
    std::filesystem::create_directory(folder.File("folder"));
    std::filesystem::create_directory(folder.File("folder/inside"));
    EXPECT_FALSE(diag::FileWriteAtomic(folder.File("folder"), "x"));
    EXPECT_EQ(folder.FileCount(), 2u);

    // A device that takes only a part of the data.
    auto run = [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        _exit(diag::FileWriteAtomic(file, std::string(100000, 'x')) ? 1 : 0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(Slurp(file), "old");
    EXPECT_EQ(folder.FileCount(), 2u);
}

// Versions of different lengths, each of one letter.
std::string Version(int i) {
    return std::string(static_cast<size_t>(20000 + i % 7 * 30000), static_cast<char>('a' + i % 7));
}

bool IsAVersion(const std::string& text) {
    for (int i = 0; i < 7; ++i)
        if (text == Version(i)) return true;
    return false;
}

TEST(FileWriteAtomic, AReaderSeesWholeVersionsOnly) {
    TempFolder folder;
    const std::string file = folder.File("file");
    ASSERT_TRUE(diag::FileWriteAtomic(file, Version(0)));
    std::atomic<bool> stop{false};
    std::atomic<int> bad{0}, reads{0};
    diag::Thread reader;
    reader.Start([&] {
        std::string text;
        do {
            if (!diag::FileRead(file, text) || !IsAVersion(text)) ++bad;
            ++reads;
        } while (!stop);
    });
    for (int i = 0; i < 300; ++i) ASSERT_TRUE(diag::FileWriteAtomic(file, Version(i), diag::FileSync::kNo));
    stop = true;
    reader.Join();
    EXPECT_EQ(bad, 0);
    EXPECT_GT(reads, 0);
}

TEST(FileWriteAtomic, AKilledProcessLeavesAWholeVersion) {
    TempFolder folder;
    const std::string file = folder.File("file");
    ASSERT_TRUE(diag::FileWriteAtomic(file, Version(0)));
    for (int round = 0; round < 12; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            for (int i = 0;; ++i) diag::FileWriteAtomic(file, Version(i), diag::FileSync::kNo);
        usleep(static_cast<useconds_t>(5000 + 1700 * round));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_TRUE(IsAVersion(Slurp(file)));
    }
}

} // namespace
