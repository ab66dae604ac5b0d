#pragma once
// Arrays and objects that belong to one thread and are written all the time: none shares a cache line with another
// thread's, wherever they were allocated.

#include <cstddef>
#include <new>
#include <vector>

/// Two lines of 64 bytes: processors fetch them in pairs.
inline constexpr size_t kThreadAlignment = 128;

/// Whole cache lines for every block.
template <class T>
struct CacheLineAllocator {
    using value_type = T;
    CacheLineAllocator() = default;
    template <class U>
    CacheLineAllocator(const CacheLineAllocator<U>&) {}
    static size_t Bytes(size_t n) {
        return (n * sizeof(T) + kThreadAlignment - 1) / kThreadAlignment * kThreadAlignment;
    }
    T* allocate(size_t n) { return static_cast<T*>(::operator new(Bytes(n), std::align_val_t(kThreadAlignment))); }
    void deallocate(T* p, size_t) { ::operator delete(p, std::align_val_t(kThreadAlignment)); }
    friend bool operator==(const CacheLineAllocator&, const CacheLineAllocator&) { return true; }
};

template <class T>
using ThreadVector = std::vector<T, CacheLineAllocator<T>>;
