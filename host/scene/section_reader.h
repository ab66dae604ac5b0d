#pragma once
// A table of a scene description, checked against the key table.

#include <array>
#include <string>
#include <vector>

#include "scene/key_table.h"
#include "scene/toml_value.h"
#include "sdk/color.h"
#include "sdk/point3.h"

namespace host {

/// Reads the keys of one table. The constructor checks every entry: unknown keys and values of another type or range
/// are errors "FILE:LINE: ... expected ...". Reading a key that the section does not have is a mistake of the program
/// and throws std::logic_error. A key without a default must be asked for with Has first.
class SectionReader {
public:
    SectionReader(const std::string& file, const SceneSection& section, const TomlValue& table);

    /// True when the table has the key (a default does not count).
    bool Has(const char* key) const { return Raw(key) != nullptr; }
    bool Flag(const char* key) const;
    int Integer(const char* key) const;
    float Number(const char* key) const;
    std::string Text(const char* key) const;
    /// Number of the word among the key's choices, from 0.
    int Choice(const char* key) const;
    std::array<float, 2> Pair(const char* key) const;
    Point3 Point(const char* key) const;
    Color ColorOf(const char* key) const { return Color(Point(key)); }
    std::vector<std::string> Names(const char* key) const;
    std::vector<int> Integers(const char* key) const;
    std::vector<std::vector<float>> Rows(const char* key) const;
    /// The value as it stands in the file, or null.
    const TomlValue* Raw(const char* key) const;
    /// The text of a key that must be there and not be empty.
    std::string Required(const char* key) const;

    int Line() const { return table_.line; }
    /// Where the key stands; the table's line when it is not there.
    int LineOf(const char* key) const;
    const std::string& File() const { return file_; }
    /// Throws Error with file and line.
    [[noreturn]] void Fail(const std::string& text) const;
    [[noreturn]] void FailAtKey(const char* key, const std::string& text) const;

private:
    const SceneKey& Key(const char* key) const;
    const TomlValue& Value(const char* key) const;

    const std::string& file_;
    const SceneSection& section_;
    const TomlValue& table_;
};

/// The words of "a|b|c".
std::vector<std::string> SplitChoices(const char* choices);
/// "a, b or c".
std::string JoinChoices(const std::vector<std::string>& words);
/// What a value of that key looks like: "a number", "three numbers" ...
std::string ExpectedText(const SceneKey& key);

} // namespace host
