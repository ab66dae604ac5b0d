// .gltf and .glb files: meshes, nodes, skins, keys, views, materials.

#include <cmath>

#include "gltf_builder.h"
#include "import/imported_scene.h"
#include "import_helpers.h"

using namespace host;
using namespace import_test;

namespace {

ImportedScene Read(const std::string& text) {
    return ImportGltf("m.gltf", text);
}

TEST(Gltf, SplitVerticesAreWeldedAndMappingKeepsItsOwnIndices) {
    GltfText g = SplitSquare();
    const int uv = g.Floats("VEC2", 2, {0, 1, 1, 1, 1, 0, 0.5f, 1, 1, 0, 0, 0});
    const ImportedScene scene = Read(g.Text(OneMesh("\"POSITION\":0,\"TEXCOORD_0\":" + std::to_string(uv))));
    const Mesh& mesh = scene.meshes.at(0).mesh;
    EXPECT_EQ(mesh.getNumVerts(), 4);
    EXPECT_EQ(Corners(mesh, 0), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Corners(mesh, 1), (std::vector<int>{0, 2, 3}));
    // v goes up: 1 of the file is 0.
    EXPECT_EQ(mesh.maps.at(1).tv.size(), 5u);
    EXPECT_EQ(mesh.maps.at(1).tv[0], Point3(0, 0, 0));
    EXPECT_EQ(MapCorners(mesh, 1, 1), (std::vector<int>{3, 2, 4}));
    EXPECT_EQ(mesh.maps.at(1).tv[3], Point3(0.5f, 0, 0));
    // Without normals faces are flat.
    EXPECT_TRUE(mesh.specNormals.IsEmpty());
    EXPECT_EQ(mesh.faces[0].smGroup, 0u);
}

TEST(Gltf, NormalsColoursAndSeveralMappings) {
    GltfText g = SplitSquare();
    const std::string n = std::to_string(g.Points({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}));
    const std::string c = std::to_string(g.Add<uint8_t>(
        5121, "VEC4", 4, {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 51, 255, 0, 0, 255, 0, 0, 255, 51, 0, 0, 0, 255},
        ",\"normalized\":true"));
    const std::string uv = std::to_string(g.Floats("VEC2", 2, std::vector<float>(12, 0.25f)));
    const ImportedScene scene = Read(g.Text(OneMesh("\"POSITION\":0,\"NORMAL\":" + n + ",\"COLOR_0\":" + c +
                                                    ",\"TEXCOORD_0\":" + uv + ",\"TEXCOORD_2\":" + uv)));
    const Mesh& mesh = scene.meshes.at(0).mesh;
    EXPECT_EQ(mesh.specNormals.normals.size(), 1u);
    EXPECT_EQ(mesh.CornerNormal(1, 2), Point3(0, 0, 1));
    EXPECT_NE(mesh.faces[0].smGroup, 0u);
    EXPECT_EQ(mesh.faces[0].smGroup, mesh.faces[1].smGroup);
    const MeshMap& colors = mesh.maps.at(MAP_VERTCOLOR);
    EXPECT_EQ(colors.tv[size_t(colors.tf[0].t[1])], Point3(0, 1, 0));
    const MeshMap& alphas = mesh.maps.at(MAP_ALPHA);
    EXPECT_FLOAT_EQ(alphas.tv[size_t(alphas.tf[1].t[1])].x, 0.2f);
    EXPECT_EQ(mesh.maps.at(1).tv[0], Point3(0.25f, 0.75f, 0));
    EXPECT_EQ(mesh.maps.at(2).tv[0], Point3());
    EXPECT_EQ(mesh.maps.at(3).tv[0], Point3(0.25f, 0.75f, 0));
}

TEST(Gltf, StripsAndFansKeepTheirSide) {
    GltfText g;
    g.Points({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0});
    g.Points({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
    const std::string meshes = ",\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":0},\"mode\":5}]},"
                               "{\"primitives\":[{\"attributes\":{\"POSITION\":1},\"mode\":6}]}],"
                               "\"nodes\":[{\"mesh\":0},{\"mesh\":1}]";
    const ImportedScene scene = Read(g.Text(meshes));
    ASSERT_EQ(scene.meshes.size(), 2u);
    for (const SceneMesh& m : scene.meshes) {
        ASSERT_EQ(m.mesh.getNumFaces(), 2);
        for (int f = 0; f < 2; ++f) EXPECT_EQ(m.mesh.FaceNormal(f), Point3(0, 0, 1));
    }
}

TEST(Gltf, LinesBecomeShapesAndPointsAreLeftOut) {
    GltfText g;
    g.Points({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
    const auto mode = [](int m) { return "{\"attributes\":{\"POSITION\":0},\"mode\":" + std::to_string(m) + "}"; };
    const ImportedScene scene = Read(g.Text(",\"meshes\":[{\"primitives\":[" + mode(0) + "," + mode(1) + "," + mode(2) +
                                            "," + mode(3) + "]}],\"nodes\":[{\"mesh\":0}]"));
    const auto& splines = scene.meshes.at(0).shape->splines;
    ASSERT_EQ(splines.size(), 4u);
    EXPECT_EQ(splines[0].KnotCount(), 2);
    EXPECT_EQ(splines[1].GetKnotPoint(0), Point3(1, 1, 0));
    EXPECT_TRUE(splines[2].closed);
    EXPECT_EQ(splines[2].KnotCount(), 4);
    EXPECT_FALSE(splines[3].closed);
    EXPECT_EQ(splines[3].KnotCount(), 4);
    EXPECT_EQ(scene.notes, (std::vector<std::string>{"points of mesh 0 are left out"}));
}

TEST(Gltf, ChangedElementsReplaceThoseOfTheBuffer) {
    GltfText g;
    g.Points({0, 0, 0, 1, 0, 0, 1, 1, 0});
    g.Shorts({2});
    g.Points({7, 8, 9});
    std::string text = g.Text(OneMesh("\"POSITION\":0"));
    const std::string sparse = ",\"sparse\":{\"count\":1,\"indices\":{\"bufferView\":1,\"componentType\":5123},"
                               "\"values\":{\"bufferView\":2}}}";
    text.replace(text.find("\"VEC3\"}"), 7, "\"VEC3\"" + sparse);
    EXPECT_EQ(Read(text).meshes.at(0).mesh.verts.at(2), Point3(7, 8, 9));
}

TEST(Gltf, NodesHangBelowOthersAndTurnUp) {
    GltfText g = SplitSquare();
    const float half = std::sqrt(0.5f);
    const std::string turn = "[0,0," + std::to_string(half) + "," + std::to_string(half) + "]";
    ImportedScene scene =
        Read(g.Text(",\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":0}}]}],\"nodes\":[{\"name\":\"low\","
                    "\"mesh\":0,\"scale\":[2,1,1]},{\"name\":\"high\",\"children\":[0],\"translation\":[10,0,0],"
                    "\"rotation\":" +
                    turn + "}],\"scenes\":[{\"nodes\":[1]}]"));
    ASSERT_EQ(scene.nodes.size(), 2u);
    EXPECT_EQ(scene.nodes[1].name, "low");
    EXPECT_EQ(scene.nodes[1].parent, 0);
    // Turned about Z to the left: X goes to Y.
    const Point3 p = Point3(1, 0, 0) * WorldMatrices(scene)[1];
    EXPECT_NEAR(p.x, 10, 1e-5);
    EXPECT_NEAR(p.y, 2, 1e-5);
    PlaceScene("m.gltf", scene, {100, UpAxis::kY});
    const Point3 q = scene.meshes[0].mesh.verts[1] * WorldMatrices(scene)[1];
    EXPECT_NEAR(q.x, 1000, 1e-3);
    EXPECT_NEAR(q.y, 0, 1e-3);
    EXPECT_NEAR(q.z, 200, 1e-3);
}

TEST(Gltf, CamerasLookDownAfterTurningUp) {
    GltfText g;
    ImportedScene scene = Read(g.Text(
        ",\"cameras\":[{\"type\":\"perspective\",\"perspective\":{\"yfov\":0.5,\"aspectRatio\":2,\"znear\":0.25}}],"
        "\"extensionsUsed\":[\"KHR_lights_punctual\"],\"extensions\":{\"KHR_lights_punctual\":{\"lights\":["
        "{\"type\":\"spot\",\"intensity\":4,\"color\":[1,0.5,0],\"spot\":{\"innerConeAngle\":0.1,\"outerConeAngle\":"
        "0.2}}]}},\"nodes\":[{\"camera\":0,\"translation\":[0,0,5],\"children\":[1]},{\"extensions\":{"
        "\"KHR_lights_punctual\":{\"light\":0}},\"translation\":[0,1,0]}]"));
    ASSERT_EQ(scene.cameras.size(), 1u);
    EXPECT_FLOAT_EQ(scene.cameras[0].fovY, 0.5f);
    EXPECT_FLOAT_EQ(scene.cameras[0].aspect, 2);
    ASSERT_EQ(scene.lights.size(), 1u);
    EXPECT_EQ(scene.lights[0].type, SPOT_LGT);
    EXPECT_NEAR(scene.lights[0].hotspot, 0.2 * 180 / M_PI, 1e-4);
    EXPECT_NEAR(scene.lights[0].falloff, 0.4 * 180 / M_PI, 1e-4);
    // 4 candela: a metre away 4 / pi of what shows white as white.
    EXPECT_EQ(scene.lights[0].decay, DECAY_INVERSE_SQUARE);
    EXPECT_FLOAT_EQ(scene.lights[0].decayStart, 0.01f);
    EXPECT_NEAR(scene.lights[0].multiplier * 0.01f * 0.01f, 4 / M_PI, 1e-5);
    PlaceScene("m.gltf", scene, {2, UpAxis::kY});
    EXPECT_FLOAT_EQ(scene.lights[0].decayStart, 0.02f);
    const std::vector<Matrix3> worlds = WorldMatrices(scene);
    const auto near = [](const Point3& a, const Point3& b) { EXPECT_LT(Length(a - b), 1e-5f); };
    near(worlds[0].GetTrans(), {0, -10, 0});
    near(VectorTransform(Point3(0, 0, -1), worlds[0]), {0, 1, 0});
    near(VectorTransform(Point3(0, 1, 0), worlds[0]), {0, 0, 1});
    near(worlds[1].GetTrans(), {0, -10, 2});
    near(VectorTransform(Point3(0, 0, -1), worlds[1]), {0, 1, 0});
    EXPECT_FLOAT_EQ(scene.cameras[0].nearClip, 0.5f);
}

TEST(Gltf, SkinsAndMorphTargetsKeepVerticesApartThatMoveApart) {
    GltfText g = SplitSquare();
    const std::string joints = std::to_string(g.Add<uint8_t>(5121, "VEC4", 4, std::vector<uint8_t>(24, 0)));
    std::vector<float> w(24, 0.0f);
    for (size_t v = 0; v < 6; ++v) w[4 * v] = v == 3 ? 0.5f : 1.0f; // the second copy of vertex 0 weighs less
    const std::string weights = std::to_string(g.Floats("VEC4", 4, w));
    const std::string binds = std::to_string(g.Floats("MAT4", 16, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -3, 0, 0, 1}));
    std::vector<float> d(18, 0.0f);
    d[2] = d[11] = 4;
    const std::string target = std::to_string(g.Points(d));
    const ImportedScene scene =
        Read(g.Text(",\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":0,\"JOINTS_0\":" + joints +
                    ",\"WEIGHTS_0\":" + weights + "},\"targets\":[{\"POSITION\":" + target +
                    "}]}],\"weights\":[0.25],\"extras\":{\"targetNames\":[\"up\"]}}],\"skins\":[{\"joints\":[1],"
                    "\"inverseBindMatrices\":" +
                    binds + "}],\"nodes\":[{\"mesh\":0,\"skin\":0},{\"name\":\"bone\",\"translation\":[3,0,0]}]"));
    const SceneMesh& m = scene.meshes.at(0);
    EXPECT_EQ(m.mesh.getNumVerts(), 5);
    EXPECT_EQ(m.influences.size(), 5u);
    ASSERT_EQ(m.morphs.size(), 1u);
    EXPECT_EQ(m.morphs[0].name, "up");
    EXPECT_FLOAT_EQ(m.morphs[0].weight, 0.25f);
    EXPECT_EQ(m.morphs[0].deltas.at(0), Point3(0, 0, 4));
    EXPECT_EQ(m.morphs[0].deltas.at(1), Point3());
    EXPECT_EQ(scene.skins.at(0).inverseBinds.at(0).GetTrans(), Point3(-3, 0, 0));
    EXPECT_EQ(scene.skins.at(0).joints.at(0), 1);
}

TEST(Gltf, AnimationsAreReadByKindAndName) {
    GltfText g = SplitSquare();
    const std::string times = std::to_string(g.Floats("SCALAR", 1, {0, 2}));
    const std::string cubic = std::to_string(g.Points({1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0, 5, 0, 0, 6, 0, 0}));
    const std::string turns = std::to_string(g.Floats("VEC4", 4, {0, 0, 0, 1, 1, 0, 0, 0}));
    const auto animation = [&](const char* name, const std::string& output, const char* kind, const char* path) {
        return std::string("{\"name\":\"") + name + "\",\"samplers\":[{\"input\":" + times + ",\"output\":" + output +
               ",\"interpolation\":\"" + kind + "\"}],\"channels\":[{\"sampler\":0,\"target\":{\"node\":0,\"path\":\"" +
               path + "\"}}]}";
    };
    const std::string text = g.Text(
        OneMesh("\"POSITION\":0") + ",\"animations\":[" + animation("walk", cubic, "CUBICSPLINE", "translation") + "," +
        animation("turn", turns, "STEP", "rotation") + "," + animation("jump", "0", "LINEAR", "translation") + "]");
    const ImportedNode all = Read(text).nodes.at(0);
    EXPECT_EQ(all.positions.kind, TrackKind::kCubic);
    ASSERT_EQ(all.positions.keys.size(), 2u);
    EXPECT_EQ(all.positions.keys[0].in, Point3(1, 0, 0));
    EXPECT_EQ(all.positions.keys[0].value, Point3(2, 0, 0));
    EXPECT_EQ(all.positions.keys[1].out, Point3(6, 0, 0));
    EXPECT_EQ(all.rotations.kind, TrackKind::kStep);
    EXPECT_EQ(all.rotations.keys.at(1).value, Quat(-1, 0, 0, 0));
    const ImportedNode jump = ImportGltf("m.gltf", text, "jump").nodes.at(0);
    EXPECT_EQ(jump.positions.kind, TrackKind::kLinear);
    EXPECT_TRUE(jump.rotations.IsEmpty());
    EXPECT_EQ(ErrorOf([&] { ImportGltf("m.gltf", text, "wlak"); }),
              "m.gltf: has no animation 'wlak', expected one like 'walk', 'turn', 'jump'");
}

TEST(Gltf, MaterialsInTheStandardOnesTerms) {
    GltfText g = SplitSquare();
    const ImportedScene scene = Read(g.Text(
        OneMesh("\"POSITION\":0", ",\"material\":1") +
        ",\"images\":[{\"uri\":\"data:image/png;base64,iVBORw0KGgo=\"},{\"uri\":\"none.png\"}],\"textures\":["
        "{\"source\":0,\"sampler\":0},{\"source\":1}],\"samplers\":[{\"wrapS\":33648,\"wrapT\":33071}],\"materials\":[{"
        "},{\"name\":\"red\",\"pbrMetallicRoughness\":{"
        "\"baseColorFactor\":[1,0,0,0.5],\"metallicFactor\":0,\"roughnessFactor\":0.25,\"baseColorTexture\":{\"index\":"
        "0,\"texCoord\":1,\"extensions\":{\"KHR_texture_transform\":{\"scale\":[2,3],\"offset\":[0.5,0.25]}}}},"
        "\"alphaMode\":\"BLEND\",\"emissiveFactor\":[0.5,0,0],\"emissiveTexture\":{\"index\":1}}]"));
    EXPECT_EQ(scene.meshes.at(0).materials, (std::vector<int>{1}));
    const ImportedMaterial& m = scene.materials.at(1);
    EXPECT_EQ(m.name, "red");
    EXPECT_EQ(m.diffuse, Color(1, 0, 0));
    EXPECT_FLOAT_EQ(m.opacity, 0.5f);
    EXPECT_FLOAT_EQ(m.glossiness, 0.75f);
    EXPECT_FLOAT_EQ(m.selfIllum, 0.5f);
    ASSERT_EQ(m.maps.size(), 1u);
    EXPECT_EQ(m.maps[0].channel, 2);
    EXPECT_EQ(m.maps[0].wrapU, kWrapMirror);
    EXPECT_EQ(m.maps[0].wrapV, kWrapClamp);
    EXPECT_FLOAT_EQ(m.maps[0].tile[1], 3);
    EXPECT_FLOAT_EQ(m.maps[0].offset[0], -0.5f);
    EXPECT_FLOAT_EQ(m.maps[0].offset[1], 2.25f);
    EXPECT_EQ(scene.images.at(0).bytes, "\x89PNG\r\n\x1a\n");
    EXPECT_EQ(scene.notes, (std::vector<std::string>{"picture 'none.png' is not there in the file's own folder"}));
}

TEST(Gltf, AlphaCountsAsTheFileSays) {
    const auto material = [](const std::string& more) {
        GltfText g = SplitSquare();
        return Read(g.Text(
                        OneMesh("\"POSITION\":0", ",\"material\":0") +
                        ",\"images\":[{\"uri\":\"data:image/png;base64,iVBORw0KGgo=\"}],\"textures\":[{\"source\":0}],"
                        "\"materials\":[{\"pbrMetallicRoughness\":{\"baseColorFactor\":[1,1,1,0.25],"
                        "\"baseColorTexture\":{\"index\":0}}" +
                        more + "}]"))
            .materials.at(0);
    };
    const ImportedMaterial opaque = material("");
    EXPECT_EQ(opaque.opacity, 1);
    EXPECT_EQ(opaque.opacityCutoff, 0);
    EXPECT_FALSE(opaque.alphaOfDiffuse || opaque.isCoverage);
    EXPECT_TRUE(opaque.timesMaps);
    const ImportedMaterial blend = material(",\"alphaMode\":\"BLEND\",\"alphaCutoff\":0.75");
    EXPECT_EQ(blend.opacity, 0.25f);
    EXPECT_EQ(blend.opacityCutoff, 0);
    EXPECT_TRUE(blend.alphaOfDiffuse && blend.isCoverage);
    const ImportedMaterial mask = material(",\"alphaMode\":\"MASK\",\"alphaCutoff\":0.75");
    EXPECT_EQ(mask.opacity, 0.25f);
    EXPECT_EQ(mask.opacityCutoff, 0.75f);
    EXPECT_TRUE(mask.alphaOfDiffuse && mask.isCoverage);
    EXPECT_EQ(material(",\"alphaMode\":\"MASK\"").opacityCutoff, 0.5f);
    // Nothing is less than 0: all of it is there.
    const ImportedMaterial all = material(",\"alphaMode\":\"MASK\",\"alphaCutoff\":0");
    EXPECT_EQ(all.opacity, 1);
    EXPECT_FALSE(all.alphaOfDiffuse || all.isCoverage);
}

TEST(Gltf, MeshesOfOneMaterialHaveVertexColoursOrNone) {
    GltfText g = SplitSquare();
    const std::string colors = std::to_string(g.Floats("VEC4", 4, std::vector<float>(6 * 4, 0.5f)));
    const auto mesh = [](const std::string& attributes, int material) {
        return "{\"primitives\":[{\"attributes\":{\"POSITION\":0" + attributes +
               "},\"material\":" + std::to_string(material) + "}]}";
    };
    const ImportedScene scene =
        Read(g.Text(",\"meshes\":[" + mesh(",\"COLOR_0\":" + colors, 0) + "," + mesh("", 0) + "," + mesh("", 1) + "," +
                    mesh(",\"COLOR_0\":" + colors, 2) +
                    "],\"nodes\":[{\"mesh\":0},{\"mesh\":1},{\"mesh\":2},{\"mesh\":3}],\"materials\":[{\"alphaMode\":"
                    "\"BLEND\"},{},{}]"));
    EXPECT_TRUE(scene.materials.at(0).vertexColors && scene.materials[0].vertexAlphas);
    EXPECT_FALSE(scene.materials.at(1).vertexColors || scene.materials[1].vertexAlphas);
    EXPECT_TRUE(scene.materials.at(2).vertexColors);
    EXPECT_FALSE(scene.materials[2].vertexAlphas) << "what is opaque has no use for alpha";
    EXPECT_EQ(scene.meshes.at(0).mesh.maps.at(MAP_ALPHA).tv.at(0), Point3(0.5f, 0.5f, 0.5f));
    for (const int channel : {MAP_VERTCOLOR, MAP_ALPHA}) {
        const MeshMap& white = scene.meshes.at(1).mesh.maps.at(channel);
        EXPECT_EQ(white.tv, std::vector<Point3>(1, Point3(1, 1, 1)));
        EXPECT_EQ(white.tf.size(), 2u);
        EXPECT_FALSE(scene.meshes.at(2).mesh.maps.contains(channel));
    }
}

TEST(Gltf, MovingTheSceneMovesWhatIsSeen) {
    // A point of a mesh in the world, before and after: the whole change applied to it.
    uint32_t seed = 1;
    const auto next = [&] { return float((seed = seed * 1664525u + 1013904223u) >> 8) / float(1 << 24) * 2 - 1; };
    const auto point = [&] { return Point3(next(), next(), next()); };
    for (int round = 0; round < 50; ++round) {
        ImportedScene scene;
        scene.meshes.resize(1);
        scene.meshes[0].mesh.verts = {point()};
        for (int i = 0; i < 4; ++i) {
            ImportedNode node;
            node.parent = i - 1;
            node.position = point();
            node.scale = Point3(1, 1, 1) + point() * 0.5f;
            node.rotation = Normalize(Quat(next(), next(), next(), next()));
            if (i == 1) node.matrix = LocalMatrix(node);
            if (i == 2) node.light = 0;
            if (i == 2) node.scale = {1, 1, 1};
            scene.nodes.push_back(node);
        }
        scene.lights.resize(1);
        scene.nodes[3].mesh = 0;
        const ImportOptions options{3, UpAxis::kY};
        const Point3 before = scene.meshes[0].mesh.verts[0] * WorldMatrices(scene)[3] * ImportMatrix(options);
        PlaceScene("m", scene, options);
        const Point3 after = scene.meshes[0].mesh.verts[0] * WorldMatrices(scene)[3];
        EXPECT_LT(Length(after - before), 1e-4f * (1 + Length(before)));
    }
}

} // namespace
