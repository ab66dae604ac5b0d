#pragma once
// Reads the bench mesh. One source file of a program may include this.

#include <cstdio>
#include <cstdlib>

#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>

#include "sdk/mesh.h"

/// The triangles of an .obj file, Y up turned into Z up as the scene's import does. Ends the program when it cannot be
/// read.
inline Mesh LoadBunny(const char* path) {
    tinyobj::ObjReader reader;
    if (!reader.ParseFromFile(path)) {
        std::fprintf(stderr, "cannot read %s\n", path);
        std::exit(2);
    }
    Mesh m;
    const auto& v = reader.GetAttrib().vertices;
    for (size_t i = 0; i + 2 < v.size(); i += 3) m.verts.push_back({v[i], -v[i + 2], v[i + 1]});
    for (const auto& shape : reader.GetShapes())
        for (size_t i = 0; i + 2 < shape.mesh.indices.size(); i += 3) {
            Face f;
            for (int c = 0; c < 3; ++c) f.v[c] = shape.mesh.indices[i + size_t(c)].vertex_index;
            m.faces.push_back(f);
        }
    return m;
}
