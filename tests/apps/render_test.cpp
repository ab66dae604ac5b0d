// velmar render: files, statistics, progress, interruption.

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <regex>

#include "run_program.h"

using namespace apps_test;

using Render = ProgramTest;

TEST_F(Render, WritesThePictureAndNothingElse) {
    const RunResult r = Run({"render", "good.toml", "-o", "a.png"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "");
    // No terminal, no progress: the frame's line alone.
    EXPECT_TRUE(std::regex_match(r.err, std::regex("velmar: frame 0 at 0\\.000 s: 32 x 24, [1-9][0-9]+ samples, "
                                                   "[1-9][0-9]+ strands, [0-9]+\\.[0-9]{2} s\n")))
        << r.err;
    EXPECT_EQ(Names(), (std::vector<std::string>{"a.png", "good.toml", "quad.obj"}));
    EXPECT_EQ(FileText(folder_ + "/a.png").substr(1, 3), "PNG");
}

TEST_F(Render, EveryFrameHasALineInTheLog) {
    const RunResult r = Run({"render", "good.toml", "-o", "a#.png", "--frames", "-3,15"});
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 2) << r.err;
    EXPECT_EQ(r.err.find("velmar: frame -3 at -0.100 s: "), 0u) << r.err;
    EXPECT_NE(r.err.find("\nvelmar: frame 15 at 0.500 s: "), std::string::npos) << r.err;
    EXPECT_EQ(Run({"render", "good.toml", "-o", "a.png", "--quiet"}).err, "");
}

TEST_F(Render, FramesGetTheirNames) {
    EXPECT_EQ(Run({"render", "good.toml", "-o", "a.#.png", "--frames", "-1-1x2,7"}).status, 0);
    EXPECT_TRUE(Exists("a.-001.png"));
    EXPECT_TRUE(Exists("a.0001.png"));
    EXPECT_TRUE(Exists("a.0007.png"));
    EXPECT_FALSE(Exists("a.0000.png"));
    EXPECT_EQ(Run({"render", "-f", "3", "-o", "b%02d.exr", "good.toml"}).status, 0); // options anywhere
    EXPECT_TRUE(Exists("b03.exr"));
}

TEST_F(Render, ARegionIsRenderedAlone) {
    EXPECT_EQ(Run({"render", "good.toml", "-o", "a.png", "--crop", "2,3,20,11", "--stats", "s.json"}).status, 0);
    const auto stats = nlohmann::json::parse(FileText(folder_ + "/s.json"));
    EXPECT_GE(stats["camera_samples"], 18 * 8);
    EXPECT_LE(stats["camera_samples"], 18 * 8 * 9);
    for (const char* const wrong : {"1,2,3", "1,2,1,9", "1,2,3,4,", "x", "0,5,9,5"}) {
        const RunResult r = Run({"render", "good.toml", "-o", "b.png", "--crop", wrong});
        EXPECT_EQ(r.status, 1) << wrong;
        EXPECT_NE(r.err.find("expected X0,Y0,X1,Y1 with X0 < X1 and Y0 < Y1"), std::string::npos) << r.err;
    }
    const RunResult r = Run({"render", "good.toml", "-o", "b.png", "--crop", "0,0,33,24"});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "velmar: error: the region 0,0,33,24 leaves the picture of 32 x 24 pixels, expected a part of "
                     "it\n");
    EXPECT_FALSE(Exists("b.png"));
}

TEST_F(Render, StatisticsAreOneFlatObject) {
    EXPECT_EQ(
        Run({"render", "good.toml", "-o", "a.png", "--size", "40x30", "--threads", "1", "--stats", "s.json"}).status,
        0);
    const auto stats = nlohmann::json::parse(FileText(folder_ + "/s.json"));
    for (const char* const key :
         {"strands", "wall_s", "hair_s", "shadow_s", "peak_rss_bytes", "fragments", "effects_s"})
        EXPECT_TRUE(stats.contains(key)) << key;
    for (const auto& [key, value] : stats.items()) EXPECT_TRUE(value.is_primitive()) << key;
    EXPECT_GT(stats["strands"], 100);
    EXPECT_GT(stats["wall_s"], 0.0);
    EXPECT_GT(stats["peak_rss_bytes"], 1000000);
    EXPECT_EQ(stats["width"], 40);
    EXPECT_EQ(stats["height"], 30);
    EXPECT_EQ(stats["threads"], 1);
    EXPECT_GT(stats["fragments"], 0);
}

TEST_F(Render, StatisticsAddUpOverFrames) {
    const auto strands = [&](const char* frames) {
        EXPECT_EQ(Run({"render", "good.toml", "-o", "a#.png", "--frames", frames, "--stats", "s.json"}).status, 0);
        return nlohmann::json::parse(FileText(folder_ + "/s.json"))["strands"].get<int>();
    };
    const int one = strands("1");
    EXPECT_GT(one, 100);
    EXPECT_EQ(strands("1-3"), 3 * one);
}

TEST_F(Render, FramesBeyondTimeAreBadInput) {
    ExpectError({"render", "good.toml", "-o", "a.png", "-f", "2147483647"}, 2,
                "frame 2147483647 is too far away, expected a smaller number");
}

TEST_F(Render, SetChangesThePicture) {
    EXPECT_EQ(Run({"render", "good.toml", "-o", "a.png"}).status, 0);
    EXPECT_EQ(
        Run({"render", "good.toml", "-o", "b.png", "--set", "coat.pid_length=1.0", "--set", "key.multiplier=2"}).status,
        0);
    EXPECT_EQ(Run({"render", "good.toml", "-o", "c.png"}).status, 0);
    EXPECT_NE(FileText(folder_ + "/a.png"), FileText(folder_ + "/b.png"));
    EXPECT_EQ(FileText(folder_ + "/a.png"), FileText(folder_ + "/c.png"));
}

TEST_F(Render, FarmProgressRisesToHundred) {
    const RunResult r = Run({"render", "good.toml", "-o", "a##.png", "--frames", "1-2", "--progress", "farm"});
    EXPECT_EQ(r.status, 0);
    std::istringstream lines(r.out);
    int last = -1;
    for (std::string line; std::getline(lines, line);) {
        int percent = -1;
        ASSERT_EQ(std::sscanf(line.c_str(), "ALF_PROGRESS %d%%", &percent), 1) << line;
        EXPECT_GT(percent, last);
        last = percent;
    }
    EXPECT_EQ(last, 100);
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 2) << r.err;
}

TEST_F(Render, AnInterruptionEndsWithinASecond) {
    Write("long.toml", std::string(kGood) + "pid_bezierSteps = 50\n[[node]]\nname = 'quad'\n");
    const auto before = Names();
    for (const int wait : {20, 300, 700}) {
        const pid_t child = Start(
            {"render", "long.toml", "-o", "a.png", "--size", "2000x2000", "--set", "coat.pid_densPerArea=1000000.0"});
        std::this_thread::sleep_for(std::chrono::milliseconds(wait));
        const auto start = std::chrono::steady_clock::now();
        kill(child, SIGINT);
        const RunResult r = Finish(child);
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        // Before the program looks after signals, the signal itself ends it.
        EXPECT_TRUE(r.status == 130 || (wait < 100 && r.status == -1)) << r.status << " after " << wait;
        EXPECT_LT(seconds, 1.2 * apps_test::kPatience) << wait;
        EXPECT_EQ(Names(), before);
    }
}

// Standard error is a pipe that nobody empties: the line about the frame keeps the render from obeying.
TEST_F(Render, InterruptingAgainAndAgainDoesNotPutTheEndOff) {
    using namespace std::chrono;
    const std::string full = folder_ + "/.err";
    ASSERT_EQ(mkfifo(full.c_str(), 0600), 0);
    const int pipe = open(full.c_str(), O_RDWR | O_NONBLOCK);
    while (write(pipe, " ", 1) == 1) continue;
    const pid_t child = Start({"render", "good.toml", "-o", "a.png"});
    std::this_thread::sleep_for(duration<double>(0.7 * kPatience));
    const auto start = steady_clock::now();
    const auto seconds = [&] { return duration<double>(steady_clock::now() - start).count(); };
    siginfo_t end = {};
    while (end.si_pid == 0 && seconds() < 5 * kPatience) {
        kill(child, seconds() < 4 * kPatience ? SIGINT : SIGKILL);
        std::this_thread::sleep_for(milliseconds(50));
        waitid(P_PID, id_t(child), &end, WEXITED | WNOHANG | WNOWAIT);
    }
    EXPECT_LT(seconds(), 1.2 * kPatience);
    std::filesystem::remove(full);
    EXPECT_EQ(Finish(child).status, 130);
    EXPECT_FALSE(Exists("a.png"));
    close(pipe);
}
