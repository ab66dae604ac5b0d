// The parser's own checks abort the program; they stay off in every build.
#ifndef NDEBUG
#define NDEBUG
#endif
#define TOML_EXCEPTIONS 1
#include <toml++/toml.h>

#include "import/file_error.h"
#include "scene/key_check.h"
#include "scene/toml_characters.h"
#include "scene/toml_guard.h"
#include "scene/toml_value.h"

#include <algorithm>

namespace host {

namespace {

TomlValue Convert(const toml::node& node);

void ConvertTable(const toml::table& table, TomlValue& out) {
    out.kind = TomlValue::kTable;
    for (const auto& [key, value] : table) out.entries.emplace_back(MoveCharactersBack(key.str()), Convert(value));
    std::stable_sort(out.entries.begin(), out.entries.end(),
                     [](const auto& a, const auto& b) { return a.second.line < b.second.line; });
}

TomlValue Convert(const toml::node& node) {
    TomlValue out;
    out.line = int(node.source().begin.line);
    if (const toml::table* const table = node.as_table()) {
        ConvertTable(*table, out);
    } else if (const toml::array* const array = node.as_array()) {
        out.kind = TomlValue::kArray;
        for (const toml::node& item : *array) out.items.push_back(Convert(item));
    } else if (const auto text = node.value_exact<std::string>()) {
        out.kind = TomlValue::kText;
        out.text = MoveCharactersBack(*text);
    } else if (const auto integer = node.value_exact<int64_t>()) {
        out.kind = TomlValue::kInteger;
        out.integer = *integer;
        out.number = double(*integer);
    } else if (const auto number = node.value_exact<double>()) {
        out.kind = TomlValue::kFloat;
        out.number = *number;
    } else if (const auto flag = node.value_exact<bool>()) {
        out.kind = TomlValue::kBool;
        out.flag = *flag;
    } else {
        out.kind = TomlValue::kDate;
    }
    return out;
}

// One line of printable ASCII out of the parser's message.
std::string CleanMessage(std::string_view message) {
    std::string out;
    for (const char c : message.substr(0, 200)) out.push_back(c >= ' ' && c < 127 ? c : ' ');
    return out;
}

} // namespace

TomlValue::TomlValue() = default;
TomlValue::~TomlValue() = default;
TomlValue::TomlValue(const TomlValue&) = default;
TomlValue::TomlValue(TomlValue&&) noexcept = default;
TomlValue& TomlValue::operator=(const TomlValue&) = default;
TomlValue& TomlValue::operator=(TomlValue&&) noexcept = default;

const TomlValue* TomlValue::Find(std::string_view key) const {
    for (const auto& [name, value] : entries)
        if (name == key) return &value;
    return nullptr;
}

std::string DescribeToml(const TomlValue& value) {
    switch (value.kind) {
    case TomlValue::kText:
        return "the text " + Quoted(value.text);
    case TomlValue::kInteger:
        return std::to_string(value.integer);
    case TomlValue::kFloat:
        return NumberText(value.number);
    case TomlValue::kBool:
        return value.flag ? "true" : "false";
    case TomlValue::kArray:
        return "a list of " + std::to_string(value.items.size());
    case TomlValue::kTable:
        return "a table";
    default:
        return "a date";
    }
}

TomlValue ParseToml(const std::string& file, std::string_view text) {
    // Some editors begin a text with a byte order mark.
    if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
    CheckTomlText(file, text);
    try {
        const toml::table table = toml::parse(MoveCharactersAway(text), file);
        TomlValue out;
        ConvertTable(table, out);
        out.line = 1;
        return out;
    } catch (const toml::parse_error& e) {
        FailAt(file, int(e.source().begin.line), CleanMessage(MoveCharactersBack(e.description())));
    }
}

TomlValue ParseTomlValue(const std::string& text) {
    try {
        const TomlValue table = ParseToml("value", "value = " + text);
        if (table.entries.size() == 1) return table.entries[0].second;
    } catch (const Error&) {
        // Not TOML: a bare word.
    }
    TomlValue out;
    out.kind = TomlValue::kText;
    out.text = text;
    return out;
}

} // namespace host
