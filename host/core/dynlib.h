#pragma once
// A shared library loaded at run time.

#include <string>

namespace host {

/// Loaded while the object lives. Everything is resolved at loading, and names stay local to the library.
class DynLib {
public:
    DynLib() = default;
    ~DynLib();
    DynLib(const DynLib&) = delete;
    DynLib& operator=(const DynLib&) = delete;
    /// False with the operating system's reason.
    bool Open(const std::string& path, std::string& reason);
    /// The address of an exported function, or null.
    void* Symbol(const char* name) const;

private:
    void* handle_ = nullptr;
};

} // namespace host
