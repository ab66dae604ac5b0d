// Insertion into the bucket being rendered.

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
    // A tile has one owner at a time, so hidden fragments can be reused here for any number of threads.
    const FragmentStore store = Store(thread, true);
    if (mode_ == HRM_SHADOW)
        ordered_.MergeTiles(current_->ShadowHeads(), store);
    else
        ordered_.MergeTiles(current_->ImageHeads(), store);
}

void HRendBuf::InsertImageSample(int thread, int x, int y, float z, const Color& color, float coverage, float opacity,
                                 Point2) {
    const size_t pixel = current_->PixelIndex(x, y);
    const PixelLock lock(*this, pixel);
    InsertPoint(current_->ImageHeads()[pixel], ImagePoint{z, opacity, coverage, color},
                Store(thread, threadCount_ < 2));
}

void HRendBuf::InsertShadowSample(int thread, int x, int y, float z, float opacity, float coverage) {
    const size_t pixel = current_->PixelIndex(x, y);
    const PixelLock lock(*this, pixel);
    InsertPoint(current_->ShadowHeads()[pixel], ShadowPoint{z, opacity, coverage}, Store(thread, threadCount_ < 2));
}
