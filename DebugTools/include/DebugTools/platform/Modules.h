// The program and library files of this process.
#pragma once

#include <cstddef>
#include <cstdint>

namespace diag {

constexpr size_t kModulePathSize = 1024;

/// Where an address lies. All 0 and empty when in no module. Found without allocating.
struct ModulePlace {
    uint64_t base = 0;
    unsigned section = 0;       ///< number of the section, counted from 1; 0 when the file cannot be read
    uint64_t sectionOffset = 0; ///< from the section's start
    uint64_t moduleOffset = 0;  ///< from the module's start
    char path[kModulePathSize] = {};
};
ModulePlace PlaceOf(uint64_t address);

/// How much the files tell about a module's symbols.
enum class ModuleSymbols { kNone, kExported, kTable, kFull };

/// A file's size and the time it was last written.
struct ModuleFileFacts {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0; ///< UTC
    uint32_t timeHigh = 0, timeLow = 0;                                 ///< the same in units of 100 ns since 1601
    uint64_t size = 0;
};
/// All 0 when there is no such file.
ModuleFileFacts FactsOf(const char* path);

/// Calls `visit(base, path, argument)` for every module below 4 GiB, by rising base address. Modules loaded higher and
/// those without a file are left out.
void ForEachLowModule(void (*visit)(uint64_t base, const char* path, void* argument), void* argument);

} // namespace diag
