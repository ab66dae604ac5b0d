#pragma once
// Which faces or vertices of a mesh are meant.

#include <array>
#include <string>
#include <vector>

#include "sdk/mesh.h"

namespace host {

/// A choice of faces or vertices: everything that one of the parts names. Numbers that the mesh does not have are
/// ignored.
struct SelectionRule {
    bool all = false;
    std::vector<int> ids;                   ///< faces or vertices, from 0
    std::vector<std::array<int, 2>> ranges; ///< first and last, both included
    std::vector<int> materials;             ///< material ids, from 0; a vertex counts as part of its faces
    uint32_t smoothing = 0;                 ///< faces with one of these smoothing groups
    std::vector<std::string> sets;          ///< named face sets of the mesh
    bool invert = false;                    ///< everything but that

    bool operator==(const SelectionRule&) const = default;
};

BitArray SelectFaces(const Mesh& mesh, const SelectionRule& rule);
/// Vertices by number, and the corners of faces that the other parts name.
BitArray SelectVertices(const Mesh& mesh, const SelectionRule& rule);

} // namespace host
