// .3ds files, read by Assimp. It delivers a vertex for every corner, split by material; here they are put together.

#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include "import/assimp_read.h"
#include "import/chunks_3ds.h"
#include "import/mesh_build.h"
#include "import/mesh_import.h"
#include "import/record_welder.h"

namespace host {

namespace {

Point3 ToPoint(const aiVector3D& v) {
    return {v.x, v.y, v.z};
}

// One mesh out of the parts of a node.
class NodeMesh {
public:
    NodeMesh(const std::string& file, std::string name) : file_(file) { out_.name = std::move(name); }

    void AddPart(const aiMesh& part, const aiMatrix4x4& tm, const aiScene& scene) {
        const int material = MaterialId(part.mMaterialIndex, scene);
        for (unsigned f = 0; f < part.mNumFaces; ++f) {
            const aiFace& face = part.mFaces[f];
            ForEachFanTriangle(int(face.mNumIndices), [&](int a, int b, int c, uint32_t edges) {
                const unsigned corners[3] = {face.mIndices[a], face.mIndices[b], face.mIndices[c]};
                AddFace(part, tm, corners, edges, material);
            });
        }
    }

    ImportedMesh Finish() {
        out_.mesh.verts = std::move(verts_.points);
        SmoothByNormals(out_.mesh, normals_);
        if (hasMap_) out_.mesh.maps[1] = {std::move(mapVerts_.points), std::move(mapFaces_)};
        return std::move(out_);
    }
    bool HasFaces() const { return !out_.mesh.faces.empty(); }

private:
    int MaterialId(unsigned index, const aiScene& scene) {
        aiString name;
        if (index < scene.mNumMaterials) scene.mMaterials[index]->Get(AI_MATKEY_NAME, name);
        for (size_t i = 0; i < out_.materials.size(); ++i)
            if (out_.materials[i] == name.C_Str()) return int(i);
        out_.materials.emplace_back(name.C_Str());
        return int(out_.materials.size()) - 1;
    }

    void AddFace(const aiMesh& part, const aiMatrix4x4& tm, const unsigned corners[3], uint32_t edges, int material) {
        Face face;
        TVFace map;
        CornerNormals normals;
        for (int k = 0; k < 3; ++k) {
            const unsigned v = corners[k];
            if (v >= part.mNumVertices)
                FailAt(file_, 0,
                       "vertex index " + std::to_string(v) + " of '" + out_.name + "' is out of range, expected 0 .. " +
                           std::to_string(int64_t(part.mNumVertices) - 1));
            const Point3 p = ToPoint(tm * part.mVertices[v]);
            if (!IsFinite(p))
                FailAt(file_, 0, "position of '" + out_.name + "' is not finite, expected finite numbers");
            face.v[k] = verts_.Number(p);
            if (part.HasNormals()) normals[size_t(k)] = ToPoint(part.mNormals[v]);
            map.t[k] = MapVertex(part, v);
        }
        face.flags = edges;
        face.SetMatID(material);
        out_.mesh.faces.push_back(face);
        mapFaces_.push_back(map);
        normals_.push_back(normals);
    }

    // Equal coordinates share a mapping vertex; parts without coordinates use the origin.
    int MapVertex(const aiMesh& part, unsigned v) {
        hasMap_ |= part.HasTextureCoords(0);
        return mapVerts_.Number(part.HasTextureCoords(0) ? FiniteOrZero(ToPoint(part.mTextureCoords[0][v])) : Point3());
    }

    const std::string& file_;
    ImportedMesh out_;
    PointWelder verts_, mapVerts_;
    std::vector<TVFace> mapFaces_;
    std::vector<CornerNormals> normals_;
    bool hasMap_ = false;
};

// The meshes of the file's nodes, placed in the world.
void CollectNodes(const std::string& file, const aiScene& scene, const aiNode& node, const aiMatrix4x4& parentTM,
                  std::vector<ImportedMesh>& out) {
    const aiMatrix4x4 tm = parentTM * node.mTransformation;
    if (node.mNumMeshes > 0) {
        NodeMesh mesh(file, node.mName.C_Str());
        for (unsigned i = 0; i < node.mNumMeshes; ++i) mesh.AddPart(*scene.mMeshes[node.mMeshes[i]], tm, scene);
        if (mesh.HasFaces()) out.push_back(mesh.Finish());
    }
    for (unsigned i = 0; i < node.mNumChildren; ++i) CollectNodes(file, scene, *node.mChildren[i], tm, out);
}

// A file without nodes has objects only: Assimp gives one mesh for every material of every object, in the file's order.
void CollectObjects(const std::string& file, const std::string& content, const aiScene& scene,
                    std::vector<ImportedMesh>& out) {
    unsigned next = 0;
    const auto add = [&](const std::string& name, unsigned faces) {
        NodeMesh mesh(file, name);
        for (unsigned have = 0; have < faces && next < scene.mNumMeshes; ++next) {
            have += scene.mMeshes[next]->mNumFaces;
            mesh.AddPart(*scene.mMeshes[next], aiMatrix4x4(), scene);
        }
        if (mesh.HasFaces()) out.push_back(mesh.Finish());
    };
    for (const Object3ds& object : ListObjects3ds(content)) add(object.name, object.faces);
    while (next < scene.mNumMeshes) add(FileStem(file) + "_" + std::to_string(next + 1), 1);
}

// Assimp's own names for nodes that the file does not have.
bool HasNodes(const aiScene& scene) {
    const aiNode& root = *scene.mRootNode;
    return std::string_view(root.mName.C_Str()) != "<3DSDummyRoot>";
}

void CheckMainChunk(const std::string& file, const std::string& content) {
    const auto byte = [&](size_t i) { return uint32_t(uint8_t(content[i])); };
    if (content.size() < 6 || byte(0) != 0x4d || byte(1) != 0x4d) FailAt(file, 0, "is no .3ds file");
    const uint32_t length = byte(2) | byte(3) << 8 | byte(4) << 16 | byte(5) << 24;
    if (length > content.size())
        FailAt(file, 0,
               "ends too early, expected " + std::to_string(length) + " bytes, it has " +
                   std::to_string(content.size()));
}

} // namespace

std::vector<ImportedMesh> Import3ds(const std::string& file, const std::string& content) {
    CheckMainChunk(file, content);
    Assimp::Importer importer;
    std::string reason;
    const aiScene* const scene = ReadByAssimp(importer, content, "3ds", reason);
    if (!scene || !scene->mRootNode) {
        // Assimp has no scene for a file without meshes either.
        FailAt(file, 0, "has no faces, expected at least one" + (reason.empty() ? "" : " (" + reason + ")"));
    }
    std::vector<ImportedMesh> out;
    // The root only turns the file's Z-up coordinates; they are taken as they stand.
    aiNode& root = *scene->mRootNode;
    root.mTransformation = aiMatrix4x4();
    if (HasNodes(*scene)) {
        CollectNodes(file, *scene, root, aiMatrix4x4(), out);
    } else {
        CollectObjects(file, content, *scene, out);
    }
    for (ImportedMesh& m : out)
        if (m.name.empty()) m.name = FileStem(file);
    if (out.empty()) FailAt(file, 0, "has no faces, expected at least one");
    return out;
}

} // namespace host
