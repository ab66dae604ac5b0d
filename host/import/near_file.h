#pragma once
// File names: extensions, and files that another file names.

#include <string>

namespace host {

/// The path of the file `name` (a relative path, "%20" is a space when `uri`) beside `file` or in folders below it.
/// Empty when it is not there, or when it would stand elsewhere, be it by "..", an absolute path or a link.
std::string FileBeside(const std::string& file, const std::string& name, bool uri);

/// The extension of a file name in lower case, with its dot; empty when there is none.
std::string LowerExtension(const std::string& path);

} // namespace host
