#include "import/mesh_series.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "import/text_scan.h"

namespace host {

namespace {

namespace fs = std::filesystem;

/// A file name around its run of '#'.
struct SeriesName {
    std::string before, after;
    size_t digits = 0;
};

SeriesName Split(const std::string& name) {
    const size_t first = name.find('#');
    if (first == std::string::npos) return {name, "", 0};
    const size_t end = std::min(name.find_first_not_of('#', first), name.size());
    return {name.substr(0, first), name.substr(end), end - first};
}

bool Matches(const SeriesName& series, const std::string& name, int& number) {
    if (name.size() < series.before.size() + series.after.size() + series.digits) return false;
    if (!name.starts_with(series.before) || !name.ends_with(series.after)) return false;
    const std::string digits =
        name.substr(series.before.size(), name.size() - series.before.size() - series.after.size());
    return std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
           ParseInteger(digits, number);
}

} // namespace

bool IsSeriesName(const std::string& path) {
    const SeriesName series = Split(fs::path(path).filename().string());
    return series.digits > 0 && series.after.find('#') == std::string::npos;
}

std::vector<SeriesFile> ListSeries(const std::string& path) {
    const fs::path pattern(path);
    const SeriesName series = Split(pattern.filename().string());
    const fs::path folder = pattern.has_parent_path() ? pattern.parent_path() : fs::path(".");
    std::map<int, std::string> found;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        const std::string name = at->path().filename().string();
        int number = 0;
        if (!Matches(series, name, number)) continue;
        const auto [known, added] = found.try_emplace(number, name);
        if (!added && name.size() < known->second.size()) known->second = name;
    }
    std::vector<SeriesFile> files;
    for (const auto& [number, name] : found) files.push_back({number, (pattern.parent_path() / name).string()});
    return files;
}

std::vector<Point3> ReadMeshFrame(const std::string& path, const ImportOptions& options, const Mesh& like,
                                  const std::string& name) {
    std::vector<ImportedMesh> meshes = ImportMeshes(path, options);
    const auto named =
        std::find_if(meshes.begin(), meshes.end(), [&](const ImportedMesh& m) { return m.name == name; });
    if (named == meshes.end() && meshes.size() > 1)
        FailAt(path, 0,
               "has " + std::to_string(meshes.size()) + " meshes and none called " + Quoted(name) + ", expected one");
    Mesh& mesh = named == meshes.end() ? meshes[0].mesh : named->mesh;
    if (mesh.getNumVerts() != like.getNumVerts())
        FailAt(path, 0,
               "has " + std::to_string(mesh.getNumVerts()) + " vertices, expected " +
                   std::to_string(like.getNumVerts()) + " as the mesh of " + Quoted(name));
    const bool sameFaces = std::equal(mesh.faces.begin(), mesh.faces.end(), like.faces.begin(), like.faces.end(),
                                      [](const Face& a, const Face& b) { return std::equal(a.v, a.v + 3, b.v); });
    if (!sameFaces) FailAt(path, 0, "has other faces than the mesh of " + Quoted(name) + ", expected the same ones");
    return std::move(mesh.verts);
}

} // namespace host
