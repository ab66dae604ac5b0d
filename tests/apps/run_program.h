#pragma once
// The program as a child process.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "temp_folder.h"

namespace apps_test {

/// How many times longer than usual an answer may take: sanitizers slow the program down.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
inline constexpr double kPatience = 8.0;
#else
inline constexpr double kPatience = 1.0;
#endif

/// How a run ended and what it wrote.
struct RunResult {
    int status = -1; ///< -1: ended by a signal
    std::string out, err;
    double seconds = 0;
};

inline std::string FileText(const std::string& path) {
    std::ostringstream out;
    out << std::ifstream(path, std::ios::binary).rdbuf();
    return out.str();
}

/// Runs velmar in folders of its own.
class ProgramTest : public testing::Test {
protected:
    ProgramTest() {
        Write("quad.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\nf 1 1 2\n");
        Write("good.toml", kGood);
    }

    /// A scene that renders in a moment.
    static constexpr const char* kGood =
        "[scene]\nimport = ['quad.obj']\n[render]\nwidth = 32\nheight = 24\n[[camera]]\nname = 'cam'\n"
        "position = [0, -3, 2]\ntarget = [0, 0, 0]\n[[light]]\nname = 'key'\nposition = [1, -3, 4]\n"
        "[[fur]]\nname = 'coat'\nemitters = ['quad']\n[fur.set]\npid_length = 0.3\npid_thickness = 0.02\n"
        "pid_densPerArea = 100.0\n";

    std::string Write(const std::string& name, const std::string& content) const { return temp_.Write(name, content); }
    bool Exists(const std::string& name) const { return std::filesystem::exists(folder_ + "/" + name); }
    /// Names in the folder, sorted.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    /// Starts the program inside the folder.
    pid_t Start(const std::vector<std::string>& args) const {
        const pid_t child = fork();
        if (child != 0) return child;
        std::vector<char*> argv;
        static const std::string program = VELMAR_BIN_DIR "/velmar";
        argv.push_back(const_cast<char*>(program.c_str()));
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        if (chdir(folder_.c_str()) != 0 || !freopen(".out", "w", stdout) || !freopen(".err", "w", stderr)) _exit(99);
        execv(program.c_str(), argv.data());
        _exit(98);
    }
    RunResult Finish(pid_t child) const {
        int status = 0;
        waitpid(child, &status, 0);
        RunResult result;
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.out = FileText(folder_ + "/.out");
        result.err = FileText(folder_ + "/.err");
        std::filesystem::remove(folder_ + "/.out");
        std::filesystem::remove(folder_ + "/.err");
        return result;
    }
    RunResult Run(const std::vector<std::string>& args) const {
        const auto start = std::chrono::steady_clock::now();
        RunResult result = Finish(Start(args));
        result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        return result;
    }
    /// Runs, expecting one line of error and nothing on standard output.
    void ExpectError(const std::vector<std::string>& args, int status, const std::string& line) const {
        const RunResult r = Run(args);
        EXPECT_EQ(r.status, status) << line;
        EXPECT_EQ(r.err, "velmar: error: " + line + "\n");
        EXPECT_EQ(r.out, "");
    }

    const test::TempFolder temp_;
    const std::string folder_ = temp_.Path();
};

} // namespace apps_test
