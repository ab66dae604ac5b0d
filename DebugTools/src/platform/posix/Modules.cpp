// Modules on POSIX systems: the loader's list and the headers of ELF files.
#include "DebugTools/platform/Modules.h"

#include "ElfFile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

namespace diag {

namespace {

uint64_t LowestAddress(const dl_phdr_info& info) {
    uint64_t lowest = UINT64_MAX;
    for (int i = 0; i < info.dlpi_phnum; ++i)
        if (info.dlpi_phdr[i].p_type == PT_LOAD) lowest = std::min<uint64_t>(lowest, info.dlpi_phdr[i].p_vaddr);
    return lowest == UINT64_MAX ? 0 : info.dlpi_addr + (lowest & ~uint64_t{0xFFF});
}

bool Holds(const dl_phdr_info& info, uint64_t address) {
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        const auto& segment = info.dlpi_phdr[i];
        const uint64_t start = info.dlpi_addr + segment.p_vaddr;
        if (segment.p_type == PT_LOAD && address >= start && address - start < segment.p_memsz) return true;
    }
    return false;
}

// The program itself is listed without a name.
void CopyPath(const dl_phdr_info& info, char (&path)[kModulePathSize]) {
    if (info.dlpi_name && *info.dlpi_name) {
        std::snprintf(path, sizeof path, "%s", info.dlpi_name);
        return;
    }
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    path[length > 0 ? length : 0] = '\0';
}

struct Search {
    uint64_t address;
    ModulePlace place;
    uint64_t loadOffset = 0; ///< added to the file's addresses
    bool found = false;
};

int FindModule(dl_phdr_info* info, size_t, void* argument) {
    auto& search = *static_cast<Search*>(argument);
    if (!Holds(*info, search.address)) return 0;
    search.found = true;
    search.loadOffset = info->dlpi_addr;
    search.place.base = LowestAddress(*info);
    search.place.moduleOffset = search.address - search.place.base;
    CopyPath(*info, search.place.path);
    return 1;
}

constexpr uint64_t kLowEnd = uint64_t{1} << 32;
constexpr int kMaxLowModules = 256;

struct LowModules {
    struct Entry {
        uint64_t base;
        char path[kModulePathSize];
    };
    Entry entries[kMaxLowModules];
    int count = 0;
};

int AddLowModule(dl_phdr_info* info, size_t, void* argument) {
    auto& list = *static_cast<LowModules*>(argument);
    const uint64_t base = LowestAddress(*info);
    if (base == 0 || base >= kLowEnd || list.count == kMaxLowModules) return 0;
    LowModules::Entry& entry = list.entries[list.count];
    entry.base = base;
    CopyPath(*info, entry.path);
    if (entry.path[0] == '/') ++list.count;
    return 0;
}

} // namespace

ModulePlace PlaceOf(uint64_t address) {
    Search search{address, {}};
    dl_iterate_phdr(FindModule, &search);
    if (!search.found) return {};
    const ElfFile file(search.place.path);
    file.FindSection(address - search.loadOffset, search.place.section, search.place.sectionOffset);
    return search.place;
}

ModuleFileFacts FactsOf(const char* path) {
    constexpr int64_t kSecondsFrom1601To1970 = 11644473600;
    ModuleFileFacts facts;
    struct stat file;
    if (stat(path, &file) != 0) return facts;
    tm utc = {};
    gmtime_r(&file.st_mtim.tv_sec, &utc);
    facts = {utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, 0, 0, 0};
    const uint64_t units = static_cast<uint64_t>(file.st_mtim.tv_sec + kSecondsFrom1601To1970) * 10000000u +
                           static_cast<uint64_t>(file.st_mtim.tv_nsec) / 100;
    facts.timeHigh = static_cast<uint32_t>(units >> 32);
    facts.timeLow = static_cast<uint32_t>(units);
    facts.size = static_cast<uint64_t>(file.st_size);
    return facts;
}

void ForEachLowModule(void (*visit)(uint64_t base, const char* path, void* argument), void* argument) {
    static LowModules list; // too big for a handler's stack; written once a process, under the log's lock
    list.count = 0;
    dl_iterate_phdr(AddLowModule, &list);
    std::sort(list.entries, list.entries + list.count, [](const auto& a, const auto& b) { return a.base < b.base; });
    for (int i = 0; i < list.count; ++i) visit(list.entries[i].base, list.entries[i].path, argument);
}

} // namespace diag
