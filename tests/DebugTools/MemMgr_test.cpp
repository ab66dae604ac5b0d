// The block allocators.
#include "DebugTools/MemMgr.h"
#include "TestFiles.h"

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <map>
#include <rapidcheck/gtest.h>
#include <vector>

namespace {

// A raw allocator with a budget of chunks, which notes what it gave.
int chunksLeft = 0, chunksLive = 0;
const RawAllocator kLimited = {[](size_t size) -> void* {
                                   if (chunksLeft == 0) return nullptr;
                                   --chunksLeft, ++chunksLive;
                                   return std::malloc(size);
                               },
                               [](void* memory) {
                                   --chunksLive;
                                   std::free(memory);
                               }};

int failures = 0;

struct LimitedChunks {
    DefaultLogIn log; // the tracker tells of what failed
    explicit LimitedChunks(int budget) {
        chunksLeft = budget;
        chunksLive = failures = 0;
        SetRawAllocator(&kLimited);
        SetAllocFailureCallback([] { ++failures; });
    }
    ~LimitedChunks() {
        SetRawAllocator(nullptr);
        SetAllocFailureCallback(nullptr);
    }
};

TEST(BlockAllocator, KindByThreadCount) {
    EXPECT_NE(dynamic_cast<Pool*>(CreateBlockAllocator(32, 300, 0).get()), nullptr);
    EXPECT_NE(dynamic_cast<Pool*>(CreateBlockAllocator(32, 300, 1).get()), nullptr);
    EXPECT_NE(dynamic_cast<MemoryManager*>(CreateBlockAllocator(32, 300, 2).get()), nullptr);
    EXPECT_NE(dynamic_cast<MemoryManager*>(CreateBlockAllocator(32, 300, 16).get()), nullptr);
}

TEST(BlockAllocator, SizeGrowsByChunksOfAtLeast256Blocks) {
    for (int threads : {1, 2}) {
        auto memory = CreateBlockAllocator(40, 10, threads);
        EXPECT_EQ(memory->GetSize(), 0u);
        for (int i = 0; i < 256; ++i) ASSERT_NE(memory->Alloc(0), nullptr);
        EXPECT_EQ(memory->GetSize(), 40u * 256);
        memory->Alloc(0);
        EXPECT_EQ(memory->GetSize(), 2 * 40u * 256);
        memory->Alloc(15);
        EXPECT_EQ(memory->GetSize(), 3 * 40u * 256);

        auto larger = CreateBlockAllocator(40, 257, threads);
        larger->Alloc(3);
        EXPECT_EQ(larger->GetSize(), 40u * 257);
    }
}

TEST(BlockAllocator, FreedBlocksAre0xCEBehindTheLinkAndComeBackFirst) {
    for (int threads : {1, 2})
        for (size_t size : {24u, 32u, 40u, 48u, 200u, 16384u}) {
            auto memory = CreateBlockAllocator(size, 256, threads);
            auto* first = static_cast<unsigned char*>(memory->Alloc(1));
            memory->Alloc(1);
            std::memset(first, 0x11, size);
            memory->Free(first, 1);
            for (size_t i = sizeof(void*); i < size; ++i) ASSERT_EQ(first[i], 0xCE) << size << " at " << i;
            EXPECT_EQ(memory->Alloc(1), first);
        }
}

TEST(BlockAllocator, FreeIgnoresNull) {
    for (int threads : {1, 2}) {
        auto memory = CreateBlockAllocator(32, 256, threads);
        memory->Free(nullptr, 0);
        EXPECT_EQ(memory->GetSize(), 0u);
        EXPECT_NE(memory->Alloc(0), nullptr);
    }
}

TEST(BlockAllocator, ABlockMayGoBackToAnotherSlot) {
    MemoryManager memory(32, 256);
    void* block = memory.Alloc(2);
    memory.Free(block, 5);
    EXPECT_EQ(memory.Alloc(5), block);
    EXPECT_EQ(memory.GetSize(), 32u * 256);
}

// The user may take his time with the message: other threads must get on meanwhile.
TEST(BlockAllocator, TheMessageIsShownOutsideTheSection) {
    const LimitedChunks limit(0);
    static Pool* pool = nullptr;
    Pool exhausted(32, 256);
    pool = &exhausted;
    SetAllocFailureCallback([] {
        diag::Thread other;
        other.Start([] { pool->Alloc(1); });
        other.Join();
        ++failures;
    });
    EXPECT_EQ(pool->Alloc(0), nullptr);
    EXPECT_EQ(failures, 1);
}

TEST(BlockAllocator, ExhaustionGivesNullAndOneMessagePerAllocator) {
    for (int threads : {1, 2}) {
        LimitedChunks limit(2);
        {
            auto memory = CreateBlockAllocator(32, 256, threads);
            std::vector<void*> blocks;
            while (void* block = memory->Alloc(0)) blocks.push_back(block);
            EXPECT_EQ(blocks.size(), 512u);
            EXPECT_EQ(failures, 1);
            EXPECT_EQ(memory->Alloc(0), nullptr);
            EXPECT_EQ(memory->Alloc(7), nullptr);
            EXPECT_EQ(failures, 1);
            EXPECT_EQ(memory->GetSize(), 2 * 32u * 256);
            // What is given back serves on.
            memory->Free(blocks.back(), 0);
            EXPECT_EQ(memory->Alloc(0), blocks.back());

            auto another = CreateBlockAllocator(32, 256, threads);
            EXPECT_EQ(another->Alloc(0), nullptr);
            EXPECT_EQ(failures, 2);
            EXPECT_EQ(chunksLive, 2);
        }
        EXPECT_EQ(chunksLive, 0);
    }
}

TEST(BlockAllocator, ExhaustionWithoutACallbackOnlyGivesNull) {
    LimitedChunks limit(0);
    SetAllocFailureCallback(nullptr);
    Pool pool(32, 256);
    EXPECT_EQ(pool.Alloc(0), nullptr);
}

TEST(BlockAllocator, ChunkSizesThatDoNotFitAreRefused) {
    MemoryManager memory(SIZE_MAX / 256, 512);
    EXPECT_EQ(memory.Alloc(0), nullptr);
    EXPECT_EQ(memory.GetSize(), 0u);
}

TEST(BlockAllocator, SmallestBlockOfAMemoryManagerHoldsALink) {
    MemoryManager memory(1, 256);
    void* first = memory.Alloc(0);
    void* second = memory.Alloc(0);
    EXPECT_EQ(static_cast<char*>(second) - static_cast<char*>(first), static_cast<ptrdiff_t>(sizeof(void*)));
}

TEST(Pool, SmallBlocksAssertOnceAndCountAs24) {
    // The report is made once per process, so the check runs in a process of its own.
    DefaultLogIn own;
    auto run = [&] {
        GetDiagSystem()->systemInfoWritten = true;
        GetDiagSystem()->moduleListWritten = true;
        Pool exact(24, 256);
        Pool small(16, 256), smaller(1, 256);
        void* first = small.Alloc(0);
        void* second = small.Alloc(0);
        smaller.Alloc(0);
        const bool good = static_cast<char*>(second) - static_cast<char*>(first) == 24 && small.GetSize() == 24 * 256 &&
                          smaller.GetSize() == 24 * 256;
        _exit(good ? 0 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
    const std::string text = Slurp(own.path);
    EXPECT_TRUE(text.starts_with("DebugTools/src/memMgr/MemMgr.cpp(")) << text;
    EXPECT_TRUE(text.ends_with("): sAssert failed\r\n")) << text;
    EXPECT_EQ(text.find("sAssert"), text.rfind("sAssert")) << text;
}

// A model beside the allocator: what is live with its pattern, and how many free blocks and chunks a slot must have.
struct Model {
    struct Block {
        int slot;
        unsigned char pattern;
    };
    std::map<unsigned char*, Block> live;
    size_t freeBlocks[IMemMgr::kSlots] = {};
    size_t chunks = 0;
};

void AllocStep(IMemMgr& memory, Model& model, size_t size, size_t count, int slot) {
    auto* block = static_cast<unsigned char*>(memory.Alloc(slot));
    RC_ASSERT((block != nullptr));
    if (model.freeBlocks[slot] == 0) {
        ++model.chunks;
        model.freeBlocks[slot] = count;
    }
    --model.freeBlocks[slot];
    const auto next = model.live.lower_bound(block);
    const bool belowNext = next == model.live.end() || block + size <= next->first;
    const bool abovePrevious = next == model.live.begin() || std::prev(next)->first + size <= block;
    RC_ASSERT((belowNext && abovePrevious));
    const auto pattern = static_cast<unsigned char>(model.live.size() * 31 + static_cast<size_t>(slot));
    std::memset(block, pattern, size);
    model.live[block] = {slot, pattern};
}

void FreeStep(IMemMgr& memory, Model& model, size_t size, size_t pick) {
    auto found = std::next(model.live.begin(), static_cast<ptrdiff_t>(pick % model.live.size()));
    const auto [block, facts] = *found;
    for (size_t i = 0; i < size; ++i) RC_ASSERT(block[i] == facts.pattern);
    memory.Free(block, facts.slot);
    for (size_t i = sizeof(void*); i < size; ++i) RC_ASSERT(block[i] == 0xCE);
    ++model.freeBlocks[facts.slot];
    model.live.erase(found);
}

RC_GTEST_PROP(BlockAllocatorProperty, RandomSequencesNeverOverlapAndKeepTheirContent, ()) {
    const size_t size = 24 + 8 * *rc::gen::inRange<size_t>(0, 6);
    const int threads = *rc::gen::inRange(1, 3);
    const unsigned seed = *rc::gen::arbitrary<unsigned>();
    const int growth = *rc::gen::inRange(40, 90); // percent of allocations among the steps
    auto memory = CreateBlockAllocator(size, 256, threads);
    Model model;
    std::srand(seed);
    for (int step = 0; step < 1500; ++step) {
        if (model.live.empty() || std::rand() % 100 < growth)
            AllocStep(*memory, model, size, 256, std::rand() % 3 * 7);
        else
            FreeStep(*memory, model, size, static_cast<size_t>(std::rand()));
        RC_ASSERT(memory->GetSize() == model.chunks * 256 * size);
    }
    while (!model.live.empty()) FreeStep(*memory, model, size, 0);
}

TEST(BlockAllocator, ThreadsWithSlotsOfTheirOwn) {
    for (int threads : {1, 2}) {
        auto memory = CreateBlockAllocator(32, 256, threads);
        std::atomic<int> wrong{0};
        diag::Thread workers[8];
        for (int slot = 0; slot < 8; ++slot)
            workers[slot].Start([&, slot] {
                std::vector<int*> blocks;
                for (int i = 0; i < 20000; ++i) {
                    if (blocks.empty() || i % 5 < 3) {
                        blocks.push_back(static_cast<int*>(memory->Alloc(slot)));
                        *blocks.back() = slot;
                    } else {
                        if (*blocks.back() != slot) ++wrong;
                        memory->Free(blocks.back(), slot);
                        blocks.pop_back();
                    }
                }
                for (int* block : blocks)
                    if (*block != slot) ++wrong;
            });
        for (diag::Thread& worker : workers) worker.Join();
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(memory->GetSize(), 8u * ((4001 + 255) / 256) * 256 * 32);
    }
}

} // namespace
