// The functions that are used of the system's library for debug information (libdw of elfutils), which is loaded at run
// time. The declarations state its documented binary interface; none of its headers is needed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

namespace diag::dw {

struct Dwfl;
struct DwflModule;
struct DwflLine;
struct Dwarf;

struct Die {
    void* address;
    void* unit;
    void* abbreviation;
    long padding;
};
struct Attribute {
    unsigned code;
    unsigned form;
    unsigned char* value;
    void* unit;
};
struct Operation {
    uint8_t code;
    uint64_t first, second;
    uint64_t offset;
};
struct Callbacks {
    void* findElf;
    void* findDebugInfo;
    void* sectionAddress;
    char** debugInfoPath;
};

/// The entry points; `level` tells which of them were found.
struct Library {
    int level = 0; ///< 0 none, 1 names and lines, 2 variables too

    Dwfl* (*begin)(const Callbacks*);
    void (*reportBegin)(Dwfl*);
    int (*reportProcess)(Dwfl*, pid_t);
    int (*reportEnd)(Dwfl*, void*, void*);
    void* findElf;
    void* findDebugInfo;
    DwflModule* (*moduleOf)(Dwfl*, uint64_t);
    const char* (*moduleInfo)(DwflModule*, void***, uint64_t*, uint64_t*, uint64_t*, uint64_t*, const char**,
                              const char**);
    const char* (*symbolOf)(DwflModule*, uint64_t, uint64_t*, void*, unsigned*, void**, uint64_t*);
    DwflLine* (*sourceOf)(DwflModule*, uint64_t);
    const char* (*lineInfo)(DwflLine*, uint64_t*, int*, int*, uint64_t*, uint64_t*);
    Dwarf* (*debugInfo)(DwflModule*, uint64_t*);

    Die* (*unitOf)(DwflModule*, uint64_t, uint64_t*);
    int (*scopesAt)(Die*, uint64_t, Die**);
    int (*scopesOf)(Die*, Die**);
    int (*child)(Die*, Die*);
    int (*sibling)(Die*, Die*);
    int (*tag)(Die*);
    const char* (*nameOf)(Die*);
    Attribute* (*attribute)(Die*, unsigned, Attribute*);
    Die* (*referenced)(Attribute*, Die*);
    int (*locationAt)(Attribute*, uint64_t, Operation**, size_t*, size_t);
    int (*unsignedValue)(Attribute*, uint64_t*);
    int (*peelType)(Die*, Die*);
};

/// Loads the library at the first call: from `folder` first, then by its plain name. Never unloaded.
const Library& LoadLibrary(const char* folder);

} // namespace diag::dw
