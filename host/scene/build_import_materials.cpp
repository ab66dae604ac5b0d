// Materials and maps of imported scenes.

#include "image/embedded_image.h"
#include "materials/bitmap_map.h"
#include "scene/block_setter.h"
#include "scene/build_import.h"

namespace host {

namespace {

// The files of the pictures by number; those inside the scene file get names of their own.
std::vector<std::string> ImagePaths(const std::string& path, ImportedScene& scene) {
    std::vector<std::string> paths;
    for (ImportedImage& image : scene.images) {
        if (image.path.empty() && !image.bytes.empty()) {
            image.path = path + "#" + std::to_string(paths.size() + 1);
            KeepEmbeddedImage(image.path, std::move(image.bytes));
        }
        paths.push_back(image.path);
    }
    return paths;
}

class MaterialBuilder {
public:
    MaterialBuilder(LoadContext& context, ImportedScene& scene, std::vector<std::string> paths)
        : context_(context), scene_(scene), paths_(std::move(paths)) {}

    Mtl* Build(const ImportedMaterial& from) {
        auto* const mtl = static_cast<Mtl*>(context_.core.CreateInstance(MATERIAL_CLASS_ID, DMTL_CLASS_ID));
        mtl->SetName(from.name);
        const BlockSetter set(mtl);
        set("diffuse", Point3(from.diffuse));
        set("specular", Point3(from.specular));
        set("glossiness", from.glossiness);
        set("specularLevel", from.specularLevel);
        set("selfIllumination", from.selfIllum);
        set("opacity", from.opacity);
        for (const ImportedMap& map : from.maps)
            if (Texmap* const texmap = BuildMap(map)) mtl->SetSubTexmap(map.target, texmap);
        // The scene's own material of that name comes first.
        if (context_.materials.emplace(from.name, mtl).second) context_.scene.objects.emplace(from.name, mtl);
        return mtl;
    }

private:
    // Null when the picture cannot be read, which a note says.
    Texmap* BuildMap(const ImportedMap& from) {
        const std::string& path = paths_[size_t(from.image)];
        auto* const map = static_cast<Texmap*>(context_.core.CreateInstance(TEXMAP_CLASS_ID, BMTEX_CLASS_ID));
        map->SetName(path.substr(path.find_last_of('/') + 1));
        const BlockSetter set(map);
        set("wrapU", int(from.wrapU));
        set("wrapV", int(from.wrapV));
        set("channel", from.channel);
        set("tileU", from.tile[0]);
        set("tileV", from.tile[1]);
        set("offsetU", from.offset[0]);
        set("offsetV", from.offset[1]);
        set("file", path);
        const std::string error = static_cast<BitmapMap*>(map)->LoadError();
        if (error.empty()) return map;
        scene_.Note(error.substr(0, error.find('\n')));
        return nullptr;
    }

    LoadContext& context_;
    ImportedScene& scene_;
    std::vector<std::string> paths_;
};

} // namespace

std::vector<Mtl*> BuildImportMaterials(LoadContext& context, const std::string& path, ImportedScene& scene) {
    std::vector<std::string> paths = ImagePaths(path, scene);
    MaterialBuilder builder(context, scene, std::move(paths));
    std::vector<Mtl*> materials;
    for (const ImportedMaterial& from : scene.materials) materials.push_back(builder.Build(from));
    return materials;
}

} // namespace host
