#pragma once
// What is refused before a TOML text reaches the parser.

#include <string>
#include <string_view>

namespace host {

/// Throws Error for characters outside ASCII that stand neither in strings nor in comments, for arrays and inline
/// tables nested deeper than kMostTomlDepth, and for characters that FindMovedCharacter finds.
void CheckTomlText(const std::string& file, std::string_view text);

} // namespace host
