// Settings files through the operating system's private-profile functions.
#include "DebugTools/platform/Ini.h"

#include "Win32.h"
#include "platform/ProfileRules.h"

namespace diag {

namespace {
// A name without a folder would mean the system's own directory; here it means the current one, as everywhere else.
std::string FullPath(const char* file) {
    char path[1024];
    const DWORD length = GetFullPathNameA(file, sizeof path, path, nullptr);
    return length > 0 && length < sizeof path ? std::string(path, length) : std::string(file);
}
} // namespace

size_t ReadProfileString(const char* section, const char* key, const char* defaultText, char* buffer, size_t size,
                         const char* file) {
    if (!buffer || size == 0) return 0;
    const std::string fallback = ProfileDefault(defaultText);
    if (!section || !key || !file) {
        const size_t length = fallback.copy(buffer, size - 1);
        buffer[length] = '\0';
        return length;
    }
    return GetPrivateProfileStringA(section, key, fallback.c_str(), buffer, static_cast<DWORD>(size),
                                    FullPath(file).c_str());
}

bool WriteProfileString(const char* section, const char* key, const char* value, const char* file) {
    if (!section || !file || HoldsLineBreak(section) || HoldsLineBreak(key) || HoldsLineBreak(value)) return false;
    return WritePrivateProfileStringA(section, key, value, FullPath(file).c_str()) != 0;
}

} // namespace diag
