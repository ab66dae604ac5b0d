// Chunks of the block allocators.
#include "DebugTools/MemMgr.h"

#include "DebugTools/Assert.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

constexpr size_t kMinPoolBlock = 24;
constexpr size_t kMinBlockCount = 256;

constexpr RawAllocator kGeneralAllocator = {std::malloc, std::free};

std::atomic<const RawAllocator*> rawAllocator{&kGeneralAllocator};
std::atomic<void (*)()> failureCallback{nullptr};

size_t CheckedPoolBlock(size_t blockSize) {
    SASSERT_ONCE(blockSize >= kMinPoolBlock);
    return std::max(blockSize, kMinPoolBlock);
}

} // namespace

void SetRawAllocator(const RawAllocator* allocator) {
    rawAllocator = allocator ? allocator : &kGeneralAllocator;
}
void SetAllocFailureCallback(void (*callback)()) {
    failureCallback = callback;
}

namespace diag {

// Stands before the blocks of a chunk.
struct alignas(16) BlockLists::Chunk {
    Chunk* next;
};

BlockLists::BlockLists(size_t blockSize, size_t blockCount)
    : blockSize_(std::max(blockSize, sizeof(void*))), blockCount_(std::max(blockCount, kMinBlockCount)),
      raw_(*rawAllocator.load()) {}

BlockLists::~BlockLists() {
    for (Slot& lists : slots_)
        while (Chunk* chunk = lists.chunks) {
            lists.chunks = chunk->next;
            raw_.free(chunk);
        }
}

bool BlockLists::AddChunk(Slot& lists) {
    const bool countable = blockCount_ <= (SIZE_MAX - sizeof(Chunk)) / blockSize_;
    void* memory = countable ? raw_.alloc(sizeof(Chunk) + blockSize_ * blockCount_) : nullptr;
    if (!memory) {
        const auto callback = failureCallback.load();
        if (!failureShown_.exchange(true) && callback) callback();
        return false;
    }
    lists.chunks = new (memory) Chunk{lists.chunks};
    // Linked from the last to the first, so that blocks are handed out in the order of their addresses.
    std::byte* blocks = static_cast<std::byte*>(memory) + sizeof(Chunk);
    for (size_t i = blockCount_; i-- > 0;) {
        std::memcpy(blocks + i * blockSize_, &lists.free, sizeof lists.free);
        lists.free = blocks + i * blockSize_;
    }
    chunkCount_.fetch_add(1, std::memory_order_relaxed);
    return true;
}

} // namespace diag

Pool::Pool(size_t blockSize, size_t blockCount) : lists_(CheckedPoolBlock(blockSize), blockCount) {}

std::unique_ptr<IMemMgr> CreateBlockAllocator(size_t blockSize, size_t blockCount, int threadCount) {
    if (threadCount < 2) return std::unique_ptr<IMemMgr>(new (std::nothrow) Pool(blockSize, blockCount));
    return std::unique_ptr<IMemMgr>(new (std::nothrow) MemoryManager(blockSize, blockCount));
}
