// Reading memory that may not be there, and threads that do not answer.
#include "ReportFiles.h"

#include "DebugTools/platform/Stack.h"
#include "platform/posix/Memory.h"

#include <csignal>
#include <cstring>
#include <sys/mman.h>

namespace {

/// Two pages, of which the second one is missing.
class LastPage {
public:
    LastPage() : memory_(mmap(nullptr, 8192, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
        munmap(End(), 4096);
    }
    ~LastPage() { munmap(memory_, 4096); }
    char* End() const { return static_cast<char*>(memory_) + 4096; }

private:
    void* memory_;
};

uint64_t AddressOf(const void* place) {
    return reinterpret_cast<uint64_t>(place);
}

TEST(ReadMemory, GivesWhatIsThereAndFailsElsewhere) {
    const LastPage page;
    std::memcpy(page.End() - 4, "abcd", 4);
    char text[8] = {};
    EXPECT_TRUE(diag::ReadMemory(AddressOf(page.End() - 4), text, 4));
    EXPECT_STREQ(text, "abcd");
    EXPECT_FALSE(diag::ReadMemory(AddressOf(page.End() - 4), text, 5));
    EXPECT_FALSE(diag::ReadMemory(0x10, text, 1));
    EXPECT_FALSE(diag::ReadMemory(UINT64_MAX - 3, text, 2));
}

TEST(ReadText, StopsAtItsEndAtTheRoomAndAtTheMemory) {
    const LastPage page;
    char text[8];
    std::memcpy(page.End() - 4, "abc", 4);
    EXPECT_TRUE(diag::ReadText(AddressOf(page.End() - 4), text, sizeof text));
    EXPECT_STREQ(text, "abc");
    EXPECT_TRUE(diag::ReadText(AddressOf(page.End() - 4), text, 3));
    EXPECT_STREQ(text, "ab");
    std::memcpy(page.End() - 4, "defg", 4);
    EXPECT_TRUE(diag::ReadText(AddressOf(page.End() - 4), text, sizeof text));
    EXPECT_STREQ(text, "defg");
    EXPECT_TRUE(diag::ReadText(AddressOf(""), text, sizeof text));
    EXPECT_STREQ(text, "");
    EXPECT_FALSE(diag::ReadText(0x10, text, sizeof text));
}

TEST(SuspendedThread, OneThatDoesNotAnswerRunsOnAndMayAnswerLate) {
    std::atomic<uint32_t> id{0};
    std::atomic<bool> answer{false}, stop{false};
    diag::Thread thread;
    ASSERT_TRUE(thread.Start([&] {
        sigset_t all, before;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before);
        id = diag::CurrentThreadId();
        while (!answer) diag::SleepMs(1);
        pthread_sigmask(SIG_SETMASK, &before, nullptr); // the signal that waits comes now
        while (!stop) diag::SleepMs(1);
    }));
    while (id == 0) diag::SleepMs(1);
    {
        const diag::SuspendedThread deaf(nullptr, id);
        EXPECT_FALSE(deaf.Held());
    }
    answer = true;
    diag::SleepMs(20);
    {
        const diag::SuspendedThread held(nullptr, id);
        EXPECT_TRUE(held.Held());
        EXPECT_GT(held.Stack().count, 2);
    }
    stop = true;
    thread.Join();
    EXPECT_FALSE(diag::SuspendedThread(nullptr, diag::CurrentThreadId()).Held());
    EXPECT_FALSE(diag::SuspendedThread(nullptr, 0x7ffffffe).Held()); // no such thread
}

} // namespace
