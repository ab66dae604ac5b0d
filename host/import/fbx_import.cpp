// .fbx files, read by Assimp, which splits vertices at every seam.

#include <assimp/config.h>
#include <assimp/material.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <cmath>
#include <filesystem>

#include "import/assimp_read.h"
#include "import/fbx_guard.h"
#include "import/fbx_parts.h"
#include "import/file_error.h"
#include "import/near_file.h"

namespace host {

namespace {

MapWrap WrapOf(aiTextureMapMode mode) {
    return mode == aiTextureMapMode_Clamp ? kWrapClamp : mode == aiTextureMapMode_Mirror ? kWrapMirror : kWrapRepeat;
}

class MaterialReader {
public:
    MaterialReader(FbxFile& fbx, const aiMaterial& from, std::map<std::string, int>& imageOf)
        : fbx_(fbx), from_(from), imageOf_(imageOf) {}

    ImportedMaterial Read() {
        aiString name;
        from_.Get(AI_MATKEY_NAME, name);
        out_.name = name.C_Str();
        out_.diffuse = ColorOf(AI_MATKEY_COLOR_DIFFUSE, {0.8f, 0.8f, 0.8f});
        out_.specular = ColorOf(AI_MATKEY_COLOR_SPECULAR, {0, 0, 0});
        out_.opacity = std::clamp(NumberOf(AI_MATKEY_OPACITY, 1), 0.0f, 1.0f);
        // The exponent of the highlight is 2^(10 x glossiness).
        const float exponent = NumberOf(AI_MATKEY_SHININESS, 0);
        out_.glossiness = exponent > 1 ? std::min(std::log2(exponent) / 10.0f, 1.0f) : 0;
        out_.specularLevel = exponent > 0 ? std::clamp(NumberOf(AI_MATKEY_SHININESS_STRENGTH, 1), 0.0f, 10.0f) : 0;
        const Color glow = ColorOf(AI_MATKEY_COLOR_EMISSIVE, {0, 0, 0});
        out_.selfIllum = std::clamp(std::max({glow.r, glow.g, glow.b}), 0.0f, 1.0f);
        AddMap(aiTextureType_DIFFUSE, ID_DI);
        AddMap(aiTextureType_SPECULAR, ID_SP);
        AddMap(aiTextureType_OPACITY, ID_OP);
        if (out_.maps.empty()) AddMap(aiTextureType_BASE_COLOR, ID_DI);
        return std::move(out_);
    }

private:
    Color ColorOf(const char* key, unsigned type, unsigned index, Color otherwise) const {
        aiColor3D c;
        if (from_.Get(key, type, index, c) != AI_SUCCESS || !IsFinite(Point3(c.r, c.g, c.b))) return otherwise;
        return {c.r, c.g, c.b};
    }
    float NumberOf(const char* key, unsigned type, unsigned index, float otherwise) const {
        float v = 0;
        return from_.Get(key, type, index, v) == AI_SUCCESS && std::isfinite(v) ? v : otherwise;
    }

    void AddMap(aiTextureType type, StdMatChannel target) {
        aiString path;
        unsigned set = 0;
        aiTextureMapMode modes[2] = {aiTextureMapMode_Wrap, aiTextureMapMode_Wrap};
        if (from_.GetTextureCount(type) == 0 ||
            from_.GetTexture(type, 0, &path, nullptr, &set, nullptr, nullptr, modes) != AI_SUCCESS)
            return;
        const int image = ImageOf(path.C_Str());
        if (image < 0) return;
        ImportedMap map;
        map.target = target;
        map.image = image;
        map.channel = int(std::min(set, 7u)) + 1;
        map.wrapU = WrapOf(modes[0]);
        map.wrapV = WrapOf(modes[1]);
        aiUVTransform uv;
        if (from_.Get(AI_MATKEY_UVTRANSFORM(type, 0), uv) == AI_SUCCESS) {
            const float numbers[4] = {uv.mScaling.x, uv.mScaling.y, uv.mTranslation.x, uv.mTranslation.y};
            if (std::all_of(numbers, numbers + 4, [](float v) { return std::isfinite(v); })) {
                std::copy(numbers, numbers + 2, map.tile);
                map.offset[0] = -numbers[2];
                map.offset[1] = -numbers[3];
            }
        }
        out_.maps.push_back(map);
    }

    // Number of the picture; -1 when there is none.
    int ImageOf(const std::string& name) {
        if (const auto known = imageOf_.find(name); known != imageOf_.end()) return known->second;
        ImportedImage image;
        image.name = name;
        if (const aiTexture* const texture = fbx_.from.GetEmbeddedTexture(name.c_str())) {
            if (texture->mHeight == 0 && texture->pcData)
                image.bytes.assign(reinterpret_cast<const char*>(texture->pcData), texture->mWidth);
        } else {
            image.path = FindPicture(name);
        }
        int number = -1;
        if (image.path.empty() && image.bytes.empty()) {
            fbx_.scene.Note("picture " + Quoted(name) + " is not there in the file's own folder");
        } else {
            number = int(fbx_.scene.images.size());
            fbx_.scene.images.push_back(std::move(image));
        }
        return imageOf_[name] = number;
    }

    // Names are often those of another machine: then the last part counts.
    std::string FindPicture(std::string name) const {
        std::replace(name.begin(), name.end(), '\\', '/');
        const std::string there = FileBeside(fbx_.file, name, false);
        return there.empty() ? FileBeside(fbx_.file, name.substr(name.find_last_of('/') + 1), false) : there;
    }

    FbxFile& fbx_;
    const aiMaterial& from_;
    std::map<std::string, int>& imageOf_;
    ImportedMaterial out_;
};

// Units and axes as the file states them.
void ReadSettings(FbxFile& fbx) {
    const aiMetadata* const data = fbx.from.mMetaData;
    int axis = 1;
    float centimeters = 1;
    double precise = 0;
    if (data) {
        data->Get("UpAxis", axis);
        if (data->Get("UnitScaleFactor", precise))
            centimeters = float(precise);
        else
            data->Get("UnitScaleFactor", centimeters);
    }
    fbx.scene.up = axis == 2 ? UpAxis::kZ : UpAxis::kY;
    if (axis == 0) fbx.scene.Note("X points up in the file: taken as if it were Y");
    const bool usable = std::isfinite(centimeters) && centimeters > 1e-9f && centimeters < 1e9f;
    if (!usable) fbx.scene.Note("the file's unit cannot be used: taken as centimetres");
    fbx.scene.meters = usable ? double(centimeters) * 0.01 : 0.01;
}

} // namespace

void ReadFbxMaterials(FbxFile& fbx) {
    std::map<std::string, int> imageOf;
    for (unsigned i = 0; i < fbx.from.mNumMaterials; ++i) {
        fbx.scene.materials.push_back(MaterialReader(fbx, *fbx.from.mMaterials[i], imageOf).Read());
        if (fbx.scene.materials.back().name.empty())
            fbx.scene.materials.back().name = "material_" + std::to_string(i + 1);
    }
}

ImportedScene ImportFbx(const std::string& file, const std::string& content, const std::string& animation) {
    CheckFbx(file, content);
    std::string twin, error;
    Assimp::Importer importer;
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    MendTwinBones(importer, twin);
    const aiScene* const from = ReadByAssimp(importer, content, "fbx", error);
    if (!from || !from->mRootNode)
        FailAt(file, 0, "cannot be read as FBX" + (error.empty() ? "" : " (" + FirstLine(error) + ")"));
    FbxFile fbx{file, *from, {}, {}, {}};
    if (!twin.empty()) fbx.scene.Note("several bones are called " + Quoted(twin) + ", only the first one counts");
    ReadSettings(fbx);
    ReadFbxMaterials(fbx);
    ReadFbxNodes(fbx);
    ReadFbxAnimations(fbx, animation);
    CheckSceneContent(file, fbx.scene);
    return std::move(fbx.scene);
}

} // namespace host
