// The progress indicators against dialogs in memory, filter windows and callbacks.

#include "Base/ProgressInd.h"

#include <gtest/gtest.h>

#include <functional>
#include <unistd.h>

#include <vector>

#include "DebugTools/Assert.h"
#include "HairDLL/StringTable.h"
#include "core/core.h"

namespace {

uint32_t now = 0;
uint32_t Clock() {
    return now;
}

class Standalone : public testing::Test {
protected:
    Standalone() : scope_(core) {
        core.SetDialogs(&dialogs);
        StandaloneProgInd::ForgetPosition();
        now = 5000;
    }
    std::string Text(int control) { return dialogs.At(0).GetText(control); }
    host::MemoryDialog::Control Get(int control) { return dialogs.At(0).Get(control); }
    static void WaitFor(const std::function<bool()>& there) {
        for (int i = 0; i < 1000 && !there(); ++i) diag::SleepMs(5);
        EXPECT_TRUE(there());
    }

    host::MemoryDialogs dialogs;
    host::Core core;

private:
    host::Core::Scope scope_;
};

void ExpectBar(const host::MemoryDialog::Control& bar, double value, double high) {
    EXPECT_EQ(bar.value, value);
    EXPECT_EQ(bar.low, 0);
    EXPECT_EQ(bar.high, high);
}

TEST_F(Standalone, TemplatesByKind) {
    for (const auto& [kind, id] : {std::pair(2, 1058), {3, 161}, {4, 1059}}) {
        StandaloneProgInd progress(kind, false, Clock);
        EXPECT_TRUE(progress.CreateWindow());
        EXPECT_EQ(dialogs.At(dialogs.Count() - 1).TemplateId(), id);
    }
}

TEST_F(Standalone, TheWindowBegins) {
    StandaloneProgInd progress(4, false, Clock);
    progress.SetTitle("Calculating");
    ASSERT_TRUE(progress.CreateWindow());
    EXPECT_EQ(dialogs.At(0).Title(), "Calculating");
    EXPECT_TRUE(dialogs.At(0).Centered());
    EXPECT_EQ(Text(1237), "00:00:00");
    EXPECT_EQ(Text(1238), "00:00:00");
    progress.SetTitle("Reducing");
    EXPECT_EQ(dialogs.At(0).Title(), "Reducing");
    progress.DestroyWindow();
    EXPECT_FALSE(dialogs.At(0).IsOpen());
}

TEST_F(Standalone, TasksAndObjects) {
    StandaloneProgInd progress(4, false, Clock);
    progress.CreateWindow();
    progress.SetTask("Dynamics", 3);
    EXPECT_EQ(Text(1043), "Dynamics");
    EXPECT_EQ(Text(1046), "");
    ExpectBar(Get(1047), 0, 2);
    ExpectBar(Get(1045), 0, 1000);
    progress.SetObject("ball", 10);
    EXPECT_EQ(Text(1046), "ball");
    ExpectBar(Get(1047), 0, 2);
    progress.SetObject("cube", 10);
    EXPECT_EQ(Text(1046), "cube");
    ExpectBar(Get(1047), 1, 2);
    progress.SetTaskProgress(2);
    ExpectBar(Get(1047), 2, 2);
    progress.SetTask("Keys", 1);
    EXPECT_EQ(Text(1043), "Keys");
    EXPECT_EQ(Text(1046), "");
    ExpectBar(Get(1047), 0, 0);
}

TEST_F(Standalone, Idle) {
    StandaloneProgInd progress(3, false, Clock);
    progress.CreateWindow();
    progress.SetIdle();
    EXPECT_EQ(Text(1043), "Idle");
    ExpectBar(Get(1047), 0, -1);
    // Indicators that know no string table say the same.
    struct Recorder : IProgressIndicator {
        std::string task;
        int count = -1;
        void SetTask(const std::string& name, int objectCount) override { task = name, count = objectCount; }
        void SetTaskProgress(int) override {}
        void SetObject(const std::string&, int) override {}
        void SetObjectProgress(int) override {}
    } plain;
    plain.SetIdle();
    EXPECT_EQ(plain.task, FindString(40347));
    EXPECT_EQ(plain.count, 0);
    EXPECT_FALSE(plain.Start());
    EXPECT_FALSE(plain.End());
    EXPECT_FALSE(plain.IsCancelled());
}

TEST_F(Standalone, OnlyTheObjectInTheSmallWindow) {
    StandaloneProgInd progress(2, false, Clock);
    progress.CreateWindow();
    progress.SetTask("Dynamics", 3);
    progress.SetObject("ball", 10);
    progress.SetTaskProgress(1);
    EXPECT_EQ(Get(1043).updates, 0);
    EXPECT_EQ(Get(1047).updates, 0);
    EXPECT_EQ(Text(1046), "ball");
}

TEST_F(Standalone, TheBarShowsThousandths) {
    StandaloneProgInd progress(4, false, Clock);
    progress.CreateWindow();
    progress.SetTask("t", 1);
    progress.SetObject("o", 500);
    now += 1500;
    progress.SetObjectProgress(250);
    ExpectBar(Get(1045), 500, 1000);
    now += 1500;
    progress.SetObjectProgress(499);
    ExpectBar(Get(1045), 998, 1000);
    progress.SetObject("nothing to do", 0);
    progress.SetObjectProgress(5);
    ExpectBar(Get(1045), 0, 1000);
    progress.SetObject("many", 2000000000);
    progress.SetObjectProgress(1500000000);
    ExpectBar(Get(1045), 750, 1000);
}

TEST_F(Standalone, OneUpdateASecond) {
    StandaloneProgInd progress(4, false, Clock);
    progress.CreateWindow();
    progress.SetTask("t", 1);
    progress.SetObject("o", 100);
    const int before = Get(1045).updates;
    progress.SetObjectProgress(10);
    now += 999;
    progress.SetObjectProgress(20);
    EXPECT_EQ(Get(1045).updates, before + 1);
    now += 1; // a second is not enough, it must be more
    progress.SetObjectProgress(30);
    EXPECT_EQ(Get(1045).updates, before + 1);
    now += 1;
    progress.SetObjectProgress(40);
    EXPECT_EQ(Get(1045).updates, before + 2);
    ExpectBar(Get(1045), 400, 1000);
}

TEST_F(Standalone, Times) {
    StandaloneProgInd progress(4, false, Clock);
    progress.CreateWindow();
    progress.SetTask("t", 2);
    progress.SetObject("first", 100);
    now += 1900;
    progress.SetObjectProgress(50);
    EXPECT_EQ(Text(1237), "0:00:01");
    EXPECT_EQ(Text(1238), "0:00:00"); // nothing is said in the first two seconds
    now += 2000;
    progress.SetObjectProgress(60); // 10 steps in 2 s, 40 left
    EXPECT_EQ(Text(1237), "0:00:03");
    EXPECT_EQ(Text(1238), "0:00:08");
    now += 2000;
    progress.SetObjectProgress(60); // no step forward
    EXPECT_EQ(Text(1238), "0:00:00");
    now += 1100;
    progress.SetObject("second", 7200);
    now += 1000;
    progress.SetObjectProgress(1); // from the object's start: a step a second
    EXPECT_EQ(Text(1237), "0:00:08");
    EXPECT_EQ(Text(1238), "1:59:59");
    progress.SetTask("another", 1); // its first object starts the clock anew
    progress.SetObject("third", 10);
    now += 1000;
    progress.SetObjectProgress(5);
    EXPECT_EQ(Text(1237), "0:00:01");
}

TEST_F(Standalone, AWindowThatOpensLateShowsTheTask) {
    StandaloneProgInd progress(4, false, Clock);
    progress.SetTask("Dynamics", 3);
    progress.SetObject("ball", 10);
    progress.CreateWindow();
    EXPECT_EQ(Text(1043), "Dynamics");
    EXPECT_EQ(Text(1046), "ball");
}

TEST_F(Standalone, RunsOnAThreadOfItsOwn) {
    StandaloneProgInd progress(4, true, Clock);
    EXPECT_FALSE(progress.End()); // nothing to stop
    ASSERT_TRUE(progress.Start());
    WaitFor([&] { return dialogs.Count() == 1; });
    WaitFor([&] { return !dialogs.MainWindowEnabled(); });
    EXPECT_FALSE(progress.IsCancelled());
    dialogs.At(0).Click(77);
    dialogs.At(0).Click(IDCANCEL);
    WaitFor([&] { return progress.IsCancelled(); });
    EXPECT_TRUE(progress.End());
    EXPECT_FALSE(dialogs.At(0).IsOpen());
    EXPECT_TRUE(dialogs.MainWindowEnabled());
    ASSERT_TRUE(progress.Start());
    EXPECT_FALSE(progress.IsCancelled());
    WaitFor([&] { return dialogs.Count() == 2; });
} // the destructor ends it

TEST_F(Standalone, TheNextWindowStandsWhereTheLastOneWas) {
    StandaloneProgInd progress(4, false, Clock);
    progress.CreateWindow();
    dialogs.At(0).Drag({30, 40});
    dialogs.At(0).Drag({-1, -1}, WindowState::kMinimised);
    dialogs.At(0).Drag({0, 0}, WindowState::kMaximised);
    dialogs.At(0).DispatchMessages();
    progress.DestroyWindow();
    progress.CreateWindow();
    EXPECT_FALSE(dialogs.At(1).Centered());
    EXPECT_EQ(dialogs.At(1).Position(), (WindowPosition{30, 40}));
}

TEST_F(Standalone, WithoutDialogsNothingIsShown) {
    StandaloneProgInd progress(4, true, Clock);
    core.SetQuietMode(true);
    EXPECT_FALSE(progress.CreateWindow());
    core.SetQuietMode(false);
    core.SetDialogs(nullptr);
    EXPECT_FALSE(progress.CreateWindow());
    EXPECT_TRUE(progress.Start());
    progress.SetObject("o", 10);
    progress.SetObjectProgress(5);
    EXPECT_TRUE(progress.End());
    EXPECT_TRUE(dialogs.MainWindowEnabled());
}

TEST_F(Standalone, AnUnknownKindAssertsOnceAndOpensNothing) {
    // The report is made once per process, so the check runs in a process of its own.
    auto run = [] {
        static int asserts = 0;
        GetDiagSystem()->assertCallback = [](const char*) { return ++asserts > 0; };
        LogSetFileName(nullptr, "/dev/null");
        StandaloneProgInd wrong(5, false, Clock), other(1, false, Clock);
        const bool opened = wrong.CreateWindow() || other.CreateWindow();
        _exit(opened ? 100 : asserts);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(1), "");
}

class Filter : public IFilterWindow {
public:
    void SendMessage(unsigned message, intptr_t first, intptr_t second) override {
        switch (message) {
        case 1058:
            texts.push_back(reinterpret_cast<const char*>(second));
            break;
        case 1056:
            steps.emplace_back(first, second);
            break;
        case 1057:
            *reinterpret_cast<int*>(second) = cancel ? 1 : 0;
            break;
        default:
            FAIL() << message;
        }
    }
    std::vector<std::string> texts;
    std::vector<std::pair<intptr_t, intptr_t>> steps;
    bool cancel = false;
};

TEST(FilterProgress, SendsTheFiltersMessages) {
    Filter window;
    FilterProgInd progress(window);
    progress.SetTask("Hair G-Buffer", 2);
    progress.SetObject("ball", 10000);
    progress.SetObjectProgress(300);
    EXPECT_EQ(window.texts, (std::vector<std::string>{"Hair G-Buffer", "Hair G-Buffer: ball"}));
    EXPECT_EQ(window.steps, (std::vector<std::pair<intptr_t, intptr_t>>{{0, 1000}, {300, 1000}}));
    EXPECT_FALSE(progress.IsCancelled());
    window.cancel = true;
    EXPECT_TRUE(progress.IsCancelled());
    EXPECT_FALSE(progress.Start());
    EXPECT_FALSE(progress.End());
}

class Callback : public RendProgressCallback {
public:
    void SetTitle(const char* text) override { title = text; }
    int Progress(int done, int total) override {
        last = {done, total};
        return goOn;
    }
    bool Cancelled() override { return cancelled; }
    std::string title;
    std::pair<int, int> last;
    int goOn = 1;
    bool cancelled = false;
};

TEST(EffectProgress, CallsTheCallback) {
    Callback callback;
    EffectProgInd progress(&callback);
    progress.SetTask("task", 1);
    progress.SetObject("Camera View", 200);
    progress.SetObjectProgress(50);
    EXPECT_EQ(callback.title, "Camera View");
    EXPECT_EQ(callback.last, std::pair(50, 200));
    EXPECT_FALSE(progress.IsCancelled());
    callback.cancelled = true;
    EXPECT_TRUE(progress.IsCancelled());
    callback.cancelled = false;
    callback.goOn = 0;
    progress.SetObjectProgress(60);
    EXPECT_TRUE(progress.IsCancelled());
}

TEST(EffectProgress, WithoutACallbackNobodyIsTold) {
    EffectProgInd progress(nullptr);
    progress.SetObject("o", 1);
    progress.SetObjectProgress(1);
    EXPECT_FALSE(progress.IsCancelled());
}

} // namespace
