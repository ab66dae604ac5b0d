#include "ElfFile.h"

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

namespace diag {

namespace {

template <class T>
bool ReadAt(int file, uint64_t offset, T& value) {
    return pread(file, &value, sizeof value, static_cast<off_t>(offset)) == static_cast<ssize_t>(sizeof value);
}

using SectionHeader = ElfW(Shdr);

} // namespace

ElfFile::ElfFile(const char* path) : file_(open(path, O_RDONLY | O_CLOEXEC)) {
    ElfW(Ehdr) header;
    if (file_ < 0 || !ReadAt(file_, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_shentsize != sizeof(SectionHeader))
        return;
    sectionTable_ = header.e_shoff;
    sectionCount_ = header.e_shnum;
    nameSection_ = header.e_shstrndx;
}

ElfFile::~ElfFile() {
    if (file_ >= 0) close(file_);
}

bool ElfFile::FindSection(uint64_t address, unsigned& section, uint64_t& offset) const {
    // The first header is a placeholder, so the numbers count from 1 by themselves.
    for (unsigned i = 1; i < sectionCount_; ++i) {
        SectionHeader header;
        if (!ReadAt(file_, sectionTable_ + i * sizeof header, header)) return false;
        if (!(header.sh_flags & SHF_ALLOC) || (header.sh_flags & SHF_TLS)) continue;
        if (address < header.sh_addr || address - header.sh_addr >= header.sh_size) continue;
        section = i;
        offset = address - header.sh_addr;
        return true;
    }
    return false;
}

ModuleSymbols ElfFile::Symbols() const {
    SectionHeader names = {};
    if (sectionCount_ == 0 || !ReadAt(file_, sectionTable_ + nameSection_ * sizeof names, names))
        return ModuleSymbols::kNone;
    ModuleSymbols best = ModuleSymbols::kNone;
    for (unsigned i = 1; i < sectionCount_; ++i) {
        SectionHeader header;
        if (!ReadAt(file_, sectionTable_ + i * sizeof header, header)) break;
        char name[16] = {};
        if (pread(file_, name, sizeof name - 1, static_cast<off_t>(names.sh_offset + header.sh_name)) <= 0) break;
        if (std::strcmp(name, ".debug_info") == 0 && header.sh_size > 0) return ModuleSymbols::kFull;
        if (header.sh_type == SHT_SYMTAB) best = ModuleSymbols::kTable;
        if (header.sh_type == SHT_DYNSYM && best == ModuleSymbols::kNone) best = ModuleSymbols::kExported;
    }
    return best;
}

} // namespace diag
