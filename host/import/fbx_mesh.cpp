// Meshes of .fbx files.

#include <cmath>
#include <cstring>

#include "import/fbx_parts.h"
#include "import/file_error.h"
#include "import/part_mesh.h"

namespace host {

namespace {

// The bones of all parts of a node by name and bind matrix: parts of one mesh share them.
class SkinBuilder {
public:
    explicit SkinBuilder(FbxFile& fbx) : fbx_(fbx) {}

    int JointOf(const aiBone& bone) {
        const auto node = fbx_.nodeOf.find(bone.mName.C_Str());
        if (node == fbx_.nodeOf.end()) {
            fbx_.scene.Note("bone " + Quoted(bone.mName.C_Str()) + " has no node and is left out");
            return -1;
        }
        const Matrix3 bind = FbxMatrix(bone.mOffsetMatrix);
        for (size_t i = 0; i < skin_.joints.size(); ++i)
            if (skin_.joints[i] == node->second && skin_.inverseBinds[i] == bind) return int(i);
        skin_.joints.push_back(node->second);
        skin_.inverseBinds.push_back(bind);
        return int(skin_.joints.size()) - 1;
    }
    int Finish() {
        if (skin_.joints.empty()) return -1;
        fbx_.scene.skins.push_back(std::move(skin_));
        return int(fbx_.scene.skins.size()) - 1;
    }

private:
    FbxFile& fbx_;
    ImportedSkin skin_;
};

MeshPart ReadPart(FbxFile& fbx, const aiMesh& from, SkinBuilder& skin) {
    MeshPart part;
    part.material = from.mMaterialIndex < fbx.scene.materials.size() ? int(from.mMaterialIndex) : -1;
    bool clear = false;
    for (unsigned v = 0; v < from.mNumVertices; ++v) {
        part.positions.push_back(FbxPoint(from.mVertices[v]));
        if (from.HasNormals()) part.normals.push_back(FbxPoint(from.mNormals[v]));
        if (from.HasVertexColors(0)) {
            const aiColor4D& c = from.mColors[0][v];
            part.colors.push_back({c.r, c.g, c.b});
            part.alphas.push_back(c.a);
            clear |= c.a != 1;
        }
    }
    if (!clear) part.alphas.clear();
    for (unsigned set = 0; set < kMostMapSets && set < AI_MAX_NUMBER_OF_TEXTURECOORDS; ++set) {
        if (!from.HasTextureCoords(set)) continue;
        part.maps.resize(set + 1);
        for (unsigned v = 0; v < from.mNumVertices; ++v)
            part.maps[set].push_back(FbxPoint(from.mTextureCoords[set][v]));
    }
    for (unsigned f = 0; f < from.mNumFaces; ++f) {
        const aiFace& face = from.mFaces[f];
        if (face.mNumIndices >= 3) part.polygons.emplace_back(face.mIndices, face.mIndices + face.mNumIndices);
    }
    if (from.mNumBones > 0) part.influences.resize(from.mNumVertices);
    for (unsigned b = 0; b < from.mNumBones; ++b) {
        const int joint = skin.JointOf(*from.mBones[b]);
        for (unsigned w = 0; joint >= 0 && w < from.mBones[b]->mNumWeights; ++w) {
            const aiVertexWeight& weight = from.mBones[b]->mWeights[w];
            if (weight.mVertexId < from.mNumVertices && weight.mWeight > 0 && std::isfinite(weight.mWeight))
                part.influences[weight.mVertexId].push_back({0, joint, weight.mWeight});
        }
    }
    return part;
}

} // namespace

int ReadFbxMesh(FbxFile& fbx, const aiNode& node, int& skin) {
    const std::vector<unsigned> key(node.mMeshes, node.mMeshes + node.mNumMeshes);
    if (const auto known = fbx.meshOf.find(key); known != fbx.meshOf.end()) {
        skin = known->second.second;
        return known->second.first;
    }
    SkinBuilder bones(fbx);
    PartMeshBuilder builder(fbx.file, node.mName.C_Str());
    for (const unsigned i : key) {
        if (i >= fbx.from.mNumMeshes) FailAt(fbx.file, 0, "names a mesh that is not there");
        const aiMesh& part = *fbx.from.mMeshes[i];
        if (part.mPrimitiveTypes & (aiPrimitiveType_LINE | aiPrimitiveType_POINT))
            fbx.scene.Note("points and lines of " + Quoted(node.mName.C_Str()) + " are left out");
        builder.Add(ReadPart(fbx, part, bones));
        if (part.mNumAnimMeshes > 0) fbx.scene.Note("morph targets of " + Quoted(node.mName.C_Str()) + " are left out");
    }
    SceneMesh mesh = builder.Finish();
    skin = bones.Finish();
    fbx.scene.meshes.push_back(std::move(mesh));
    const int at = int(fbx.scene.meshes.size()) - 1;
    fbx.meshOf[key] = {at, skin};
    return at;
}

} // namespace host
