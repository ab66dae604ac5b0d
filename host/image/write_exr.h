#pragma once
// The .exr writer.

#include "image/output_file.h"
#include "image/picture.h"

namespace host {

/// Writes the picture into `file` (see WritePicture), packing it on `threads` threads. Throws Error or the library's
/// exceptions.
void WriteExr(const Picture& picture, OutputFile& file, int threads);

} // namespace host
