// 16-bit text as UTF-8.
#pragma once

#include <cstddef>

namespace diag {

/// Writes at most `size` bytes, whole characters only and no terminator; gives their number. A lone surrogate becomes
/// U+FFFD. `fits`, when given, tells whether the whole text went in.
size_t Utf16ToUtf8(const char16_t* text, char* target, size_t size, bool* fits = nullptr);

} // namespace diag
