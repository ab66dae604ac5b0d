#include "counted_new.h"

#include <cstdlib>
#include <new>

namespace {

void* Allocate(std::size_t size, std::size_t alignment) noexcept {
    if (faults::allocations.Refuse()) return nullptr;
    if (alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__) return std::malloc(size ? size : 1);
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    void* memory = Allocate(size, alignment);
    if (!memory) throw std::bad_alloc();
    return memory;
}

} // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size, 1);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size, 1);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, 1);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
