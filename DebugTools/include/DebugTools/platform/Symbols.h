// Names, source lines and variables of stack frames, from the system's symbol library, which is loaded when first
// needed and may be missing.
#pragma once

#include "DebugTools/platform/Modules.h"
#include "DebugTools/platform/Stack.h"

#include <string>

namespace diag {

/// What is known about one frame's instruction.
struct FrameSymbol {
    ModulePlace place;
    ModuleSymbols symbols = ModuleSymbols::kNone;
    char name[1024] = {};      ///< of the function; empty when unknown
    uint64_t displacement = 0; ///< from the function's start
    char file[512] = {};       ///< source file; empty when unknown
    unsigned line = 0;
};

/// A variable of a frame and its value.
struct FrameVariable {
    enum class Kind { kParameter, kLocal, kOther };
    enum class Type { kUnknown, kInteger, kInteger64, kFloat, kDouble, kText8, kText16 };
    Kind kind = Kind::kLocal;
    Type type = Type::kUnknown; ///< kUnknown: the value cannot be shown
    const char* name = "";
    uint64_t bits = 0;   ///< integers
    double number = 0;   ///< floating-point numbers
    char text[128] = {}; ///< texts, at most 31 characters, as UTF-8
};

/// Sets the folder in which the symbol library is looked for first.
void SetSymbolFolder(const std::string& folder);

class SymbolReader {
public:
    /// One that must not allocate stays at level 0 and knows what the loader knows.
    explicit SymbolReader(bool mayAllocate = true);
    ~SymbolReader();
    SymbolReader(const SymbolReader&) = delete;
    SymbolReader& operator=(const SymbolReader&) = delete;

    /// 0: no symbol library, names come from the loader if it knows them; 1: names and lines; 2: variables too.
    int Level() const { return level_; }
    /// `innermost` tells a frame that stopped at its instruction from one that waits for a call to return.
    void Describe(const StackFrame& frame, bool innermost, FrameSymbol& symbol);
    void ForEachVariable(const StackFrame& frame, bool innermost, void (*visit)(const FrameVariable&, void*),
                         void* argument);
    /// The kind of symbols of the module that holds an address, and the file they come from (empty: none).
    ModuleSymbols SourceOf(uint64_t address, char (&path)[kModulePathSize]);

private:
    void* session_ = nullptr;
    int level_ = 0;
    bool mayAllocate_;
};

} // namespace diag
