#pragma once
// Lines of .obj files.

#include <string>
#include <string_view>
#include <vector>

#include "sdk/point3.h"

namespace host {

/// Vertices and `l` lines of a file, in its order; indices count from 0.
struct ObjLines {
    std::vector<Point3> points;
    std::vector<std::vector<int>> lines;
};

/// Reads the `v` and `l` lines; everything else is passed over. Throws Error with file and line: numbers that cannot be
/// read, an index out of range, a line of less than two vertices, no line at all.
ObjLines ImportObjLines(const std::string& file, std::string_view content);

} // namespace host
