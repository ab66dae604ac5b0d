// Reading memory that may not be there.
#pragma once

#include <cstddef>
#include <cstdint>

namespace diag {

/// Copies bytes of this process. False, with `target` in any state, when not all of them can be read.
bool ReadMemory(uint64_t address, void* target, size_t size);
/// Copies a text up to its end, at most `size` - 1 bytes, and terminates it. False when its start cannot be read.
bool ReadText(uint64_t address, char* target, size_t size);

} // namespace diag
