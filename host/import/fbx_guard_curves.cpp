#include "import/fbx_guard_curves.h"

#include <algorithm>
#include <cmath>

#include "import/file_error.h"

namespace host {

namespace {

// Assimp's steps, in degrees, and how many of them a file may need.
constexpr double kHalfTurn = 180, kStep = 179, kMostBetween = 4e6;

} // namespace

void FbxCurves::Begin() {
    Finish();
    times_.clear();
    values_.clear();
}

void FbxCurves::Finish() {
    const size_t count = std::min(times_.size(), values_.size());
    for (size_t i = 1; i < count; ++i) {
        const double change = std::fabs(values_[i] - values_[i - 1]);
        // Keys that do not ascend are refused by Assimp itself.
        if (!(change >= kHalfTurn) || times_[i] <= times_[i - 1]) continue;
        const double ticks = double(uint64_t(times_[i]) - uint64_t(times_[i - 1]));
        between_ += change / kStep;
        if (ticks * kStep < change || between_ > kMostBetween)
            FailAt(file_, 0, "has keys that change too much within too little time, expected slower ones");
    }
    times_.clear();
    values_.clear();
}

} // namespace host
