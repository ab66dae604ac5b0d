// .gltf and .glb files, read by tinygltf.

#include "import/file_error.h"
#include "import/gltf_parts.h"

namespace host {

ImportedScene ImportGltf(const std::string& file, const std::string& content, const std::string& animation) {
    GltfFile gltf{file, {}, {}, {}, 0, {}};
    gltf.scene.up = UpAxis::kY;
    gltf.scene.meters = 1;
    LoadGltf(gltf, content);
    ReadGltfImages(gltf);
    ReadGltfMaterials(gltf);
    ReadGltfMeshes(gltf);
    SpreadGltfVertexColors(gltf);
    ReadGltfViews(gltf);
    ReadGltfNodes(gltf);
    ReadGltfSkins(gltf);
    ReadGltfAnimations(gltf, animation);
    CheckSceneContent(file, gltf.scene);
    return std::move(gltf.scene);
}

} // namespace host
