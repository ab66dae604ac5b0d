// Settings text in memory: lines are looked up and changed in place, so that all else stays byte for byte.
#include "DebugTools/platform/Ini.h"

namespace diag {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view Trim(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\v\f";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool SameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (Lower(a[i]) != Lower(b[i])) return false;
    return true;
}

struct Line {
    size_t begin = 0;
    size_t end = 0;  // without the line break
    size_t next = 0; // start of the following line
    std::string_view trimmed;

    bool IsHeader() const { return trimmed.starts_with('[') && trimmed.find(']') != std::string_view::npos; }
    std::string_view HeaderName() const { return Trim(trimmed.substr(1, trimmed.find(']') - 1)); }
    bool IsPair() const {
        return !trimmed.starts_with(';') && !IsHeader() && trimmed.find('=') != std::string_view::npos;
    }
    std::string_view KeyName() const { return Trim(trimmed.substr(0, trimmed.find('='))); }
    std::string_view Value() const { return Trim(trimmed.substr(trimmed.find('=') + 1)); }
};

Line LineAt(std::string_view text, size_t begin) {
    Line line;
    line.begin = begin;
    const size_t lineFeed = text.find('\n', begin);
    line.next = lineFeed == std::string_view::npos ? text.size() : lineFeed + 1;
    line.end = lineFeed == std::string_view::npos ? text.size() : lineFeed;
    if (line.end > begin && text[line.end - 1] == '\r') --line.end;
    line.trimmed = Trim(text.substr(begin, line.end - begin));
    return line;
}

size_t FirstLine(std::string_view text) {
    return text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
}

// One section: the header line and the text below it, up to the next header.
struct Section {
    bool found = false;
    size_t header = 0;
    size_t body = 0;
    size_t end = 0;
};

Section FindSection(std::string_view text, std::string_view name) {
    Section section;
    name = Trim(name);
    for (size_t at = FirstLine(text); at < text.size();) {
        const Line line = LineAt(text, at);
        at = line.next;
        if (!line.IsHeader()) continue;
        if (section.found) {
            section.end = line.begin;
            return section;
        }
        if (SameName(line.HeaderName(), name)) section = {true, line.begin, line.next, text.size()};
    }
    return section;
}

bool FindKey(std::string_view text, const Section& section, std::string_view key, Line& found) {
    key = Trim(key);
    for (size_t at = section.body; section.found && at < section.end;) {
        const Line line = LineAt(text, at);
        at = line.next;
        if (!line.IsPair() || !SameName(line.KeyName(), key)) continue;
        found = line;
        return true;
    }
    return false;
}

// A new key stands below the last written line of its section, above the blank lines that part it from the next one.
size_t EndOfContent(std::string_view text, const Section& section) {
    size_t end = section.body;
    for (size_t at = section.body; at < section.end;) {
        const Line line = LineAt(text, at);
        at = line.next;
        if (!line.trimmed.empty()) end = line.next;
    }
    return end;
}

// New lines end as the file's first line does; a new file gets the form that every reader of such files accepts.
std::string_view LineBreakOf(std::string_view text) {
    const size_t lineFeed = text.find('\n');
    return lineFeed == std::string_view::npos || (lineFeed > 0 && text[lineFeed - 1] == '\r') ? "\r\n" : "\n";
}

std::string_view WithoutQuotes(std::string_view value) {
    const bool quoted =
        value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

} // namespace

bool IniText::Find(std::string_view section, std::string_view key, std::string& value) const {
    Line line;
    if (!FindKey(text_, FindSection(text_, section), key, line)) return false;
    value = WithoutQuotes(line.Value());
    return true;
}

void IniText::Set(std::string_view section, std::string_view key, std::string_view value) {
    const Section place = FindSection(text_, section);
    const std::string lineBreak(LineBreakOf(text_));
    Line line;
    if (FindKey(text_, place, key, line)) {
        text_.replace(line.begin, line.end - line.begin, std::string(line.KeyName()) + "=" + std::string(value));
        return;
    }
    const size_t at = place.found ? EndOfContent(text_, place) : text_.size();
    std::string added;
    auto add = [&added](auto... parts) { (added.append(parts), ...); };
    if (at > FirstLine(text_) && text_[at - 1] != '\n') add(lineBreak);
    if (!place.found) add("[", Trim(section), "]", lineBreak);
    add(Trim(key), "=", value, lineBreak);
    text_.insert(at, added);
}

bool IniText::EraseKey(std::string_view section, std::string_view key) {
    Line line;
    if (!FindKey(text_, FindSection(text_, section), key, line)) return false;
    text_.erase(line.begin, line.next - line.begin);
    return true;
}

bool IniText::EraseSection(std::string_view section) {
    const Section place = FindSection(text_, section);
    if (!place.found) return false;
    text_.erase(place.header, place.end - place.header);
    return true;
}

} // namespace diag
