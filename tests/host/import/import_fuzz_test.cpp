// Damaged files never crash the importers: they give a whole mesh or one line.

#include "import_helpers.h"

#include <rapidcheck/gtest.h>

#include "host/damage.h"

using namespace host;
using namespace import_test;

namespace {

std::string Damaged(const std::string& file) {
    return test::Damage(file, "0123456789-/. \nvfeE", 8, 20);
}

void CheckWhole(const std::vector<ImportedMesh>& meshes) {
    for (const ImportedMesh& m : meshes) {
        RC_ASSERT(m.mesh.getNumFaces() > 0);
        for (const Point3& p : m.mesh.verts) RC_ASSERT(IsFinite(p));
        for (const Face& f : m.mesh.faces)
            for (const int v : f.v) RC_ASSERT(v >= 0 && v < m.mesh.getNumVerts());
        for (const auto& [channel, map] : m.mesh.maps) {
            RC_ASSERT(map.tf.size() == m.mesh.faces.size());
            for (const TVFace& f : map.tf)
                for (const int t : f.t) RC_ASSERT(t >= 0 && size_t(t) < map.tv.size());
        }
    }
}

template <class Import>
void Try(Import import, const std::string& content) {
    try {
        CheckWhole(import("m", content));
    } catch (const Error& e) {
        RC_ASSERT(std::string(e.what()).find("m:") == 0);
        RC_ASSERT(std::string(e.what()).find('\n') == std::string::npos);
    }
}

const std::string kObj = "o a\nv 0 0 0 1 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0.5\nvt 0 0\nvt 1 0.5\nvn 0 0 1\ng x\ns 1\n"
                         "usemtl m\nf 1/1/1 2/2/1 3//1 4\nf -4 -3 -1\n";
const std::string kAscii =
    "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
    "property uchar red\nproperty uchar green\nproperty uchar blue\nelement face 1\n"
    "property list uchar int vertex_indices\nend_header\n0 0 0 1 2 3\n1 0 0 4 5 6\n0 1 0 7 8 9\n"
    "3 0 1 2\n";

std::string BinaryPly() {
    std::string out = "ply\nformat binary_little_endian 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                      "property float z\nelement face 1\nproperty list int int vertex_indices\nend_header\n";
    for (const float f : {0.f, 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, 0.f}) out += Bytes(f);
    for (const int i : {3, 0, 1, 2}) out += Bytes(i);
    return out;
}

} // namespace

RC_GTEST_PROP(ImportFuzz, Obj, ()) {
    Try(ImportObj, Damaged(kObj));
}

RC_GTEST_PROP(ImportFuzz, AsciiPly, ()) {
    Try(ImportPly, Damaged(kAscii));
}

RC_GTEST_PROP(ImportFuzz, BinaryPly, ()) {
    Try(ImportPly, Damaged(BinaryPly()));
}
