#pragma once
// Bounding volume tree over the triangles of a mesh.

#include <vector>

#include "sdk/mesh.h"

namespace host {

/// Answers nearest-hit questions about the triangles a mesh had when the tree was built. The tree keeps no vertices.
class MeshTree {
public:
    /// Triangles with missing or non-finite vertices are left out.
    explicit MeshTree(const Mesh& mesh);

    struct Hit {
        double t = 0; ///< in units of the ray direction's length
        int face = -1;
        double weight[3] = {0, 0, 0}; ///< barycentric coordinates
    };
    /// Nearest hit at t >= 0; of equal distances the lowest face. Both sides of a triangle are hit.
    bool Nearest(const Mesh& mesh, const Ray& ray, Hit& hit) const;

    /// The same test for one triangle, for `hit` to be replaced when this one is nearer. Neighbours that share an edge
    /// leave no gap: the sign of an edge is computed from the same two corners for both.
    static bool HitTriangle(const Mesh& mesh, int face, const Ray& ray, Hit& hit);

private:
    struct Node {
        float lo[3], hi[3];
        int first = 0; ///< leaf: place in order_; inner node: its second child (the first follows the node itself)
        int count = 0; ///< number of triangles of a leaf, 0 = inner node
    };
    struct Item {
        Box3 box;
        int face;
    };
    void Build(std::vector<Item>& items, size_t begin, size_t end, int depth);
    static size_t Split(std::vector<Item>& items, size_t begin, size_t end, bool binned);
    static bool HitBox(const Node& node, const double p[3], const double d[3], double nearest, double& enter);

    std::vector<Node> nodes_;
    std::vector<int> order_;
};

} // namespace host
