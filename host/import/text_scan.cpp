#include "import/text_scan.h"

#include <charconv>
#include <cstdlib>

namespace host {

bool LineScanner::Next(std::string_view& line) {
    if (position_ >= text_.size()) return false;
    const size_t end = std::min(text_.find('\n', position_), text_.size());
    line = text_.substr(position_, end - position_);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    position_ = end + 1;
    ++line_;
    return true;
}

std::string_view TakeWord(std::string_view& rest) {
    const size_t start = rest.find_first_not_of(" \t");
    if (start == std::string_view::npos) {
        rest = {};
        return {};
    }
    const size_t end = std::min(rest.find_first_of(" \t", start), rest.size());
    const std::string_view word = rest.substr(start, end - start);
    rest.remove_prefix(end);
    return word;
}

std::string_view Trimmed(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t");
    return start == std::string_view::npos ? std::string_view()
                                           : text.substr(start, text.find_last_not_of(" \t") - start + 1);
}

bool ParseNumber(std::string_view word, double& value) {
    if (word.size() > 1 && word[0] == '+') word.remove_prefix(1);
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    if (error == std::errc::result_out_of_range && stop == end) {
        value = std::strtod(std::string(word).c_str(), nullptr);
        return true;
    }
    return error == std::errc() && stop == end;
}

bool ParseInteger(std::string_view word, int& value) {
    if (word.size() > 1 && word[0] == '+') word.remove_prefix(1);
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    return error == std::errc() && stop == end;
}

} // namespace host
