// Smoothing groups by angle.

#include <algorithm>

#include "modifiers/smooth.h"

namespace host {

namespace {

/// A face's neighbour across an edge.
struct Neighbour {
    int face;
    bool smooth;
};

/// The neighbours of every face.
class Neighbours {
public:
    Neighbours(const Mesh& mesh, float cosine) : lists_(mesh.faces.size()) {
        std::vector<Point3> normals(mesh.faces.size());
        for (int f = 0; f < mesh.getNumFaces(); ++f) normals[size_t(f)] = mesh.FaceNormal(f);
        for (int f = 0; f < mesh.getNumFaces(); ++f)
            for (int k = 0; k < 3; ++k) AddAcross(mesh, f, k, normals, cosine);
    }
    const std::vector<Neighbour>& operator[](int f) const { return lists_[size_t(f)]; }

private:
    void AddAcross(const Mesh& mesh, int f, int k, const std::vector<Point3>& normals, float cosine) {
        const int a = mesh.faces[size_t(f)].v[k], b = mesh.faces[size_t(f)].v[(k + 1) % 3];
        for (const int at : mesh.CornersOfVertex(a)) {
            const int g = at / 3;
            const int* const v = mesh.faces[size_t(g)].v;
            if (g == f || (v[0] != b && v[1] != b && v[2] != b)) continue;
            const Point3 &m = normals[size_t(f)], &n = normals[size_t(g)];
            // Rounding must not harden a flat surface at an angle of 0.
            const bool smooth = !(m == Point3()) && !(n == Point3()) && DotProd(m, n) >= cosine - 1e-6f;
            lists_[size_t(f)].push_back({g, smooth});
        }
    }
    std::vector<std::vector<Neighbour>> lists_;
};

/// Splits the faces into patches inside which everything is smooth. A face may lie in several.
class Patches {
public:
    explicit Patches(const Mesh& mesh, const Neighbours& around)
        : around_(around), patchesOf_(mesh.faces.size()), barred_(mesh.faces.size(), -1) {
        for (int f = 0; f < mesh.getNumFaces(); ++f)
            if (patchesOf_[size_t(f)].empty()) Grow({f});
        // Smooth edges between two patches get a patch of their own.
        for (int f = 0; f < mesh.getNumFaces(); ++f)
            for (const Neighbour& n : around_[f])
                if (n.smooth && n.face > f && !Together(f, n.face)) Grow({f, n.face});
    }
    const std::vector<std::vector<int>>& All() const { return patches_; }

private:
    bool Together(int f, int g) const {
        for (const int p : patchesOf_[size_t(f)])
            if (std::find(patchesOf_[size_t(g)].begin(), patchesOf_[size_t(g)].end(), p) != patchesOf_[size_t(g)].end())
                return true;
        return false;
    }
    void Add(int f) {
        patches_.back().push_back(f);
        patchesOf_[size_t(f)].push_back(int(patches_.size()) - 1);
        for (const Neighbour& n : around_[f])
            if (!n.smooth) barred_[size_t(n.face)] = int(patches_.size()) - 1;
    }
    void Grow(std::vector<int> seeds) {
        const int number = int(patches_.size());
        const bool first = seeds.size() == 1;
        patches_.emplace_back();
        for (const int f : seeds) Add(f);
        for (size_t i = 0; i < patches_.back().size(); ++i) {
            const int f = patches_.back()[i];
            for (const Neighbour& n : around_[f]) {
                if (!n.smooth || barred_[size_t(n.face)] == number || Together(f, n.face)) continue;
                if (!first || patchesOf_[size_t(n.face)].empty()) Add(n.face);
            }
        }
    }

    const Neighbours& around_;
    std::vector<std::vector<int>> patches_, patchesOf_;
    std::vector<int> barred_; ///< by face: the last patch that it must not join
};

} // namespace

void SmoothByAngle(Mesh& mesh, float cosine) {
    const Neighbours around(mesh, cosine);
    const Patches patches(mesh, around);
    for (Face& f : mesh.faces) f.smGroup = 0;
    // In the order in which they grew: each patch takes the lowest group that nothing it touches has.
    for (const std::vector<int>& patch : patches.All()) {
        if (patch.size() < 2) continue;
        uint32_t taken = 0;
        for (const int f : patch)
            for (const int v : mesh.faces[size_t(f)].v)
                for (const int at : mesh.CornersOfVertex(v)) taken |= mesh.faces[size_t(at / 3)].smGroup;
        for (const int f : patch) mesh.faces[size_t(f)].smGroup |= ~taken & (taken + 1);
    }
}

} // namespace host
