// What is wrong with .gltf and .glb files is said in one line.

#include "gltf_builder.h"
#include "import/imported_scene.h"
#include "import_helpers.h"

using namespace host;
using namespace import_test;

namespace {

std::string Fault(const std::string& text) {
    return ErrorOf([&] { ImportGltf("m.gltf", text); });
}

TEST(GltfErrors, NumbersOutsideTheirLists) {
    GltfText g = SplitSquare();
    const std::string indices = ",\"indices\":" + std::to_string(g.Shorts({0, 1, 9}));
    EXPECT_EQ(Fault(g.Text(OneMesh("\"POSITION\":0", indices))),
              "m.gltf: mesh 'square' has vertex index 9, which is out of range, expected 0 .. 5");
    EXPECT_EQ(Fault(g.Text(OneMesh("\"POSITION\":7"))),
              "m.gltf: mesh 'square' POSITION names accessor 7, expected 0 .. 1");
    EXPECT_EQ(Fault(g.Text(OneMesh("\"NORMAL\":0"))),
              "m.gltf: mesh 'square' has no positions, expected the attribute POSITION");
    EXPECT_EQ(Fault(g.Text(OneMesh("\"POSITION\":0,\"TEXCOORD_0\":0"))),
              "m.gltf: mesh 'square' TEXCOORD has elements of another kind, expected 2 numbers each");
    EXPECT_EQ(Fault(g.Text(",\"nodes\":[{\"mesh\":3}]")), "m.gltf: a node names mesh 3, expected 0 .. -1");
}

TEST(GltfErrors, WhatAFileClaims) {
    GltfText g;
    g.Add<float>(5126, "VEC3", 3, {0, 0, 0});
    std::string text = g.Text(OneMesh("\"POSITION\":0"));
    const auto claiming = [](std::string text, int elements) {
        const std::string count = "\"count\":";
        return text.insert(text.find(count) + count.size() + 1, std::to_string(elements))
            .erase(text.find(count) + count.size(), 1);
    };
    EXPECT_EQ(Fault(claiming(text, 2)),
              "m.gltf: mesh 'square' POSITION reaches beyond its buffer, expected more bytes");
    EXPECT_EQ(Fault(claiming(text, 900000000)),
              "m.gltf: mesh 'square' POSITION has 900000000 elements, which is too much");
    const std::string view = "\"bufferView\":0,";
    EXPECT_EQ(Fault(claiming(text.erase(text.find(view), view.size()), 9000000)),
              "m.gltf: mesh 'square' POSITION has 9000000 elements, which is too much");
}

TEST(GltfErrors, TreesOnly) {
    EXPECT_EQ(Fault(GltfText().Text(",\"nodes\":[{\"children\":[1]},{\"children\":[0]}],\"scenes\":[{\"nodes\":[0]}]")),
              "m.gltf: node 0 hangs below two nodes or below itself, expected a tree");
    std::string chain = ",\"nodes\":[{\"children\":[1]}";
    for (int i = 1; i < 300; ++i) chain += ",{\"children\":[" + std::to_string(i + 1) + "]}";
    EXPECT_EQ(Fault(GltfText().Text(chain + ",{}],\"scenes\":[{\"nodes\":[0]}]")),
              "m.gltf: has nodes more than 256 levels deep");
}

TEST(GltfErrors, FormsThatCannotBeRead) {
    EXPECT_EQ(Fault("{\"asset\":{\"version\":\"1.0\"}}"), "m.gltf: is glTF version '1.0', expected version 2");
    EXPECT_EQ(Fault("{\"asset\":{\"version\":\"2.0\"},\"extensionsRequired\":[\"KHR_draco_mesh_compression\"]}"),
              "m.gltf: needs the extension 'KHR_draco_mesh_compression', which cannot be read, expected a file without "
              "it");
    EXPECT_EQ(Fault("{\"asset\":{\"version\":\"2.0\"}}"), "m.gltf: has no faces and no lines, expected at least one");
    EXPECT_EQ(
        Fault("{\"asset\":{\"version\":\"2.0\",\"extras\":" + std::string(5000, '[') + std::string(5000, ']') + "}}"),
        "m.gltf: is nested too deeply, expected at most 64 levels");
    EXPECT_TRUE(Fault("no json").starts_with("m.gltf: cannot be read as glTF ("));
    EXPECT_EQ(Fault("glTF"), "m.gltf: ends too early, expected a .glb file's header");
    EXPECT_EQ(Fault("glTF" + Bytes(uint32_t(2)) + Bytes(uint32_t(100)) + Bytes(uint32_t(4)) + "JSON"),
              "m.gltf: ends too early, expected 100 bytes, it has 20");
}

TEST(GltfErrors, OtherFilesOnlyFromTheOwnFolder) {
    const TempFolder folder;
    std::filesystem::create_directories(folder.Path() + "/inner/more");
    const std::string points = Bytes(std::array<float, 9>{0, 0, 0, 1, 0, 0, 0, 1, 0});
    folder.Write("outer.bin", points);
    folder.Write("inner/own file.bin", points);
    folder.Write("inner/more/own.bin", points);
    std::filesystem::create_symlink("../outer.bin", folder.Path() + "/inner/link.bin");
    const auto read = [&](const std::string& uri) {
        const std::string file =
            folder.Write("inner/m.gltf",
                         "{\"asset\":{\"version\":\"2.0\"},\"buffers\":[{\"byteLength\":36,\"uri\":\"" + uri +
                             "\"}],\"bufferViews\":[{\"buffer\":0,\"byteLength\":36}],\"accessors\":[{\"bufferView\":"
                             "0,\"componentType\":5126,\"count\":3,\"type\":\"VEC3\"}]" +
                             OneMesh("\"POSITION\":0") + "}");
        return ErrorOf([&] { ImportSceneFile(file); });
    };
    EXPECT_EQ(read("own%20file.bin"), "");
    EXPECT_EQ(read("more/own.bin"), "");
    for (const std::string& uri : {std::string("../outer.bin"), std::string("link.bin"), folder.Path() + "/outer.bin",
                                   std::string("more/../../outer.bin")})
        EXPECT_EQ(read(uri), folder.Path() + "/inner/m.gltf: cannot be read as glTF (File not found : " + uri + ")");
}

} // namespace
