// .gltf and .glb files, read by tinygltf.

#include <algorithm>
#include <cmath>
#include <numbers>

#include "import/file_error.h"
#include "import/gltf_parts.h"

#include "sdk/box3.h"

namespace host {

namespace {

// Lights of the host do not fade with distance: those that do in the file get the strength that they have at the middle
// of what they light.
void SetLightStrengths(ImportedScene& scene) {
    const std::vector<Matrix3> worlds = WorldMatrices(scene);
    Box3 box;
    for (size_t i = 0; i < scene.nodes.size(); ++i)
        if (scene.nodes[i].mesh >= 0)
            for (const Point3& p : scene.meshes[size_t(scene.nodes[i].mesh)].mesh.verts) box += p * worlds[i];
    for (size_t i = 0; i < scene.nodes.size(); ++i) {
        const int light = scene.nodes[i].light;
        if (light < 0 || !(scene.lights[size_t(light)].candela > 0)) continue;
        const Point3 middle = box.IsEmpty() ? Point3() : box.Center();
        const float distance = std::max(Length(middle - worlds[i].GetTrans()), 0.1f);
        ImportedLight& l = scene.lights[size_t(light)];
        const float strength = l.candela / (float(std::numbers::pi) * distance * distance);
        l.multiplier = std::isfinite(strength) ? strength : 0;
    }
}

} // namespace

ImportedScene ImportGltf(const std::string& file, const std::string& content, const std::string& animation) {
    GltfFile gltf{file, {}, {}, {}, 0, {}};
    gltf.scene.up = UpAxis::kY;
    gltf.scene.meters = 1;
    LoadGltf(gltf, content);
    ReadGltfImages(gltf);
    ReadGltfMaterials(gltf);
    ReadGltfMeshes(gltf);
    ReadGltfViews(gltf);
    ReadGltfNodes(gltf);
    ReadGltfSkins(gltf);
    ReadGltfAnimations(gltf, animation);
    SetLightStrengths(gltf.scene);
    CheckSceneContent(file, gltf.scene);
    return std::move(gltf.scene);
}

} // namespace host
