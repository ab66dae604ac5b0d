#pragma once
// What a file with a whole scene holds, before it becomes nodes.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "import/mesh_import.h"
#include "materials/map_wrap.h"
#include "sdk/color.h"
#include "sdk/mtl.h"
#include "sdk/object.h"
#include "sdk/quat.h"
#include "sdk/spline.h"

namespace host {

/// How a track goes from key to key.
enum class TrackKind { kStep, kLinear, kCubic };

/// A key: seconds, the value, and its changes in a second before and after (cubic tracks only).
template <class T>
struct TrackKey {
    double time = 0;
    T value{};
    T in{}, out{};
};

/// Keys in ascending time. Cubic tracks are Hermite curves by components, rotations normalised afterwards.
template <class T>
struct Track {
    TrackKind kind = TrackKind::kLinear;
    std::vector<TrackKey<T>> keys;
    bool IsEmpty() const { return keys.empty(); }
};

/// A picture: a file in the folder of the scene file, or bytes out of the scene file.
struct ImportedImage {
    std::string name;
    std::string path;  ///< empty: the bytes count
    std::string bytes; ///< as they would stand in a .png or .jpg file
};

/// A picture on a mapping channel in place of a material's value.
struct ImportedMap {
    StdMatChannel target = ID_DI;
    int image = 0, channel = 1;
    MapWrap wrapU = kWrapRepeat, wrapV = kWrapRepeat;
    float tile[2] = {1, 1}, offset[2] = {0, 0};
    auto operator<=>(const ImportedMap&) const = default;
};

/// A material in the terms of the standard one.
struct ImportedMaterial {
    std::string name;
    Color diffuse{1, 1, 1}, specular{1, 1, 1};
    float glossiness = 0, specularLevel = 0, selfIllum = 0, opacity = 1;
    float opacityCutoff = 0; ///< above 0: the surface is opaque from this opacity on, and not there below it
    std::vector<ImportedMap> maps;
    bool alphaOfDiffuse = false; ///< the diffuse map's alpha is a map of the opacity
    bool isCoverage = false;     ///< opacity is a share of the surface: it counts for highlights too
    bool timesMaps = false;      ///< diffuse colour and opacity are factors of their maps, which else replace them
    /// The colours and the alpha of the mesh's vertices are factors of diffuse colour and opacity. Every mesh with the
    /// material must have them.
    bool vertexColors = false, vertexAlphas = false;
};

struct ImportedCamera {
    bool ortho = false;
    float fovX = 0;                  ///< radians; 0: from fovY and the aspect
    float fovY = 0;                  ///< radians
    float aspect = 0;                ///< width by height; 0: that of the pictures to be made
    float halfWidth = 1;             ///< of an orthographic view
    float nearClip = 0, farClip = 0; ///< 0: none
};

struct ImportedLight {
    LightType type = OMNI_LGT;
    Color color{1, 1, 1};
    float multiplier = 1;
    LightDecay decay = DECAY_NONE;
    float decayStart = 1;           ///< where it decays: distance of full light
    float hotspot = 0, falloff = 0; ///< full cone angles of a spot light, degrees
};

/// How much a vertex follows a joint of a skin.
struct ImportedInfluence {
    int vertex = 0, joint = 0;
    float weight = 0;
};

/// Moves of all vertices of a mesh for the weight 1.
struct ImportedMorph {
    std::string name;
    std::vector<Point3> deltas;
    float weight = 0;
};

/// A mesh with what moves it.
struct SceneMesh {
    Mesh mesh;
    std::vector<int> materials; ///< of the scene, by material id; -1: none
    std::vector<ImportedInfluence> influences;
    std::vector<ImportedMorph> morphs;
    std::optional<BezierShape> shape; ///< its lines
};

/// Bones: nodes and what brings the mesh into their space.
struct ImportedSkin {
    std::vector<int> joints;
    std::vector<Matrix3> inverseBinds;
};

struct ImportedNode {
    std::string name;
    int parent = -1; ///< a node before this one
    // The place: scale, then rotation, then translation; or a matrix.
    Point3 position, scale{1, 1, 1};
    Quat rotation;
    std::optional<Matrix3> matrix;
    Track<Point3> positions, scales;
    Track<Quat> rotations;
    std::vector<float> weights;             ///< of morph targets; empty: the mesh's own
    std::vector<Track<float>> weightTracks; ///< by morph target
    int mesh = -1, skin = -1, camera = -1, light = -1;
    /// Where a camera or light of this node looks and what is up, in the node's space.
    Point3 look{0, 0, -1}, up{0, 1, 0};
};

/// Everything that a file holds. Lengths and axes are the file's until PlaceScene brings them into the host's scene.
struct ImportedScene {
    std::vector<ImportedNode> nodes; ///< parents before children
    std::vector<SceneMesh> meshes;
    std::vector<ImportedSkin> skins;
    std::vector<ImportedCamera> cameras;
    std::vector<ImportedLight> lights;
    std::vector<ImportedMaterial> materials;
    std::vector<ImportedImage> images;
    double meters = 1;              ///< length of the file's unit
    UpAxis up = UpAxis::kY;         ///< the file's
    std::vector<std::string> notes; ///< what was left out, a line each
    /// Adds a note that is not there yet; many are one.
    void Note(const std::string& text);
};

/// The matrix from a file's space to the scene's.
Matrix3 ImportMatrix(const ImportOptions& options);

/// Brings lengths and axes into the host's scene, once: nodes, keys, meshes, skins, shapes, cameras, lights. Cameras
/// and lights then look down their nodes' -Z axes with +Y up. Rotations and scales stay rotations and scales. Throws
/// Error when a position is then no finite number.
void PlaceScene(const std::string& file, ImportedScene& scene, const ImportOptions& options);

/// Throws Error when nothing of a scene can be shown: no node has faces, lines, a camera or a light.
void CheckSceneContent(const std::string& file, const ImportedScene& scene);

/// Throws Error when `name` is not empty and none of `names`.
void CheckAnimationName(const std::string& file, const std::string& name, const std::vector<std::string>& names);

/// Transform of a node within its parent at rest.
Matrix3 LocalMatrix(const ImportedNode& node);

/// True for files that hold more than meshes (.gltf, .glb, .fbx).
bool IsSceneFile(const std::string& path);

/// Reads a .gltf, .glb or .fbx file; lengths and axes are still the file's. `animation` is the name of the one to take;
/// empty: all of them, and where several move the same thing, the first one. Throws Error with one line "FILE: what,
/// and what was expected".
ImportedScene ImportSceneFile(const std::string& path, const std::string& animation = {});

/// How many of a thing a file may have; beyond it, importing fails.
inline constexpr size_t kMostSceneNodes = 100'000, kMostSceneDepth = 256, kMostSceneElements = 50'000'000;
/// Seconds from 0 that keys may have: in ticks they must fit 32 bits.
inline constexpr double kLatestKey = 4e5;

// The forms, from a file's content. Other files are looked for in the file's own folder only.
ImportedScene ImportGltf(const std::string& file, const std::string& content, const std::string& animation = {});
ImportedScene ImportFbx(const std::string& file, const std::string& content, const std::string& animation = {});

} // namespace host
