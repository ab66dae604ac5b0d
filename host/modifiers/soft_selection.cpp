#include "modifiers/soft_selection.h"

#include <algorithm>
#include <cmath>

namespace host {

namespace {

/// Points in a balanced tree, for the nearest one.
class NearestPoint {
public:
    explicit NearestPoint(std::vector<Point3> points) : points_(std::move(points)) { Build(0, points_.size(), 0); }

    /// Squared distance to the nearest point, `most` when there is none nearer.
    float DistanceSquared(const Point3& p, float most) const {
        Search(0, points_.size(), 0, p, most);
        return most;
    }

private:
    void Build(size_t begin, size_t end, int axis) {
        if (end - begin < 2) return;
        const size_t middle = (begin + end) / 2;
        std::nth_element(points_.begin() + std::ptrdiff_t(begin), points_.begin() + std::ptrdiff_t(middle),
                         points_.begin() + std::ptrdiff_t(end),
                         [axis](const Point3& a, const Point3& b) { return a[axis] < b[axis]; });
        Build(begin, middle, (axis + 1) % 3);
        Build(middle + 1, end, (axis + 1) % 3);
    }
    void Search(size_t begin, size_t end, int axis, const Point3& p, float& nearest) const {
        if (begin >= end) return;
        const size_t middle = (begin + end) / 2;
        nearest = std::min(nearest, LengthSquared(p - points_[middle]));
        const float side = p[axis] - points_[middle][axis];
        const int next = (axis + 1) % 3;
        if (side < 0) {
            Search(begin, middle, next, p, nearest);
            if (side * side < nearest) Search(middle + 1, end, next, p, nearest);
        } else {
            Search(middle + 1, end, next, p, nearest);
            if (side * side < nearest) Search(begin, middle, next, p, nearest);
        }
    }

    std::vector<Point3> points_;
};

} // namespace

float SoftWeight(float distance, const SoftSelection& soft) {
    if (distance <= 0.0f) return 1.0f;
    if (!(distance < soft.falloff)) return 0.0f;
    const float s = distance / soft.falloff, u = 1.0f - s;
    const float curve = 3.0f * u * s * s * soft.pinch + 3.0f * u * u * s * (1.0f + soft.bubble) + u * u * u;
    return std::clamp(curve, 0.0f, 1.0f);
}

std::vector<float> SoftWeights(const Mesh& mesh, const BitArray& selected, const SoftSelection& soft) {
    std::vector<float> weights(mesh.verts.size());
    std::vector<Point3> chosen;
    for (int v = 0; v < mesh.getNumVerts(); ++v)
        if (selected[v] && IsFinite(mesh.verts[size_t(v)])) chosen.push_back(mesh.verts[size_t(v)]);
    if (chosen.empty()) return weights;
    const NearestPoint tree(std::move(chosen));
    const float most = soft.falloff * soft.falloff;
    for (int v = 0; v < mesh.getNumVerts(); ++v)
        weights[size_t(v)] =
            selected[v] ? 1.0f : SoftWeight(std::sqrt(tree.DistanceSquared(mesh.verts[size_t(v)], most)), soft);
    return weights;
}

} // namespace host
