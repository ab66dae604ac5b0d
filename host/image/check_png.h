#pragma once
// Damaged .png files found before they are decoded.

#include <string>

namespace host {

/// Throws Error when `path` begins like a .png file but its chunks are cut off or their checksums are wrong. Other
/// files pass. The decoding library would print lines of its own about such files.
void CheckPng(const std::string& path);

} // namespace host
