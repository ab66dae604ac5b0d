// .ply files.

#include <algorithm>

#include "import_helpers.h"

using namespace host;
using namespace import_test;

namespace {

Mesh Read(const std::string& content) {
    std::vector<ImportedMesh> meshes = ImportPly("m.ply", content);
    EXPECT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes.at(0).name, "m");
    return meshes.at(0).mesh;
}

std::string Problem(const std::string& content) {
    return ErrorOf([&] { ImportPly("m.ply", content); });
}

const std::string kVertex = "property float x\nproperty float y\nproperty float z\n";
const std::string kFace = "element face 1\nproperty list uchar int vertex_indices\n";

std::string Ascii(const std::string& header, const std::string& body) {
    return "ply\nformat ascii 1.0\n" + header + "end_header\n" + body;
}

// A value in the byte order of the file.
template <class T>
std::string Ordered(T value, bool big) {
    std::string bytes = Bytes(value);
    if (big) std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

std::string Binary(bool big) {
    std::string out = std::string("ply\nformat binary_") + (big ? "big" : "little") +
                      "_endian 1.0\ncomment made by a test\nelement vertex 4\nproperty double x\nproperty float y\n"
                      "property float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\n"
                      "property float s\nproperty float t\nelement extra 2\nproperty list ushort short junk\n"
                      "element face 1\nproperty list uchar uint vertex_indices\nend_header\n";
    const float y[4] = {0, 0, 1, 1};
    for (int i = 0; i < 4; ++i) {
        out += Ordered(double(i) * 0.5, big) + Ordered(y[i], big) + Ordered(-2.0f, big);
        out += std::string("\xff\x00\x33", 3) + Ordered(float(i), big) + Ordered(0.25f, big);
    }
    out += Ordered(uint16_t(1), big) + Ordered(int16_t(-3), big) + Ordered(uint16_t(0), big);
    out += Ordered(uint8_t(4), big);
    for (const uint32_t v : {3u, 0u, 1u, 2u}) out += Ordered(v, big);
    return out;
}

} // namespace

TEST(Ply, ReadsAscii) {
    const Mesh m = Read(Ascii("element vertex 4\n" + kVertex + kFace, "0 0 0\n1 0 0\n1 1 0\n0 1 0.125\n4 0 1 2 3"));
    ASSERT_EQ(m.getNumVerts(), 4);
    EXPECT_EQ(m.verts[3], Point3(0, 1, 0.125f));
    ASSERT_EQ(m.getNumFaces(), 2);
    EXPECT_EQ(Corners(m, 0), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Corners(m, 1), (std::vector<int>{0, 2, 3}));
    EXPECT_EQ(m.faces[0].smGroup, 1u);
    EXPECT_TRUE(m.maps.empty());
}

TEST(Ply, ReadsBothByteOrders) {
    for (const bool big : {false, true}) {
        const Mesh m = Read(Binary(big));
        ASSERT_EQ(m.getNumVerts(), 4) << big;
        EXPECT_EQ(m.verts[3], Point3(1.5f, 1, -2));
        EXPECT_EQ(Corners(m, 0), (std::vector<int>{3, 0, 1}));
        EXPECT_EQ(Corners(m, 1), (std::vector<int>{3, 1, 2}));
        ASSERT_TRUE(m.mapSupport(0));
        EXPECT_EQ(m.maps.at(0).tv[2], Point3(1, 0, 0.2f));
        ASSERT_TRUE(m.mapSupport(1));
        EXPECT_EQ(m.maps.at(1).tv[2], Point3(2, 0.25f, 0));
        EXPECT_EQ(MapCorners(m, 1, 0), (std::vector<int>{3, 0, 1}));
    }
}

TEST(Ply, TextureCoordinatesOfCorners) {
    const Mesh m = Read(Ascii("element vertex 3\n" + kVertex +
                                  "element face 2\nproperty list uchar int vertex_index\n"
                                  "property list uchar float texcoord\n",
                              "0 0 0 1 0 0 0 1 0\n3 0 1 2 6 0 0 0.5 0 0 0.5\n3 2 1 0 0\n"));
    EXPECT_EQ(MapCorners(m, 1, 0), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(m.maps.at(1).tv[1], Point3(0.5f, 0, 0));
    EXPECT_EQ(MapCorners(m, 1, 1), (std::vector<int>{3, 3, 3}));
}

TEST(Ply, SaysWhatIsWrongInHeaders) {
    const std::pair<std::string, const char*> cases[] = {
        {"", "m.ply:1: is no .ply file, expected 'ply'"},
        {"ply\n", "m.ply:1: header ends too early, expected 'format'"},
        {"ply\nformat text 1.0\n", "m.ply:2: expected 'format ascii|binary_little_endian|binary_big_endian 1.0'"},
        {"ply\nformat ascii 1.0\nelement vertex 3\n", "m.ply:3: header ends too early, expected 'end_header'"},
        {Ascii("element vertex many\n", ""), "m.ply:3: 'many' is no count, expected 0 .. 500000000"},
        {Ascii("element vertex 99999999999\n", ""), "m.ply:3: '99999999999' is no count, expected 0 .. 500000000"},
        {Ascii("element vertex -1\n", ""), "m.ply:3: '-1' is no count, expected 0 .. 500000000"},
        {Ascii("property float x\n", ""), "m.ply:3: property without an element, expected 'element' before it"},
        {Ascii("element vertex 1\nproperty real x\n", ""),
         "m.ply:4: 'real' is no type, expected char, uchar, short, ushort, int, uint, float or double"},
        {Ascii("element vertex 1\nproperty list float int x\n", ""),
         "m.ply:4: a list counted by float or double, expected a whole-number type"},
        {Ascii("element vertex 1\nproperty float\n", ""),
         "m.ply:4: property without a name, expected one after the type"},
        {Ascii("element vertex 1\nelement vertex 1\n", ""),
         "m.ply:4: second element 'vertex', expected one of each name"},
        {Ascii("elements 1\n", ""),
         "m.ply:3: 'elements' is unknown, expected element, property, comment or end_header"},
    };
    for (const auto& [content, message] : cases) EXPECT_EQ(Problem(content), message) << content;
}

TEST(Ply, SaysWhatIsWrongInValues) {
    const std::string header = "element vertex 3\n" + kVertex + kFace;
    const std::pair<std::string, const char*> cases[] = {
        {Ascii("element vertex 3\n" + kVertex, "0 0 0 0 0 0 0 0 0\n"), "m.ply: has no faces, expected at least one"},
        {Ascii("element vertex 3\n" + kVertex + "element face 0\nproperty list uchar int vertex_indices\n",
               "0 0 0 0 0 0 0 0 0\n"),
         "m.ply: has no faces, expected at least one"},
        {Ascii("element vertex 0\nproperty float x\n", ""),
         "m.ply: vertices have no position, expected the properties x, y and z"},
        {Ascii("element vertex 0\n" + kVertex + "element face 1\nproperty int a\n", "1\n"),
         "m.ply: faces have no corners, expected the list property vertex_indices"},
        {Ascii(header, "0 0 0\n0 nan 0\n0 0 0\n3 0 1 2\n"),
         "m.ply:11: vertex 2 of 3 has a position that is not finite, expected finite numbers"},
        {Ascii(header, "0 0 0\n0 0 0\n0 -inf 0\n3 0 1 2\n"),
         "m.ply:12: vertex 3 of 3 has a position that is not finite, expected finite numbers"},
        {Ascii(header, "0 0 0\n0 x 0\n0 0 0\n3 0 1 2\n"),
         "m.ply:11: 'x' is no number, expected a value of vertex 2 of 3"},
        {Ascii(header, "0 0 0\n1 0 0\n0 1 0\n3 0 1 3\n"),
         "m.ply:13: face 1 of 1 has vertex index 3, which is out of range, expected 0 .. 2"},
        {Ascii(header, "0 0 0\n1 0 0\n0 1 0\n3 0 1 -1\n"),
         "m.ply:13: face 1 of 1 has vertex index -1, which is out of range, expected 0 .. 2"},
        {Ascii(header, "0 0 0\n1 0 0\n0 1 0\n3 0 1 0.5\n"),
         "m.ply:13: face 1 of 1 has vertex index 0.5, which is out of range, expected 0 .. 2"},
        {Ascii(header, "0 0 0\n1 0 0\n0 1 0\n2 0 1\n"), "m.ply:13: face 1 of 1 has 2 corners, expected 3 or more"},
        {Ascii(header, "0 0 0\n1 0 0\n0 1 0\n-3 0 1\n"), "m.ply:13: face 1 of 1 has a list of impossible length"},
        {Ascii(header, "0 0 0\n1 0 0\n0 1 0\n3 0 1"), "m.ply:13: ends too early, in face 1 of 1"},
        {Ascii("element vertex 500000000\n" + kVertex + kFace, "0 0 0\n"),
         "m.ply: ends too early, expected 500000000 rows of 'vertex'"},
    };
    for (const auto& [content, message] : cases) EXPECT_EQ(Problem(content), message) << content;
}

TEST(Ply, EveryTruncationOfABinaryFileIsAnError) {
    const std::string whole = Binary(false);
    const size_t header = whole.find("end_header\n") + 11;
    for (size_t size = header; size < whole.size(); ++size) EXPECT_NE(Problem(whole.substr(0, size)), "") << size;
    EXPECT_EQ(Problem(whole.substr(0, whole.size() - 1)), "m.ply: ends too early, in face 1 of 1");
}
