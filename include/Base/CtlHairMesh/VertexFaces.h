#pragma once
// Which face stands for a vertex.

#include <vector>

#include "sdk/mesh.h"

/// A corner of a face; face -1 is none.
struct FaceCorner {
    int face = -1, corner = 0;
};

/// The lowest face that uses each vertex, with the vertex's corner there.
inline std::vector<FaceCorner> FindLowestFaces(const Mesh& mesh) {
    std::vector<FaceCorner> lowest(mesh.verts.size());
    for (int f = mesh.getNumFaces() - 1; f >= 0; --f)
        for (int c = 2; c >= 0; --c) lowest[size_t(mesh.faces[size_t(f)].v[c])] = {f, c};
    return lowest;
}
