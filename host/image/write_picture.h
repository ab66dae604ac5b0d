#pragma once
// Picture files.

#include <string>

#include "image/picture.h"

namespace host {

/// Writes a picture in the form that the extension of `path` names:
///   .png  8 bits, sRGB-encoded, opaque: the colour over the background;
///   .exr  half R G B A, linear, premultiplied, without the background (which stands in background.R/G/B when there is
///         one), and float Z, the distance along the view axis (1e30 where nothing is).
/// The file is written beside its place and renamed; on failure nothing of it stays. It does not depend on `threads`.
/// Throws Error.
void WritePicture(const Picture& picture, const std::string& path, int threads = 1);

/// Throws Error when a picture could not be written to `path`: unknown extension, no such folder, a folder of that
/// name, no permission. Leaves nothing behind. Call it before a long render.
void CheckPictureOutput(const std::string& path);

} // namespace host
