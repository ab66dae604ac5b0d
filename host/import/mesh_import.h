#pragma once
// Meshes from files.

#include <string>
#include <vector>

#include "import/file_error.h"
#include "sdk/mesh.h"

namespace host {

/// Which axis of the file points up. Scenes are Z up.
enum class UpAxis { kZ, kY };

/// How coordinates are brought into the scene, once, at import.
struct ImportOptions {
    float scale = 1;        ///< scene units in a unit of the file, above 0
    UpAxis up = UpAxis::kZ; ///< kY: (x, y, z) becomes (x, -z, y)
};

/// A mesh of a file.
struct ImportedMesh {
    std::string name; ///< the file's, or the file name without its extension
    Mesh mesh;
    std::vector<std::string> materials; ///< the file's names, by material id
};

/// Reads a mesh file; the extension chooses the form (.obj, .ply, .3ds).
///
/// .obj: vertices and faces in the order of the file, a mesh for every `o`; `g` gives named face sets, `usemtl`
/// material ids in the order of first use, vt (u and v) mapping channel 1, vertex colours channel 0. Smoothing comes
/// from `s`; a file without `s` is smooth where neighbouring faces have the same normals (vn), all over when it has
/// none. .ply: ascii and binary; colours into channel 0, texture coordinates into channel 1; smooth all over. .3ds: a
/// mesh for every object, vertices welded by position, mapping kept on its own vertices; smooth where neighbouring
/// faces have the same normals. A polygon becomes a fan from its first corner; edges inside it are marked invisible.
/// Degenerate faces are kept.
///
/// Throws Error with one line "FILE:LINE: what, and what was expected": no such file, unknown extension, syntax, a face
/// index out of range, a position that is no finite number, no faces, a file that ends too early.
std::vector<ImportedMesh> ImportMeshes(const std::string& path, const ImportOptions& options = {});

/// True when ImportMeshes knows the form by the extension.
bool IsMeshFile(const std::string& path);

/// Faces with two corners at one vertex, or without area.
int CountDegenerateFaces(const Mesh& mesh);

// The forms, from a file's content. `file` is for messages.
std::vector<ImportedMesh> ImportObj(const std::string& file, const std::string& content);
std::vector<ImportedMesh> ImportPly(const std::string& file, const std::string& content);
std::vector<ImportedMesh> Import3ds(const std::string& file, const std::string& content);

} // namespace host
