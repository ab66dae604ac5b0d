#include "core/user_props.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace host {

namespace {

std::string_view Trim(std::string_view s) {
    constexpr const char* kSpace = " \t\r";
    const size_t first = s.find_first_not_of(kSpace);
    if (first == std::string_view::npos) return {};
    return s.substr(first, s.find_last_not_of(kSpace) - first + 1);
}

bool SameKey(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

template <class T>
bool Parse(std::string_view s, T& value) {
    if (s.starts_with('+')) s.remove_prefix(1);
    T v{};
    const auto [end, error] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (error != std::errc() || end != s.data() + s.size()) return false;
    value = v;
    return true;
}

} // namespace

struct UserProps::Line {
    size_t start = 0, end = 0; ///< without the line break
    std::string_view value;
};

bool UserProps::Find(const char* key, Line& line) const {
    const std::string_view text = text_, wanted = Trim(key ? key : "");
    if (wanted.empty()) return false;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        const std::string_view whole = text.substr(start, end - start);
        const size_t sign = whole.find('=');
        if (sign != std::string_view::npos && SameKey(Trim(whole.substr(0, sign)), wanted)) {
            line = {start, end, Trim(whole.substr(sign + 1))};
            return true;
        }
        start = end + 1;
    }
    return false;
}

bool UserProps::GetString(const char* key, std::string& value) const {
    Line line;
    if (!Find(key, line)) return false;
    value = line.value;
    return true;
}

bool UserProps::GetFloat(const char* key, float& value) const {
    Line line;
    float v = 0;
    if (!Find(key, line) || !Parse(line.value, v) || !std::isfinite(v)) return false;
    value = v;
    return true;
}

bool UserProps::GetInt(const char* key, int& value) const {
    Line line;
    return Find(key, line) && Parse(line.value, value);
}

void UserProps::Set(const char* key, const char* value) {
    Line line;
    const bool found = Find(key, line);
    if (!value) {
        if (found) text_.erase(line.start, line.end + 1 - line.start);
        return;
    }
    const std::string name(Trim(key ? key : ""));
    if (name.empty()) return;
    const std::string text = name + " = " + value;
    if (found) {
        text_.replace(line.start, line.end - line.start, text);
    } else {
        if (!text_.empty() && text_.back() != '\n') text_ += '\n';
        text_ += text + "\n";
    }
}

} // namespace host
