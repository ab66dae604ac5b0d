#pragma once
// Meshes in numbered files.

#include <string>
#include <utility>
#include <vector>

#include "import/mesh_import.h"

namespace host {

/// A file of a series and its number.
struct SeriesFile {
    int number = 0;
    std::string path;
};

/// True when the file name (not its folder) has exactly one run of '#'.
bool IsSeriesName(const std::string& path);
/// The files that the name stands for, by ascending number: a run of '#' stands for at least as many digits; where
/// several files have one number, the shortest name counts.
std::vector<SeriesFile> ListSeries(const std::string& path);

/// The vertices of a frame of the animated mesh `like`. Of several meshes in a file the one called `name` counts.
/// Throws Error that names the file when it has another number of vertices or other faces.
std::vector<Point3> ReadMeshFrame(const std::string& path, const ImportOptions& options, const Mesh& like,
                                  const std::string& name);

} // namespace host
