// Ctrl-C: a long render ends within a second with status 130 and leaves no file.

#include <algorithm>

#include "ball_test.h"

namespace {

using namespace system_test;

class Abort : public BallTest {
protected:
    /// Interrupts a render of minutes, which has to end within a second and to leave nothing. On a busy machine other
    /// programs take the time: the best of three counts.
    void Interrupt(const Args& extra, std::chrono::milliseconds wait) const {
        double seconds = InterruptOnce(extra, wait);
        for (int i = 0; i < 2 && seconds >= kAllowed; ++i) seconds = std::min(seconds, InterruptOnce(extra, wait));
        EXPECT_LT(seconds, kAllowed);
    }

private:
    static constexpr double kAllowed = 1.0 * apps_test::kPatience;

    /// Starts a render, interrupts it after `wait` and compares what is left. Returns the seconds until its end.
    double InterruptOnce(const Args& extra, std::chrono::milliseconds wait) const {
        using Clock = std::chrono::steady_clock;
        const auto before = Names();
        Args args{"render", kBall, "-o", "a.exr", "--stats", "s.json"};
        args.insert(args.end(), extra.begin(), extra.end());
        const pid_t child = Start(args);
        std::this_thread::sleep_for(wait);
        const auto start = Clock::now();
        kill(child, SIGINT);
        const apps_test::RunResult r = Finish(child);
        EXPECT_EQ(r.status, 130) << r.err;
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        EXPECT_EQ(Names(), before);
        return seconds;
    }
};

TEST_F(Abort, WhileStrandsAreDrawn) {
    for (const char* const threads : {"1", "2", "16"})
        Interrupt({"--set", "coat.pid_densPerFace=100000.0", "--size", "1280x720", "--threads", threads},
                  std::chrono::milliseconds(1500));
}

TEST_F(Abort, WhileManyBucketsAreDrawn) {
    Args args = Settings({{"Buckets_From_Renderer", "false"}, {"Bucket_Type", "2"}, {"Bucket_Size", "10"}});
    args.insert(args.end(), {"--size", "4000x3000", "--set", "coat.pid_densPerFace=2000.0"});
    Interrupt(args, std::chrono::milliseconds(1500));
}

} // namespace
