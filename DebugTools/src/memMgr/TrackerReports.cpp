// The tracker's reports.
#include "logger/LogState.h"
#include "memMgr/TrackerState.h"

#include <algorithm>
#include <cstring>

using namespace diag;

namespace {

bool SamePlace(const LocationSum& sum, const BlockHeader& block) {
    return sum.line == block.line && (sum.file == block.file || std::strcmp(sum.file, block.file) == 0);
}

LocationSum FirstOf(BlockHeader& block) {
    LocationSum sum{block.file, block.line, 0, block.id, block.size, 0, UserData(&block), {}};
    std::memcpy(sum.contents, sum.data, std::min<size_t>(block.size, sizeof sum.contents));
    return sum;
}

// Ids wrap only after four thousand million allocations; the lowest is taken for the first.
void Add(LocationSums& sums, BlockHeader& block) {
    auto found = std::find_if(sums.begin(), sums.end(), [&](const LocationSum& s) { return SamePlace(s, block); });
    if (found == sums.end()) {
        sums.push_back(FirstOf(block));
        found = sums.end() - 1;
    } else if (block.id < found->firstId) {
        const LocationSum first = FirstOf(block);
        found->firstId = first.firstId;
        found->size = first.size;
        found->data = first.data;
        std::memcpy(found->contents, first.contents, sizeof found->contents);
    }
    ++found->count;
    found->total += block.size;
}

void WriteContents(Log* log, const LocationSum& sum) {
    char text[2 * sizeof sum.contents + 2] = "\t";
    const size_t count = std::min<size_t>(sum.size, sizeof sum.contents);
    for (size_t i = 0; i < count; ++i) std::snprintf(text + 1 + 2 * i, 3, "%02x", sum.contents[i]);
    LogWrite(log, text, 0);
}

void WriteSum(Log* log, const LocationSum& sum, bool withContents) {
    LogPrintf(log, 0, "%s(%d)\t%u\t%u\t%u\t%llu\t0x%llx", sum.file, sum.line, sum.count, sum.firstId, sum.size,
              static_cast<unsigned long long>(sum.total),
              static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(sum.data)));
    if (withContents) WriteContents(log, sum);
    LogWrite(log, nullptr, kLogEndLine);
}

void WriteSums(Log* log, int thread, const LocationSums& sums, bool withContents) {
    const LogHold together(log);
    LogPrintf(log, kLogEndLine, "Memory allocations in thread %d", thread);
    LogPrintf(log, kLogEndLine, "File(Line)\tcount\tFirst ID\tsize\ttotal\tptr%s", withContents ? "\tcontents" : "");
    uint64_t total = 0;
    for (const LocationSum& sum : sums) {
        WriteSum(log, sum, withContents);
        total += sum.total;
    }
    LogPrintf(log, kLogEndLine, "Total size: %llu", static_cast<unsigned long long>(total));
}

struct Splaying {
    uint64_t splays = 0, rotations = 0, most = 0;
};

Splaying AddUpSplaying(MemTracker& t) {
    Splaying sum;
    for (ThreadRecord& record : t.records) {
        const ScopedLock guard(record.guard);
        sum.splays += record.tree.Splays();
        sum.rotations += record.tree.Rotations();
        sum.most = std::max(sum.most, record.tree.MostRotations());
    }
    return sum;
}

// The record with the largest snapshot; null when there is none.
ThreadRecord* LargestFootprint(MemTracker& t) {
    ThreadRecord* largest =
        std::max_element(std::begin(t.records), std::end(t.records), [](const ThreadRecord& a, const ThreadRecord& b) {
            return a.footprintAmount < b.footprintAmount;
        });
    return largest->footprintAmount > 0 ? largest : nullptr;
}

void WriteFootprint(Log* log, MemTracker& t) {
    LogWrite(log, "Maximum memory footprint", kLogEndLine);
    ThreadRecord* record = LargestFootprint(t);
    if (!record) return;
    LocationSums sums;
    {
        const ScopedLock guard(record->guard);
        sums = record->footprint;
    }
    WriteSums(log, static_cast<int>(record - t.records), sums, false);
}

void WriteNumber(Log* log, const char* title, uint64_t value) {
    LogPrintf(log, kLogEndLine, "%s%llu", title, static_cast<unsigned long long>(value));
}

} // namespace

LocationSums diag::SumByLocation(ThreadRecord& record) {
    LocationSums sums;
    bool complete = true;
    record.tree.ForEach([&](BlockHeader& block) {
        // The walk must not be left half-way: what there is no memory for is missing in the report.
        try {
            Add(sums, block);
        } catch (...) {
            complete = false;
        }
    });
    if (complete)
        std::sort(sums.begin(), sums.end(),
                  [](const LocationSum& a, const LocationSum& b) { return a.firstId < b.firstId; });
    return sums;
}

void WriteStatistics(Log* log, MemTracker* tracker) {
    MemTracker& t = TheTracker(tracker);
    const MemAmounts amounts = TrackerAmounts(&t);
    const Splaying splaying = AddUpSplaying(t);
    WriteNumber(log, "Maximum memory requested: ", amounts.peak);
    WriteNumber(log, "Maximum number of simulateneously allocated tracked blocks: ", amounts.peakLive);
    WriteNumber(log, "Total number of allocation requests: ", amounts.requests);
    WriteNumber(log, "Amount of additional memory used by the tracker: ",
                sizeof(MemTracker) + uint64_t{amounts.live} * kOverhead);
    WriteNumber(log, "Maximum splay rotations: ", splaying.most);
    const double splays = static_cast<double>(std::max<uint64_t>(splaying.splays, 1));
    LogPrintf(log, kLogEndLine, "Average splay rotations: %.2f", static_cast<double>(splaying.rotations) / splays);
    WriteFootprint(log, t);
    if (amounts.live > 0) WriteNumber(log, "Memory leaks detected, total unfreed memory: ", amounts.allocated);
}

void WriteLeaks(Log* log, uint32_t afterId, MemTracker* tracker) {
    MemTracker& t = TheTracker(tracker);
    const LogHold together(log);
    LogPrintf(log, kLogEndLine, "Leaks found after id %u", afterId);
    LogWrite(log, "File(Line)\tid\tsize\tptr", kLogEndLine);
    for (ThreadRecord& record : t.records) {
        const ScopedLock guard(record.guard);
        record.tree.ForEach([&](BlockHeader& block) {
            if (block.id <= afterId) return;
            LogPrintf(log, kLogEndLine, "%s(%d)\t%u\t%u\t0x%llx", block.file, block.line, block.id, block.size,
                      static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(UserData(&block))));
        });
    }
}

void WriteThreadAllocations(Log* log, int thread, bool withContents, MemTracker* tracker) {
    MemTracker& t = TheTracker(tracker);
    if (thread < 0 || thread >= ThreadSlots::kCount) return;
    ThreadRecord& record = t.records[thread];
    LocationSums sums;
    {
        const ScopedLock guard(record.guard);
        sums = SumByLocation(record);
    }
    WriteSums(log, thread, sums, withContents);
}
