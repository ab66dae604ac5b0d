// Modules on Windows: the address space's regions and the headers of the files mapped there.
#include "DebugTools/platform/Modules.h"

#include "Win32.h"

#include <cstdio>

namespace diag {

namespace {

const IMAGE_NT_HEADERS* HeadersOf(uint64_t base) {
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    if (dos->e_magic != IMAGE_DOS_SIGNATURE) return nullptr;
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + static_cast<uint64_t>(dos->e_lfanew));
    return headers->Signature == IMAGE_NT_SIGNATURE ? headers : nullptr;
}

void FindSection(const IMAGE_NT_HEADERS& headers, ModulePlace& place) {
    const IMAGE_SECTION_HEADER* sections = IMAGE_FIRST_SECTION(&headers);
    for (unsigned i = 0; i < headers.FileHeader.NumberOfSections; ++i) {
        const uint64_t start = sections[i].VirtualAddress;
        const uint64_t size = sections[i].Misc.VirtualSize > sections[i].SizeOfRawData ? sections[i].Misc.VirtualSize
                                                                                       : sections[i].SizeOfRawData;
        if (place.moduleOffset < start || place.moduleOffset - start >= size) continue;
        place.section = i + 1;
        place.sectionOffset = place.moduleOffset - start;
        return;
    }
}

bool PathOf(uint64_t base, char (&path)[kModulePathSize]) {
    const DWORD length = GetModuleFileNameA(reinterpret_cast<HMODULE>(base), path, sizeof path);
    if (length > 0 && length < sizeof path) return true;
    path[0] = '\0';
    return false;
}

} // namespace

ModulePlace PlaceOf(uint64_t address) {
    ModulePlace place;
    MEMORY_BASIC_INFORMATION region;
    if (!VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) || !region.AllocationBase)
        return place;
    const auto base = reinterpret_cast<uint64_t>(region.AllocationBase);
    if (!PathOf(base, place.path)) return place;
    const IMAGE_NT_HEADERS* headers = HeadersOf(base);
    if (!headers) return ModulePlace();
    place.base = base;
    place.moduleOffset = address - base;
    FindSection(*headers, place);
    return place;
}

ModuleFileFacts FactsOf(const char* path) {
    ModuleFileFacts facts;
    WIN32_FILE_ATTRIBUTE_DATA data;
    SYSTEMTIME utc;
    if (!GetFileAttributesExA(path, GetFileExInfoStandard, &data) || !FileTimeToSystemTime(&data.ftLastWriteTime, &utc))
        return facts;
    facts = {utc.wYear, utc.wMonth, utc.wDay, utc.wHour, utc.wMinute, utc.wSecond, 0, 0, 0};
    facts.timeHigh = data.ftLastWriteTime.dwHighDateTime;
    facts.timeLow = data.ftLastWriteTime.dwLowDateTime;
    facts.size = uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
    return facts;
}

void ForEachLowModule(void (*visit)(uint64_t base, const char* path, void* argument), void* argument) {
    constexpr uint64_t kLowEnd = uint64_t{1} << 32;
    constexpr uint64_t kStepAfterFailure = 64u << 10;
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    uint64_t lastBase = 0;
    for (uint64_t address = 0; address < kLowEnd;) {
        MEMORY_BASIC_INFORMATION region;
        if (!VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region)) {
            address += kStepAfterFailure;
            continue;
        }
        const auto base = reinterpret_cast<uint64_t>(region.AllocationBase);
        if (region.State == MEM_COMMIT && base > lastBase) {
            lastBase = base;
            char path[kModulePathSize];
            if (PathOf(base, path)) visit(base, path, argument);
        }
        address += region.RegionSize > system.dwPageSize ? region.RegionSize : system.dwPageSize;
    }
}

} // namespace diag
