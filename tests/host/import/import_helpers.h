#pragma once
// What the importers' tests share.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "import/mesh_import.h"

namespace import_test {

/// A folder of its own for a test, deleted with it.
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "velmar_import_XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TempFolder() { std::filesystem::remove_all(path_); }
    /// Writes a file and returns its path.
    std::string Write(const std::string& name, const std::string& content) const {
        const std::string path = path_ + "/" + name;
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

/// The message of the error that `f` throws; empty when it throws none.
template <class F>
std::string ErrorOf(F&& f) {
    try {
        f();
    } catch (const host::Error& e) {
        return e.what();
    }
    return {};
}

inline std::vector<int> Corners(const Mesh& mesh, int f) {
    const Face& face = mesh.faces[size_t(f)];
    return {face.v[0], face.v[1], face.v[2]};
}

inline std::vector<int> MapCorners(const Mesh& mesh, int channel, int f) {
    const TVFace& face = mesh.maps.at(channel).tf[size_t(f)];
    return {face.t[0], face.t[1], face.t[2]};
}

/// The bytes of a value, in this machine's order.
template <class T>
std::string Bytes(T value) {
    std::string out(sizeof value, '\0');
    std::memcpy(out.data(), &value, sizeof value);
    return out;
}

} // namespace import_test
