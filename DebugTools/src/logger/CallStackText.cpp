// Call stacks, local variables and the symbol line of reports.
#include "ReportParts.h"

#include <cinttypes>

namespace diag {

namespace {

void WriteFrame(Log* log, const StackFrame& frame, const FrameSymbol& symbol) {
    LogPrintf(log, 0, "%016" PRIX64 "  %016" PRIX64 "  %04X:%08" PRIX64 "  %08" PRIX64, frame.instruction, frame.frame,
              symbol.place.section, symbol.place.sectionOffset, symbol.place.moduleOffset);
    if (symbol.name[0]) {
        LogWrite(log, "  ", 0);
        LogWrite(log, symbol.name, 0); // up to 1024 characters: a piece of its own
        LogPrintf(log, 0, "+%" PRIX64, symbol.displacement);
    } else {
        LogWrite(log, "  ", 0);
        LogWrite(log, symbol.place.path, 0);
    }
    if (symbol.file[0]) LogPrintf(log, 0, "  %s line %u", symbol.file, symbol.line);
    LogWrite(log, nullptr, kLogEndLine);
}

struct Pass {
    Log* log;
    SymbolReader& symbols;
    const CapturedStack& stack;
    bool interrupted;

    // False when a frame's module has no symbols at all.
    bool Write(bool withVariables) const {
        bool good = true;
        FrameSymbol symbol;
        for (int i = 0; i < stack.count; ++i) {
            const bool innermost = interrupted && i == 0;
            symbols.Describe(stack.frames[i], innermost, symbol);
            WriteFrame(log, stack.frames[i], symbol);
            if (symbol.symbols == ModuleSymbols::kNone) good = false;
            if (withVariables && symbol.symbols == ModuleSymbols::kFull)
                symbols.ForEachVariable(
                    stack.frames[i], innermost,
                    [](const FrameVariable& variable, void* target) {
                        WriteVariable(static_cast<Log*>(target), variable);
                    },
                    log);
        }
        if (stack.tooBig) LogWrite(log, "DbgHelp stack too big, aborting trace", kLogEndLine);
        return good;
    }
};

const char* SymbolTypeName(ModuleSymbols symbols) {
    switch (symbols) {
    case ModuleSymbols::kFull:
        return "SymDia";
    case ModuleSymbols::kTable:
        return "SymSym";
    case ModuleSymbols::kExported:
        return "SymExport";
    default:
        return "SymNone";
    }
}

} // namespace

void WriteVariable(Log* log, const FrameVariable& variable) {
    using Kind = FrameVariable::Kind;
    using Type = FrameVariable::Type;
    if (variable.kind == Kind::kOther) {
        LogPrintf(log, 0, "\t%s\n", variable.name);
        return;
    }
    if (variable.type == Type::kUnknown) {
        LogPrintf(log, 0, "punting on symbol %s\n", variable.name);
        return;
    }
    LogPrintf(log, 0, "%s'%s'", variable.kind == Kind::kParameter ? "Parameter " : "Local ", variable.name);
    switch (variable.type) {
    case Type::kInteger:
    case Type::kInteger64:
        LogPrintf(log, 0, " = %" PRIX64, variable.bits);
        break;
    case Type::kFloat:
        LogPrintf(log, 0, " = %f", variable.number);
        break;
    case Type::kDouble:
        LogPrintf(log, 0, " = %lf", variable.number);
        break;
    case Type::kText8:
        LogPrintf(log, 0, " = \"%.31s\"", variable.text);
        break;
    default:
        LogPrintf(log, 0, " %s", variable.text);
        break;
    }
    LogWrite(log, nullptr, kLogEndLine);
}

void WriteCallStack(Log* log, SymbolReader& symbols, const CapturedStack& stack, bool interrupted) {
    LogWrite(log, "DbgHelp call stack:", kLogEndLine);
    LogWrite(log, "Address           Frame             Function       RVA       SourceFile", kLogEndLine);
    const Pass pass{log, symbols, stack, interrupted};
    if (!pass.Write(false) || symbols.Level() < 2) return;
    LogWrite(log, "========================", kLogEndLine);
    LogWrite(log, "Local variables:", kLogEndLine);
    pass.Write(true);
}

void WriteSymbolSource(Log* log, SymbolReader& symbols, uint64_t address) {
    char path[kModulePathSize];
    const ModuleSymbols source = symbols.SourceOf(address, path);
    LogPrintf(log, 0, "Symbols: type %s, loaded from: ", SymbolTypeName(source));
    LogWrite(log, path, kLogEndLine);
}

} // namespace diag
