#include "Memory.h"

#include <cstring>
#include <sys/uio.h>
#include <unistd.h>

namespace diag {

// Through the system, which answers with an error where a plain read would fault.
bool ReadMemory(uint64_t address, void* target, size_t size) {
    iovec from = {reinterpret_cast<void*>(address), size};
    iovec to = {target, size};
    return process_vm_readv(getpid(), &to, 1, &from, 1, 0) == static_cast<ssize_t>(size);
}

bool ReadText(uint64_t address, char* target, size_t size) {
    size_t length = 0;
    for (; length + 1 < size; ++length)
        if (!ReadMemory(address + length, target + length, 1) || target[length] == '\0') break;
    const bool started = length > 0 || ReadMemory(address, target, 1);
    target[length] = '\0';
    return started;
}

} // namespace diag
