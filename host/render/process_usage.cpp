#include "render/process_usage.h"

#ifdef _WIN32
#include <windows.h>

#include <psapi.h>
#else
#include <sys/resource.h>

#include <cstdio>
#endif

namespace host {

#ifdef _WIN32

double ProcessCpuSeconds() {
    FILETIME created, ended, kernel, user;
    if (!GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user)) return 0;
    const auto ticks = [](const FILETIME& t) {
        return double(t.dwHighDateTime) * 4294967296.0 + double(t.dwLowDateTime);
    };
    return (ticks(kernel) + ticks(user)) * 1e-7;
}

uint64_t ProcessPeakRssBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    return K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) ? counters.PeakWorkingSetSize : 0;
}

#else

double ProcessCpuSeconds() {
    rusage usage{};
    if (getrusage(RUSAGE_SELF, &usage) != 0) return 0;
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) * 1e-6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// From the status file where there is one: ru_maxrss begins with what the parent had when it started this process.
uint64_t ProcessPeakRssBytes() {
    unsigned long long kib = 0;
    if (std::FILE* const f = std::fopen("/proc/self/status", "r")) {
        char line[256];
        while (kib == 0 && std::fgets(line, sizeof line, f)) std::sscanf(line, "VmHWM: %llu kB", &kib);
        std::fclose(f);
    }
    if (kib != 0) return uint64_t(kib) * 1024;
    rusage usage{};
    return getrusage(RUSAGE_SELF, &usage) == 0 ? uint64_t(usage.ru_maxrss) * 1024 : 0;
}

#endif

} // namespace host
