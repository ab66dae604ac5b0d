// Names, lines and variables on Windows, by the system's symbol library.
#include "DebugTools/platform/Symbols.h"

#include "DbgHelp.h"
#include "DebugTools/platform/Thread.h"
#include "SymbolValue.h"
#include "platform/Immortal.h"

#include <cstdio>
#include <cstring>
#include <new>

namespace diag {

namespace {

constexpr DWORD kDeferredLoading = 4;

char symbolFolder[kModulePathSize] = {}; // plain memory: a report may come while the process ends

// The library serves one thread at a time.
CriticalSection& SessionLock() {
    return Immortal<CriticalSection, struct SessionLockTag>();
}

const DbgHelp& Help() {
    return LoadDbgHelp(symbolFolder);
}

uint64_t PlaceIn(const StackFrame& frame, bool innermost) {
    return innermost || frame.instruction == 0 ? frame.instruction : frame.instruction - 1;
}

ModuleSymbols KindOf(const IMAGEHLP_MODULE64& module) {
    const size_t length = strnlen(module.LoadedImageName, sizeof module.LoadedImageName);
    const size_t pdb = strnlen(module.LoadedPdbName, sizeof module.LoadedPdbName);
    const auto endsInPdb = [](const char* name, size_t size) {
        return size >= 3 && _stricmp(name + size - 3, "pdb") == 0;
    };
    if (endsInPdb(module.LoadedPdbName, pdb) || endsInPdb(module.LoadedImageName, length)) return ModuleSymbols::kFull;
    switch (module.SymType) {
    case SymNone:
        return ModuleSymbols::kNone;
    case SymExport:
        return ModuleSymbols::kExported;
    default:
        return ModuleSymbols::kTable;
    }
}

void NameOf(uint64_t address, FrameSymbol& symbol) {
    if (!Help().fromAddress) return;
    alignas(SYMBOL_INFO) char room[sizeof(SYMBOL_INFO) + sizeof symbol.name];
    auto* info = new (room) SYMBOL_INFO();
    info->SizeOfStruct = sizeof(SYMBOL_INFO);
    info->MaxNameLen = sizeof symbol.name - 1;
    DWORD64 displacement = 0;
    if (!Help().fromAddress(GetCurrentProcess(), address, &displacement, info)) return;
    std::snprintf(symbol.name, sizeof symbol.name, "%s", info->Name);
    symbol.displacement = displacement;
}

void LineOf(uint64_t address, FrameSymbol& symbol) {
    IMAGEHLP_LINE64 line = {};
    line.SizeOfStruct = sizeof line;
    DWORD displacement = 0;
    if (!Help().line(GetCurrentProcess(), address, &displacement, &line) || !line.FileName) return;
    std::snprintf(symbol.file, sizeof symbol.file, "%s", line.FileName);
    symbol.line = line.LineNumber;
}

struct Enumeration {
    const StackFrame& frame;
    void (*visit)(const FrameVariable&, void*);
    void* argument;

    static BOOL CALLBACK Each(PSYMBOL_INFO info, ULONG, PVOID context) {
        const auto& self = *static_cast<const Enumeration*>(context);
        FrameVariable variable;
        variable.name = info->Name;
        variable.kind = info->Flags & SYMFLAG_PARAMETER ? FrameVariable::Kind::kParameter
                        : info->Flags & SYMFLAG_LOCAL   ? FrameVariable::Kind::kLocal
                                                        : FrameVariable::Kind::kOther;
        if (variable.kind != FrameVariable::Kind::kOther) ReadSymbolValue(Help(), *info, self.frame, variable);
        self.visit(variable, self.argument);
        return TRUE;
    }
};

} // namespace

void SetSymbolFolder(const std::string& folder) {
    std::snprintf(symbolFolder, sizeof symbolFolder, "%s", folder.c_str());
}

SymbolReader::SymbolReader(bool mayAllocate) : mayAllocate_(mayAllocate) {
    SessionLock().Enter();
    if (!mayAllocate_ || Help().level == 0) return;
    Help().setOptions(kDeferredLoading);
    const char* folder = symbolFolder[0] ? symbolFolder : nullptr;
    if (!Help().initialize(GetCurrentProcess(), folder, TRUE)) return;
    session_ = GetCurrentProcess();
    level_ = Help().level;
}

SymbolReader::~SymbolReader() {
    if (session_) Help().cleanup(GetCurrentProcess());
    SessionLock().Leave();
}

void SymbolReader::Describe(const StackFrame& frame, bool innermost, FrameSymbol& symbol) {
    symbol = FrameSymbol{};
    symbol.place = PlaceOf(frame.instruction);
    char source[kModulePathSize];
    symbol.symbols = SourceOf(frame.instruction, source);
    if (!session_) return;
    const uint64_t address = PlaceIn(frame, innermost);
    NameOf(address, symbol);
    if (symbol.name[0] && address != frame.instruction) ++symbol.displacement; // shown from the address itself
    LineOf(address, symbol);
}

void SymbolReader::ForEachVariable(const StackFrame& frame, bool innermost, void (*visit)(const FrameVariable&, void*),
                                   void* argument) {
    if (level_ < 2) return;
    IMAGEHLP_STACK_FRAME place = {};
    place.InstructionOffset = PlaceIn(frame, innermost);
    place.FrameOffset = frame.frame;
    place.StackOffset = frame.stackPointer;
    // Answers false also for the function that is set already.
    Help().setContext(GetCurrentProcess(), &place, nullptr);
    Enumeration enumeration{frame, visit, argument};
    Help().enumSymbols(GetCurrentProcess(), 0, "*", &Enumeration::Each, &enumeration);
}

ModuleSymbols SymbolReader::SourceOf(uint64_t address, char (&path)[kModulePathSize]) {
    path[0] = '\0';
    IMAGEHLP_MODULE64 module = {};
    module.SizeOfStruct = sizeof module;
    if (!session_ || !Help().moduleBase(GetCurrentProcess(), address) ||
        !Help().moduleInfo(GetCurrentProcess(), address, &module))
        return ModuleSymbols::kNone;
    std::snprintf(path, sizeof path, "%s", module.LoadedImageName);
    return KindOf(module);
}

} // namespace diag
