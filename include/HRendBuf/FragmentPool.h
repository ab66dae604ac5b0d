#pragma once
// Blocks of one size for fragments.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include "DebugTools/MemMgr.h"

/// The allocator of the render buffer, known by its type so that calls need no look-up. A slot is used by one thread at
/// a time; a block may be freed into any slot.
using FragmentPool = MemoryManager;
using FragmentAllocator = FragmentPool;
