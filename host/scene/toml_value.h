#pragma once
// TOML text as plain values that know their lines.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

/// One value of a TOML text.
struct TomlValue {
    enum Kind { kText, kInteger, kFloat, kBool, kArray, kTable, kDate };
    Kind kind = kTable;
    int line = 0; ///< where it stands; 0 when unknown
    std::string text;
    int64_t integer = 0;
    double number = 0; ///< floats, and integers too
    bool flag = false;
    std::vector<TomlValue> items;                           ///< of an array
    std::vector<std::pair<std::string, TomlValue>> entries; ///< of a table, in the order of the text

    // Defined where the type is whole: it holds lists of itself.
    TomlValue();
    ~TomlValue();
    TomlValue(const TomlValue&);
    TomlValue(TomlValue&&) noexcept;
    TomlValue& operator=(const TomlValue&);
    TomlValue& operator=(TomlValue&&) noexcept;

    bool IsNumber() const { return kind == kInteger || kind == kFloat; }
    /// The entry of a table, or null.
    const TomlValue* Find(std::string_view key) const;
};

/// A value for messages: short ones as they stand, others by their kind ("a table", "a list of 4").
std::string DescribeToml(const TomlValue& value);

/// Reads a TOML text. Throws Error with `file` and the line: syntax, characters outside ASCII that stand neither in
/// strings nor in comments, nesting deeper than kMostTomlDepth.
TomlValue ParseToml(const std::string& file, std::string_view text);
inline constexpr int kMostTomlDepth = 64;

/// One value as it stands behind the "=" of a TOML line; text that is no TOML value is taken as a string.
TomlValue ParseTomlValue(const std::string& text);

} // namespace host
