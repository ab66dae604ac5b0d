#pragma once
// Errors about a place in a file.

#include <string>
#include <string_view>

#include "core/error.h"

namespace host {

/// "FILE:LINE: " or "FILE: " when `line` is below 1.
std::string PlaceText(const std::string& file, int line);
/// The text between single quotes, at most 60 bytes of it.
std::string Quoted(std::string_view text);
/// The first line of a library's message, at most 200 bytes of it.
std::string FirstLine(const std::string& text);
/// Throws Error with "FILE:LINE: text".
[[noreturn]] void FailAt(const std::string& file, int line, const std::string& text);

/// The whole content of a file. Throws Error with one line when there is no such file, it is none, it cannot be read,
/// or it is larger than `mostBytes`.
std::string ReadWholeFile(const std::string& path, size_t mostBytes = size_t(4) << 30);

} // namespace host
