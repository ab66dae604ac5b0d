#include "import/mesh_build.h"

#include <algorithm>
#include <filesystem>
#include <numeric>

namespace host {

namespace {

// New numbers for the used entries of a list, in the old order.
class Renumbering {
public:
    void Use(int i) { used_.push_back(i); }
    void Finish() {
        std::sort(used_.begin(), used_.end());
        used_.erase(std::unique(used_.begin(), used_.end()), used_.end());
    }
    int operator[](int i) const { return int(std::lower_bound(used_.begin(), used_.end(), i) - used_.begin()); }
    template <class T>
    std::vector<T> Kept(const std::vector<T>& from) const {
        std::vector<T> kept;
        kept.reserve(used_.size());
        for (const int i : used_) kept.push_back(from[size_t(i)]);
        return kept;
    }

private:
    std::vector<int> used_;
};

MeshMap ExtractMap(const MeshMap& map, const std::vector<int>& keep) {
    Renumbering used;
    for (const int f : keep)
        for (const int t : map.tf[size_t(f)].t) used.Use(t);
    used.Finish();
    MeshMap out;
    out.tv = used.Kept(map.tv);
    out.tf.reserve(keep.size());
    for (const int f : keep) {
        TVFace face = map.tf[size_t(f)];
        for (int& t : face.t) t = used[t];
        out.tf.push_back(face);
    }
    return out;
}

} // namespace

Mesh ExtractFaces(const Mesh& mesh, const std::vector<int>& keep) {
    Renumbering used;
    for (const int f : keep)
        for (const int v : mesh.faces[size_t(f)].v) used.Use(v);
    used.Finish();
    Mesh out;
    out.verts = used.Kept(mesh.verts);
    out.faces.reserve(keep.size());
    for (const int f : keep) {
        Face face = mesh.faces[size_t(f)];
        for (int& v : face.v) v = used[v];
        out.faces.push_back(face);
    }
    for (const auto& [channel, map] : mesh.maps) out.maps[channel] = ExtractMap(map, keep);
    for (const auto& [name, bits] : mesh.faceSets) {
        BitArray kept{int(keep.size())};
        for (size_t i = 0; i < keep.size(); ++i) kept.Set(int(i), bits[keep[i]]);
        if (!kept.IsEmpty()) out.faceSets.emplace_back(name, std::move(kept));
    }
    return out;
}

namespace {

// The faces around every vertex.
class VertexFaceLists {
public:
    explicit VertexFaceLists(const Mesh& mesh) : start_(mesh.verts.size() + 1, 0), faces_(mesh.faces.size() * 3) {
        for (const Face& f : mesh.faces)
            for (const int v : f.v) ++start_[size_t(v) + 1];
        std::partial_sum(start_.begin(), start_.end(), start_.begin());
        std::vector<int> next(start_.begin(), start_.end() - 1);
        for (size_t f = 0; f < mesh.faces.size(); ++f)
            for (const int v : mesh.faces[f].v) faces_[size_t(next[size_t(v)]++)] = int(f);
    }
    const int* begin(int v) const { return faces_.data() + start_[size_t(v)]; }
    const int* end(int v) const { return faces_.data() + start_[size_t(v) + 1]; }

private:
    std::vector<int> start_, faces_;
};

// Sets of faces that are joined one pair at a time; a set's name is its lowest face.
class FaceSets {
public:
    explicit FaceSets(size_t count) : parent_(count) { std::iota(parent_.begin(), parent_.end(), 0); }
    int Find(int f) {
        while (parent_[size_t(f)] != f) f = parent_[size_t(f)] = parent_[size_t(parent_[size_t(f)])];
        return f;
    }
    void Join(int a, int b) {
        a = Find(a);
        b = Find(b);
        if (a != b) parent_[size_t(std::max(a, b))] = std::min(a, b);
    }

private:
    std::vector<int> parent_;
};

bool SameNormal(const Point3& a, const Point3& b) {
    const float lengths = Length(a) * Length(b);
    return lengths > 0.0f && DotProd(a, b) > 0.9999f * lengths;
}

// The normal of face `f` at vertex `v`.
const Point3& NormalAt(const Mesh& mesh, const std::vector<CornerNormals>& normals, int f, int v) {
    const Face& face = mesh.faces[size_t(f)];
    const size_t corner = face.v[0] == v ? 0 : face.v[1] == v ? 1 : 2;
    return normals[size_t(f)][corner];
}

FaceSets JoinSmoothNeighbours(const Mesh& mesh, const std::vector<CornerNormals>& normals,
                              const VertexFaceLists& around) {
    FaceSets sets(mesh.faces.size());
    for (int f = 0; f < mesh.getNumFaces(); ++f)
        for (int k = 0; k < 3; ++k) {
            const int a = mesh.faces[size_t(f)].v[k], b = mesh.faces[size_t(f)].v[(k + 1) % 3];
            for (const int* g = around.begin(a); g != around.end(a); ++g) {
                if (*g >= f) continue;
                const int* const v = mesh.faces[size_t(*g)].v;
                if (v[0] != b && v[1] != b && v[2] != b) continue;
                if (SameNormal(NormalAt(mesh, normals, f, a), NormalAt(mesh, normals, *g, a)) &&
                    SameNormal(NormalAt(mesh, normals, f, b), NormalAt(mesh, normals, *g, b)))
                    sets.Join(f, *g);
            }
        }
    return sets;
}

} // namespace

void SmoothByNormals(Mesh& mesh, const std::vector<CornerNormals>& normals) {
    const VertexFaceLists around(mesh);
    FaceSets sets = JoinSmoothNeighbours(mesh, normals, around);
    std::vector<std::vector<int>> members(mesh.faces.size());
    for (int f = 0; f < mesh.getNumFaces(); ++f) members[size_t(sets.Find(f))].push_back(f);
    // Patches in the order of their lowest faces: each takes the lowest group that no patch it touches has.
    for (const std::vector<int>& patch : members) {
        uint32_t taken = 0;
        for (const int f : patch)
            for (const int v : mesh.faces[size_t(f)].v)
                for (const int* g = around.begin(v); g != around.end(v); ++g)
                    if (sets.Find(*g) < sets.Find(f)) taken |= mesh.faces[size_t(*g)].smGroup;
        for (const int f : patch) mesh.faces[size_t(f)].smGroup = ~taken & (taken + 1);
    }
}

std::string FileStem(const std::string& file) {
    return std::filesystem::path(file).stem().string();
}

} // namespace host
