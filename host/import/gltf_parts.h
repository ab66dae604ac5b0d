#pragma once
// The steps of the glTF importer.

#include <memory>
#include <string>
#include <vector>

#include "import/imported_scene.h"
#include "import/tinygltf.h"

namespace host {

/// A glTF file in work.
struct GltfFile {
    const std::string& file;
    tinygltf::Model model;
    ImportedScene scene;
    std::vector<int> nodeOf;    ///< scene node of every node of the file; -1: not in the scene
    size_t values = 0;          ///< read so far
    std::vector<size_t> morphs; ///< morph targets by mesh
};

/// Parses the text and loads the buffers. Throws Error.
void LoadGltf(GltfFile& gltf, const std::string& content);

/// The values of an accessor, `components` for each element, as floats; normalised integers become -1..1 or 0..1.
/// `what` is for messages. Throws Error: no such accessor, another number of components, data outside its buffer.
std::vector<float> GltfFloats(GltfFile& gltf, int accessor, int components, const std::string& what);
/// The same as points.
std::vector<Point3> GltfPoints(GltfFile& gltf, int accessor, const std::string& what);
/// Whole numbers that are not negative, `components` for each element.
std::vector<uint32_t> GltfIndices(GltfFile& gltf, int accessor, int components, const std::string& what);
/// Components of an accessor's elements; 0 when there is no such accessor.
int GltfComponents(const GltfFile& gltf, int accessor);

// The parts, in the order in which they run.
void ReadGltfImages(GltfFile& gltf);
void ReadGltfMaterials(GltfFile& gltf);
void ReadGltfMeshes(GltfFile& gltf);
/// Tells the materials which of their meshes have vertex colours; the others get white ones.
void SpreadGltfVertexColors(GltfFile& gltf);
void ReadGltfViews(GltfFile& gltf); ///< cameras and lights
void ReadGltfNodes(GltfFile& gltf);
void ReadGltfSkins(GltfFile& gltf);
void ReadGltfAnimations(GltfFile& gltf, const std::string& name);

/// A double of the file as a float; what a float does not hold is `otherwise`.
float GltfFloat(double v, float otherwise = 0);
/// A rotation of the file in the host's sense.
Quat GltfQuat(float x, float y, float z, float w);
/// A number of an extension's object; `otherwise` when it has none.
double GltfNumber(const tinygltf::Value& object, const char* key, double otherwise);

} // namespace host
