#pragma once
// Meshes out of parts whose vertices are split at every seam.

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "import/imported_scene.h"
#include "import/mesh_build.h"
#include "import/record_welder.h"

namespace host {

/// Most mapping channels that are taken over.
inline constexpr size_t kMostMapSets = 8;

/// A part of one material. Lists by vertex are empty or have an entry for every vertex.
struct MeshPart {
    std::vector<Point3> positions, normals;
    std::vector<std::vector<Point3>> maps; ///< for the channels 1, 2 ...; v goes up
    std::vector<Point3> colors;
    std::vector<float> alphas;
    std::vector<std::vector<ImportedInfluence>> influences; ///< by vertex
    std::vector<std::vector<Point3>> morphs;                ///< by target: deltas by vertex
    std::vector<std::vector<int>> polygons;                 ///< vertices of every face
    int material = -1;                                      ///< of the scene
};

/// Puts parts together. Vertices at the same position that move alike become one; mapping vertices and normals keep
/// their own indices and are welded likewise. Faces become fans. Without normals faces are flat.
class PartMeshBuilder {
public:
    /// `name` is for messages.
    PartMeshBuilder(const std::string& file, std::string name) : file_(file), name_(std::move(name)) {}
    void Add(MeshPart part) { parts_.push_back(std::move(part)); }
    bool IsEmpty() const { return parts_.empty(); }
    /// The mesh; `morphNames` name the targets. Throws Error: a vertex index out of range, a position that is not
    /// finite.
    SceneMesh Finish(const std::vector<std::string>& morphNames = {});

private:
    // A mapping channel in work.
    struct Channel {
        PointWelder values;
        std::vector<TVFace> faces;
    };
    void CheckPart(const MeshPart& part) const;
    void CountSets();
    void NumberVertices(const MeshPart& part);
    int InfluenceId(const std::vector<ImportedInfluence>& list);
    void AddFaces(const MeshPart& part);
    void AddFace(const MeshPart& part, const std::array<int, 3>& corners, uint32_t edges, int material);
    int NormalId(const Point3& normal, int vertex);
    int MaterialId(int material);

    const std::string& file_;
    std::string name_;
    std::vector<MeshPart> parts_;
    SceneMesh out_;
    size_t maps_ = 0, morphs_ = 0;
    bool hasColors_ = false, hasAlphas_ = false, hasNormals_ = false;
    std::map<int, Channel> channels_; ///< by number
    MeshNormals specNormals_;
    RecordWelder normalWelder_{4};
    bool isMoved_ = false; ///< by skins or morph targets: then vertices do not share normals
    std::vector<CornerNormals> normals_;
    std::vector<int> numbers_; ///< by vertex of the part in work
    std::map<std::vector<uint32_t>, int> influenceIds_;
    std::optional<RecordWelder> vertexWelder_;
};

} // namespace host
