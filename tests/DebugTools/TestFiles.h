// What the tests of this folder share: a folder of their own, whole files as text, logs that close themselves.
#pragma once

#include "DebugTools/Assert.h"
#include "DebugTools/platform/File.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

inline std::string Slurp(const std::string& path) {
    std::string text;
    EXPECT_TRUE(diag::FileRead(path, text)) << path;
    return text;
}

/// A folder that the test removes with all its content.
class TempFolder {
public:
    TempFolder() {
        static int counter = 0;
        path_ = std::filesystem::temp_directory_path() /
                ("velmar-test-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
        std::filesystem::create_directories(path_);
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string File(const std::string& name) const { return (path_ / name).string(); }
    size_t FileCount() const {
        size_t count = 0;
        for (auto it = std::filesystem::directory_iterator(path_); it != std::filesystem::directory_iterator(); ++it)
            ++count;
        return count;
    }

private:
    std::filesystem::path path_;
};

/// A log with the operating-system file set in a folder of its own.
struct TestLog {
    TempFolder folder;
    std::string path = folder.File("test.log");
    std::string crashPath = folder.File("crash.log");
    Log* log = nullptr;

    explicit TestLog(const LogFileOps* files = LogOsFileOps()) : log(LogOpen(files)) {
        LogSetFileName(log, path.c_str());
        LogSetCrashCopyName(log, crashPath.c_str());
    }
    ~TestLog() { Close(); }

    void Close() {
        if (log) LogClose(log);
        log = nullptr;
    }
    /// What the file holds by now.
    std::string Text() const { return Slurp(path); }
    void Line(const char* text) { LogWrite(log, text, kLogEndLine); }
};

/// Lets the tick counter stand at a value for the length of a test.
class FixedTicks {
public:
    explicit FixedTicks(uint32_t value) {
        ticks = value;
        LogSetTickSource([] { return ticks; });
    }
    ~FixedTicks() { LogSetTickSource(nullptr); }

private:
    static inline uint32_t ticks = 0;
};

/// Turns the process's log and its prompts to the test's own file and answer.
class DefaultLogIn {
public:
    DefaultLogIn() {
        LogSetFileName(nullptr, path.c_str());
        LogSetCrashCopyName(nullptr, folder.File("crash.log").c_str());
        GetDiagSystem()->assertCallback = [](const char*) { return true; };
    }
    ~DefaultLogIn() {
        LogClose(nullptr);
        GetDiagSystem()->assertCallback = nullptr;
    }

    TempFolder folder;
    std::string path = folder.File("default.log");
};
