// Materials and pictures of glTF files.

#include <algorithm>
#include <cmath>

#include "import/file_error.h"
#include "import/gltf_parts.h"
#include "import/near_file.h"

namespace host {

namespace {

// A reference to a texture, whatever struct of the library holds it.
struct TextureUse {
    int texture = -1, set = 0;
    const tinygltf::ExtensionMap* extensions = nullptr;
};

template <class Info>
TextureUse UseOf(const Info& info) {
    return {info.index, info.texCoord, &info.extensions};
}
// The same in an extension's object.
TextureUse UseIn(const tinygltf::Value& object, const char* key) {
    if (!object.IsObject() || !object.Has(key) || !object.Get(key).IsObject()) return {};
    const tinygltf::Value& info = object.Get(key);
    return {int(std::clamp(GltfNumber(info, "index", -1), -1.0, 1e9)),
            int(std::clamp(GltfNumber(info, "texCoord", 0), 0.0, 99.0)), nullptr};
}

Color ColorIn(const std::vector<double>& values, Color otherwise) {
    if (values.size() < 3) return otherwise;
    return {GltfFloat(values[0]), GltfFloat(values[1]), GltfFloat(values[2])};
}
Color ColorIn(const tinygltf::Value& object, const char* key, Color otherwise) {
    if (!object.Has(key) || object.Get(key).ArrayLen() < 3) return otherwise;
    std::vector<double> values;
    for (int i = 0; i < 3; ++i) {
        const tinygltf::Value& v = object.Get(key).Get(i);
        values.push_back(v.IsNumber() ? v.GetNumberAsDouble() : 0);
    }
    return ColorIn(values, otherwise);
}

MapWrap WrapOf(int wrap) {
    return wrap == TINYGLTF_TEXTURE_WRAP_CLAMP_TO_EDGE     ? kWrapClamp
           : wrap == TINYGLTF_TEXTURE_WRAP_MIRRORED_REPEAT ? kWrapMirror
                                                           : kWrapRepeat;
}

float Unit(double v) {
    return std::clamp(GltfFloat(v), 0.0f, 1.0f);
}

class MaterialReader {
public:
    MaterialReader(GltfFile& gltf, const tinygltf::Material& from) : gltf_(gltf), from_(from) {}

    ImportedMaterial Read() {
        out_.name = from_.name;
        const auto old = from_.extensions.find("KHR_materials_pbrSpecularGlossiness");
        if (old != from_.extensions.end() && old->second.IsObject()) {
            ReadSpecularGlossiness(old->second);
        } else {
            ReadMetallicRoughness();
        }
        if (from_.extensions.contains("KHR_materials_unlit")) {
            out_.selfIllum = 1;
            out_.specularLevel = 0;
        }
        ReadEmission();
        if (from_.normalTexture.index >= 0) gltf_.scene.Note("normal maps are left out");
        return std::move(out_);
    }

private:
    void ReadMetallicRoughness() {
        const tinygltf::PbrMetallicRoughness& pbr = from_.pbrMetallicRoughness;
        ReadBase(ColorIn(pbr.baseColorFactor, {1, 1, 1}), pbr.baseColorFactor.size() > 3 ? pbr.baseColorFactor[3] : 1.0,
                 UseOf(pbr.baseColorTexture));
        const float metal = Unit(pbr.metallicFactor), gloss = 1.0f - Unit(pbr.roughnessFactor);
        out_.specular = Color(1, 1, 1) * (1.0f - metal) + out_.diffuse * metal;
        SetGloss(gloss);
        if (pbr.metallicRoughnessTexture.index >= 0) gltf_.scene.Note("maps of metal and roughness are left out");
    }
    void ReadSpecularGlossiness(const tinygltf::Value& old) {
        double alpha = 1;
        if (old.Has("diffuseFactor") && old.Get("diffuseFactor").ArrayLen() > 3 &&
            old.Get("diffuseFactor").Get(3).IsNumber())
            alpha = old.Get("diffuseFactor").Get(3).GetNumberAsDouble();
        ReadBase(ColorIn(old, "diffuseFactor", {1, 1, 1}), alpha, UseIn(old, "diffuseTexture"));
        out_.specular = ColorIn(old, "specularFactor", {1, 1, 1});
        SetGloss(Unit(GltfNumber(old, "glossinessFactor", 1)));
    }
    // Colour, alpha, and a texture with both: factors of one another.
    void ReadBase(Color color, double alpha, const TextureUse& texture) {
        out_.diffuse = color;
        out_.timesMaps = true;
        AddMap(ID_DI, texture);
        if (from_.alphaMode == "MASK") out_.opacityCutoff = Unit(from_.alphaCutoff);
        if (!IsClear()) return;
        out_.opacity = Unit(alpha);
        out_.alphaOfDiffuse = !out_.maps.empty();
        out_.isCoverage = true;
    }
    // Whether alpha counts at all.
    bool IsClear() const { return from_.alphaMode == "BLEND" || out_.opacityCutoff > 0; }
    void SetGloss(float gloss) {
        out_.glossiness = gloss;
        out_.specularLevel = gloss;
    }
    // The share of the diffuse colour that shines by itself: the brightest of the emission's colours.
    void ReadEmission() {
        const Color e = ColorIn(from_.emissiveFactor, {0, 0, 0});
        const float strength = std::clamp(std::max({e.r, e.g, e.b}), 0.0f, 1.0f);
        if (strength <= 0) return;
        out_.selfIllum = std::max(out_.selfIllum, strength);
        AddMap(ID_SI, UseOf(from_.emissiveTexture));
    }

    void AddMap(StdMatChannel target, const TextureUse& use) {
        const auto& textures = gltf_.model.textures;
        if (use.texture < 0) return;
        if (size_t(use.texture) >= textures.size() || use.set < 0 || use.set > 7)
            return gltf_.scene.Note("material " + Quoted(from_.name) + " names a texture that is not there");
        const tinygltf::Texture& texture = textures[size_t(use.texture)];
        if (texture.source < 0 || size_t(texture.source) >= gltf_.scene.images.size())
            return gltf_.scene.Note("a texture of material " + Quoted(from_.name) + " has no picture that can be read");
        const ImportedImage& image = gltf_.scene.images[size_t(texture.source)];
        if (image.path.empty() && image.bytes.empty()) return; // said when it was looked for
        ImportedMap map;
        map.target = target;
        map.image = texture.source;
        map.channel = use.set + 1;
        if (texture.sampler >= 0 && size_t(texture.sampler) < gltf_.model.samplers.size()) {
            const tinygltf::Sampler& sampler = gltf_.model.samplers[size_t(texture.sampler)];
            map.wrapU = WrapOf(sampler.wrapS);
            map.wrapV = WrapOf(sampler.wrapT);
        }
        if (use.extensions) ApplyTransform(*use.extensions, map);
        out_.maps.push_back(map);
    }

    // v of the file goes down: with v' = offset + scale x (1 - v) our v is 1 - v'.
    void ApplyTransform(const tinygltf::ExtensionMap& extensions, ImportedMap& map) {
        const auto at = extensions.find("KHR_texture_transform");
        if (at == extensions.end() || !at->second.IsObject()) return;
        const auto pair = [&](const char* key, int i, float otherwise) {
            if (!at->second.Has(key) || at->second.Get(key).ArrayLen() != 2) return otherwise;
            const tinygltf::Value& v = at->second.Get(key).Get(i);
            return v.IsNumber() ? GltfFloat(v.GetNumberAsDouble(), otherwise) : otherwise;
        };
        map.tile[0] = pair("scale", 0, 1);
        map.tile[1] = pair("scale", 1, 1);
        map.offset[0] = -pair("offset", 0, 0);
        map.offset[1] = pair("offset", 1, 0) + map.tile[1] - 1;
        const double set = GltfNumber(at->second, "texCoord", map.channel - 1);
        if (set >= 0 && set <= 7) map.channel = int(set) + 1;
        if (GltfNumber(at->second, "rotation", 0) != 0) gltf_.scene.Note("turned textures are not turned");
    }

    GltfFile& gltf_;
    const tinygltf::Material& from_;
    ImportedMaterial out_;
};

// The bytes of a picture in a buffer; empty when it does not lie within.
std::string BytesInBuffer(const GltfFile& gltf, int view) {
    if (view < 0 || size_t(view) >= gltf.model.bufferViews.size()) return {};
    const tinygltf::BufferView& v = gltf.model.bufferViews[size_t(view)];
    if (v.buffer < 0 || size_t(v.buffer) >= gltf.model.buffers.size()) return {};
    const auto& data = gltf.model.buffers[size_t(v.buffer)].data;
    if (v.byteOffset > data.size() || v.byteLength > data.size() - v.byteOffset) return {};
    const auto begin = data.begin() + std::ptrdiff_t(v.byteOffset);
    return std::string(begin, begin + std::ptrdiff_t(v.byteLength));
}

// A mapping channel that is white all over, where the mesh does not have the channel.
void AddWhite(Mesh& mesh, int channel) {
    if (mesh.maps.contains(channel)) return;
    mesh.maps[channel] = {{Point3(1, 1, 1)}, std::vector<TVFace>(mesh.faces.size(), TVFace{{0, 0, 0}})};
}

} // namespace

void ReadGltfImages(GltfFile& gltf) {
    for (size_t i = 0; i < gltf.model.images.size(); ++i) {
        const tinygltf::Image& from = gltf.model.images[i];
        ImportedImage image;
        image.name = from.name.empty() ? "image " + std::to_string(i) : from.name;
        image.bytes = from.bufferView >= 0 ? BytesInBuffer(gltf, from.bufferView)
                                           : std::string(from.image.begin(), from.image.end());
        if (image.bytes.empty() && !from.uri.empty()) {
            image.path = FileBeside(gltf.file, from.uri, true);
            if (image.path.empty())
                gltf.scene.Note("picture " + Quoted(from.uri) + " is not there in the file's own folder");
        } else if (image.bytes.empty()) {
            gltf.scene.Note("picture " + Quoted(image.name) + " is empty");
        }
        gltf.scene.images.push_back(std::move(image));
    }
}

void SpreadGltfVertexColors(GltfFile& gltf) {
    ImportedScene& scene = gltf.scene;
    for (const SceneMesh& mesh : scene.meshes)
        for (const int m : mesh.materials) {
            if (m < 0) continue;
            ImportedMaterial& material = scene.materials[size_t(m)];
            material.vertexColors |= mesh.mesh.maps.contains(MAP_VERTCOLOR);
            material.vertexAlphas |= material.isCoverage && mesh.mesh.maps.contains(MAP_ALPHA);
        }
    for (SceneMesh& mesh : scene.meshes)
        for (const int m : mesh.materials) {
            if (m < 0) continue;
            if (scene.materials[size_t(m)].vertexColors) AddWhite(mesh.mesh, MAP_VERTCOLOR);
            if (scene.materials[size_t(m)].vertexAlphas) AddWhite(mesh.mesh, MAP_ALPHA);
        }
}

void ReadGltfMaterials(GltfFile& gltf) {
    for (size_t i = 0; i < gltf.model.materials.size(); ++i) {
        gltf.scene.materials.push_back(MaterialReader(gltf, gltf.model.materials[i]).Read());
        if (gltf.scene.materials.back().name.empty())
            gltf.scene.materials.back().name = "material_" + std::to_string(i + 1);
    }
}

} // namespace host
