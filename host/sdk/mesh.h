#pragma once
// Triangle meshes with all their channels.

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "sdk/bitarray.h"
#include "sdk/box3.h"
#include "sdk/point3.h"
#include "sdk/ray.h"

// Mapping channel numbers.
inline constexpr int MAP_ALPHA = -2;     ///< vertex alpha
inline constexpr int MAP_SHADING = -1;   ///< vertex illumination
inline constexpr int MAP_VERTCOLOR = 0;  ///< vertex colours
inline constexpr int MAX_MESHMAPS = 100; ///< channels 0..99
// Vertex data channel numbers.
inline constexpr int VDATA_SELECT = 0; ///< soft selection
inline constexpr int VDATA_WEIGHT = 1; ///< weights

/// Bits of Face::flags; the high 16 bits hold the material id, zero-based.
inline constexpr uint32_t EDGE_A = 1, EDGE_B = 2, EDGE_C = 4, EDGE_ALL = 7, FACE_HIDDEN = 8;

/// One triangle: three vertex indices, smoothing groups, flags.
struct Face {
    int v[3] = {0, 0, 0};
    uint32_t smGroup = 0;
    uint32_t flags = EDGE_ALL;
    int MatID() const { return int(flags >> 16); }
    void SetMatID(int id) { flags = (flags & 0xffffu) | (uint32_t(id) << 16); }
};

/// One face of a mapping channel: indices into the channel's own vertices.
struct TVFace {
    int t[3] = {0, 0, 0};
};

/// One mapping channel; it is supported when it has a face for every mesh face.
struct MeshMap {
    std::vector<Point3> tv;
    std::vector<TVFace> tf;
};

/// Normals given by hand: a face's corners point into the list; -1 leaves a corner to the smoothing groups.
struct MeshNormals {
    std::vector<Point3> normals;
    std::vector<TVFace> faces;
    bool IsEmpty() const { return faces.empty(); }
    void Clear() { *this = MeshNormals(); }
};

// Levels of selection.
inline constexpr int MESH_OBJECT = 0, MESH_VERTEX = 1, MESH_FACE = 2;

/// One lazily built, immutable by-product of a mesh. Several threads may ask at once; copies share what is built.
class MeshCacheSlot {
public:
    MeshCacheSlot() = default;
    MeshCacheSlot(const MeshCacheSlot& other) { *this = other; }
    MeshCacheSlot& operator=(const MeshCacheSlot& other);
    void Clear();
    /// What is built, made by `build` on the first call.
    template <class T, class Build>
    const T& Get(Build&& build) {
        if (const void* p = ready_.load(std::memory_order_acquire)) return *static_cast<const T*>(p);
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!kept_) kept_ = std::make_shared<const T>(build());
        ready_.store(kept_.get(), std::memory_order_release);
        return *static_cast<const T*>(kept_.get());
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<const void> kept_;
    std::atomic<const void*> ready_{nullptr};
};

/// A triangle mesh. Plain data; whoever changes vertices or faces calls InvalidateGeomCache().
class Mesh {
public:
    std::vector<Point3> verts;
    std::vector<Face> faces;
    MeshNormals specNormals;    ///< explicit normals, or none
    int selLevel = MESH_OBJECT; ///< what later modifiers work on: everything, selected vertices or selected faces
    BitArray faceSel;           ///< current face selection
    BitArray vertSel;
    std::map<int, MeshMap> maps;                            ///< by channel, -2..99
    std::map<int, std::vector<float>> vdata;                ///< by vertex data channel, one value a vertex
    std::vector<std::pair<std::string, BitArray>> faceSets; ///< named face selection sets

    int getNumVerts() const { return int(verts.size()); }
    int getNumFaces() const { return int(faces.size()); }
    const Point3& getVert(int i) const { return verts[size_t(i)]; }
    bool mapSupport(int channel) const;
    /// The channel, or null when it is not supported.
    const MeshMap* Map(int channel) const;
    /// One past the highest supported mapping channel >= 0 (0 when there is none).
    int getNumMaps() const;
    const std::vector<float>* vertexFloat(int channel) const;

    /// Unit normal of face `f` from its corner order; the zero vector for a degenerate face.
    Point3 FaceNormal(int f) const;
    /// True when there is a face `f` and its corners are vertices.
    bool HasVertices(int f) const;
    /// Normalised sum of the unit normals of the faces around each vertex; a face counts once for every corner that
    /// uses the vertex. Built on first use; any thread may ask while nobody changes the mesh.
    const std::vector<Point3>& VertexNormals() const;
    /// Builds face normals and vertex normals now when they are missing.
    void checkNormals() const { VertexNormals(); }
    /// The lowest face that uses vertex `v` and the corner that does so; false when none does.
    bool FirstFaceOfVertex(int v, int& face, int& corner) const;
    /// The face corners (3 x face + corner) at vertex `v`, in face order. Built on first use.
    std::span<const int> CornersOfVertex(int v) const;
    /// Rendering normal at corner `corner` of face `f`: the explicit one; else averaged over the faces around the
    /// vertex that share a smoothing group with `f`; the face normal when `f` has none.
    Point3 CornerNormal(int f, int corner) const;
    /// Those of all corners, three a face; faster than one by one.
    std::vector<Point3> CornerNormals() const;
    Box3 getBoundingBox() const;
    /// Nearest hit of the ray (direction need not be unit): distance along it in units of its direction's length, face,
    /// barycentric coordinates, and face normal. False when nothing is hit. Uses a bounding volume tree built on first
    /// use.
    bool IntersectRay(const Ray& ray, float& at, Point3& norm, int& face, Point3& bary) const;
    /// How much vertex `v` belongs to the selection of the current level, 0..1: 1 when selected, else its soft
    /// selection weight; at face level the corners of selected faces are; 1 at object level.
    float VertexSelection(int v) const;
    /// Takes the channels of `mask` (sdk/channels.h) over from another mesh.
    void CopyChannels(const Mesh& from, uint64_t mask);
    void InvalidateGeomCache();
    void InvalidateTopologyCache() { InvalidateGeomCache(); }
    /// To be called when vertices moved and nothing else changed.
    void VerticesMoved();

private:
    struct Corners;
    const Corners& GetCorners() const;
    template <class NormalOf>
    Point3 SmoothNormal(int f, int corner, const NormalOf& normalOf) const;
    bool SpecNormal(int f, int corner, Point3& normal) const;
    mutable MeshCacheSlot corners_, normals_, tree_;
};

/// Per-face surface tangents of a mapping channel: `b[0]` along u, `b[1]` along v, in the space of the positions, not
/// normalised, from three mapping vertices and three positions. False when the mapping triangle is degenerate.
bool ComputeBumpVec2D(const Point3 tv[3], const Point3 v[3], Point3 b[2]);
