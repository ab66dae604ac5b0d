#pragma once
// What the importers' tests share.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "host/error_of.h"
#include "import/imported_scene.h"
#include "temp_folder.h"

namespace import_test {

using test::ErrorOf;
using test::TempFolder;

/// Transforms of all nodes in the scene at rest.
inline std::vector<Matrix3> WorldMatrices(const host::ImportedScene& scene) {
    std::vector<Matrix3> worlds;
    for (const host::ImportedNode& node : scene.nodes)
        worlds.push_back(node.parent < 0 ? host::LocalMatrix(node)
                                         : host::LocalMatrix(node) * worlds[size_t(node.parent)]);
    return worlds;
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
