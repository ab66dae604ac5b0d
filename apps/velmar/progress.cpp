#include "progress.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace velmar {

namespace {
constexpr double kBetweenLines = 0.1; // seconds
}

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

Progress::Progress(ProgressKind kind, int frames, std::function<long()> strands)
    : kind_(kind), frames_(frames), strands_(std::move(strands)) {}

Progress::~Progress() {
    if (kind_ == ProgressKind::kTerminal) ClearLine();
}

void Progress::BeginFrame(int index, int frame) {
    const std::lock_guard<std::mutex> lock(mutex_);
    index_ = index;
    frame_ = frame;
    frameStart_ = Seconds();
}

void Progress::Report(const char* title, int done, int total) {
    if (kind_ == ProgressKind::kNone) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    const double share = total > 0 ? std::clamp(double(done) / double(total), 0.0, 1.0) : 0.0;
    if (kind_ == ProgressKind::kFarm) {
        ShowFarm(share);
    } else if (Seconds() - shownAt_ >= kBetweenLines) {
        ShowLine(title, share);
    }
}

void Progress::EndFrame(const std::string& file) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (kind_ == ProgressKind::kFarm) return ShowFarm(1.0);
    if (kind_ == ProgressKind::kNone) return;
    ClearLine();
    std::fprintf(stderr, "Saved: '%s' (%s)\n", file.c_str(), TimeText(Seconds() - frameStart_).c_str());
}

void Progress::ShowLine(const char* title, double share) {
    shownAt_ = Seconds();
    const double whole = (index_ + share) / frames_, elapsed = shownAt_;
    std::string line = "frame " + std::to_string(frame_);
    if (frames_ > 1) line += " (" + std::to_string(index_ + 1) + "/" + std::to_string(frames_) + ")";
    char percent[32];
    std::snprintf(percent, sizeof percent, "  %3.0f%%  ", share * 100.0);
    line.append(percent).append(title ? title : "").append("  ").append(TimeText(elapsed));
    if (whole > 0.01) line.append("  left ").append(TimeText(elapsed / whole - elapsed));
    const long strands = strands_();
    const double inFrame = shownAt_ - frameStart_;
    if (strands > 0 && inFrame > 0) line.append("  ").append(CountText(double(strands) / inFrame)).append(" strands/s");
    // What was longer before is wiped.
    std::fprintf(stderr, "\r%s\033[K", line.c_str());
    std::fflush(stderr);
    lineOpen_ = true;
}

void Progress::ShowFarm(double share) {
    const int percent = int((index_ + share) / frames_ * 100.0);
    if (percent <= shownPercent_) return;
    shownPercent_ = percent;
    std::printf("ALF_PROGRESS %d%%\n", percent);
    std::fflush(stdout);
}

void Progress::ClearLine() {
    if (!lineOpen_) return;
    std::fprintf(stderr, "\r\033[K");
    std::fflush(stderr);
    lineOpen_ = false;
}

} // namespace velmar
