// Insertion into the bucket being rendered.

#include <thread>

#include "HRendBuf/HRendBuf.h"

/// Holds one pixel's lock when several threads insert.
class HRendBuf::PixelLock {
public:
    PixelLock(HRendBuf& buffer, size_t pixel) {
        if (buffer.threadCount_ >= 2) lock_ = std::unique_lock(buffer.pixelLocks_[pixel % kPixelLocks]);
    }

private:
    std::unique_lock<std::mutex> lock_;
};

FragmentStore HRendBuf::Store(int thread, bool recycle) {
    return {current_->Pool(), thread, depthTolerance_, recycle};
}

void HRendBuf::MergeTiles(int thread) {
    inLists_.store(false, std::memory_order_relaxed);
    // A tile has one owner at a time, so fragments can be reused here for any number of threads.
    const FragmentStore store = Store(thread, true);
    if (mode_ == HRM_SHADOW)
        ordered_.MergeTiles(thread, current_->ShadowHeads(), store);
    else
        ordered_.MergeTiles(thread, current_->ImageHeads(), store);
}

void HRendBuf::TilesToLists(int thread) {
    const FragmentStore store = Store(thread, true);
    if (mode_ == HRM_SHADOW)
        ordered_.ToLists(current_->ShadowHeads(), store);
    else
        ordered_.ToLists(current_->ImageHeads(), store);
}

/// Turns what the ordered path has merged into the bucket's lists.
void HRendBuf::EnsureLists() {
    if (inLists_.load(std::memory_order_acquire)) return;
    const std::lock_guard guard(listFormLock_);
    if (inLists_.load(std::memory_order_relaxed)) return;
    if (!current_->HasLists()) current_->CreateLists();
    {
        constexpr size_t kWorthThreads = 8u << 20;
        std::vector<std::jthread> helpers;
        if (ordered_.FragmentBytes() > kWorthThreads)
            for (int i = 1; i < threadCount_; ++i) helpers.emplace_back([this, i] { TilesToLists(i); });
        TilesToLists(0);
    }
    ordered_.EndToLists();
    inLists_.store(true, std::memory_order_release);
}

void HRendBuf::InsertImageSample(int thread, int x, int y, float z, const Color& color, float coverage, float opacity,
                                 Point2) {
    EnsureLists();
    const size_t pixel = current_->PixelIndex(x, y);
    const PixelLock lock(*this, pixel);
    InsertPoint(current_->ImageHeads()[pixel], ImagePoint{z, opacity, coverage, color},
                Store(thread, threadCount_ < 2));
}

void HRendBuf::InsertShadowSample(int thread, int x, int y, float z, float opacity, float coverage) {
    EnsureLists();
    const size_t pixel = current_->PixelIndex(x, y);
    const PixelLock lock(*this, pixel);
    InsertPoint(current_->ShadowHeads()[pixel], ShadowPoint{z, opacity, coverage}, Store(thread, threadCount_ < 2));
}
