// Allocating and freeing tracked blocks.
#include "DebugTools/Tracer.h"
#include "logger/LogState.h"
#include "memMgr/TrackerState.h"

#include <algorithm>
#include <cstring>

using namespace diag;

namespace {

TraceSite allocSite{SourceName(__FILE__), __LINE__, "memAlloc", 0};
TraceSite freeSite{SourceName(__FILE__), __LINE__, "memFree", 0};

// User bytes of a block that are filled. Shared ones are large working arrays: all of them would be written twice more,
// and chunks of block allocators take memory that nobody has reached yet.
constexpr size_t kFillAll = SIZE_MAX, kFillShared = 256;

struct Location {
    const char* file;
    int line;
    bool Given() const { return line != 0 || file; }
};

void InternalAssert(const MemTracker& t, int line) {
    LogInternalAssert(t.log ? t.log : LogDefault(), SourceName(__FILE__), line);
}

// The calling thread's record; null when it has none.
ThreadRecord* KnownRecord(MemTracker& t) {
    const int slot = t.threads ? t.slots.Find(t.threads->currentId()) : 0;
    return slot < 0 ? nullptr : &t.records[slot];
}

// The same, taken when it has none; null when all are taken.
ThreadRecord* OwnRecord(MemTracker& t) {
    if (ThreadRecord* record = KnownRecord(t)) return record;
    const OpsLock lock(t.threads);
    const int slot = t.slots.Take(t.threads->currentId());
    return slot < 0 ? nullptr : &t.records[slot];
}

Location TakeLocation(ThreadRecord& record) {
    const Location location{record.pendingFile, record.pendingLine};
    record.pendingFile = nullptr;
    record.pendingLine = 0;
    return location;
}

// What is missing in a location. The enclosing scope stands below that of the allocation itself.
void Complete(Location& location, Tracer* profiler) {
    if (!location.file) {
        const char* scope = profiler ? tracer::ScopeName(profiler, 1) : nullptr;
        location.file = scope ? scope : "unknown";
    }
    if (location.line < 1) location.line = kUnknownLine;
}

void DumpStacks(MemTracker& t) {
    if (Tracer* profiler = t.Profiler()) tracer::DumpStacks(profiler);
}

void NoteRefused(MemTracker& t, const Location& at, size_t size) {
    if (!t.settings.verbose) return;
    const LogHold together(t.log);
    LogHeader(t.log, at.file, at.line, "", 0);
    LogPrintf(t.log, kLogEndLine, "Allocation request exceeds the maximum: %llx / %x",
              static_cast<unsigned long long>(size), kSizeLimit);
}

void NoteBreak(MemTracker& t, const Location& at, uint32_t id) {
    const LogHold together(t.log);
    LogHeader(t.log, at.file, at.line, "", 0);
    LogPrintf(t.log, kLogEndLine, "Break at memory allocation id %u", id);
}

void NoteSize(MemTracker& t, const Location& at, char sign, uint32_t size) {
    const LogHold together(t.log);
    LogHeader(t.log, at.file, at.line, "", 0);
    LogPrintf(t.log, kLogEndLine, "%c%u", sign, size);
}

void NoteFailed(MemTracker& t, const Location& at, size_t size) {
    {
        const LogHold together(t.log);
        LogHeader(t.log, at.file, at.line, "", 0);
        LogPrintf(t.log, kLogEndLine, "Memory allocation failed! Currently allocated amount: %llu, new size: %llu",
                  static_cast<unsigned long long>(t.allocated.load()), static_cast<unsigned long long>(size));
    }
    if (t.settings.stacksOnFirstFailure.exchange(false)) DumpStacks(t);
}

void NoteCritical(MemTracker& t, const ThreadRecord& record, const Location& at, uint32_t size) {
    LogHeader(t.log, at.file, at.line, "", 0);
    LogPrintf(t.log, kLogEndLine, "Critical memory amount reached, new request is for %u", size);
    DumpStacks(t);
    WriteThreadAllocations(t.log, static_cast<int>(&record - t.records), false, &t);
    t.settings.criticalAmount = 0;
}

bool FitsTotal(const MemTracker& t, uint32_t size) {
    const uint64_t maximum = t.settings.maximumTotal;
    return maximum == 0 || t.allocated + size <= maximum;
}

void CountIn(MemTracker& t, const ThreadRecord& record, const Location& at, uint32_t size) {
    const OpsLock lock(t.threads);
    const uint64_t now = t.allocated.load(std::memory_order_relaxed) + size;
    t.allocated.store(now, std::memory_order_relaxed);
    if (now > t.peak.load(std::memory_order_relaxed)) {
        t.peak.store(now, std::memory_order_relaxed);
        const uint64_t critical = t.settings.criticalAmount.load(std::memory_order_relaxed);
        if (critical != 0 && now >= critical) NoteCritical(t, record, at, size);
    }
    const uint32_t live = t.live.load(std::memory_order_relaxed) + 1;
    t.live.store(live, std::memory_order_relaxed);
    t.requests.store(t.requests.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    if (live > t.peakLive.load(std::memory_order_relaxed)) t.peakLive.store(live, std::memory_order_relaxed);
}

void CountOut(MemTracker& t, uint32_t size) {
    const OpsLock lock(t.threads);
    const uint64_t before = t.allocated.load(std::memory_order_relaxed);
    if (size > before) InternalAssert(t, __LINE__);
    t.allocated.store(size > before ? 0 : before - size, std::memory_order_relaxed);
    const uint32_t live = t.live.load(std::memory_order_relaxed);
    if (live > 0) t.live.store(live - 1, std::memory_order_relaxed);
}

// Gives the block its header, guards and fill, and its record the block.
void Enlist(MemTracker& t, ThreadRecord& record, BlockHeader* block, const Location& at, uint32_t size, size_t fill) {
    *block = {kFrontGuard, 0, at.line, at.file, size, nullptr, nullptr, 0, kFrontGuard};
    std::memset(UserData(block), kNewFill, std::min<size_t>(size, fill));
    UserData(block)[size] = kEndGuard;
    const ScopedLock guard(record.guard);
    block->id = record.nextId.load(std::memory_order_relaxed);
    uint32_t next = block->id + t.IdStep();
    if (next == 0) next += t.IdStep();
    record.nextId.store(next, std::memory_order_relaxed);
    record.hasAllocated = true;
    record.amount.store(record.amount.load(std::memory_order_relaxed) + size, std::memory_order_relaxed);
    record.tree.Insert(block);
}

void* AllocTracked(MemTracker& t, ThreadRecord& record, size_t request, Location at, size_t fill) {
    Complete(at, t.Profiler());
    if (request > kSizeLimit) {
        NoteRefused(t, at, request);
        return nullptr;
    }
    const uint32_t size = static_cast<uint32_t>(request), id = record.nextId.load(std::memory_order_relaxed);
    if (id == t.settings.breakAtAllocation.load(std::memory_order_relaxed)) {
        NoteBreak(t, at, id);
        DumpStacks(t);
    }
    void* memory = FitsTotal(t, size) ? t.raw.load()->alloc(request + kOverhead) : nullptr;
    if (!memory) {
        NoteFailed(t, at, size);
        return nullptr;
    }
    auto* block = static_cast<BlockHeader*>(memory);
    CountIn(t, record, at, size);
    Enlist(t, record, block, at, size, fill);
    if (t.settings.verbose.load(std::memory_order_relaxed)) NoteSize(t, at, '+', size);
    return UserData(block);
}

// intended: the largest size that is given out does not pass.
bool IsSound(BlockHeader* block) {
    return (block->frontGuard == kFrontGuard || block->frontGuard == kOtherFrontGuard) && block->id != 0 &&
           block->line >= 1 && block->line <= kUnknownLine && block->size < kSizeLimit &&
           UserData(block)[block->size] == kEndGuard;
}

uintptr_t HeaderAddress(const void* data) {
    return reinterpret_cast<uintptr_t>(data) - sizeof(BlockHeader);
}

bool AnotherThreadHolds(MemTracker& t, const ThreadRecord* own, const void* data) {
    return std::any_of(std::begin(t.records), std::end(t.records), [&](ThreadRecord& record) {
        if (&record == own) return false;
        const ScopedLock guard(record.guard);
        return record.tree.Holds(HeaderAddress(data));
    });
}

void TakeFootprint(const MemTracker& t, ThreadRecord& record) {
    const uint64_t threshold = t.settings.footprintThreshold, amount = record.amount;
    if (threshold != 0 && record.hasAllocated && amount > threshold && amount > record.footprintAmount) {
        record.footprint = SumByLocation(record);
        record.footprintAmount = amount;
    }
    record.hasAllocated = false;
}

// Takes a sound block of the record out of it. False when the record's amount was too small.
bool Delist(const MemTracker& t, ThreadRecord& record, BlockHeader* block) {
    const ScopedLock guard(record.guard);
    TakeFootprint(t, record);
    record.tree.Find(reinterpret_cast<uintptr_t>(block));
    record.tree.RemoveRoot();
    const uint64_t before = record.amount.load(std::memory_order_relaxed);
    record.amount.store(block->size > before ? 0 : before - block->size, std::memory_order_relaxed);
    return block->size <= before;
}

// A thread that holds nothing any more gives its record to others. Blocks of size 0 count as something held, since
// they could not be found in another thread's record.
void ReleaseIfEmpty(MemTracker& t, const ThreadRecord& record) {
    const auto slot = &record - t.records;
    if (!t.threads || slot == 0 || record.amount != 0 || record.tree.Root()) return;
    if (record.pendingFile || record.pendingLine != 0 || record.skip != 0) return;
    const OpsLock lock(t.threads);
    t.slots.Release(static_cast<int>(slot));
}

BlockHeader* FindBlock(ThreadRecord& record, const void* data) {
    const ScopedLock guard(record.guard);
    return record.tree.Find(HeaderAddress(data));
}

// Nothing is logged while a record's guard is held: reports take the log first and the guard then.
void FreeTracked(MemTracker& t, ThreadRecord& record, BlockHeader* block, size_t fill) {
    if (!IsSound(block)) {
        InternalAssert(t, __LINE__);
        return;
    }
    const Location at{block->file, block->line};
    const uint32_t size = block->size, id = block->id;
    if (id == t.settings.breakAtFree.load(std::memory_order_relaxed)) {
        LogPrintf(t.log, kLogEndLine, "Break at free memory id %u", id);
        DumpStacks(t);
    }
    CountOut(t, size);
    if (!Delist(t, record, block)) InternalAssert(t, __LINE__);
    if (t.settings.verbose.load(std::memory_order_relaxed)) NoteSize(t, at, '-', size);
    std::memset(static_cast<void*>(block), kFreedFill, sizeof(BlockHeader) + std::min<size_t>(size + 1, fill));
    t.raw.load()->free(block);
}

} // namespace

void SetSourceLocation(MemTracker* tracker, int line, const char* file) {
    ThreadRecord* record = OwnRecord(TheTracker(tracker));
    if (!record) return;
    record->pendingLine = line;
    record->pendingFile = file;
}

void SkipNext(MemTracker* tracker) {
    if (ThreadRecord* record = OwnRecord(TheTracker(tracker))) ++record->skip;
}

void* memAlloc(MemTracker* tracker, size_t size) {
    MemTracker& t = TheTracker(tracker);
    const TraceScope scope(t.Profiler(), allocSite);
    ThreadRecord* record = OwnRecord(t);
    if (!record) return nullptr;
    const Location location = TakeLocation(*record);
    if (record->skip == 0 && location.Given()) {
        void* block = AllocTracked(t, *record, size, location, kFillAll);
        if (!block) ReleaseIfEmpty(t, *record);
        return block;
    }
    if (record->skip > 0) --record->skip;
    ReleaseIfEmpty(t, *record);
    return t.raw.load()->alloc(size);
}

void memFree(MemTracker* tracker, void* block) {
    if (!block) return;
    MemTracker& t = TheTracker(tracker);
    const TraceScope scope(t.Profiler(), freeSite);
    ThreadRecord* record = KnownRecord(t);
    if (BlockHeader* tracked = record ? FindBlock(*record, block) : nullptr) {
        FreeTracked(t, *record, tracked, kFillAll);
        ReleaseIfEmpty(t, *record);
    } else if (AnotherThreadHolds(t, record, block)) {
        InternalAssert(t, __LINE__);
    } else {
        t.raw.load()->free(block);
    }
}

void* memAllocShared(MemTracker* tracker, size_t size, int line, const char* file) {
    MemTracker& t = TheTracker(tracker);
    const TraceScope scope(t.Profiler(), allocSite);
    return AllocTracked(t, t.records[0], size, {file, line}, kFillShared);
}

void memFreeShared(MemTracker* tracker, void* block) {
    if (!block) return;
    MemTracker& t = TheTracker(tracker);
    const TraceScope scope(t.Profiler(), freeSite);
    if (BlockHeader* tracked = FindBlock(t.records[0], block))
        FreeTracked(t, t.records[0], tracked, kFillShared);
    else
        InternalAssert(t, __LINE__);
}
