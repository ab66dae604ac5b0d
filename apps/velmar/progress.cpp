#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

namespace velmar {

namespace {

constexpr double kBetweenLines = 0.1;   // seconds
constexpr double kFirstEstimate = 0.01; // share of the work before which the time left is anybody's guess

double Share(int done, int total) {
    return total > 0 ? std::clamp(double(done) / double(total), 0.0, 1.0) : 0.0;
}

} // namespace

std::string TimeText(double seconds) {
    const long s = std::max(0L, long(seconds));
    char text[40];
    if (s >= 3600) {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", s / 3600, s / 60 % 60, s % 60);
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld", s / 60, s % 60);
    }
    return text;
}

std::string CountText(double count) {
    char text[40];
    if (count >= 1e6) {
        std::snprintf(text, sizeof text, "%.1fM", count / 1e6);
    } else if (count >= 1e3) {
        std::snprintf(text, sizeof text, "%.1fk", count / 1e3);
    } else {
        std::snprintf(text, sizeof text, "%.0f", count);
    }
    return text;
}

void FrameProgress::SetTask(const std::string& name, int objectCount) {
    const std::lock_guard<std::mutex> lock(mutex_);
    StoreTask(name, objectCount);
    TaskBegins();
}

void FrameProgress::SetTaskProgress(int objectIndex) {
    const std::lock_guard<std::mutex> lock(mutex_);
    objectIndex_ = objectIndex;
}

void FrameProgress::SetObject(const std::string& name, int stepTotal) {
    const std::lock_guard<std::mutex> lock(mutex_);
    StoreObject(name, stepTotal);
}

double TerminalProgInd::SystemSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

TerminalProgInd::TerminalProgInd(std::FILE* terminal, std::function<long()> strands, Clock clock)
    : terminal_(terminal), strands_(std::move(strands)), clock_(std::move(clock)), start_(clock_()),
      frameStart_(start_), shownAt_(start_ - kBetweenLines) {}

TerminalProgInd::~TerminalProgInd() {
    ClearLine();
}

void TerminalProgInd::SetObjectProgress(int step) {
    const std::lock_guard<std::mutex> lock(mutex_);
    step_ = step;
    if (clock_() - shownAt_ >= kBetweenLines) Show();
}

void TerminalProgInd::Refresh() {
    const std::lock_guard<std::mutex> lock(mutex_);
    Show();
}

void TerminalProgInd::Saved(const std::string& file) {
    const std::lock_guard<std::mutex> lock(mutex_);
    ClearLine();
    std::fprintf(terminal_, "Saved: '%s' (%s)\n", file.c_str(), TimeText(clock_() - frameStart_).c_str());
    std::fflush(terminal_);
}

void TerminalProgInd::Log(const std::string& line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    ClearLine();
    std::fprintf(terminal_, "%s\n", line.c_str());
    std::fflush(terminal_);
}

void TerminalProgInd::Show() {
    shownAt_ = clock_();
    const double share = Share(step_, stepTotal_), elapsed = shownAt_ - start_, inFrame = shownAt_ - frameStart_;
    const double whole = (objectIndex_ + share) / std::max(objectCount_, 1);
    std::string line = taskName_;
    if (objectCount_ > 1) line += " (" + std::to_string(objectIndex_ + 1) + "/" + std::to_string(objectCount_) + ")";
    char percent[32];
    std::snprintf(percent, sizeof percent, "  %3.0f%%  ", share * 100.0);
    line.append(percent).append(objectName_).append("  ").append(TimeText(elapsed));
    if (whole > kFirstEstimate) line.append("  left ").append(TimeText(elapsed / whole - elapsed));
    const long strands = strands_();
    if (strands > 0 && inFrame > 0) line.append("  ").append(CountText(double(strands) / inFrame)).append(" strands/s");
    // What was longer before is wiped.
    std::fprintf(terminal_, "\r%s\033[K", line.c_str());
    std::fflush(terminal_);
    lineOpen_ = true;
}

void TerminalProgInd::ClearLine() {
    if (!lineOpen_) return;
    std::fprintf(terminal_, "\r\033[K");
    std::fflush(terminal_);
    lineOpen_ = false;
}

void FarmProgInd::SetObjectProgress(int step) {
    const std::lock_guard<std::mutex> lock(mutex_);
    step_ = step;
    Show(Share(step_, stepTotal_));
}

void FarmProgInd::Saved(const std::string&) {
    const std::lock_guard<std::mutex> lock(mutex_);
    Show(1.0);
}

void FarmProgInd::Show(double share) {
    const int percent = int((objectIndex_ + share) / std::max(objectCount_, 1) * 100.0);
    if (percent <= shownPercent_) return;
    shownPercent_ = percent;
    std::fprintf(out_, "ALF_PROGRESS %d%%\n", percent);
    std::fflush(out_);
}

std::unique_ptr<FrameProgress> MakeProgress(bool farm, bool quiet, std::function<long()> strands) {
    if (farm) return std::make_unique<FarmProgInd>(stdout);
    if (quiet || !isatty(STDERR_FILENO)) return nullptr;
    return std::make_unique<TerminalProgInd>(stderr, std::move(strands));
}

} // namespace velmar
