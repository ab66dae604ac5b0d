#pragma once
// The .exr reader.

#include <string>

#include "image/load_image.h"

namespace host {

/// Reads R, G, B, A, or Y, of a flat .exr file. Throws Error or the library's exceptions.
Image ReadExr(const std::string& path);

/// Throws Error when a picture of that size is empty or larger than what is read.
void CheckImageSize(const std::string& path, int64_t width, int64_t height);

} // namespace host
