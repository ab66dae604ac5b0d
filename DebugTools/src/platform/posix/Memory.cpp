#include "Memory.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

namespace diag {

namespace {

// For containers that forbid the call below: a pipe takes the bytes and gives them back.
bool ReadThroughPipe(const void* source, void* target, size_t size) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return false;
    const auto whole = static_cast<ssize_t>(size);
    const bool good = write(ends[1], source, size) == whole && read(ends[0], target, size) == whole;
    close(ends[0]);
    close(ends[1]);
    return good;
}

} // namespace

// Through the system, which answers with an error where a plain read would fault.
bool ReadMemory(uint64_t address, void* target, size_t size) {
    iovec from = {reinterpret_cast<void*>(address), size};
    iovec to = {target, size};
    if (process_vm_readv(getpid(), &to, 1, &from, 1, 0) == static_cast<ssize_t>(size)) return true;
    return errno != EFAULT && ReadThroughPipe(from.iov_base, target, size);
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
