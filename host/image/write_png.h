#pragma once
// The .png writer.

#include "image/output_file.h"
#include "image/picture.h"

namespace host {

/// Writes the picture into `file` (see WritePicture). Throws Error.
void WritePng(const Picture& picture, OutputFile& file);

} // namespace host
