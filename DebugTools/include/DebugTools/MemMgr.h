// Fixed-size block allocators, so that strands and fragments do not reach the general allocator while rendering.
#pragma once

#include "DebugTools/BiasedSection.h"
#include "DebugTools/MemTracker.h"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <memory>

/// Allocates blocks of one size, in chunks from the memory tracker. A slot, 0 to 15, names the calling worker thread's
/// own lists; a larger number counts modulo 16. The destructor frees all memory, blocks in use too.
class IMemMgr {
public:
    static constexpr int kSlots = 16;

    virtual ~IMemMgr() = default;
    /// A block, uninitialised, or null when no memory can be had.
    virtual void* Alloc(int slot) = 0;
    /// Fills the block with 0xCE (but for the link of the free list in its first bytes) and keeps it for later. Null is
    /// ignored. A block may be given back to another slot than it came from.
    virtual void Free(void* block, int slot) = 0;
    /// Bytes of all blocks held, in use or free.
    virtual size_t GetSize() const = 0;
};

/// Sets what a block allocator calls, once in its life, when a chunk cannot be had; null for nothing.
void SetAllocFailureCallback(void (*callback)());

namespace diag {

/// The lists of all slots: what both allocators are made of. Locks nothing.
class BlockLists {
public:
    BlockLists(size_t blockSize, size_t blockCount, MemTracker* tracker);
    ~BlockLists();
    BlockLists(const BlockLists&) = delete;
    BlockLists& operator=(const BlockLists&) = delete;

    void* Alloc(int slot) {
        Slot& lists = slots_[static_cast<unsigned>(slot) % IMemMgr::kSlots];
        if (void* block = lists.free) {
            std::memcpy(&lists.free, block, sizeof lists.free);
            return block;
        }
        if (lists.next == lists.end && !AddChunk(lists)) return nullptr;
        std::byte* block = lists.next;
        lists.next += blockSize_;
        return block;
    }

    void Free(void* block, int slot) {
        if (!block) return;
        Slot& lists = slots_[static_cast<unsigned>(slot) % IMemMgr::kSlots];
        Fill(block);
        std::memcpy(block, &lists.free, sizeof lists.free);
        lists.free = block;
    }

    /// For a call of Alloc that failed: tells the failure callback, the first time. Apart from Alloc, because the user
    /// is told, and no lock should be held for so long.
    void TellFailure();

    size_t GetSize() const { return chunkCount_.load(std::memory_order_relaxed) * blockSize_ * blockCount_; }

private:
    struct Chunk;
    // Slots of different threads do not share a cache line.
    struct alignas(64) Slot {
        void* free = nullptr;
        std::byte* next = nullptr; ///< the last chunk's first block that was never given out, up to `end`
        std::byte* end = nullptr;
        Chunk* chunks = nullptr;
    };

    // What the link leaves of the block. The size that nearly all blocks have, a fragment's, is filled without a call.
    void Fill(void* block) const {
        std::byte* const rest = static_cast<std::byte*>(block) + sizeof(void*);
        if (blockSize_ == 24) [[likely]]
            std::memset(rest, 0xCE, 24 - sizeof(void*));
        else
            std::memset(rest, 0xCE, blockSize_ - sizeof(void*));
    }

    bool AddChunk(Slot& lists);

    size_t blockSize_;
    size_t blockCount_;
    MemTracker* tracker_;
    std::atomic<size_t> chunkCount_{0};
    std::atomic<bool> failureShown_{false};
    Slot slots_[IMemMgr::kSlots];
};

} // namespace diag

/// Block allocator behind one lock, for a renderer with one thread. A block size below 24 raises the assertion, once
/// per process, and counts as 24; a block count below 256 counts as 256.
class Pool final : public IMemMgr {
public:
    Pool(size_t blockSize, size_t blockCount, MemTracker* tracker = nullptr);

    void* Alloc(int slot) override {
        void* block = section_.Run([&] { return lists_.Alloc(slot); });
        if (!block) lists_.TellFailure();
        return block;
    }
    void Free(void* block, int slot) override {
        section_.Run([&] { lists_.Free(block, slot); });
    }
    size_t GetSize() const override { return lists_.GetSize(); }

private:
    diag::BiasedSection section_;
    diag::BlockLists lists_;
};

/// Block allocator without a lock, for two and more threads: each uses a slot of its own. A block size below 8 counts
/// as 8 (a free block holds a link), a block count below 256 as 256.
class MemoryManager final : public IMemMgr {
public:
    MemoryManager(size_t blockSize, size_t blockCount, MemTracker* tracker = nullptr)
        : lists_(blockSize, blockCount, tracker) {}

    void* Alloc(int slot) override {
        void* block = lists_.Alloc(slot);
        if (!block) lists_.TellFailure();
        return block;
    }
    void Free(void* block, int slot) override { lists_.Free(block, slot); }
    size_t GetSize() const override { return lists_.GetSize(); }

private:
    diag::BlockLists lists_;
};

/// A `Pool` for fewer than 2 render threads, a `MemoryManager` for more. Null when there is no memory for it.
std::unique_ptr<IMemMgr> CreateBlockAllocator(size_t blockSize, size_t blockCount, int threadCount);
