// The terminal's progress line and the farm's, byte for byte.

#include "../../apps/velmar/progress.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>

namespace {

using namespace velmar;

double now = 100;

/// A stream into memory.
class Stream {
public:
    Stream() : file(open_memstream(&text_, &size_)) {}
    ~Stream() {
        std::fclose(file);
        std::free(text_);
    }
    std::string Text() {
        std::fflush(file);
        return std::string(text_, size_);
    }
    std::FILE* file;

private:
    char* text_ = nullptr;
    size_t size_ = 0;
};

TEST(TerminalProgress, OneLineWrittenAgainAndAgain) {
    Stream out;
    long strands = 0;
    now = 100;
    {
        TerminalProgInd progress(
            out.file, [&] { return strands; }, [] { return now; });
        progress.SetTask("frame 7", 2);
        progress.SetTaskProgress(0);
        progress.SetObject("Rendering", 200);
        progress.SetObjectProgress(0);
        now += 0.05;
        progress.SetObjectProgress(1); // too soon
        now += 9.95;
        strands = 12000;
        progress.SetObjectProgress(100); // a quarter of the whole after 10 s
        progress.SetObjectProgress(200);
        progress.Log("a line");
        progress.Saved("a.png");
        now += 30;
        progress.SetTask("frame 8", 2);
        progress.SetTaskProgress(1);
        progress.SetObject("Camera View 5 %", 200);
        now += 40;
        strands = 3000000;
        progress.SetObjectProgress(50);
    }
    EXPECT_EQ(out.Text(), "\rframe 7 (1/2)    0%  Rendering  0:00\033[K"
                          "\rframe 7 (1/2)   50%  Rendering  0:10  left 0:30  1.2k strands/s\033[K"
                          "\r\033[Ka line\nSaved: 'a.png' (0:10)\n"
                          "\rframe 8 (2/2)   25%  Camera View 5 %  1:20  left 0:48  75.0k strands/s\033[K"
                          "\r\033[K");
}

TEST(TerminalProgress, ASingleFrameHasNoNumber) {
    Stream out;
    now = 0;
    TerminalProgInd progress(
        out.file, [] { return 0L; }, [] { return now; });
    progress.SetTask("frame -3", 1);
    progress.SetObject("Rendering", 3);
    now = 3601;
    progress.SetObjectProgress(1);
    progress.Refresh();
    const std::string line = "\rframe -3   33%  Rendering  1:00:01  left 2:00:02\033[K";
    EXPECT_EQ(out.Text(), line + line);
}

TEST(FarmProgress, EveryPercentageOnce) {
    Stream out;
    FarmProgInd progress(out.file);
    for (int frame = 0; frame < 2; ++frame) {
        progress.SetTask("frame", 2);
        progress.SetTaskProgress(frame);
        progress.SetObject("Rendering", 4);
        for (const int done : {0, 2, 2, 1, 4}) progress.SetObjectProgress(done);
        progress.Saved("a.png");
    }
    EXPECT_EQ(out.Text(), "ALF_PROGRESS 0%\nALF_PROGRESS 25%\nALF_PROGRESS 50%\nALF_PROGRESS 75%\nALF_PROGRESS 100%\n");
}

TEST(Progress, QuietWithoutATerminal) {
    EXPECT_EQ(MakeProgress(false, false, [] { return 0L; }) != nullptr, isatty(STDERR_FILENO) != 0);
    EXPECT_EQ(MakeProgress(false, true, [] { return 0L; }), nullptr);
    EXPECT_NE(dynamic_cast<FarmProgInd*>(MakeProgress(true, false, [] { return 0L; }).get()), nullptr);
}

} // namespace
