// Threads, locks and events.
#include "TestFiles.h"

#include "DebugTools/platform/System.h"

#include <set>
#include <sys/wait.h>

namespace {

TEST(Thread, RunsJoinsAndStartsAgain) {
    diag::Thread thread;
    EXPECT_FALSE(thread.Joinable());
    thread.Join();
    int ran = 0;
    uint32_t id = 0;
    ASSERT_TRUE(thread.Start([&] { ++ran, id = diag::CurrentThreadId(); }));
    EXPECT_TRUE(thread.Joinable());
    thread.Join();
    EXPECT_EQ(ran, 1);
    EXPECT_NE(id, diag::CurrentThreadId());
    ASSERT_TRUE(thread.Start([&] { ++ran; }));
    ASSERT_TRUE(thread.Start([&] { ++ran; })); // joins the one before
    diag::Thread other = std::move(thread);
    EXPECT_FALSE(thread.Joinable());
    other.Join();
    EXPECT_EQ(ran, 3);
    {
        diag::Thread joinedByItsEnd;
        joinedByItsEnd.Start([&] { diag::SleepMs(20), ++ran; });
    }
    EXPECT_EQ(ran, 4);
}

TEST(CriticalSection, IsRecursiveAndExcludesOtherThreads) {
    diag::CriticalSection section;
    section.Enter();
    section.Enter();
    EXPECT_TRUE(section.TryEnter());
    bool entered = true;
    diag::Thread other;
    other.Start([&] { entered = section.TryEnter(); });
    other.Join();
    EXPECT_FALSE(entered);
    section.Leave();
    section.Leave();
    section.Leave();
    other.Start([&] {
        entered = section.TryEnter();
        section.Leave();
    });
    other.Join();
    EXPECT_TRUE(entered);
}

TEST(CriticalSection, GuardsACounter) {
    diag::CriticalSection section;
    int counter = 0;
    diag::Thread threads[4];
    for (diag::Thread& thread : threads)
        thread.Start([&] {
            for (int i = 0; i < 20000; ++i) {
                diag::ScopedLock lock(section);
                ++counter;
            }
        });
    for (diag::Thread& thread : threads) thread.Join();
    EXPECT_EQ(counter, 80000);
}

TEST(AutoResetEvent, ResetsItselfAfterOneWait) {
    diag::AutoResetEvent event;
    EXPECT_FALSE(event.WaitFor(0));
    event.Set();
    event.Set(); // setting twice counts once
    EXPECT_TRUE(event.WaitFor(0));
    EXPECT_FALSE(event.WaitFor(0));
    event.Set();
    event.Reset();
    EXPECT_FALSE(event.WaitFor(0));
    diag::AutoResetEvent set(true);
    set.Wait();
    EXPECT_FALSE(set.WaitFor(0));
}

TEST(AutoResetEvent, TimedWaitLastsItsTime) {
    diag::AutoResetEvent event;
    const uint32_t start = diag::TickMs();
    EXPECT_FALSE(event.WaitFor(1030));
    EXPECT_GE(diag::TickMs() - start, 1029u);
}

TEST(AutoResetEvent, ReleasesOneThreadPerSet) {
    diag::AutoResetEvent go, done;
    std::atomic<int> released{0};
    diag::Thread threads[4];
    for (diag::Thread& thread : threads)
        thread.Start([&] {
            go.Wait();
            ++released;
            done.Set();
        });
    for (int i = 1; i <= 4; ++i) {
        go.Set();
        done.Wait();
        diag::SleepMs(5);
        EXPECT_EQ(released, i);
    }
}

TEST(AutoResetEvent, StartAndDoneOfAWorker) {
    diag::AutoResetEvent start, done;
    int command = 0, sum = 0; // handed over by the events alone
    diag::Thread worker;
    worker.Start([&] {
        for (;;) {
            start.Wait();
            if (command < 0) return;
            sum += command;
            done.Set();
        }
    });
    for (int i = 1; i <= 1000; ++i) {
        command = i;
        start.Set();
        done.Wait();
    }
    command = -1;
    start.Set();
    worker.Join();
    EXPECT_EQ(sum, 500500);
}

TEST(NamedMutex, ExcludesByNameAndIsRecursivePerObject) {
    const std::string name = "velmar test/" + std::to_string(getpid());
    diag::NamedMutex first(name), second(name), other(name + "x");
    ASSERT_TRUE(first.Lock());
    ASSERT_TRUE(first.Lock());
    EXPECT_TRUE(other.TryLock());
    other.Unlock();
    auto tryOnThread = [&] {
        bool taken = false;
        diag::Thread thread;
        thread.Start([&] {
            taken = second.TryLock();
            if (taken) second.Unlock();
        });
        thread.Join();
        return taken;
    };
    EXPECT_FALSE(tryOnThread());
    first.Unlock();
    EXPECT_FALSE(tryOnThread());
    first.Unlock();
    EXPECT_TRUE(tryOnThread());
}

TEST(NamedMutex, GuardsACounterAcrossItsObjects) {
    const std::string name = "velmar-test-" + std::to_string(getpid());
    std::atomic<int> counter{0};
    diag::Thread threads[4];
    for (diag::Thread& thread : threads)
        thread.Start([&] {
            diag::NamedMutex mutex(name);
            for (int i = 0; i < 500; ++i) {
                ASSERT_TRUE(mutex.Lock());
                counter = counter + 1; // two steps, which only the lock holds together
                mutex.Unlock();
            }
        });
    for (diag::Thread& thread : threads) thread.Join();
    EXPECT_EQ(counter, 2000);
    EXPECT_FALSE(diag::FileExists("/tmp/" + name + "." + std::to_string(getuid()) + ".lock"));
}

TEST(NamedMutex, ADeadProcessFreesItsLock) {
    const std::string name = "velmar-test-" + std::to_string(getpid());
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        diag::NamedMutex mutex(name);
        _exit(mutex.Lock() ? 0 : 1);
    }
    int status = 1;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    diag::NamedMutex mutex(name);
    EXPECT_TRUE(mutex.TryLock());
    mutex.Unlock();
}

} // namespace
