// Objects that last until the process is gone.
#pragma once

#include <cstddef>
#include <new>

namespace diag {

/// An object made at first use and never destroyed: something may still ask for it while the process ends. `Tag` tells
/// several of one type apart.
template <class T, class Tag>
T& Immortal() {
    alignas(T) static std::byte storage[sizeof(T)];
    static T* object = new (storage) T;
    return *object;
}

} // namespace diag
