// Names and source lines on POSIX systems: from debug information where its library is present, else from the loader.
#include "DebugTools/platform/Symbols.h"

#include "DebugTools/platform/Thread.h"
#include "DwarfVariables.h"
#include "Dwfl.h"
#include "ElfFile.h"
#include "platform/Immortal.h"

#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <unistd.h>

namespace diag {

namespace {

char symbolFolder[kModulePathSize] = {}; // plain memory: a report may come while the process ends

// A frame that waits for a call to return belongs to the instruction before its address.
uint64_t PlaceIn(const StackFrame& frame, bool innermost) {
    return innermost || frame.instruction == 0 ? frame.instruction : frame.instruction - 1;
}

void SetName(const char* raw, bool mayAllocate, FrameSymbol& symbol) {
    int status = -1;
    char* readable = mayAllocate ? abi::__cxa_demangle(raw, nullptr, nullptr, &status) : nullptr;
    std::snprintf(symbol.name, sizeof symbol.name, "%s", status == 0 && readable ? readable : raw);
    std::free(readable);
}

void NameFromLoader(uint64_t address, bool mayAllocate, FrameSymbol& symbol) {
    Dl_info info;
    if (dladdr(reinterpret_cast<const void*>(address), &info) == 0 || !info.dli_sname) return;
    SetName(info.dli_sname, mayAllocate, symbol);
    symbol.displacement = address - reinterpret_cast<uint64_t>(info.dli_saddr);
}

dw::Dwfl* Session(void* session) {
    return static_cast<dw::Dwfl*>(session);
}

// What was read for one report serves the next ones too, so the session stays; one reader uses it at a time.
CriticalSection& SessionLock() {
    return Immortal<CriticalSection, struct SessionLockTag>();
}

const dw::Library& Library() {
    return dw::LoadLibrary(symbolFolder);
}

void NameFromLibrary(dw::DwflModule* module, uint64_t address, FrameSymbol& symbol) {
    uint64_t offset = 0;
    ElfW(Sym) entry;
    if (const char* name = Library().symbolOf(module, address, &offset, &entry, nullptr, nullptr, nullptr)) {
        SetName(name, true, symbol);
        symbol.displacement = offset;
    }
    dw::DwflLine* line = Library().sourceOf(module, address);
    int number = 0;
    const char* file = line ? Library().lineInfo(line, nullptr, &number, nullptr, nullptr, nullptr) : nullptr;
    if (!file) return;
    std::snprintf(symbol.file, sizeof symbol.file, "%s", file);
    symbol.line = static_cast<unsigned>(number);
}

// The kind of symbols of the module that holds an address, and their file.
ModuleSymbols SourceIn(const ModulePlace& place, uint64_t address, void* session, char (&path)[kModulePathSize]) {
    path[0] = '\0';
    if (!place.path[0]) return ModuleSymbols::kNone;
    std::snprintf(path, sizeof path, "%s", place.path);
    const ModuleSymbols own = ElfFile(place.path).Symbols();
    dw::DwflModule* module = session ? Library().moduleOf(Session(session), address) : nullptr;
    uint64_t bias = 0;
    if (own == ModuleSymbols::kFull || !module || !Library().debugInfo(module, &bias)) return own;
    // Debug information in a file of its own.
    const char* separate = nullptr;
    Library().moduleInfo(module, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &separate);
    if (separate) std::snprintf(path, sizeof path, "%s", separate);
    return ModuleSymbols::kFull;
}

} // namespace

void SetSymbolFolder(const std::string& folder) {
    std::snprintf(symbolFolder, sizeof symbolFolder, "%s", folder.c_str());
}

SymbolReader::SymbolReader(bool mayAllocate) : mayAllocate_(mayAllocate) {
    SessionLock().Enter();
    if (!mayAllocate || Library().level == 0) return;
    static const dw::Callbacks callbacks = {Library().findElf, Library().findDebugInfo, nullptr, nullptr};
    static dw::Dwfl* const session = Library().begin(&callbacks);
    if (!session) return;
    Library().reportBegin(session);
    if (Library().reportProcess(session, getpid()) != 0 || Library().reportEnd(session, nullptr, nullptr) != 0) return;
    session_ = session;
    level_ = Library().level;
}

SymbolReader::~SymbolReader() {
    SessionLock().Leave();
}

void SymbolReader::Describe(const StackFrame& frame, bool innermost, FrameSymbol& symbol) {
    symbol = FrameSymbol{};
    symbol.place = PlaceOf(frame.instruction);
    char source[kModulePathSize];
    symbol.symbols = SourceIn(symbol.place, frame.instruction, session_, source);
    const uint64_t address = PlaceIn(frame, innermost);
    if (dw::DwflModule* module = session_ ? Library().moduleOf(Session(session_), address) : nullptr)
        NameFromLibrary(module, address, symbol);
    if (!symbol.name[0]) NameFromLoader(address, mayAllocate_, symbol);
    if (symbol.name[0] && address != frame.instruction) ++symbol.displacement; // shown from the address itself
}

void SymbolReader::ForEachVariable(const StackFrame& frame, bool innermost, void (*visit)(const FrameVariable&, void*),
                                   void* argument) {
    if (level_ < 2) return;
    const uint64_t address = PlaceIn(frame, innermost);
    if (dw::DwflModule* module = Library().moduleOf(Session(session_), address))
        dw::VisitVariables(Library(), module, address, frame, visit, argument);
}

ModuleSymbols SymbolReader::SourceOf(uint64_t address, char (&path)[kModulePathSize]) {
    return SourceIn(PlaceOf(address), address, session_, path);
}

} // namespace diag
