// .obj files.

#include "import_helpers.h"

using namespace host;
using namespace import_test;

namespace {

ImportedMesh One(const std::string& content) {
    std::vector<ImportedMesh> meshes = ImportObj("m.obj", content);
    EXPECT_EQ(meshes.size(), 1u);
    return meshes.at(0);
}

std::string Problem(const std::string& content) {
    return ErrorOf([&] { ImportObj("m.obj", content); });
}

constexpr const char* kSquare = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

TEST(Obj, ASlashAtTheEndOfACornerNamesNothing) {
    const Mesh mesh = ImportObj("m.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nf 1/1 2/1 3/   4\n").at(0).mesh;
    EXPECT_EQ(mesh.getNumFaces(), 2);
    EXPECT_EQ(Corners(mesh, 1), (std::vector<int>{0, 2, 3}));
    EXPECT_EQ(MapCorners(mesh, 1, 0), (std::vector<int>{0, 0, 1}));
}

} // namespace

TEST(Obj, KeepsTheOrderOfVerticesAndFaces) {
    const Mesh m = One("v 0 0 0\nv 1 0 0\nv 9 9 9\nv 0.5 -2.25 3e2\nf 4 2 1\nf 1 2 4\n").mesh;
    ASSERT_EQ(m.getNumVerts(), 4); // the unused one too
    EXPECT_EQ(m.verts[2], Point3(9, 9, 9));
    EXPECT_EQ(m.verts[3], Point3(0.5f, -2.25f, 300.0f));
    EXPECT_EQ(Corners(m, 0), (std::vector<int>{3, 1, 0}));
    EXPECT_EQ(Corners(m, 1), (std::vector<int>{0, 1, 3}));
}

TEST(Obj, PolygonsBecomeFansFromTheirFirstCorner) {
    const Mesh m = One(std::string(kSquare) + "v -1 0.5 0\nf 2 3 4 5 1\n").mesh;
    ASSERT_EQ(m.getNumFaces(), 3);
    EXPECT_EQ(Corners(m, 0), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(Corners(m, 1), (std::vector<int>{1, 3, 4}));
    EXPECT_EQ(Corners(m, 2), (std::vector<int>{1, 4, 0}));
    EXPECT_EQ(m.faces[0].flags & 7u, EDGE_A | EDGE_B);
    EXPECT_EQ(m.faces[1].flags & 7u, EDGE_B);
    EXPECT_EQ(m.faces[2].flags & 7u, EDGE_B | EDGE_C);
}

TEST(Obj, MappingGoesIntoChannelOneWithItsOwnIndices) {
    const Mesh m = One(std::string(kSquare) + "vt 0 0\nvt 0.25 0.75 0.5\nf 1/2 2/1 3/2\nf 1 3 4\n").mesh;
    ASSERT_TRUE(m.mapSupport(1));
    ASSERT_EQ(m.maps.at(1).tv.size(), 3u);
    EXPECT_EQ(m.maps.at(1).tv[1], Point3(0.25f, 0.75f, 0));
    EXPECT_EQ(MapCorners(m, 1, 0), (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(MapCorners(m, 1, 1), (std::vector<int>{2, 2, 2})); // none in the file: one at the origin
    EXPECT_EQ(m.maps.at(1).tv[2], Point3(0, 0, 0));
}

TEST(Obj, ColorsGoIntoChannelZero) {
    const Mesh m = One("v 0 0 0 1 0.5 0.25\nv 1 0 0 0 0 1\nv 0 1 0 0 1 0\nf 1 2 3\n").mesh;
    ASSERT_TRUE(m.mapSupport(0));
    EXPECT_EQ(m.maps.at(0).tv[0], Point3(1, 0.5f, 0.25f));
    EXPECT_EQ(MapCorners(m, 0, 0), (std::vector<int>{0, 1, 2}));
    EXPECT_FALSE(One("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n").mesh.mapSupport(0));
}

TEST(Obj, ObjectsGroupsAndMaterials) {
    const auto meshes = ImportObj("m.obj", std::string("o left\n") + kSquare +
                                               "g top\nusemtl red\nf 1 2 3\nusemtl blue\nf 1 3 4\no right\nv 5 5 5\ng\n"
                                               "usemtl red\nf -1 1 2\n");
    ASSERT_EQ(meshes.size(), 2u);
    EXPECT_EQ(meshes[0].name, "left");
    EXPECT_EQ(meshes[1].name, "right");
    EXPECT_EQ(meshes[0].mesh.getNumVerts(), 4);
    EXPECT_EQ(meshes[0].materials, (std::vector<std::string>{"red", "blue"}));
    EXPECT_EQ(meshes[0].mesh.faces[0].MatID(), 0);
    EXPECT_EQ(meshes[0].mesh.faces[1].MatID(), 1);
    ASSERT_EQ(meshes[0].mesh.faceSets.size(), 1u);
    EXPECT_EQ(meshes[0].mesh.faceSets[0].first, "top");
    EXPECT_EQ(meshes[0].mesh.faceSets[0].second.NumberSet(), 2);
    // The second object has the vertices that it uses, in the file's order.
    ASSERT_EQ(meshes[1].mesh.getNumVerts(), 3);
    EXPECT_EQ(meshes[1].mesh.verts[2], Point3(5, 5, 5));
    EXPECT_EQ(Corners(meshes[1].mesh, 0), (std::vector<int>{2, 0, 1}));
    EXPECT_TRUE(meshes[1].mesh.faceSets.empty());
}

TEST(Obj, WithoutObjectsTheFileGivesTheName) {
    TempFolder folder;
    const auto meshes = ImportMeshes(folder.Write("deer.obj", std::string(kSquare) + "f 1 2 3\n"));
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes[0].name, "deer");
}

TEST(Obj, SmoothingComesFromTheFilesGroups) {
    const Mesh m = One(std::string(kSquare) + "s 3\nf 1 2 3\ns off\nf 1 3 4\n").mesh;
    EXPECT_EQ(m.faces[0].smGroup, 4u);
    EXPECT_EQ(m.faces[1].smGroup, 0u);
}

TEST(Obj, SmoothingThatIsNoNumberIsNone) {
    // A carriage return alone ends no line: what follows it is no vertex.
    const Mesh m = One(std::string(kSquare) + "s 4 # four\nf 1 2 3\ns 4\rv 3e331x\nf 1 3 4\ns\n").mesh;
    EXPECT_EQ(m.getNumVerts(), 4);
    EXPECT_EQ(m.faces[0].smGroup, 8u);
    EXPECT_EQ(m.faces[1].smGroup, 0u);
}

TEST(Obj, WithoutGroupsNormalsTellWhatIsSmooth) {
    const std::string bent = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 1\n";
    const Mesh smooth = One(bent + "vn 0 0 1\nf 1//1 2//1 3//1\nf 1//1 3//1 4//1\n").mesh;
    EXPECT_EQ(smooth.faces[0].smGroup, smooth.faces[1].smGroup);
    const Mesh sharp = One(bent + "vn 0 0 1\nvn 0 1 0\nf 1//1 2//1 3//1\nf 1//2 3//2 4//2\n").mesh;
    EXPECT_EQ(sharp.faces[0].smGroup, 1u);
    EXPECT_EQ(sharp.faces[1].smGroup, 2u);
    const Mesh without = One(bent + "f 1 2 3\nf 1 3 4\n").mesh;
    EXPECT_EQ(without.faces[0].smGroup, 1u);
    EXPECT_EQ(without.faces[1].smGroup, 1u);
}

TEST(Obj, SaysWhatIsWrongAndWhere) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "m.obj: has no faces, expected at least one"},
        {"v 0 0 0\n", "m.obj: has no faces, expected at least one"},
        {"v 0 0\n", "m.obj:1: 2 numbers after 'v', expected 3 to 7"},
        {"v 0 0 zero\n", "m.obj:1: 'zero' is no number, expected numbers after 'v'"},
        {"v 0 nan 0\n", "m.obj:1: position is not finite, expected three finite numbers after 'v'"},
        {"\nv 0 inf 0\n", "m.obj:2: position is not finite, expected three finite numbers after 'v'"},
        {"v 1e39 0 0\n", "m.obj:1: position is not finite, expected three finite numbers after 'v'"},
        {"v 0 0 0\nf 1 1 2\n", "m.obj:2: vertex index 2 is out of range, expected 1 .. 1"},
        {"v 0 0 0\nf 1 1 0\n", "m.obj:2: vertex index 0 is out of range, expected 1 .. 1"},
        {"v 0 0 0\nf 1 1 -2\n", "m.obj:2: vertex index -2 is out of range, expected -1 .. -1"},
        {"v 0 0 0\nf 1/1 1 1\n", "m.obj:2: mapping vertex index 1 is out of range, expected none, the file has no such "
                                 "entries"},
        {"v 0 0 0\nvn 0 0 1\nf 1//1 1//2 1//1\n", "m.obj:3: normal index 2 is out of range, expected 1 .. 1"},
        {"v 0 0 0\nf 1 1\n", "m.obj:2: face with 2 corners, expected 3 to 255"},
        {"v 0 0 0\nf 1 x 1\n", "m.obj:2: 'x' is no face corner, expected v, v/vt, v//vn or v/vt/vn"},
        {"v 0 0 0\nf 1/1/1/1 1 1\n", "m.obj:2: '1/1/1/1' is no face corner, expected v, v/vt, v//vn or v/vt/vn"},
        {"v 0 0 0\nf 1/ 1 1//\n", "m.obj:2: '1//' is no face corner, expected v, v/vt, v//vn or v/vt/vn"},
        {"vt\n", "m.obj:1: 0 numbers after 'vt', expected 1 to 3"},
    };
    for (const auto& [content, message] : cases) EXPECT_EQ(Problem(content), message) << content;
}

TEST(Obj, FacesMayPointAhead) {
    EXPECT_EQ(One("f 1 2 3\nv 0 0 0\nv 1 0 0\nv 0 1 0\n").mesh.getNumFaces(), 1);
}

TEST(Obj, TakesWindowsLineEndsCommentsAndUnknownLines) {
    const Mesh m =
        One("# a comment\r\nmtllib none.mtl\r\nv 0 0 0 # here\r\nv 1 0 0\r\n\tv 0 1 0\r\nl 1 2\r\nt 1 99999999\r\n"
            "f 1 2 3 # there\r\n")
            .mesh;
    EXPECT_EQ(m.getNumVerts(), 3);
    EXPECT_EQ(m.getNumFaces(), 1);
}

TEST(Obj, DegenerateFacesAreKeptAndCounted) {
    const Mesh m = One(std::string(kSquare) + "v 2 0 0\nf 1 1 2\nf 1 2 5\nf 1 2 3\n").mesh;
    EXPECT_EQ(m.getNumFaces(), 3);
    EXPECT_EQ(CountDegenerateFaces(m), 2);
}

TEST(Obj, ScaleAndUpAxisAreAppliedOnce) {
    TempFolder folder;
    const std::string path = folder.Write("a.obj", "v 1 2 3\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_EQ(ImportMeshes(path, {2.0f, UpAxis::kZ})[0].mesh.verts[0], Point3(2, 4, 6));
    EXPECT_EQ(ImportMeshes(path, {2.0f, UpAxis::kY})[0].mesh.verts[0], Point3(2, -6, 4));
    EXPECT_EQ(ErrorOf([&] {
                  ImportMeshes(path, {1e38f * 3, UpAxis::kZ});
              }),
              path + ": vertex 1 of 'a' is too far away, expected finite positions after scaling");
}

TEST(ImportFiles, MissingFilesAndUnknownForms) {
    TempFolder folder;
    EXPECT_EQ(ErrorOf([&] { ImportMeshes(folder.Path() + "/none.obj"); }), folder.Path() + "/none.obj: no such file");
    EXPECT_EQ(ErrorOf([&] { ImportMeshes("m.blend"); }),
              "m.blend: unknown mesh form '.blend', expected .obj, .ply or .3ds");
    std::filesystem::create_directory(folder.Path() + "/folder.obj");
    EXPECT_EQ(ErrorOf([&] { ImportMeshes(folder.Path() + "/folder.obj"); }), folder.Path() + "/folder.obj: not a file");
}
