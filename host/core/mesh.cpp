// Triangle meshes: channels, normals, mapping tangents.

#include "sdk/mesh.h"

#include <cmath>

#include "core/parallel.h"

MeshCacheSlot& MeshCacheSlot::operator=(const MeshCacheSlot& other) {
    if (this == &other) return *this;
    std::shared_ptr<const void> theirs;
    {
        const std::lock_guard<std::mutex> lock(other.mutex_);
        theirs = other.kept_;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    kept_ = std::move(theirs);
    ready_.store(kept_.get(), std::memory_order_release);
    return *this;
}

void MeshCacheSlot::Clear() {
    const std::lock_guard<std::mutex> lock(mutex_);
    ready_.store(nullptr, std::memory_order_release);
    kept_.reset();
}

/// The face corners around every vertex in face order.
struct Mesh::Corners {
    std::vector<int> first;   ///< by vertex: its part of `corners` starts here; one entry more at the end
    std::vector<int> corners; ///< 3 x face + corner
};

bool Mesh::HasVertices(int f) const {
    if (f < 0 || f >= getNumFaces()) return false;
    for (const int v : faces[size_t(f)].v)
        if (v < 0 || v >= getNumVerts()) return false;
    return true;
}

const Mesh::Corners& Mesh::GetCorners() const {
    return corners_.Get<Corners>([this] {
        Corners n;
        n.first.resize(verts.size() + 1);
        for (int f = 0; f < getNumFaces(); ++f)
            if (HasVertices(f))
                for (const int v : faces[size_t(f)].v) ++n.first[size_t(v) + 1];
        for (size_t v = 0; v < verts.size(); ++v) n.first[v + 1] += n.first[v];
        n.corners.resize(size_t(n.first.back()));
        std::vector<int> fill(n.first.begin(), n.first.end() - 1);
        for (int f = 0; f < getNumFaces(); ++f) {
            if (!HasVertices(f)) continue;
            for (int c = 0; c < 3; ++c) n.corners[size_t(fill[size_t(faces[size_t(f)].v[c])]++)] = 3 * f + c;
        }
        return n;
    });
}

bool Mesh::mapSupport(int channel) const {
    return Map(channel) != nullptr;
}

const MeshMap* Mesh::Map(int channel) const {
    const auto it = maps.find(channel);
    if (it == maps.end() || it->second.tv.empty() || it->second.tf.size() < faces.size()) return nullptr;
    return &it->second;
}

int Mesh::getNumMaps() const {
    for (auto it = maps.rbegin(); it != maps.rend() && it->first >= 0; ++it)
        if (mapSupport(it->first)) return it->first + 1;
    return 0;
}

const std::vector<float>* Mesh::vertexFloat(int channel) const {
    const auto it = vdata.find(channel);
    return it == vdata.end() || it->second.size() < verts.size() ? nullptr : &it->second;
}

Point3 Mesh::FaceNormal(int f) const {
    if (!HasVertices(f)) return {0, 0, 0};
    const Face& face = faces[size_t(f)];
    const Point3 &a = verts[size_t(face.v[0])], &b = verts[size_t(face.v[1])], &c = verts[size_t(face.v[2])];
    return Normalize(CrossProd(b - a, c - a));
}

const std::vector<Point3>& Mesh::VertexNormals() const {
    return normals_.Get<std::vector<Point3>>([this] {
        std::vector<Point3> normals(verts.size());
        for (int f = 0; f < getNumFaces(); ++f) {
            if (!HasVertices(f)) continue;
            const Point3 normal = FaceNormal(f);
            for (const int v : faces[size_t(f)].v) normals[size_t(v)] += normal;
        }
        for (Point3& n : normals) n = Normalize(n);
        return normals;
    });
}

bool Mesh::FirstFaceOfVertex(int v, int& face, int& corner) const {
    const std::span<const int> corners = CornersOfVertex(v);
    if (corners.empty()) return false;
    face = corners[0] / 3;
    corner = corners[0] % 3;
    return true;
}

std::span<const int> Mesh::CornersOfVertex(int v) const {
    if (v < 0 || v >= getNumVerts()) return {};
    const Corners& n = GetCorners();
    const size_t first = size_t(n.first[size_t(v)]);
    return std::span<const int>(n.corners).subspan(first, size_t(n.first[size_t(v) + 1]) - first);
}

// The corner of a face with vertices; `normalOf` gives faces' normals.
template <class NormalOf>
Point3 Mesh::SmoothNormal(int f, int corner, const NormalOf& normalOf) const {
    Point3 given;
    if (SpecNormal(f, corner, given)) return given;
    const Face& own = faces[size_t(f)];
    const Point3 flat = normalOf(f);
    if (own.smGroup == 0) return flat;
    Point3 sum;
    for (const int at : CornersOfVertex(own.v[corner])) {
        const int other = at / 3;
        if (faces[size_t(other)].smGroup & own.smGroup) sum += normalOf(other);
    }
    const Point3 smooth = Normalize(sum);
    return smooth == Point3() ? flat : smooth; // opposite faces cancel
}

Point3 Mesh::CornerNormal(int f, int corner) const {
    if (!HasVertices(f) || corner < 0 || corner > 2) return {0, 0, 0};
    return SmoothNormal(f, corner, [this](int face) { return FaceNormal(face); });
}

std::vector<Point3> Mesh::CornerNormals() const {
    constexpr size_t kLeast = 20000; // faces that a thread is worth
    std::vector<Point3> flat(faces.size()), all(faces.size() * 3);
    host::ParallelRanges(faces.size(), kLeast, 0, [&](size_t begin, size_t end) {
        for (size_t f = begin; f < end; ++f) flat[f] = FaceNormal(int(f));
    });
    GetCorners(); // made by one thread
    host::ParallelRanges(faces.size(), kLeast, 0, [&](size_t begin, size_t end) {
        for (size_t i = 3 * begin; i < 3 * end; ++i)
            if (HasVertices(int(i / 3)))
                all[i] = SmoothNormal(int(i / 3), int(i % 3), [&](int face) { return flat[size_t(face)]; });
    });
    return all;
}

bool Mesh::SpecNormal(int f, int corner, Point3& normal) const {
    if (size_t(f) >= specNormals.faces.size()) return false;
    const int at = specNormals.faces[size_t(f)].t[corner];
    if (at < 0 || size_t(at) >= specNormals.normals.size()) return false;
    normal = Normalize(specNormals.normals[size_t(at)]);
    return !(normal == Point3());
}

Box3 Mesh::getBoundingBox() const {
    Box3 box;
    for (const Point3& v : verts) box += v;
    return box;
}

void Mesh::InvalidateGeomCache() {
    corners_.Clear();
    VerticesMoved();
}

void Mesh::VerticesMoved() {
    normals_.Clear();
    tree_.Clear();
}

bool ComputeBumpVec2D(const Point3 tv[3], const Point3 v[3], Point3 b[2]) {
    const float u1 = tv[1].x - tv[0].x, v1 = tv[1].y - tv[0].y;
    const float u2 = tv[2].x - tv[0].x, v2 = tv[2].y - tv[0].y;
    const float det = u1 * v2 - u2 * v1;
    if (det == 0.0f || !std::isfinite(1.0f / det)) return false;
    const Point3 e1 = v[1] - v[0], e2 = v[2] - v[0];
    b[0] = (e1 * v2 - e2 * v1) / det;
    b[1] = (e2 * u1 - e1 * u2) / det;
    return true;
}
