#include "import/mesh_import.h"

#include <algorithm>

#include "import/near_file.h"

namespace host {

namespace {

void BringIntoScene(Mesh& mesh, const ImportOptions& options) {
    for (Point3& p : mesh.verts) {
        p = p * options.scale;
        if (options.up == UpAxis::kY) p = {p.x, -p.z, p.y};
    }
    mesh.InvalidateGeomCache();
}

void CheckMesh(const std::string& file, const ImportedMesh& m) {
    const auto bad = std::find_if_not(m.mesh.verts.begin(), m.mesh.verts.end(), IsFinite);
    if (bad != m.mesh.verts.end())
        FailAt(file, 0,
               "vertex " + std::to_string(bad - m.mesh.verts.begin() + 1) + " of '" + m.name +
                   "' is too far away, expected finite positions after scaling");
}

using Import = std::vector<ImportedMesh> (*)(const std::string&, const std::string&);

Import ImportOf(const std::string& extension) {
    return extension == ".obj"   ? ImportObj
           : extension == ".ply" ? ImportPly
           : extension == ".3ds" ? Import3ds
                                 : nullptr;
}

} // namespace

bool IsMeshFile(const std::string& path) {
    return ImportOf(LowerExtension(path));
}

std::vector<ImportedMesh> ImportMeshes(const std::string& path, const ImportOptions& options) {
    const std::string ext = LowerExtension(path);
    const Import import = ImportOf(ext);
    if (!import) FailAt(path, 0, "unknown mesh form '" + ext + "', expected .obj, .ply or .3ds");
    std::vector<ImportedMesh> meshes = import(path, ReadWholeFile(path));
    for (ImportedMesh& m : meshes) {
        BringIntoScene(m.mesh, options);
        CheckMesh(path, m);
    }
    return meshes;
}

int CountDegenerateFaces(const Mesh& mesh) {
    int count = 0;
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        const int* const v = mesh.faces[size_t(f)].v;
        if (v[0] == v[1] || v[1] == v[2] || v[2] == v[0] || mesh.FaceNormal(f) == Point3()) ++count;
    }
    return count;
}

} // namespace host
