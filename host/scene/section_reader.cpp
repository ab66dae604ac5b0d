#include "scene/section_reader.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "core/nearest_name.h"
#include "import/file_error.h"
#include "scene/key_check.h"

namespace host {

std::vector<std::string> SplitChoices(const char* choices) {
    std::vector<std::string> words;
    std::string_view rest(choices);
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('|'), rest.size());
        words.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return words;
}

std::string JoinChoices(const std::vector<std::string>& words) {
    std::string out;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0) out.append(i + 1 == words.size() ? " or " : ", ");
        out.append(words[i]);
    }
    return out;
}

std::string ExpectedText(const SceneKey& key) {
    const bool hasLow = key.low > -1e30, hasHigh = key.high < 1e30;
    std::string range;
    if (hasLow && hasHigh) {
        range = " in " + NumberText(key.low) + " .. " + NumberText(key.high);
    } else if (hasLow) {
        range = " of at least " + NumberText(key.low);
    }
    switch (key.type) {
    case KeyType::kFlag:
        return "true or false";
    case KeyType::kInteger:
        return "a whole number" + range;
    case KeyType::kNumber:
        return "a number" + range;
    case KeyType::kText:
        return "text";
    case KeyType::kChoice:
        return JoinChoices(SplitChoices(key.choices));
    case KeyType::kPair:
        return "a list of 2 numbers";
    case KeyType::kPoint:
        return "a list of 3 numbers";
    case KeyType::kColor:
        return "a list of 3 numbers (red, green, blue)";
    case KeyType::kNames:
        return "a list of texts";
    case KeyType::kIntegers:
        return "a list of whole numbers";
    case KeyType::kRows:
        return "a list of lists of numbers";
    case KeyType::kKnots:
        return "a list of [x, y, \"smooth\" | \"corner\" | \"step\"]";
    case KeyType::kFiles:
        return "a file name or a list of them";
    case KeyType::kImports:
        return "a list of file names or tables";
    case KeyType::kParameters:
    case KeyType::kTable:
        return "a table";
    case KeyType::kTexts:
        return "a table of texts or numbers";
    case KeyType::kTables:
        return std::string("a list of tables ([[") + key.name + "]])";
    case KeyType::kNamed:
        return "a table of tables";
    }
    return {};
}

namespace {

// Defaults are texts too; each is read once.
const TomlValue& DefaultOf(const SceneKey& key) {
    static thread_local std::map<std::string, TomlValue> known;
    const auto [at, added] = known.try_emplace(key.defaultText);
    if (added) at->second = ParseTomlValue(at->first);
    return at->second;
}

} // namespace

SectionReader::SectionReader(const std::string& file, const SceneSection& section, const TomlValue& table)
    : file_(file), section_(section), table_(table) {
    for (const auto& [name, value] : table.entries) {
        const SceneKey* const key = section.Find(name);
        if (!key) {
            std::vector<std::string> known;
            for (const SceneKey& k : section.keys) known.emplace_back(k.name);
            FailAt(file, value.line,
                   "unknown key " + Quoted(name) + " in " + section.title + ", expected " +
                       NearestNames(name.substr(0, 100), known, 1) + " or another key of it");
        }
        CheckKeyValue(file, *key, value);
    }
}

const SceneKey& SectionReader::Key(const char* key) const {
    const SceneKey* const known = section_.Find(key);
    if (!known) throw std::logic_error(std::string("no key '") + key + "' in " + section_.title);
    return *known;
}

const TomlValue* SectionReader::Raw(const char* key) const {
    Key(key);
    return table_.Find(key);
}

const TomlValue& SectionReader::Value(const char* key) const {
    if (const TomlValue* const raw = Raw(key)) return *raw;
    const SceneKey& known = Key(key);
    if (!*known.defaultText) throw std::logic_error(std::string("key '") + key + "' has no default");
    return DefaultOf(known);
}

bool SectionReader::Flag(const char* key) const {
    return Value(key).flag;
}

int SectionReader::Integer(const char* key) const {
    return int(Value(key).integer);
}

float SectionReader::Number(const char* key) const {
    return float(Value(key).number);
}

std::string SectionReader::Text(const char* key) const {
    return Value(key).text;
}

int SectionReader::Choice(const char* key) const {
    const std::vector<std::string> words = SplitChoices(Key(key).choices);
    return int(std::find(words.begin(), words.end(), Text(key)) - words.begin());
}

std::array<float, 2> SectionReader::Pair(const char* key) const {
    const TomlValue& value = Value(key);
    return {float(value.items[0].number), float(value.items[1].number)};
}

Point3 SectionReader::Point(const char* key) const {
    const TomlValue& value = Value(key);
    return {float(value.items[0].number), float(value.items[1].number), float(value.items[2].number)};
}

std::vector<std::string> SectionReader::Names(const char* key) const {
    std::vector<std::string> names;
    for (const TomlValue& item : Value(key).items) names.push_back(item.text);
    return names;
}

std::vector<int> SectionReader::Integers(const char* key) const {
    std::vector<int> numbers;
    for (const TomlValue& item : Value(key).items) numbers.push_back(int(item.integer));
    return numbers;
}

std::vector<std::vector<float>> SectionReader::Rows(const char* key) const {
    std::vector<std::vector<float>> rows;
    for (const TomlValue& row : Value(key).items) {
        rows.emplace_back();
        for (const TomlValue& item : row.items) rows.back().push_back(float(item.number));
    }
    return rows;
}

std::string SectionReader::Required(const char* key) const {
    const TomlValue* const raw = Raw(key);
    if (!raw || raw->text.empty()) FailAtKey(key, "no " + Quoted(key) + " in " + section_.title + ", expected one");
    return raw->text;
}

int SectionReader::LineOf(const char* key) const {
    const TomlValue* const raw = Raw(key);
    return raw ? raw->line : Line();
}

void SectionReader::Fail(const std::string& text) const {
    FailAt(file_, Line(), text);
}

void SectionReader::FailAtKey(const char* key, const std::string& text) const {
    FailAt(file_, LineOf(key), text);
}

} // namespace host
