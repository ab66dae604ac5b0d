// Machine, process and time on POSIX systems. Memory and processor details come from where Linux keeps them.
#include "DebugTools/platform/System.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fstream>
#include <sched.h>
#include <sys/utsname.h>
#include <unistd.h>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace diag {

int ProcessorCount() {
#if defined(__linux__)
    // The processors this process may run on, which in a container are fewer than the machine's.
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0 && CPU_COUNT(&set) > 0) return CPU_COUNT(&set);
#endif
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? static_cast<int>(online) : 1;
}

uint32_t TickMs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint32_t>(static_cast<uint64_t>(now.tv_sec) * 1000 +
                                 static_cast<uint64_t>(now.tv_nsec) / 1000000);
}

bool PerformanceCounter(uint64_t& ticks, uint64_t& ticksPerSecond) {
    timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) {
        ticks = ticksPerSecond = 0;
        return false;
    }
    ticks = static_cast<uint64_t>(now.tv_sec) * 1000000000u + static_cast<uint64_t>(now.tv_nsec);
    ticksPerSecond = 1000000000u;
    return true;
}

MemoryAmounts GetMemoryAmounts() {
    MemoryAmounts amounts;
    uint64_t swapTotal = 0;
    uint64_t swapFree = 0;
    std::ifstream file("/proc/meminfo");
    std::string line;
    while (std::getline(file, line)) {
        unsigned long long kilobytes = 0;
        if (std::sscanf(line.c_str(), "MemTotal: %llu", &kilobytes) == 1) amounts.physicalTotal = kilobytes << 10;
        if (std::sscanf(line.c_str(), "MemAvailable: %llu", &kilobytes) == 1)
            amounts.physicalAvailable = kilobytes << 10;
        if (std::sscanf(line.c_str(), "SwapTotal: %llu", &kilobytes) == 1) swapTotal = kilobytes << 10;
        if (std::sscanf(line.c_str(), "SwapFree: %llu", &kilobytes) == 1) swapFree = kilobytes << 10;
    }
#if defined(_SC_PHYS_PAGES)
    if (amounts.physicalTotal == 0) {
        const long pages = sysconf(_SC_PHYS_PAGES);
        const long pageSize = sysconf(_SC_PAGESIZE);
        if (pages > 0 && pageSize > 0)
            amounts.physicalTotal = static_cast<uint64_t>(pages) * static_cast<uint64_t>(pageSize);
    }
#endif
    amounts.pageFileTotal = amounts.physicalTotal + swapTotal;
    amounts.pageFileAvailable = amounts.physicalAvailable + swapFree;
    return amounts;
}

MachineDescription DescribeMachine() {
    MachineDescription machine;
    utsname name;
    if (uname(&name) == 0) {
        machine.systemName = name.sysname;
        machine.servicePack = name.release;
        std::sscanf(name.release, "%d.%d.%d", &machine.versionMajor, &machine.versionMinor, &machine.build);
    }
#if defined(__x86_64__) || defined(__i386__)
    machine.processorType = sizeof(void*) == 8 ? 8664 : 586;
    machine.architecture = sizeof(void*) == 8 ? 9 : 0;
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d)) {
        const unsigned family = (a >> 8) & 15u;
        const unsigned model = (a >> 4) & 15u;
        machine.processorLevel = static_cast<int>(family == 15 ? family + ((a >> 20) & 255u) : family);
        const unsigned fullModel = family == 6 || family == 15 ? model | ((a >> 12) & 0xF0u) : model;
        machine.processorRevision = static_cast<int>((fullModel << 8) | (a & 15u));
    }
#elif defined(__arm__) || defined(__aarch64__)
    machine.architecture = 5;
#endif
    return machine;
}

CalendarTime LocalCalendarTime() {
    const time_t now = time(nullptr);
    tm local = {};
    localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

std::string ModulePath(const void* address) {
    Dl_info info;
    if (dladdr(address, &info) == 0 || !info.dli_fname || !*info.dli_fname) return {};
    std::string path;
    // The program's own file is named as it was called, which need not be a path at all.
    char* full = realpath(info.dli_fname, nullptr);
    if (!full) full = realpath("/proc/self/exe", nullptr);
    if (full) path = full;
    std::free(full);
    return path;
}

bool GetEnvironment(const char* name, std::string& value) {
    const char* found = name ? std::getenv(name) : nullptr;
    if (!found) return false;
    value = found;
    return true;
}

// Codes without a name do not come from this system's processor signals.
void SystemExceptionText(uint32_t, char* text, size_t size) {
    if (size > 0) text[0] = '\0';
}

// There is no debugger stream here: a debugger shows what the process prints, and the log is not printed.
void DebuggerOutput(const char*) {}

bool AskYesNo(const char* title, const char* text) {
    std::fprintf(stderr, "%s\n%s\n", title, text);
    return true;
}

} // namespace diag
