#pragma once
// What this process has used of the machine.

#include <cstdint>

namespace host {

/// Processor seconds of all threads, user and system.
double ProcessCpuSeconds();
/// Most memory the process had resident so far; 0 when the system does not tell.
uint64_t ProcessPeakRssBytes();

} // namespace host
