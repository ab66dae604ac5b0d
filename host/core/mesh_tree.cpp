// Bounding volume tree: binned surface-area splits, double-precision triangle test.

#include "core/mesh_tree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace host {

namespace {

constexpr size_t kLeafSize = 4;
constexpr int kBins = 12;
constexpr int kBinDepth = 40;
constexpr int kMaxDepth = kBinDepth + 32; // a mesh has fewer than 2^32 triangles

float HalfArea(const Box3& b) {
    if (b.IsEmpty()) return 0;
    const Point3 w = b.Width();
    return w.x * w.y + w.y * w.z + w.z * w.x;
}

struct Bin {
    Box3 box;
    size_t count = 0;
};

// The cheapest border between bins by surface area, 1..kBins-1; 0 when there is none with triangles on both sides.
int CheapestBorder(const std::array<Bin, kBins>& bins) {
    std::array<float, kBins> rightCost{};
    Bin right;
    for (int i = kBins - 1; i > 0; --i) {
        right.box += bins[size_t(i)].box;
        right.count += bins[size_t(i)].count;
        rightCost[size_t(i)] = right.count ? HalfArea(right.box) * float(right.count) : -1.0f;
    }
    Bin left;
    int best = 0;
    float bestCost = std::numeric_limits<float>::max();
    for (int i = 1; i < kBins; ++i) {
        left.box += bins[size_t(i) - 1].box;
        left.count += bins[size_t(i) - 1].count;
        if (left.count == 0 || rightCost[size_t(i)] < 0) continue;
        const float cost = HalfArea(left.box) * float(left.count) + rightCost[size_t(i)];
        if (cost < bestCost) best = i, bestCost = cost;
    }
    return best;
}

} // namespace

MeshTree::MeshTree(const Mesh& mesh) {
    std::vector<Item> items;
    items.reserve(mesh.faces.size());
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        Item item{Box3(), f};
        bool good = true;
        for (const int v : mesh.faces[size_t(f)].v) {
            good = good && v >= 0 && v < mesh.getNumVerts() && IsFinite(mesh.verts[size_t(v)]);
            if (good) item.box += mesh.verts[size_t(v)];
        }
        if (good) items.push_back(item);
    }
    order_.reserve(items.size());
    if (!items.empty()) Build(items, 0, items.size(), 0);
}

// Appends the node of items begin..end and everything below it. Beyond kBinDepth levels items are halved, which bounds
// the depth.
void MeshTree::Build(std::vector<Item>& items, size_t begin, size_t end, int depth) {
    Box3 box;
    for (size_t i = begin; i < end; ++i) box += items[i].box;
    const size_t at = nodes_.size();
    nodes_.emplace_back();
    for (int axis = 0; axis < 3; ++axis) nodes_[at].lo[axis] = box.pmin[axis], nodes_[at].hi[axis] = box.pmax[axis];
    if (end - begin <= kLeafSize) {
        nodes_[at].first = int(order_.size());
        nodes_[at].count = int(end - begin);
        for (size_t i = begin; i < end; ++i) order_.push_back(items[i].face);
        return;
    }
    const size_t middle = Split(items, begin, end, depth < kBinDepth);
    Build(items, begin, middle, depth + 1);
    nodes_[at].first = int(nodes_.size());
    Build(items, middle, end, depth + 1);
}

size_t MeshTree::Split(std::vector<Item>& items, size_t begin, size_t end, bool binned) {
    Box3 centres;
    for (size_t i = begin; i < end; ++i) centres += items[i].box.Center();
    const Point3 width = centres.Width();
    const int axis = width.x >= width.y && width.x >= width.z ? 0 : width.y >= width.z ? 1 : 2;
    const float lo = centres.pmin[axis], scale = float(kBins) / width[axis];
    const size_t half = begin + (end - begin) / 2;
    if (!std::isfinite(scale) || !(scale > 0)) return half; // all centres in one place, or too far apart for floats
    const auto binOf = [&](const Item& item) {
        return std::clamp(int((item.box.Center()[axis] - lo) * scale), 0, kBins - 1);
    };
    std::array<Bin, kBins> bins;
    for (size_t i = begin; i < end; ++i) {
        Bin& bin = bins[size_t(binOf(items[i]))];
        bin.box += items[i].box;
        ++bin.count;
    }
    const auto first = items.begin() + std::ptrdiff_t(begin), last = items.begin() + std::ptrdiff_t(end);
    if (const int border = binned ? CheapestBorder(bins) : 0) {
        const auto middle = std::partition(first, last, [&](const Item& item) { return binOf(item) < border; });
        return size_t(middle - items.begin());
    }
    std::nth_element(first, items.begin() + std::ptrdiff_t(half), last, [&](const Item& a, const Item& b) {
        const float ca = a.box.Center()[axis], cb = b.box.Center()[axis];
        return ca != cb ? ca < cb : a.face < b.face;
    });
    return half;
}

// True when the ray may meet the box before `nearest`. A margin far above the rounding error makes the test err on the
// side of looking.
bool MeshTree::HitBox(const Node& node, const double p[3], const double d[3], double nearest, double& enter) {
    double from = 0, to = nearest;
    for (int axis = 0; axis < 3; ++axis) {
        const double margin =
            1e-12 * (std::fabs(p[axis]) + std::fabs(double(node.lo[axis])) + std::fabs(double(node.hi[axis])));
        const double lo = node.lo[axis] - margin, hi = node.hi[axis] + margin;
        if (d[axis] == 0) {
            if (p[axis] < lo || p[axis] > hi) return false;
            continue;
        }
        const double a = (lo - p[axis]) / d[axis], b = (hi - p[axis]) / d[axis];
        from = std::max(from, std::min(a, b));
        to = std::min(to, std::max(a, b));
    }
    enter = from;
    return from * (1 - 1e-9) <= to * (1 + 1e-9);
}

bool MeshTree::HitTriangle(const Mesh& mesh, int face, const Ray& ray, Hit& hit) {
    const double d[3] = {ray.dir.x, ray.dir.y, ray.dir.z};
    double v[3][3];
    for (int i = 0; i < 3; ++i) {
        const Point3& p = mesh.verts[size_t(mesh.faces[size_t(face)].v[i])];
        for (int axis = 0; axis < 3; ++axis) v[i][axis] = double(p[axis]) - double(ray.p[axis]);
    }
    // Signed volumes of the edges with the ray (Pluecker coordinates); exactly opposite for the edge's other triangle.
    const auto volume = [&](const double* a, const double* b) {
        return d[0] * (a[1] * b[2] - a[2] * b[1]) + d[1] * (a[2] * b[0] - a[0] * b[2]) +
               d[2] * (a[0] * b[1] - a[1] * b[0]);
    };
    const double w[3] = {volume(v[1], v[2]), volume(v[2], v[0]), volume(v[0], v[1])};
    const bool inside = (w[0] >= 0 && w[1] >= 0 && w[2] >= 0) || (w[0] <= 0 && w[1] <= 0 && w[2] <= 0);
    const double sum = w[0] + w[1] + w[2];
    if (!inside || sum == 0) return false;
    const double dd = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
    double t = 0;
    for (int i = 0; i < 3; ++i) t += w[i] / sum * (v[i][0] * d[0] + v[i][1] * d[1] + v[i][2] * d[2]);
    t /= dd;
    if (!(t >= 0)) return false;
    if (hit.face >= 0 && (t > hit.t || (t == hit.t && face > hit.face))) return false;
    hit.t = t;
    hit.face = face;
    for (int i = 0; i < 3; ++i) hit.weight[i] = w[i] / sum;
    return true;
}

bool MeshTree::Nearest(const Mesh& mesh, const Ray& ray, Hit& hit) const {
    hit = Hit();
    if (nodes_.empty() || !IsFinite(ray.p) || !IsFinite(ray.dir) || ray.dir == Point3()) return false;
    const double p[3] = {ray.p.x, ray.p.y, ray.p.z}, d[3] = {ray.dir.x, ray.dir.y, ray.dir.z};
    const auto nearest = [&] { return hit.face >= 0 ? hit.t : std::numeric_limits<double>::max() / 2; };
    std::array<int, kMaxDepth + 2> open; // at most one node a level waits, and the two children last pushed
    size_t waiting = 0;
    open[waiting++] = 0;
    double enter = 0;
    while (waiting > 0) {
        const int at = open[--waiting];
        const Node& node = nodes_[size_t(at)];
        if (!HitBox(node, p, d, nearest(), enter)) continue;
        for (int i = 0; i < node.count; ++i) HitTriangle(mesh, order_[size_t(node.first + i)], ray, hit);
        if (node.count) continue;
        const int children[2] = {at + 1, node.first};
        double enters[2];
        bool meets[2];
        for (int c = 0; c < 2; ++c) meets[c] = HitBox(nodes_[size_t(children[c])], p, d, nearest(), enters[c]);
        const int nearChild = meets[0] && meets[1] && enters[1] < enters[0] ? 1 : 0;
        for (const int c : {1 - nearChild, nearChild})
            if (meets[c]) open[waiting++] = children[c];
    }
    return hit.face >= 0;
}

} // namespace host

bool Mesh::IntersectRay(const Ray& ray, float& at, Point3& norm, int& face, Point3& bary) const {
    const host::MeshTree& tree = tree_.Get<host::MeshTree>([this] { return host::MeshTree(*this); });
    host::MeshTree::Hit hit;
    if (!tree.Nearest(*this, ray, hit)) return false;
    at = float(hit.t);
    face = hit.face;
    norm = FaceNormal(face);
    bary = {float(hit.weight[0]), float(hit.weight[1]), float(hit.weight[2])};
    return true;
}
