// Triangle meshes: channels, normals, mapping tangents.

#include "sdk/mesh.h"

#include <cmath>

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

/// Normals of vertices, and the face corners around every vertex in face order.
struct Mesh::Normals {
    std::vector<Point3> vertex;
    std::vector<int> first;   ///< by vertex: its part of `corners` starts here; one entry more at the end
    std::vector<int> corners; ///< 3 x face + corner
};

bool Mesh::HasVertices(int f) const {
    if (f < 0 || f >= getNumFaces()) return false;
    for (const int v : faces[size_t(f)].v)
        if (v < 0 || v >= getNumVerts()) return false;
    return true;
}

const Mesh::Normals& Mesh::GetNormals() const {
    return normals_.Get<Normals>([this] {
        Normals n;
        n.vertex.resize(verts.size());
        n.first.resize(verts.size() + 1);
        for (int f = 0; f < getNumFaces(); ++f)
            if (HasVertices(f))
                for (const int v : faces[size_t(f)].v) ++n.first[size_t(v) + 1];
        for (size_t v = 0; v < verts.size(); ++v) n.first[v + 1] += n.first[v];
        n.corners.resize(size_t(n.first.back()));
        std::vector<int> fill(n.first.begin(), n.first.end() - 1);
        for (int f = 0; f < getNumFaces(); ++f) {
            if (!HasVertices(f)) continue;
            const Point3 normal = FaceNormal(f);
            for (int c = 0; c < 3; ++c) {
                const size_t v = size_t(faces[size_t(f)].v[c]);
                n.vertex[v] += normal;
                n.corners[size_t(fill[v]++)] = 3 * f + c;
            }
        }
        for (Point3& v : n.vertex) v = Normalize(v);
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
    return GetNormals().vertex;
}

bool Mesh::FirstFaceOfVertex(int v, int& face, int& corner) const {
    if (v < 0 || v >= getNumVerts()) return false;
    const Normals& n = GetNormals();
    const int at = n.first[size_t(v)];
    if (at == n.first[size_t(v) + 1]) return false;
    face = n.corners[size_t(at)] / 3;
    corner = n.corners[size_t(at)] % 3;
    return true;
}

Point3 Mesh::CornerNormal(int f, int corner) const {
    if (!HasVertices(f) || corner < 0 || corner > 2) return {0, 0, 0};
    const Face& own = faces[size_t(f)];
    const Point3 flat = FaceNormal(f);
    if (own.smGroup == 0) return flat;
    const Normals& n = GetNormals();
    const size_t v = size_t(own.v[corner]);
    Point3 sum;
    for (int i = n.first[v]; i < n.first[v + 1]; ++i) {
        const int other = n.corners[size_t(i)] / 3;
        if (faces[size_t(other)].smGroup & own.smGroup) sum += FaceNormal(other);
    }
    const Point3 smooth = Normalize(sum);
    return smooth == Point3() ? flat : smooth; // opposite faces cancel
}

Box3 Mesh::getBoundingBox() const {
    Box3 box;
    for (const Point3& v : verts) box += v;
    return box;
}

void Mesh::InvalidateGeomCache() {
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
