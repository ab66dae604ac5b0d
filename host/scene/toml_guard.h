#pragma once
// What is refused before a TOML text reaches the parser.

#include <string>
#include <string_view>

namespace host {

/// Throws Error for characters outside ASCII that stand neither in strings nor in comments, and for arrays and inline
/// tables nested deeper than kMostTomlDepth: both lead the parser astray.
void CheckTomlText(const std::string& file, std::string_view text);

} // namespace host
