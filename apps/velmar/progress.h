#pragma once
// What the user sees while pictures are made. The task is the frames, an object is a frame's lines.

#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "sdk/progress.h"

namespace velmar {

/// Progress of a number of frames. The task's name says which one is being made ("frame 12").
class FrameProgress : public IProgressIndicator {
public:
    void SetTask(const std::string& name, int objectCount) override;
    void SetTaskProgress(int objectIndex) override;
    void SetObject(const std::string& name, int stepTotal) override;
    /// The frame's file is there.
    virtual void Saved(const std::string& file) {}
    /// A line of the log, on standard error. Any thread.
    virtual void Log(const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); }

protected:
    /// A task begins; the mutex is held.
    virtual void TaskBegins() {}
    std::mutex mutex_;
};

/// One line on a terminal that is written again and again: frame, percentage, what is being done, time, time left,
/// rate.
class TerminalProgInd : public FrameProgress {
public:
    /// Seconds since any point in time.
    using Clock = std::function<double()>;
    static double SystemSeconds();

    /// `strands` tells how many strands of the current frame have been rendered so far.
    TerminalProgInd(std::FILE* terminal, std::function<long()> strands, Clock clock = SystemSeconds);
    /// Wipes the line.
    ~TerminalProgInd() override;
    /// Writes the line, at most ten times a second.
    void SetObjectProgress(int step) override;
    void Refresh() override;
    void Saved(const std::string& file) override;
    /// On the terminal, in place of the line.
    void Log(const std::string& line) override;

private:
    void TaskBegins() override { frameStart_ = clock_(); }
    void Show();
    void ClearLine();

    std::FILE* const terminal_;
    const std::function<long()> strands_;
    const Clock clock_;
    const double start_;
    double frameStart_, shownAt_;
    bool lineOpen_ = false;
};

/// "ALF_PROGRESS nn%" lines, each percentage once.
class FarmProgInd : public FrameProgress {
public:
    explicit FarmProgInd(std::FILE* out) : out_(out) {}
    void SetObjectProgress(int step) override;
    void Saved(const std::string& file) override;

private:
    void Show(double share);

    std::FILE* const out_;
    int shownPercent_ = -1;
};

/// The progress a run shows: for a farm on standard output when asked for, else on standard error where that is a
/// terminal and the run is not quiet. Null for none.
std::unique_ptr<FrameProgress> MakeProgress(bool farm, bool quiet, std::function<long()> strands);

/// "0:07", "12:34", "1:02:03".
std::string TimeText(double seconds);
/// "950", "1.2k", "3.4M".
std::string CountText(double count);

} // namespace velmar
