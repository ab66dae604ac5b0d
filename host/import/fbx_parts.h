#pragma once
// The steps of the .fbx importer.

#include <assimp/scene.h>

#include <map>
#include <string>
#include <vector>

#include "import/imported_scene.h"

namespace host {

/// A .fbx file in work.
struct FbxFile {
    const std::string& file;
    const aiScene& from;
    ImportedScene scene;
    std::map<std::string, int> nodeOf;                           ///< scene node by name, the first of that name
    std::map<std::vector<unsigned>, std::pair<int, int>> meshOf; ///< mesh and skin by the parts they are made of
};

void ReadFbxMaterials(FbxFile& fbx);
/// Nodes with their meshes, cameras and lights.
void ReadFbxNodes(FbxFile& fbx);
/// The mesh of the node's parts; its skin's joints are nodes that are there already.
int ReadFbxMesh(FbxFile& fbx, const aiNode& node, int& skin);
void ReadFbxAnimations(FbxFile& fbx, const std::string& name);

inline Point3 FbxPoint(const aiVector3D& v) {
    return {v.x, v.y, v.z};
}
/// The file's matrices have columns for column vectors.
inline Matrix3 FbxMatrix(const aiMatrix4x4& m) {
    return {{m.a1, m.b1, m.c1}, {m.a2, m.b2, m.c2}, {m.a3, m.b3, m.c3}, {m.a4, m.b4, m.c4}};
}

} // namespace host
