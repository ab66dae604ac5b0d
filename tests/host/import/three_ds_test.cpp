// .3ds files, made by the test.

#include "import_helpers.h"

using namespace host;
using namespace import_test;

namespace {

std::string Chunk(int id, const std::string& data) {
    return Bytes(uint16_t(id)) + Bytes(uint32_t(data.size() + 6)) + data;
}

struct Triangle {
    uint16_t v[3];
};

// A mesh object; `groups` are the faces' smoothing groups, `uv` mapping coordinates by vertex.
std::string ObjectChunk(const std::string& name, const std::vector<Point3>& verts, const std::vector<Triangle>& faces,
                        const std::vector<uint32_t>& groups = {}, const std::vector<float>& uv = {},
                        const std::string& faceParts = {}) {
    std::string points = Bytes(uint16_t(verts.size())), list = Bytes(uint16_t(faces.size()));
    for (const Point3& p : verts) points += Bytes(p.x) + Bytes(p.y) + Bytes(p.z);
    for (const Triangle& t : faces) list += Bytes(t.v[0]) + Bytes(t.v[1]) + Bytes(t.v[2]) + Bytes(uint16_t(7));
    list += faceParts;
    if (!groups.empty()) {
        std::string smooth;
        for (const uint32_t g : groups) smooth += Bytes(g);
        list += Chunk(0x4150, smooth);
    }
    std::string mesh = Chunk(0x4110, points);
    if (!uv.empty()) {
        std::string map = Bytes(uint16_t(uv.size() / 2));
        for (const float f : uv) map += Bytes(f);
        mesh += Chunk(0x4140, map);
    }
    mesh += Chunk(0x4120, list);
    return Chunk(0x4000, name + '\0' + Chunk(0x4100, mesh));
}

std::string File(const std::string& objects) {
    return Chunk(0x4d4d, Chunk(0x0002, Bytes(uint32_t(3))) + Chunk(0x3d3d, objects));
}

std::string Material(const std::string& name) {
    return Chunk(0xafff, Chunk(0xa000, name + '\0'));
}

std::string FaceMaterial(const std::string& name, const std::vector<uint16_t>& faces) {
    std::string data = name + '\0' + Bytes(uint16_t(faces.size()));
    for (const uint16_t f : faces) data += Bytes(f);
    return Chunk(0x4130, data);
}

const std::vector<Point3> kBent{{0, 0, 0}, {1, 0, 0}, {1, 1, 0.5f}, {0, 1, 1}};
const std::vector<Triangle> kTwo{{{0, 1, 2}}, {{0, 2, 3}}};

std::string Problem(const std::string& content) {
    return ErrorOf([&] { Import3ds("m.3ds", content); });
}

} // namespace

TEST(ThreeDs, WeldsSplitVerticesAndKeepsTheObjectsName) {
    const auto meshes = Import3ds("m.3ds", File(ObjectChunk("Bent", kBent, kTwo)));
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes[0].name, "Bent");
    const Mesh& m = meshes[0].mesh;
    ASSERT_EQ(m.getNumVerts(), 4);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(m.verts[size_t(i)], kBent[size_t(i)]) << i;
    EXPECT_EQ(Corners(m, 0), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Corners(m, 1), (std::vector<int>{0, 2, 3}));
    EXPECT_FALSE(m.mapSupport(1));
}

TEST(ThreeDs, CoincidentVerticesBecomeOne) {
    const std::vector<Point3> twice{kBent[0], kBent[1], kBent[2], {-0.0f, 0, 0}, kBent[2], kBent[3]};
    const Mesh m = Import3ds("m.3ds", File(ObjectChunk("a", twice, {{{0, 1, 2}}, {{3, 4, 5}}})))[0].mesh;
    EXPECT_EQ(m.getNumVerts(), 4);
    EXPECT_EQ(Corners(m, 1), (std::vector<int>{0, 2, 3}));
}

TEST(ThreeDs, SmoothingFollowsTheFilesGroups) {
    const Mesh smooth = Import3ds("m.3ds", File(ObjectChunk("a", kBent, kTwo, {1, 1})))[0].mesh;
    EXPECT_EQ(smooth.faces[0].smGroup, smooth.faces[1].smGroup);
    EXPECT_NE(smooth.faces[0].smGroup, 0u);
    const Mesh sharp = Import3ds("m.3ds", File(ObjectChunk("a", kBent, kTwo, {1, 2})))[0].mesh;
    EXPECT_EQ(sharp.faces[0].smGroup & sharp.faces[1].smGroup, 0u);
}

TEST(ThreeDs, MappingKeepsItsOwnIndices) {
    const std::vector<float> uv{0, 0, 1, 0, 1, 1, 0, 0};
    const Mesh m = Import3ds("m.3ds", File(ObjectChunk("a", kBent, kTwo, {}, uv)))[0].mesh;
    ASSERT_TRUE(m.mapSupport(1));
    EXPECT_EQ(m.maps.at(1).tv.size(), 3u); // the last is the first again
    EXPECT_EQ(MapCorners(m, 1, 1), (std::vector<int>{0, 2, 0}));
    EXPECT_EQ(m.maps.at(1).tv[2], Point3(1, 1, 0));
}

TEST(ThreeDs, MaterialsBecomeIdsOfOneMesh) {
    const std::string content =
        File(Material("red") + Material("blue") +
             ObjectChunk("a", kBent, kTwo, {}, {}, FaceMaterial("red", {0}) + FaceMaterial("blue", {1})) +
             ObjectChunk("b", kBent, {kTwo[0]}, {}, {}, FaceMaterial("blue", {0})));
    const auto meshes = Import3ds("m.3ds", content);
    ASSERT_EQ(meshes.size(), 2u);
    EXPECT_EQ(meshes[0].name, "a");
    EXPECT_EQ(meshes[1].name, "b");
    ASSERT_EQ(meshes[0].mesh.getNumFaces(), 2);
    EXPECT_EQ(meshes[0].mesh.getNumVerts(), 4);
    EXPECT_EQ(meshes[0].materials, (std::vector<std::string>{"red", "blue"}));
    EXPECT_EQ(meshes[0].mesh.faces[1].MatID(), 1);
    EXPECT_EQ(meshes[1].materials, (std::vector<std::string>{"blue"}));
}

TEST(ThreeDs, SaysWhatIsWrong) {
    EXPECT_EQ(Problem(""), "m.3ds: is no .3ds file");
    EXPECT_EQ(Problem("no such thing"), "m.3ds: is no .3ds file");
    const std::string whole = File(ObjectChunk("a", kBent, kTwo));
    EXPECT_EQ(Problem(whole.substr(0, 40)),
              "m.3ds: ends too early, expected " + std::to_string(whole.size()) + " bytes, it has 40");
    EXPECT_EQ(Problem(File("")).find("m.3ds: has no faces, expected at least one"), 0u);
    const std::vector<Point3> nan{{0, 0, 0}, {1, NAN, 0}, {1, 1, 0}};
    EXPECT_EQ(Problem(File(ObjectChunk("a", nan, {kTwo[0]}))),
              "m.3ds: position of 'a' is not finite, expected finite numbers");
}

TEST(ThreeDs, ReadsTheMeshesOfThePackage) {
    const std::string horse = "/usr/share/glmark2/models/horse.3ds";
    ASSERT_TRUE(std::filesystem::exists(horse)) << "install the package glmark2-data (tools/install_deps.sh does)";
    const auto meshes = ImportMeshes(horse);
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes[0].name, "HORSE_L_Mate");
    EXPECT_EQ(meshes[0].mesh.getNumVerts(), 3582);
    EXPECT_EQ(meshes[0].mesh.getNumFaces(), 7172);
    EXPECT_EQ(CountDegenerateFaces(meshes[0].mesh), 0);
    EXPECT_GT(meshes[0].mesh.getBoundingBox().pmax.z, 0.39f); // Z up as in the file
}
