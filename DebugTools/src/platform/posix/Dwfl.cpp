#include "Dwfl.h"

#include <dlfcn.h>
#include <string>

namespace diag::dw {

namespace {

void* Open(const char* folder) {
    constexpr const char* kName = "libdw.so.1";
    void* handle = nullptr;
    if (folder && *folder) handle = dlopen((std::string(folder) + kName).c_str(), RTLD_LAZY | RTLD_LOCAL);
    return handle ? handle : dlopen(kName, RTLD_LAZY | RTLD_LOCAL);
}

class Finder {
public:
    explicit Finder(void* handle) : handle_(handle) {}
    template <class Entry>
    void Get(Entry*& entry, const char* name) {
        entry = reinterpret_cast<Entry*>(dlsym(handle_, name));
        if (!entry) complete_ = false;
    }
    bool Complete() const { return complete_; }

private:
    void* handle_;
    bool complete_ = true;
};

bool FindNames(void* handle, Library& library) {
    Finder find(handle);
    find.Get(library.begin, "dwfl_begin");
    find.Get(library.reportBegin, "dwfl_report_begin");
    find.Get(library.reportProcess, "dwfl_linux_proc_report");
    find.Get(library.reportEnd, "dwfl_report_end");
    find.Get(library.findElf, "dwfl_linux_proc_find_elf");
    // The local search only: the standard one may ask servers on the net.
    find.Get(library.findDebugInfo, "dwfl_build_id_find_debuginfo");
    find.Get(library.moduleOf, "dwfl_addrmodule");
    find.Get(library.moduleInfo, "dwfl_module_info");
    find.Get(library.symbolOf, "dwfl_module_addrinfo");
    find.Get(library.sourceOf, "dwfl_module_getsrc");
    find.Get(library.lineInfo, "dwfl_lineinfo");
    find.Get(library.debugInfo, "dwfl_module_getdwarf");
    return find.Complete();
}

bool FindVariables(void* handle, Library& library) {
    Finder find(handle);
    find.Get(library.unitOf, "dwfl_module_addrdie");
    find.Get(library.scopesAt, "dwarf_getscopes");
    find.Get(library.scopesOf, "dwarf_getscopes_die");
    find.Get(library.child, "dwarf_child");
    find.Get(library.sibling, "dwarf_siblingof");
    find.Get(library.tag, "dwarf_tag");
    find.Get(library.nameOf, "dwarf_diename");
    find.Get(library.attribute, "dwarf_attr_integrate");
    find.Get(library.referenced, "dwarf_formref_die");
    find.Get(library.locationAt, "dwarf_getlocation_addr");
    find.Get(library.unsignedValue, "dwarf_formudata");
    find.Get(library.peelType, "dwarf_peel_type");
    return find.Complete();
}

Library Load(const char* folder) {
    Library library = {};
    void* handle = Open(folder);
    if (handle && FindNames(handle, library)) library.level = FindVariables(handle, library) ? 2 : 1;
    return library;
}

} // namespace

const Library& LoadLibrary(const char* folder) {
    static const Library library = Load(folder);
    return library;
}

} // namespace diag::dw
