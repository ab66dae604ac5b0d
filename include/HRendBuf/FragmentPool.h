#pragma once
// Blocks of one size for fragments.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

/// A block allocator with sixteen independent slots, one for each rendering thread. A slot is used by one thread at a
/// time; a block may be freed into any slot. Chunks are handed out from their start on, so that memory of a chunk that
/// was never reached is never touched.
class FragmentPool {
public:
    static constexpr int kSlots = 16;

    /// `blockSize` bytes a block (a multiple of 8), `blockCount` blocks a chunk, at most `maxChunks` chunks a slot.
    FragmentPool(size_t blockSize, size_t blockCount, size_t maxChunks = SIZE_MAX)
        : blockSize_(blockSize), chunkBytes_(blockSize * blockCount), maxChunks_(maxChunks) {}

    /// A block, or null when memory is exhausted.
    void* Alloc(int slot) {
        Slot& s = slots_[slot];
        if (s.free) {
            FreeBlock* block = s.free;
            s.free = block->next;
            return block;
        }
        if (s.pos == s.end && !AddChunk(s)) return nullptr;
        std::byte* block = s.pos;
        s.pos += blockSize_;
        return block;
    }

    /// Takes a block back; null is ignored.
    void Free(void* block, int slot) {
        if (!block) return;
        slots_[slot].free = new (block) FreeBlock{slots_[slot].free};
    }

    /// Bytes held in chunks. Not while other threads allocate.
    size_t GetSize() const {
        size_t chunks = 0;
        for (const Slot& s : slots_) chunks += s.chunks.size();
        return chunks * chunkBytes_;
    }

private:
    struct FreeBlock {
        FreeBlock* next;
    };
    struct alignas(64) Slot {
        FreeBlock* free = nullptr;
        std::byte* pos = nullptr;
        std::byte* end = nullptr;
        std::vector<std::unique_ptr<std::byte[]>> chunks;
    };

    bool AddChunk(Slot& s) {
        if (s.chunks.size() >= maxChunks_) return false;
        std::byte* memory = new (std::nothrow) std::byte[chunkBytes_];
        if (!memory) return false;
        s.chunks.emplace_back(memory);
        s.pos = memory;
        s.end = memory + chunkBytes_;
        return true;
    }

    size_t blockSize_;
    size_t chunkBytes_;
    size_t maxChunks_;
    Slot slots_[kSlots];
};

/// The allocator of the render buffer.
using FragmentAllocator = FragmentPool;
