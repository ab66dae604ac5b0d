// What the headers of an ELF file tell, read without allocating.
#pragma once

#include "DebugTools/platform/Modules.h"

namespace diag {

class ElfFile {
public:
    explicit ElfFile(const char* path);
    ~ElfFile();
    ElfFile(const ElfFile&) = delete;
    ElfFile& operator=(const ElfFile&) = delete;

    /// The section that holds an address of the file, counted from 1. False, with nothing changed, when none does.
    bool FindSection(uint64_t address, unsigned& section, uint64_t& offset) const;
    ModuleSymbols Symbols() const;

private:
    int file_ = -1;
    uint64_t sectionTable_ = 0;
    unsigned sectionCount_ = 0;
    unsigned nameSection_ = 0;
};

} // namespace diag
