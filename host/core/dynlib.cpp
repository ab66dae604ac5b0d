#include "core/dynlib.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace host {

#ifdef _WIN32

DynLib::~DynLib() {
    if (handle_) FreeLibrary(static_cast<HMODULE>(handle_));
}

bool DynLib::Open(const std::string& path, std::string& reason) {
    handle_ = LoadLibraryA(path.c_str());
    if (!handle_) reason = "system error " + std::to_string(GetLastError());
    return handle_ != nullptr;
}

void* DynLib::Symbol(const char* name) const {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

#else

DynLib::~DynLib() {
    if (handle_) dlclose(handle_);
}

bool DynLib::Open(const std::string& path, std::string& reason) {
    // A name without a slash would be searched in the library path.
    const std::string full = path.find('/') == std::string::npos ? "./" + path : path;
    handle_ = dlopen(full.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_) return true;
    const char* const text = dlerror();
    reason = text ? text : "unknown reason";
    if (reason.starts_with(full + ": ")) reason.erase(0, full.size() + 2);
    return false;
}

void* DynLib::Symbol(const char* name) const {
    return dlsym(handle_, name);
}

#endif

} // namespace host
