// Settings files: [section] headers with key=value lines below them, under the rules of the operating system's
// private-profile functions.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace diag {

/// Reads a value into `buffer` (at most size-1 characters and a terminator) and returns the number of characters.
/// Section and key are compared without regard to ASCII case and to surrounding blanks; the first match counts; one
/// pair of matching quotes around the value is dropped. A missing file, section or key (and a null section or key)
/// gives `defaultText` without its trailing blanks; a null default counts as empty.
size_t ReadProfileString(const char* section, const char* key, const char* defaultText, char* buffer, size_t size,
                         const char* file);

/// Writes a value, keeping all other content and its order; a new key goes to the end of its section, a new section to
/// the end of the file. A null value deletes the key, a null key the whole section. False, with the file as it was,
/// when the file cannot be written, the section is null, or a text holds a line break (which the file could not give
/// back).
bool WriteProfileString(const char* section, const char* key, const char* value, const char* file);

/// The same rules on a text in memory: for many changes in a row, and for the realisation on systems without such
/// functions.
class IniText {
public:
    IniText() = default;
    explicit IniText(std::string text) : text_(std::move(text)) {}

    /// Finds a value as it stands after the quotes are dropped. False when section or key is missing.
    bool Find(std::string_view section, std::string_view key, std::string& value) const;
    void Set(std::string_view section, std::string_view key, std::string_view value);
    /// False when there was nothing to delete.
    bool EraseKey(std::string_view section, std::string_view key);
    bool EraseSection(std::string_view section);

    const std::string& Text() const { return text_; }

private:
    std::string text_;
};

} // namespace diag
