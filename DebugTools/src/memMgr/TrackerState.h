// What a memory tracker holds, and what its files share.
#pragma once

#include "DebugTools/MemTracker.h"
#include "DebugTools/platform/Thread.h"
#include "memMgr/BlockTree.h"
#include "memMgr/ThreadSlots.h"

#include <vector>

namespace diag {

/// Blocks of one source location.
struct LocationSum {
    const char* file;
    int32_t line;
    uint32_t count;
    uint32_t firstId;
    uint32_t size; ///< of the block with the first id
    uint64_t total;
    const unsigned char* data; ///< of that block
    unsigned char contents[16];
};
using LocationSums = std::vector<LocationSum>;

/// A short lock without a system call. A record is its own thread's, so it is nearly always free.
class RecordLock {
public:
    void lock() {
        while (taken_.exchange(true, std::memory_order_acquire))
            while (taken_.load(std::memory_order_relaxed)) YieldThread();
    }
    void unlock() { taken_.store(false, std::memory_order_release); }

private:
    std::atomic<bool> taken_{false};
};

/// A thread's blocks. The pending location and the skip counter are the thread's alone; the rest is guarded, so that
/// reports and searches of other threads may look.
struct alignas(64) ThreadRecord {
    // The thread's own.
    int pendingLine = 0;
    const char* pendingFile = nullptr;
    uint32_t skip = 0;

    RecordLock guard;
    std::atomic<uint32_t> nextId{0};
    std::atomic<uint64_t> amount{0};
    BlockTree tree;
    bool hasAllocated = false;    ///< since its last free
    uint64_t footprintAmount = 0; ///< of the snapshot
    LocationSums footprint;       ///< by source location, taken at the largest amount seen
};

constexpr uint32_t kFrontGuard = 0x7EFDFCFB, kOtherFrontGuard = 0x7EFDFCFD;
constexpr unsigned char kEndGuard = 0xFD, kNewFill = 0xCD, kFreedFill = 0xDD;
constexpr uint32_t kSizeLimit = 0xFFFFFFDC; ///< largest user size
constexpr int32_t kUnknownLine = 100001;
constexpr size_t kOverhead = sizeof(BlockHeader) + 1;
constexpr uint32_t kSlotMask = ThreadSlots::kCount - 1;

/// Adds the blocks of a record up by source location, in the order of first ids. The caller holds its guard.
LocationSums SumByLocation(ThreadRecord& record);

} // namespace diag

struct MemTracker {
    Log* log = nullptr;
    Tracer* profiler = nullptr;
    bool defaultProfiler = false; ///< the default tracer of the moment
    const ThreadOps* threads = nullptr;
    std::atomic<const RawAllocator*> raw{nullptr};
    MemSettings settings;
    diag::ThreadSlots slots;

    // Guarded by the lock of the thread operations. Apart from what all threads read all the time.
    alignas(64) std::atomic<uint64_t> allocated{0}, peak{0};
    std::atomic<uint32_t> live{0}, peakLive{0}, requests{0};

    diag::ThreadRecord records[diag::ThreadSlots::kCount];

    Tracer* Profiler() const;
    uint32_t IdStep() const { return threads ? diag::ThreadSlots::kCount : 1; }
};

namespace diag {

/// The tracker meant; null is the process's.
inline MemTracker& TheTracker(MemTracker* tracker) {
    return tracker ? *tracker : *GetMemTracker();
}

} // namespace diag
