#include "DbgHelp.h"

#include <string>

namespace diag {

namespace {

template <class Entry>
bool Find(HMODULE module, const char* name, Entry& entry) {
    entry = reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    return entry != nullptr;
}

bool FindBasic(HMODULE module, DbgHelp& help) {
    return Find(module, "SymCleanup", help.cleanup) & Find(module, "SymFunctionTableAccess64", help.functionTable) &
           Find(module, "SymGetLineFromAddr64", help.line) & Find(module, "SymGetModuleBase64", help.moduleBase) &
           Find(module, "SymGetModuleInfo64", help.moduleInfo) & Find(module, "SymInitialize", help.initialize) &
           Find(module, "SymSetOptions", help.setOptions) & Find(module, "StackWalk64", help.stackWalk);
}

bool FindFull(HMODULE module, DbgHelp& help) {
    return Find(module, "SymEnumSymbols", help.enumSymbols) & Find(module, "SymSetContext", help.setContext) &
           Find(module, "SymFromAddr", help.fromAddress) & Find(module, "SymGetTypeInfo", help.typeInfo);
}

void FindOthers(HMODULE module, DbgHelp& help) {
    Find(module, "SymEnumerateModules64", help.enumerateModules);
    Find(module, "EnumerateLoadedModules64", help.enumerateLoaded);
    Find(module, "SymGetOptions", help.getOptions);
    Find(module, "SymGetSymFromAddr64", help.symbolFromAddress);
    Find(module, "UnDecorateSymbolName", help.undecorate);
    Find(module, "SymLoadModule64", help.loadModule);
}

DbgHelp Load(const char* folder) {
    DbgHelp help = {};
    HMODULE module = !*folder ? nullptr : LoadLibraryA((std::string(folder) + "dbghelp.dll").c_str());
    if (!module) module = LoadLibraryA("dbghelp.dll");
    if (!module || !FindBasic(module, help)) return help;
    help.level = FindFull(module, help) ? 2 : 1;
    FindOthers(module, help);
    return help;
}

} // namespace

const DbgHelp& LoadDbgHelp(const char* folder) {
    static const DbgHelp help = Load(folder);
    return help;
}

} // namespace diag
