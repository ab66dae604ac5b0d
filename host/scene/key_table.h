#pragma once
// Every key of a scene description: what reading, error messages and the written reference go by.

#include <span>
#include <string>
#include <string_view>

namespace host {

enum class KeyType {
    kFlag,       ///< true or false
    kInteger,    ///< a whole number inside low..high
    kNumber,     ///< a number inside low..high
    kText,       ///< text
    kChoice,     ///< one of the words in `choices`
    kPair,       ///< two numbers
    kPoint,      ///< three numbers
    kColor,      ///< three numbers, red, green, blue, linear
    kNames,      ///< a list of texts
    kIntegers,   ///< a list of whole numbers
    kRows,       ///< a list of lists of numbers
    kKnots,      ///< a list of [x, y, "type"]
    kFiles,      ///< a text or a list of texts
    kImports,    ///< a list of file names or tables of the section in `choices`
    kParameters, ///< a table of parameters by their own names
    kTexts,      ///< a table of texts and numbers
    kTable,      ///< a table of the section in `choices`
    kTables,     ///< a list of tables of the section in `choices`
    kNamed,      ///< a table of tables of the section in `choices`
};

/// One key.
struct SceneKey {
    const char* name;
    KeyType type;
    const char* defaultText; ///< as TOML; empty: none
    const char* unit;        ///< empty: none
    const char* text;        ///< what the key does
    double low = -1e30, high = 1e30;
    const char* choices = ""; ///< "a|b|c", or a section's name
};

/// One kind of table.
struct SceneSection {
    const char* name;  ///< as kTable and the like name it
    const char* title; ///< as users write it, e.g. "[[camera]]"
    const char* text;
    std::span<const SceneKey> keys;
    const SceneKey* Find(std::string_view key) const;
};

/// All sections in the order of the reference; the first one is the file as a whole.
std::span<const SceneSection> SceneSections();
/// By name; null when there is none.
const SceneSection* FindSceneSection(std::string_view name);

} // namespace host
