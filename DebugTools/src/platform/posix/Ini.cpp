// Private-profile functions for systems that have none: the whole file is read, changed as text and replaced at once.
#include "DebugTools/platform/Ini.h"

#include "DebugTools/platform/File.h"
#include "DebugTools/platform/Thread.h"
#include "platform/ProfileRules.h"

#include <cstring>

namespace diag {

namespace {
// Two threads that change one file would otherwise lose one of the changes.
CriticalSection& WriteLock() {
    static CriticalSection lock;
    return lock;
}
} // namespace

size_t ReadProfileString(const char* section, const char* key, const char* defaultText, char* buffer, size_t size,
                         const char* file) {
    if (!buffer || size == 0) return 0;
    std::string value;
    std::string text;
    const bool found =
        section && key && file && FileRead(file, text) && IniText(std::move(text)).Find(section, key, value);
    if (!found) value = ProfileDefault(defaultText);
    const size_t length = value.size() < size - 1 ? value.size() : size - 1;
    std::memcpy(buffer, value.data(), length);
    buffer[length] = '\0';
    return length;
}

bool WriteProfileString(const char* section, const char* key, const char* value, const char* file) {
    if (!section || !file || HoldsLineBreak(section) || HoldsLineBreak(key) || HoldsLineBreak(value)) return false;
    ScopedLock lock(WriteLock());
    std::string text;
    const bool exists = FileExists(file);
    if (exists && !FileRead(file, text)) return false;
    IniText ini(std::move(text));
    if (key && value) {
        ini.Set(section, key, value);
    } else if (!(key ? ini.EraseKey(section, key) : ini.EraseSection(section))) {
        return true; // nothing to delete, nothing to write
    }
    return FileWriteAtomic(file, ini.Text(), FileSync::kNo);
}

} // namespace diag
