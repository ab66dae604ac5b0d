// Chunks of the block allocators.
#include "DebugTools/MemMgr.h"

#include "DebugTools/Assert.h"
#include "memMgr/BlockTree.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace {

constexpr size_t kMinPoolBlock = 24;
constexpr size_t kMinBlockCount = 256;

std::atomic<void (*)()> failureCallback{nullptr};

size_t CheckedPoolBlock(size_t blockSize) {
    SASSERT_ONCE(blockSize >= kMinPoolBlock);
    return std::max(blockSize, kMinPoolBlock);
}

} // namespace

void SetAllocFailureCallback(void (*callback)()) {
    failureCallback = callback;
}

namespace diag {

// Stands before the blocks of a chunk. With the tracker's own header before it, it keeps blocks aligned to 16 bytes.
struct BlockLists::Chunk {
    Chunk* next;
};

BlockLists::BlockLists(size_t blockSize, size_t blockCount, MemTracker* tracker)
    : blockSize_(std::max(blockSize, sizeof(void*))), blockCount_(std::max(blockCount, kMinBlockCount)),
      tracker_(tracker) {
    static_assert((sizeof(BlockHeader) + sizeof(Chunk)) % 16 == 0);
}

BlockLists::~BlockLists() {
    for (Slot& lists : slots_)
        while (Chunk* chunk = lists.chunks) {
            lists.chunks = chunk->next;
            memFreeShared(tracker_, chunk);
        }
}

bool BlockLists::AddChunk(Slot& lists) {
    const bool countable = blockCount_ <= (SIZE_MAX - sizeof(Chunk)) / blockSize_;
    // Chunks belong to no thread: whoever ends the allocator frees them all.
    const size_t bytes = blockSize_ * blockCount_;
    void* memory =
        countable ? memAllocShared(tracker_, sizeof(Chunk) + bytes, __LINE__, SourceName(__FILE__)) : nullptr;
    if (!memory) return false;
    lists.chunks = new (memory) Chunk{lists.chunks};
    lists.next = static_cast<std::byte*>(memory) + sizeof(Chunk);
    lists.end = lists.next + bytes;
    chunkCount_.fetch_add(1, std::memory_order_relaxed);
    return true;
}

void BlockLists::TellFailure() {
    const auto callback = failureCallback.load();
    if (!failureShown_.exchange(true) && callback) callback();
}

} // namespace diag

Pool::Pool(size_t blockSize, size_t blockCount, MemTracker* tracker)
    : lists_(CheckedPoolBlock(blockSize), blockCount, tracker) {}

std::unique_ptr<IMemMgr> CreateBlockAllocator(size_t blockSize, size_t blockCount, int threadCount) {
    if (threadCount < 2) return std::unique_ptr<IMemMgr>(new (std::nothrow) Pool(blockSize, blockCount));
    return std::unique_ptr<IMemMgr>(new (std::nothrow) MemoryManager(blockSize, blockCount));
}
