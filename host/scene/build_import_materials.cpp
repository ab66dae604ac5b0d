// Materials and maps of imported scenes.

#include "image/embedded_image.h"
#include "materials/bitmap_map.h"
#include "materials/multiply_map.h"
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

template <class T>
T* NewMtlBase(LoadContext& context, SClass_ID sid, Class_ID id, const std::string& name) {
    auto* const made = static_cast<T*>(context.core.CreateInstance(sid, id));
    made->SetName(name);
    return made;
}

Texmap* NewVertexColorMap(LoadContext& context, int channel) {
    auto* const map = NewMtlBase<Texmap>(context, TEXMAP_CLASS_ID, VERTEX_COLOR_CLASS_ID,
                                         channel == MAP_ALPHA ? "vertex alpha" : "vertex colors");
    BlockSetter{map}("channel", channel);
    return map;
}

class MaterialBuilder {
public:
    MaterialBuilder(LoadContext& context, ImportedScene& scene, std::vector<std::string> paths)
        : context_(context), scene_(scene), paths_(std::move(paths)) {}

    Mtl* Build(const ImportedMaterial& from) {
        auto* const mtl = NewMtlBase<Mtl>(context_, MATERIAL_CLASS_ID, DMTL_CLASS_ID, from.name);
        const BlockSetter set(mtl);
        set("diffuse", Point3(from.diffuse));
        set("specular", Point3(from.specular));
        set("glossiness", from.glossiness);
        set("specularLevel", from.specularLevel);
        set("selfIllumination", from.selfIllum);
        set("opacity", from.opacity);
        set("opacityCutoff", from.opacityCutoff);
        SetMaps(from, mtl);
        // The scene's own material of that name comes first.
        if (context_.materials.emplace(from.name, mtl).second) context_.scene.objects.emplace(from.name, mtl);
        return mtl;
    }

private:
    void SetMaps(const ImportedMaterial& from, Mtl* mtl) {
        Texmap* pictures[ID_NUM_CHANNELS] = {};
        for (const ImportedMap& map : from.maps)
            pictures[map.target] = MapFor(map, map.target == ID_DI && from.alphaOfDiffuse);
        if (from.alphaOfDiffuse) pictures[ID_OP] = pictures[ID_DI];
        const auto factors = [&](Texmap* picture, Texmap* ofVertices, const Color& value) {
            Texmap* const map = Product(picture, ofVertices);
            return map && from.timesMaps ? Times(value, map) : map;
        };
        Texmap* const colors = from.vertexColors ? NewVertexColorMap(context_, MAP_VERTCOLOR) : nullptr;
        Texmap* const alphas = from.vertexAlphas ? NewVertexColorMap(context_, MAP_ALPHA) : nullptr;
        pictures[ID_DI] = factors(pictures[ID_DI], colors, from.diffuse);
        pictures[ID_OP] = factors(pictures[ID_OP], alphas, Color(1, 1, 1) * from.opacity);
        for (int i = 0; i < ID_NUM_CHANNELS; ++i)
            if (pictures[i]) mtl->SetSubTexmap(i, pictures[i]);
        if (!from.isCoverage || from.opacityCutoff > 0) return;
        if (pictures[ID_OP])
            mtl->SetSubTexmap(ID_SS, Times(Color(1, 1, 1) * from.specularLevel, pictures[ID_OP]));
        else
            BlockSetter{mtl}("specularLevel", from.specularLevel * from.opacity);
    }

    // Both are factors; one of them may be missing.
    Texmap* Product(Texmap* a, Texmap* b) {
        if (!a || !b) return a ? a : b;
        auto* const product =
            NewMtlBase<Texmap>(context_, TEXMAP_CLASS_ID, MULTIPLY_CLASS_ID, a->GetName() + " x " + b->GetName());
        product->SetSubTexmap(0, a);
        product->SetSubTexmap(1, b);
        return product;
    }
    Texmap* Times(const Color& color, Texmap* map) {
        if (color == Color(1, 1, 1)) return map;
        auto* const product =
            NewMtlBase<Texmap>(context_, TEXMAP_CLASS_ID, MULTIPLY_CLASS_ID, map->GetName() + " x color");
        BlockSetter{product}("color1", Point3(color));
        product->SetSubTexmap(1, map);
        return product;
    }

    // Materials share the maps of one picture: it is read once. With `alpha` its alpha counts as its number.
    Texmap* MapFor(ImportedMap from, bool alpha) {
        from.target = alpha ? ID_OP : ID_DI;
        const auto [at, added] = pictures_.try_emplace(from, nullptr);
        if (!added) return at->second;
        Texmap* const map = at->second = BuildMap(from);
        if (map && alpha) BlockSetter{map}("mono", int(kMonoAlpha));
        return map;
    }
    // Null when the picture cannot be read, which a note says.
    Texmap* BuildMap(const ImportedMap& from) {
        const std::string& path = paths_[size_t(from.image)];
        auto* const map =
            NewMtlBase<Texmap>(context_, TEXMAP_CLASS_ID, BMTEX_CLASS_ID, path.substr(path.find_last_of('/') + 1));
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
    std::map<ImportedMap, Texmap*> pictures_; ///< their target tells what counts as their number
};

} // namespace

std::vector<Mtl*> BuildImportMaterials(LoadContext& context, const std::string& path, ImportedScene& scene) {
    std::vector<std::string> paths = ImagePaths(path, scene);
    MaterialBuilder builder(context, scene, std::move(paths));
    std::vector<Mtl*> materials;
    for (const ImportedMaterial& from : scene.materials) materials.push_back(builder.Build(from));
    return materials;
}

Mtl* UnnamedMaterial(LoadContext& context, bool vertexColors) {
    Mtl*& mtl = context.unnamedMaterials[vertexColors];
    if (mtl) return mtl;
    mtl = NewMtlBase<Mtl>(context, MATERIAL_CLASS_ID, DMTL_CLASS_ID, vertexColors ? "vertex colors" : "white");
    BlockSetter{mtl}("diffuse", Point3(1, 1, 1));
    if (vertexColors) mtl->SetSubTexmap(ID_DI, NewVertexColorMap(context, MAP_VERTCOLOR));
    return mtl;
}

} // namespace host
