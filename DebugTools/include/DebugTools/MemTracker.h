// The memory tracker: knows where every tracked block was asked for, finds leaks and overruns, counts amounts and
// peaks. In every function a null tracker means the process's.
#pragma once

#include "DebugTools/Log.h"
#include "DebugTools/SourceName.h"
#include "DebugTools/ThreadOps.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

struct Tracer;
struct MemTracker;

/// Where raw memory comes from. `alloc` gives null when there is none; its result must be aligned to 16 bytes.
struct RawAllocator {
    void* (*alloc)(size_t size);
    void (*free)(void* memory);
};

/// Settings of a tracker. Any thread may change them at any time.
struct MemSettings {
    std::atomic<uint32_t> breakAtAllocation{0};   ///< id whose allocation is reported with the stacks; 0 none
    std::atomic<uint32_t> breakAtFree{0};         ///< id whose free is reported with the stacks; 0 none
    std::atomic<uint64_t> criticalAmount{0};      ///< peak in bytes at which one report is written; 0 none
    std::atomic<uint64_t> footprintThreshold{0};  ///< bytes of a thread above which its largest footprint is kept
    std::atomic<uint64_t> maximumTotal{0};        ///< bytes that tracked blocks may hold; 0 unlimited
    std::atomic<bool> stacksOnFirstFailure{true}; ///< the first failed allocation dumps the stacks
    std::atomic<bool> verbose{false};             ///< a line for every allocation and free
    std::atomic<uint32_t> mode{3};                ///< 3, 4 once the library is attached; only stored
};

/// Amounts in bytes of user data of tracked blocks, and counts of blocks.
struct MemAmounts {
    uint64_t allocated = 0, peak = 0;
    uint32_t live = 0, peakLive = 0, requests = 0;
};

/// What a tracker is made of.
struct MemTrackerSetup {
    Log* log = nullptr;                 ///< null: the default log
    Tracer* profiler = nullptr;         ///< whose stacks reports show
    const ThreadOps* threads = nullptr; ///< null: all is charged to thread record 0, and nothing is locked
    const RawAllocator* raw = nullptr;  ///< null: the general allocator
};

/// The process's tracker, made on first use with the default log, the default tracer and the operating system's
/// threads; never destroyed.
MemTracker* GetMemTracker();
/// A tracker of one's own, or null when there is no memory.
MemTracker* CreateMemTracker(const MemTrackerSetup& setup);
/// Blocks that still live stay allocated and must not be given to memFree any more. Null and the process's are ignored.
void DestroyMemTracker(MemTracker* tracker);

MemSettings& TrackerSettings(MemTracker* tracker = nullptr);
MemAmounts TrackerAmounts(MemTracker* tracker = nullptr);

/// Replaces the raw allocator of the process's tracker; null restores the general one. The new one must be able to
/// free the blocks of the one before.
void SetRawAllocator(const RawAllocator* allocator);

/// Stores where the calling thread's next tracked allocation is asked for. Every place that allocates calls it first,
/// also where the memory does not come from the tracker: a later allocation may take such a location.
void SetSourceLocation(MemTracker* tracker, int line, const char* file);
/// The calling thread's next allocation is not tracked. Counts up.
void SkipNext(MemTracker* tracker);

/// `size` bytes aligned to 8, or null. Tracked when a location is pending and none is to be skipped, else raw memory.
/// Tracked user data reads 0xCD. Null too when 32 other threads hold tracked blocks.
void* memAlloc(MemTracker* tracker, size_t size);
/// Frees a block of memAlloc, on the thread that allocated it. Null is ignored. A tracked block of another thread and
/// one that was overrun are reported as internal assertions and stay as they are.
void memFree(MemTracker* tracker, void* block);

/// Memory that belongs to no thread: tracked under thread record 0 with the location given, and freed by any thread
/// with memFreeShared. Takes no pending location and no skip. Only the first 256 bytes are filled.
void* memAllocShared(MemTracker* tracker, size_t size, int line, const char* file);
void memFreeShared(MemTracker* tracker, void* block);

/// Totals, one a line; then the largest footprint of a thread, where one was kept, and the amount that is not freed.
void WriteStatistics(Log* log, MemTracker* tracker = nullptr);
/// All live blocks with an id above `afterId`: by thread record, then by address.
void WriteLeaks(Log* log, uint32_t afterId, MemTracker* tracker = nullptr);
/// What a thread record (0 to 31) holds, one line a source location in the order of their first ids. With contents,
/// the first 16 bytes of each location's first block follow.
void WriteThreadAllocations(Log* log, int thread, bool withContents, MemTracker* tracker = nullptr);

/// Names this place as the one the next allocation is charged to.
#define MEM_LOCATION() SetSourceLocation(nullptr, __LINE__, diag::SourceName(__FILE__))
