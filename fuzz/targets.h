#pragma once
// What fuzzing and the replay of its cases run: every form of file, out of memory. A file gives a whole result or one
// line of text; everything else stops the program.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "import/imported_scene.h"
#include "import/mesh_import.h"

namespace fuzz {

/// No such folder: files that others name are not there.
inline const std::string kFile = "/velmar-none/m";

inline void Require(bool good, const char* what) {
    if (good) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

inline void CheckMesh(const Mesh& mesh) {
    for (const Point3& p : mesh.verts) Require(IsFinite(p), "a position is finite");
    for (const Face& f : mesh.faces)
        for (const int v : f.v) Require(v >= 0 && v < mesh.getNumVerts(), "faces have vertices");
    for (const auto& [channel, map] : mesh.maps) {
        Require(map.tf.size() == mesh.faces.size(), "every face is mapped");
        for (const TVFace& f : map.tf)
            for (const int t : f.t) Require(t >= 0 && size_t(t) < map.tv.size(), "mapping faces have vertices");
    }
    for (const TVFace& f : mesh.specNormals.faces)
        for (const int n : f.t) Require(n >= -1 && n < int(mesh.specNormals.normals.size()), "corners have normals");
}

/// Runs `import(file, content)` and gives its meshes to `check`; an error must be one line that begins with the file.
template <class Import, class Check>
void Run(const char* extension, const std::string& content, Import&& import, Check&& check) {
    const std::string file = kFile + extension;
    try {
        check(import(file, content));
    } catch (const host::Error& e) {
        const std::string text = e.what();
        Require(text.starts_with(file) && text.find('\n') == std::string::npos, "an error is one line with the file");
    }
}

inline void CheckMeshes(const std::vector<host::ImportedMesh>& meshes) {
    for (const host::ImportedMesh& m : meshes) {
        Require(m.mesh.getNumFaces() > 0, "a mesh has faces");
        CheckMesh(m.mesh);
    }
}

inline void CheckScene(const std::string& file, host::ImportedScene scene) {
    for (size_t i = 0; i < scene.nodes.size(); ++i) {
        const host::ImportedNode& n = scene.nodes[i];
        Require(n.parent < int(i), "parents come first");
        Require(n.mesh < int(scene.meshes.size()) && n.skin < int(scene.skins.size()), "nodes have what they name");
        Require(n.camera < int(scene.cameras.size()) && n.light < int(scene.lights.size()), "views are there");
    }
    for (const host::ImportedSkin& skin : scene.skins)
        for (const int joint : skin.joints) Require(joint >= 0 && joint < int(scene.nodes.size()), "joints are nodes");
    for (const host::SceneMesh& m : scene.meshes) {
        CheckMesh(m.mesh);
        for (const int material : m.materials) Require(material < int(scene.materials.size()), "materials are there");
        for (const auto& morph : m.morphs) Require(morph.deltas.size() == m.mesh.verts.size(), "morphs fit the mesh");
    }
    for (const host::ImportedMaterial& m : scene.materials)
        for (const host::ImportedMap& map : m.maps)
            Require(map.image >= 0 && map.image < int(scene.images.size()), "pictures are there");
    host::PlaceScene(file, scene, {0.01f, scene.up});
}

inline void RunObj(const std::string& content) {
    Run(".obj", content, host::ImportObj, CheckMeshes);
}
inline void RunPly(const std::string& content) {
    Run(".ply", content, host::ImportPly, CheckMeshes);
}
inline void Run3ds(const std::string& content) {
    Run(".3ds", content, host::Import3ds, CheckMeshes);
}
inline void RunGltf(const std::string& content) {
    Run(
        ".gltf", content, [](const std::string& f, const std::string& c) { return host::ImportGltf(f, c); },
        [](host::ImportedScene scene) { CheckScene(kFile + ".gltf", std::move(scene)); });
}
inline void RunFbx(const std::string& content) {
    Run(
        ".fbx", content, [](const std::string& f, const std::string& c) { return host::ImportFbx(f, c); },
        [](host::ImportedScene scene) { CheckScene(kFile + ".fbx", std::move(scene)); });
}

} // namespace fuzz
