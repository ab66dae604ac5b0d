// The entry points that are used of the system's symbol library, "dbghelp.dll", loaded at run time.
#pragma once

#include "Win32.h"

// Needs the system's types above.
#include <dbghelp.h>

namespace diag {

struct DbgHelp {
    int level = 0; ///< 0 not loaded or too old, 1 names and lines, 2 variables too

    decltype(&::SymCleanup) cleanup;
    decltype(&::SymFunctionTableAccess64) functionTable;
    decltype(&::SymGetLineFromAddr64) line;
    decltype(&::SymGetModuleBase64) moduleBase;
    decltype(&::SymGetModuleInfo64) moduleInfo;
    decltype(&::SymInitialize) initialize;
    decltype(&::SymSetOptions) setOptions;
    decltype(&::StackWalk64) stackWalk;

    decltype(&::SymEnumSymbols) enumSymbols;
    decltype(&::SymSetContext) setContext;
    decltype(&::SymFromAddr) fromAddress;
    decltype(&::SymGetTypeInfo) typeInfo;

    // Looked up too; nothing fails without them.
    decltype(&::SymEnumerateModules64) enumerateModules;
    decltype(&::EnumerateLoadedModules64) enumerateLoaded;
    decltype(&::SymGetOptions) getOptions;
    decltype(&::SymGetSymFromAddr64) symbolFromAddress;
    decltype(&::UnDecorateSymbolName) undecorate;
    decltype(&::SymLoadModule64) loadModule;
};

/// Loads the library at the first call: from `folder` first, then by its plain name. Never unloaded.
const DbgHelp& LoadDbgHelp(const char* folder);

} // namespace diag
