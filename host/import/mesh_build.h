#pragma once
// Steps that importers share.

#include <array>
#include <string>
#include <vector>

#include "sdk/mesh.h"

namespace host {

/// Calls `add(a, b, c, edges)` for every triangle of the fan of a polygon with `corners` corners; a, b, c count corners
/// from 0, `edges` are the flags of the triangle's edges that belong to the polygon.
template <class Add>
void ForEachFanTriangle(int corners, Add&& add) {
    for (int i = 1; i + 1 < corners; ++i) {
        uint32_t edges = EDGE_B;
        if (i == 1) edges |= EDGE_A;
        if (i + 2 == corners) edges |= EDGE_C;
        add(0, i, i + 1, edges);
    }
}

/// A mesh of the faces listed in `keep` only, with the vertices and mapping vertices that they use, in their order.
Mesh ExtractFaces(const Mesh& mesh, const std::vector<int>& keep);

/// Normals at the three corners of a face.
using CornerNormals = std::array<Point3, 3>;
/// Gives the faces smoothing groups: faces that meet at an edge and have the same normals at both of its ends share
/// one; patches that only touch have different ones. Faces of a patch for which none of the 32 groups is left get none.
void SmoothByNormals(Mesh& mesh, const std::vector<CornerNormals>& normals);

/// File name without folders and extension.
std::string FileStem(const std::string& file);

} // namespace host
