#pragma once
// Characters outside ASCII on their way through the TOML parser.

#include <string>
#include <string_view>

namespace host {

/// `text` (UTF-8) with the characters U+0080 .. U+FFFF moved to U+40080 .. U+4FFFF, a plane where Unicode has none:
/// some of the former lead the parser into undefined behaviour wherever it looks for spaces. What is no UTF-8 stays as
/// it is.
std::string MoveCharactersAway(std::string_view text);

/// The inverse, for what the parser made of such a text.
std::string MoveCharactersBack(std::string_view text);

/// The place in `text` of a character that MoveCharactersBack would take for a moved one; npos: there is none.
size_t FindMovedCharacter(std::string_view text);

} // namespace host
