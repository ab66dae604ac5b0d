#pragma once
// What the user sees while pictures are made.

#include <chrono>
#include <functional>
#include <mutex>
#include <string>

#include "render/frame.h"

namespace velmar {

enum class ProgressKind {
    kNone,
    kTerminal, ///< one line on standard error that is written again and again
    kFarm,     ///< "ALF_PROGRESS nn%" lines on standard output
};

/// Progress of a number of frames.
class Progress : public host::RenderProgress {
public:
    /// `strands` tells how many strands of the current frame have been rendered so far.
    Progress(ProgressKind kind, int frames, std::function<long()> strands);
    /// Ends the line.
    ~Progress() override;
    void BeginFrame(int index, int frame);
    void Report(const char* title, int done, int total) override;
    /// The frame's file is there.
    void EndFrame(const std::string& file);

private:
    using Clock = std::chrono::steady_clock;
    void ShowLine(const char* title, double share);
    void ShowFarm(double share);
    double Seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
    void ClearLine();

    const ProgressKind kind_;
    const int frames_;
    const std::function<long()> strands_;
    const Clock::time_point start_ = Clock::now();
    std::mutex mutex_;
    int index_ = 0, frame_ = 0, shownPercent_ = -1;
    double shownAt_ = -1;
    double frameStart_ = 0;
    bool lineOpen_ = false;
};

/// "0:07", "12:34", "1:02:03".
std::string TimeText(double seconds);
/// "950", "1.2k", "3.4M".
std::string CountText(double count);

} // namespace velmar
