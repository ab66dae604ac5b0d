#include "scene/key_check.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "import/file_error.h"
#include "import/text_scan.h"
#include "scene/section_reader.h"

namespace host {

namespace {

bool IsFiniteNumber(const TomlValue& v) {
    return v.IsNumber() && FitsFloat(v.number);
}

template <class Test>
bool IsListOf(const TomlValue& value, Test&& test) {
    return value.kind == TomlValue::kArray && std::all_of(value.items.begin(), value.items.end(), test);
}

bool IsText(const TomlValue& v) {
    return v.kind == TomlValue::kText;
}
bool IsTable(const TomlValue& v) {
    return v.kind == TomlValue::kTable;
}
bool IsSmallInteger(const TomlValue& v) {
    return v.kind == TomlValue::kInteger && std::abs(double(v.integer)) <= 2147483647.0;
}

bool IsKnot(const TomlValue& v) {
    if (v.kind != TomlValue::kArray || v.items.size() < 2 || v.items.size() > 3) return false;
    return IsFiniteNumber(v.items[0]) && IsFiniteNumber(v.items[1]) && (v.items.size() == 2 || IsText(v.items[2]));
}

bool IsTableOf(const TomlValue& value, bool (*test)(const TomlValue&)) {
    return IsTable(value) && std::all_of(value.entries.begin(), value.entries.end(),
                                         [&](const auto& entry) { return test(entry.second); });
}

// Without ranges and choices.
bool HasType(const SceneKey& key, const TomlValue& value) {
    switch (key.type) {
    case KeyType::kFlag:
        return value.kind == TomlValue::kBool;
    case KeyType::kInteger:
        return IsSmallInteger(value);
    case KeyType::kNumber:
        return IsFiniteNumber(value);
    case KeyType::kText:
    case KeyType::kChoice:
        return IsText(value);
    case KeyType::kPair:
        return IsNumberList(value, 2);
    case KeyType::kPoint:
    case KeyType::kColor:
        return IsNumberList(value, 3);
    case KeyType::kNames:
        return IsListOf(value, IsText);
    case KeyType::kIntegers:
        return IsListOf(value, IsSmallInteger);
    case KeyType::kRows:
        return IsListOf(value, [](const TomlValue& row) { return IsListOf(row, IsFiniteNumber); });
    case KeyType::kKnots:
        return IsListOf(value, IsKnot);
    case KeyType::kFiles:
        return IsText(value) || IsListOf(value, IsText);
    case KeyType::kImports:
        return IsListOf(value, [](const TomlValue& v) { return IsText(v) || IsTable(v); });
    case KeyType::kParameters:
    case KeyType::kTable:
        return IsTable(value);
    case KeyType::kTexts:
        return IsTableOf(value, [](const TomlValue& v) { return IsText(v) || IsFiniteNumber(v); });
    case KeyType::kTables:
        return IsListOf(value, IsTable);
    case KeyType::kNamed:
        return IsTableOf(value, IsTable);
    }
    return false;
}

} // namespace

std::string NumberText(double v) {
    // Zeros are clearer than powers of ten where there are few.
    const bool plain = v == 0 || (std::abs(v) >= 1e-4 && std::abs(v) < 1e12);
    const std::chars_format format = plain ? std::chars_format::fixed : std::chars_format::general;
    char text[64];
    char* const end = double(float(v)) == v ? std::to_chars(text, text + sizeof text, float(v), format).ptr
                                            : std::to_chars(text, text + sizeof text, v, format).ptr;
    return std::string(text, end);
}

bool IsNumberList(const TomlValue& value, size_t count) {
    return IsListOf(value, IsFiniteNumber) && value.items.size() == count;
}

void CheckKeyValue(const std::string& file, const SceneKey& key, const TomlValue& value) {
    const std::string name = Quoted(key.name);
    if (!HasType(key, value))
        FailAt(file, value.line, name + " is " + DescribeToml(value) + ", expected " + ExpectedText(key));
    const bool number = key.type == KeyType::kInteger || key.type == KeyType::kNumber;
    if (number && (value.number < key.low || value.number > key.high))
        FailAt(file, value.line, name + " is " + NumberText(value.number) + ", expected " + ExpectedText(key));
    if (key.type != KeyType::kChoice) return;
    const std::vector<std::string> words = SplitChoices(key.choices);
    if (std::find(words.begin(), words.end(), value.text) == words.end())
        FailAt(file, value.line, name + " is " + Quoted(value.text) + ", expected " + JoinChoices(words));
}

} // namespace host
