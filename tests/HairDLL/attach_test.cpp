// Attaching: directories, settings, the log's beginning and end. Messages and texts.

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "DebugTools/Assert.h"
#include "DebugTools/MemTracker.h"
#include "HRendAtm/HairRender.h"
#include "HairDLL/Attach.h"
#include "HairDLL/LibGlobals.h"
#include "HairDLL/LibState.h"
#include "core/core.h"

namespace fs = std::filesystem;

namespace {

std::string ReadAll(const fs::path& file) {
    std::ifstream in(file);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

/// Sets an environment variable for a scope.
class Environment {
public:
    Environment(const char* name, const std::string& value) : name_(name) {
        if (const char* before = std::getenv(name)) before_ = before, had_ = true;
        setenv(name, value.c_str(), 1);
    }
    ~Environment() {
        if (had_)
            setenv(name_, before_.c_str(), 1);
        else
            unsetenv(name_);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    const char* name_;
    std::string before_;
    bool had_ = false;
};

/// The number that the tracker gave a block: the second word of the header before it.
uint32_t TrackedId(const void* block) {
    uint32_t words[14];
    std::memcpy(words, static_cast<const char*>(block) - sizeof words, sizeof words);
    return words[1];
}

class AttachTest : public testing::Test {
protected:
    AttachTest() : scope_(core) {
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        root = fs::temp_directory_path() / ("velmar_attach_" + std::to_string(getpid()) + "_" + name);
        fs::remove_all(root);
        fs::create_directories(root);
    }
    ~AttachTest() override {
        LogSetFileName(LogDefault(), nullptr); // closes the file
        GetLibState() = LibState();
        GetDiagSystem()->assertCallback = nullptr;
        GetDiagSystem()->crashInfoCallback = nullptr;
        fs::remove_all(root);
    }
    void Attach(const fs::path& file) { AttachLibrary(this, file.string()); }
    void WriteSettings(const std::string& text) { std::ofstream(root / "velmar.ini") << text; }

    host::Core core;
    fs::path root;

private:
    host::Core::Scope scope_;
};

} // namespace

TEST_F(AttachTest, FilesStandBesideTheLibrary) {
    Attach(root / "velmar.dlu");
    EXPECT_EQ(GetModuleHandle(), this);
    EXPECT_EQ(GetPluginDirectory(), root.string() + "/");
    EXPECT_EQ(GetSettingsPath(), (root / "velmar.ini").string());
    EXPECT_EQ(LogGetFileName(LogDefault()), (root / "velmar.log").string());
    const std::string crash = LogGetCrashCopyName(LogDefault());
    int n[6] = {};
    const std::string pattern = root.string() + "/velmarCrash_%4d-%2d-%2d_%2d-%2d-%2d.log";
    EXPECT_EQ(std::sscanf(crash.c_str(), pattern.c_str(), n, n + 1, n + 2, n + 3, n + 4, n + 5), 6) << crash;
    EXPECT_GE(n[0], 2000);
    DetachLibrary();
    const std::string log = ReadAll(root / "velmar.log");
    EXPECT_EQ(log.find("velmar log begin"), 0u);
    EXPECT_NE(log.find("\nTime: "), std::string::npos);
    EXPECT_NE(log.find("velmar log end"), std::string::npos);
    EXPECT_NE(HairRender::Existing(), nullptr);
}

TEST_F(AttachTest, TheLogBeginsWithTimeSystemAndVersionInThisOrder) {
    GetDiagSystem()->systemInfoWritten = false;
    Attach(root / "velmar.dlu");
    const std::string atAttach = ReadAll(root / "velmar.log"); // flushed by the attach itself
    int hour = -1, minute = -1, second = -1, length = 0;
    std::sscanf(atAttach.c_str(), "velmar log begin\r\nTime: %d:%2d:%2d\r\n%n", &hour, &minute, &second, &length);
    ASSERT_GT(length, 0) << atAttach;
    const std::string system = atAttach.substr(size_t(length));
    EXPECT_TRUE(system.starts_with("========================\r\nSystem information:\r\n")) << system;
    EXPECT_TRUE(system.ends_with("\r\nMAX Release: 13900\r\nVersion: 1.7.0.82 For MAX 2010 (64 bit)\r\n\r\n"))
        << system;
    EXPECT_EQ(TrackerSettings().mode, 4u);
    DetachLibrary();
    LogFlush(LogDefault());
    EXPECT_EQ(ReadAll(root / "velmar.log"), atAttach + "velmar log end\r\n");
}

TEST_F(AttachTest, TheBreakIdOfTheSettingsIsReportedWhenItComes) {
    void* first = memAllocShared(nullptr, 1, 1, "first.cpp");
    const std::string id = std::to_string(TrackedId(first) + 2 * 32);
    WriteSettings("[Test]\nTraceAllocID=" + id + "\n");
    Attach(root / "velmar.dlu");
    DetachLibrary();
    void* second = memAllocShared(nullptr, 1, 2, "second.cpp");
    void* third = memAllocShared(nullptr, 1, 3, "third.cpp");
    LogFlush(LogDefault());
    const std::string log = ReadAll(root / "velmar.log");
    EXPECT_TRUE(log.ends_with("velmar log end\r\nthird.cpp(3): Break at memory allocation id " + id + "\r\n")) << log;
    for (void* block : {first, second, third}) memFreeShared(nullptr, block);
    TrackerSettings().breakAtAllocation = 0;
}

TEST_F(AttachTest, TheNameIsComparedWithoutCase) {
    Attach(root / "VELMAR.Dlu");
    EXPECT_EQ(GetPluginDirectory(), root.string() + "/");
}

TEST_F(AttachTest, AnotherNameLeavesTheDefaults) {
    const std::string before = LogGetFileName(LogDefault());
    for (const char* name : {"hair.dlu", "notvelmar.dlu", "velmar.dlu.bak"}) {
        Attach(root / name);
        EXPECT_EQ(GetPluginDirectory(), "") << name;
        EXPECT_EQ(GetSettingsPath(), "");
        EXPECT_EQ(LogGetFileName(LogDefault()), before);
        int id = 77;
        EXPECT_TRUE(ReadSetting(SETTING_TRACE_ALLOC_ID, id)); // the default
        EXPECT_EQ(id, 0);
    }
}

TEST_F(AttachTest, AnUnwritableFolderMovesTheLogButNotTheSettings) {
    // The superuser may write anywhere, so the folder is one that does not exist.
    fs::create_directories(root / "temp");
    const Environment temp("TEMP", (root / "temp").string());
    const fs::path library = root / "gone" / "velmar.dlu";
    Attach(library);
    EXPECT_EQ(LogGetFileName(LogDefault()), (root / "temp" / "velmar.log").string());
    EXPECT_EQ(GetSettingsPath(), (root / "gone" / "velmar.ini").string());
    LogFlush(LogDefault());
    EXPECT_TRUE(fs::exists(root / "temp" / "velmar.log"));
    EXPECT_FALSE(fs::exists(root / "temp" / "testfile"));
}

TEST_F(AttachTest, WithoutTempTheUsersFolderIsTakenUntested) {
    const Environment temp("TEMP", (root / "nowhere").string());
    const Environment profile("USERPROFILE", (root / "nobody").string());
    Attach(root / "gone" / "velmar.dlu");
    EXPECT_EQ(LogGetFileName(LogDefault()), (root / "nobody" / "velmar.log").string());
}

TEST_F(AttachTest, SettingsCountWhenTheyAreNumbers) {
    Attach(root / "velmar.dlu");
    const auto read = [this](const std::string& value, int start) {
        WriteSettings("[Test]\r\nTraceAllocID=" + value + "\r\n");
        int id = start;
        const bool set = ReadSetting(SETTING_TRACE_ALLOC_ID, id);
        EXPECT_TRUE(set || id == start) << value;
        return set ? id : -1;
    };
    EXPECT_EQ(read("abc", 3), -1);
    EXPECT_EQ(read("0", 3), 0);
    EXPECT_EQ(read("5", 3), 5);
    EXPECT_EQ(read(" 12x", 3), 12);
    EXPECT_EQ(read("-4", 3), -4);
    int mode = 0;
    EXPECT_TRUE(ReadSetting(SETTING_TRACE_MODE, mode));
    EXPECT_EQ(mode, 1);
}

TEST_F(AttachTest, TraceAllocIdGoesToTheTracker) {
    std::atomic<uint32_t>& breakId = TrackerSettings().breakAtAllocation;
    for (const auto& [value, expected] : {std::pair("5", 5u), {"0", 77u}, {"abc", 77u}, {"-1", 77u}}) {
        WriteSettings(std::string("[Test]\nTraceAllocID=") + value + "\n");
        breakId = 77;
        TrackerSettings().mode = 3;
        Attach(root / "velmar.dlu");
        EXPECT_EQ(breakId, expected) << value;
        EXPECT_EQ(TrackerSettings().mode, 4u);
    }
    breakId = 0;
}

TEST_F(AttachTest, TextsNeedTheModule) {
    EXPECT_EQ(GetString(40006), nullptr);
    Attach(root / "velmar.dlu");
    EXPECT_STREQ(GetString(40006), "velmar");
    const char* const first = GetString(40003);
    const char* const second = GetString(40602);
    EXPECT_EQ(first, second); // one shared buffer
    EXPECT_STREQ(first, "Memory allocation failed");
    EXPECT_EQ(GetString(1), nullptr);
    EXPECT_LE(std::string(GetString(40436)).size(), 255u);
}

TEST_F(AttachTest, MessagesShowTheirKind) {
    core.Boxes().PrepareAnswer(true);
    EXPECT_TRUE(ShowMessage("sure?", MSG_QUESTION));
    EXPECT_FALSE(ShowMessage("sure?", MSG_QUESTION));
    core.Boxes().PrepareAnswer(true);
    EXPECT_FALSE(ShowMessage("careful", MSG_WARNING));
    EXPECT_FALSE(ShowMessage("broken", MSG_ERROR));
    EXPECT_FALSE(ShowMessage("note", MSG_INFORMATION));
    EXPECT_FALSE(ShowMessage("note", 99));
    const auto& shown = core.Boxes().Shown();
    ASSERT_EQ(shown.size(), 6u);
    const MessageBoxKind kinds[] = {MB_QUESTION, MB_QUESTION, MB_WARNING, MB_ERROR, MB_INFORMATION, MB_INFORMATION};
    for (size_t i = 0; i < shown.size(); ++i) {
        EXPECT_EQ(shown[i].kind, kinds[i]) << i;
        EXPECT_EQ(shown[i].title, "velmar");
    }
}

TEST_F(AttachTest, QuietModeGoesToTheHostsLog) {
    std::vector<std::pair<int, std::string>> lines;
    core.Log()->SetSink([&](int type, const std::string& line) { lines.emplace_back(type, line); });
    core.SetQuietMode(true);
    for (const int kind : std::initializer_list<int>{MSG_WARNING, MSG_ERROR, MSG_QUESTION, MSG_INFORMATION, 0})
        EXPECT_TRUE(ShowMessage("text", kind)) << kind;
    core.Log()->SetSink({});
    ASSERT_EQ(lines.size(), 5u);
    const int types[] = {6, 7, 7, 4, 4};
    for (size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].first, types[i]) << i;
        EXPECT_NE(lines[i].second.find("velmar: text"), std::string::npos) << lines[i].second;
    }
    EXPECT_TRUE(core.Boxes().Shown().empty());
}

TEST_F(AttachTest, ExceptionsAndFailedChecksComeWithAdvice) {
    ReportException("out of luck");
    ReportException(nullptr);
    core.Boxes().PrepareAnswer(true);
    EXPECT_TRUE(AssertPrompt("the place"));
    EXPECT_FALSE(AssertPrompt("the place"));
    const auto& shown = core.Boxes().Shown();
    ASSERT_EQ(shown.size(), 4u);
    EXPECT_EQ(shown[0].kind, MB_ERROR);
    EXPECT_EQ(shown[0].text.find("velmar exception occurred!\nout of luck\n\nIt is highly recommended that you save "
                                 "your work and quit.\n\nTo help the developers fix this problem, please look for "
                                 "recent files named velmar*.log in the installation folder and send them to "),
              0u);
    EXPECT_EQ(shown[1].text.find("velmar exception occurred!\n\n\nIt is highly"), 0u);
    EXPECT_EQ(shown[2].kind, MB_QUESTION);
    EXPECT_EQ(shown[2].text.find("Assert failed!\n\nIt is highly recommended"), 0u);
    EXPECT_EQ(shown[2].text.substr(shown[2].text.size() - 11), "\n\nthe place");
}

TEST_F(AttachTest, VersionInfoNamesTheEdition) {
    Attach(root / "velmar.dlu");
    core.SetApplicationID(2);
    WriteVersionInfo(LogDefault());
    GetDiagSystem()->crashInfoCallback.load()(LogDefault());
    LogFlush(LogDefault());
    const std::string log = ReadAll(root / "velmar.log");
    EXPECT_NE(log.find("VIZ Release: 13900"), std::string::npos);
    const std::string threads = "Render threads: " + std::to_string(HairRender::Existing()->ThreadCount());
    EXPECT_NE(log.find(threads), std::string::npos) << log;
}

TEST_F(AttachTest, WithoutAHostMessagesAreNotLost) {
    Attach(root / "velmar.dlu");
    Interface* const current = GetCOREInterface();
    {
        host::Core other;
        other.MakeCurrent();
    } // no core is current now
    ASSERT_EQ(GetCOREInterface(), nullptr);
    EXPECT_FALSE(ShowMessage("nobody listens", MSG_QUESTION));
    static_cast<host::Core*>(current)->MakeCurrent();
    LogFlush(LogDefault());
    EXPECT_NE(ReadAll(root / "velmar.log").find("nobody listens"), std::string::npos);
}
