#pragma once
// Errors that end in one line for the user.

#include <stdexcept>
#include <string>
#include <string_view>

namespace host {

/// `text` on one line that a terminal can show: runs of control characters, line breaks among them, become one space,
/// none at the ends.
std::string OneLine(std::string_view text);

/// Bad input or failed work. what() is the line without the program's name: "FILE:LINE: what, and what was expected".
class Error : public std::runtime_error {
public:
    /// Names out of files may hold anything; the text becomes OneLine.
    explicit Error(std::string_view text) : std::runtime_error(OneLine(text)) {}
};

} // namespace host
