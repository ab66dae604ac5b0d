// Arrays in tracked memory that belongs to no thread: working buffers that one thread makes and another frees.
#pragma once

#include "DebugTools/MemTracker.h"

#include <memory>
#include <type_traits>

namespace diag {

struct SharedFree {
    void operator()(void* memory) const { memFreeShared(nullptr, memory); }
};

template <class T>
using SharedArray = std::unique_ptr<T[], SharedFree>;

/// `count` elements without a value, or null when memory is exhausted or the array would be 4 GiB and larger.
template <class T>
SharedArray<T> AllocShared(size_t count, int line, const char* file) {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T> && alignof(T) <= 8);
    if (count > UINT32_MAX / sizeof(T)) return nullptr;
    return SharedArray<T>(static_cast<T*>(memAllocShared(nullptr, count * sizeof(T), line, file)));
}

} // namespace diag

/// An array whose place in the tracker's reports is this line.
#define SHARED_ARRAY(T, count) diag::AllocShared<T>(count, __LINE__, diag::SourceName(__FILE__))
