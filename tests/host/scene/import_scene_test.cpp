// .gltf files in scenes: nodes, modifiers, materials, cameras, keys.

#include <cmath>
#include <fstream>

#include "../import/gltf_builder.h"
#include "../materials/flat_context.h"
#include "core/camera.h"
#include "materials/bitmap_map.h"
#include "materials/map_wrap.h"
#include "materials/multiply_map.h"
#include "modifiers/morph.h"
#include "modifiers/skin.h"
#include "scene_fixture.h"
#include "shapes/shape_builder.h"

using namespace host;
using scene_test::SceneTest;

namespace {

class ImportSceneTest : public SceneTest {
protected:
    ImportSceneTest() {
        for (const char* const name : {"skinned.glb", "views.gltf"}) {
            std::ifstream in(std::string(VELMAR_SOURCE_DIR "/fuzz/corpus/gltf/") + name, std::ios::binary);
            Write(name, std::string(std::istreambuf_iterator<char>(in), {}));
        }
    }
    Mesh MeshAt(const char* name, double seconds) {
        const TimeValue t = TimeValue(seconds * TIME_TICKSPERSEC);
        return static_cast<TriObject*>(NodeOf(name)->EvalWorldState(t).obj)->mesh;
    }
    Point3 WorldVertex(const char* name, int vertex, double seconds) {
        const TimeValue t = TimeValue(seconds * TIME_TICKSPERSEC);
        return MeshAt(name, seconds).verts[size_t(vertex)] * NodeOf(name)->GetObjectTM(t);
    }
};

void ExpectNear(const Point3& a, const Point3& b, float tolerance = 1e-4f) {
    EXPECT_LT(Length(a - b), tolerance) << a.x << " " << a.y << " " << a.z;
}

TEST_F(ImportSceneTest, SkinsAndMorphTargetsMoveTheMeshInTime) {
    const LoadedScene scene = Load("[scene]\nimport = [\"skinned.glb\"]\n");
    ASSERT_EQ(scene.meshes.size(), 1u);
    Node* const sail = NodeOf("sail");
    ASSERT_EQ(sail->NumModifiers(), 2);
    EXPECT_EQ(sail->GetModifier(0)->GetName(), "skin");
    EXPECT_EQ(sail->GetModifier(1)->GetName(), "morph");
    EXPECT_EQ(dynamic_cast<MorphModifier*>(sail->GetModifier(1))->Target(0).name, "bulge");
    // The file's (x, y, z) is (x, -z, y). At 0 s the bulge is held at 0 and the first joint is at rest.
    ExpectNear(WorldVertex("sail", 0, 0), {0, 0, 0});
    // At 1 s the bulge counts whole and the first joint has turned by 90 degrees about the file's Z.
    ExpectNear(WorldVertex("sail", 0, 1), {0, -0.5f, 0});
    // Before the step at half a second nothing bulges; the joint has turned by 45 degrees at that time.
    ExpectNear(WorldVertex("sail", 0, 0.49), {0, 0, 0}, 1e-3f);
    const Matrix3 tip = NodeOf("tip")->GetNodeTM(TIME_TICKSPERSEC);
    EXPECT_NEAR(Length(tip.GetRow(0)), 1, 1e-4);
}

TEST_F(ImportSceneTest, CubicKeysFollowTheirCurve) {
    Load("[scene]\nimport = [{ file = \"skinned.glb\", up = \"z\" }]\n");
    // From (1, 0, 0), leaving along (0, 1, 0), to (1, 0, 0), where it comes along (0, 0, 0), in a second.
    INode* const tip = NodeOf("tip");
    for (const double u : {0.0, 0.25, 0.5, 0.75, 1.0}) {
        const TimeValue t = TimeValue(u * TIME_TICKSPERSEC);
        const Matrix3 local = tip->GetNodeTM(t) * Inverse(NodeOf("root")->GetNodeTM(t));
        ExpectNear(local.GetTrans(), {1, float(u * u * u - 2 * u * u + u), 0}, 1e-4f);
    }
}

TEST_F(ImportSceneTest, CubicRotationsKeepCloseToTheirCurve) {
    using import_test::GltfText;
    const float half = std::sqrt(0.5f);
    GltfText g = import_test::SplitSquare();
    const std::string times = std::to_string(g.Floats("SCALAR", 1, {0, 2}));
    const std::string turns = std::to_string(
        g.Floats("VEC4", 4, {0, 0, 0, 0, 0, 0, 0, 1, 0.3f, 0, 0, 0, 0, 0.2f, 0, 0, 0, 0, half, half, 0, 0, 0, 0}));
    Write("turn.gltf", g.Text(import_test::OneMesh("\"POSITION\":0") +
                              ",\"animations\":[{\"samplers\":[{\"input\":" + times + ",\"output\":" + turns +
                              ",\"interpolation\":\"CUBICSPLINE\"}],\"channels\":[{\"sampler\":0,\"target\":{"
                              "\"node\":0,\"path\":\"rotation\"}}]}]"));
    Load("[scene]\nimport = [{ file = \"turn.gltf\", up = \"z\" }]\n");
    for (float u = 0; u <= 1; u += 1.0f / 32) {
        // Hermite by components: x leaves with 0.3 a second, y comes with 0.2 a second, over two seconds.
        const float step = 3 * u * u - 2 * u * u * u, leave = 2 * (u - 2 * u * u + u * u * u),
                    come = 2 * (u * u * u - u * u);
        const Quat q = Normalize(Quat(-0.3f * leave, -0.2f * come, -half * step, 1 - step + half * step));
        const Matrix3 want = q.ToMatrix(), is = NodeOf("it")->GetNodeTM(TimeValue(u * 2 * TIME_TICKSPERSEC));
        for (int r = 0; r < 3; ++r) ExpectNear(is.GetRow(r), want.GetRow(r), 1e-3f);
    }
}

TEST_F(ImportSceneTest, MaterialsAndEmbeddedPictures) {
    Load("[scene]\nimport = [\"skinned.glb\"]\n");
    Mtl* const cloth = NodeOf("sail")->GetMtl();
    ASSERT_TRUE(cloth);
    EXPECT_EQ(cloth->GetName(), "cloth");
    // The colour x (the picture x the vertices' colours).
    Texmap* const tinted = cloth->GetSubTexmap(ID_DI);
    ASSERT_TRUE(tinted && tinted->ClassID() == MULTIPLY_CLASS_ID);
    Texmap* const product = tinted->GetSubTexmap(1);
    ASSERT_TRUE(product && product->ClassID() == MULTIPLY_CLASS_ID);
    auto* const map = dynamic_cast<BitmapMap*>(product->GetSubTexmap(0));
    ASSERT_TRUE(map);
    ASSERT_TRUE(product->GetSubTexmap(1));
    EXPECT_EQ(product->GetSubTexmap(1)->ClassID(), VERTEX_COLOR_CLASS_ID);
    EXPECT_EQ(map->LoadError(), "");
    EXPECT_EQ(FloatOf(map, "wrapU"), float(kWrapClamp));
    EXPECT_EQ(FloatOf(map, "wrapV"), float(kWrapRepeat));
    EXPECT_FLOAT_EQ(cloth->GetXParency(0, false), 0.5f);
}

// A square whose picture is one pixel of magenta with the alpha 1/5, and whose vertices are grey with the alpha 3/4.
std::string Pane(const std::string& more) {
    using namespace import_test;
    GltfText g = SplitSquare();
    std::vector<float> grey;
    for (int v = 0; v < 6; ++v) grey.insert(grey.end(), {0.5f, 0.5f, 0.5f, 0.75f});
    const std::string colors = std::to_string(g.Floats("VEC4", 4, grey));
    return g.Text(
        OneMesh("\"POSITION\":0,\"COLOR_0\":" + colors, ",\"material\":0") +
        ",\"images\":[{\"uri\":\"data:image/png;base64,iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mP4z/"
        "DfGAAGMgIyDFh2YwAAAABJRU5ErkJggg==\"}],\"textures\":[{\"source\":0}],"
        "\"materials\":[{\"name\":\"pane\",\"pbrMetallicRoughness\":{\"baseColorFactor\":[0.25,1,1,0.5],"
        "\"roughnessFactor\":0.5,\"baseColorTexture\":{\"index\":0}}" +
        more + "}]");
}

// Shows what a square's material does where its vertex colours are those of the square.
class PaneContext : public FlatContext {
public:
    Point3 UVW(int channel) override {
        return channel == MAP_ALPHA ? Point3(0.75f, 0.75f, 0.75f) : Point3(0.5f, 0.5f, 0.5f);
    }
};

TEST_F(ImportSceneTest, FactorsPicturesAndVerticesAreMultiplied) {
    Write("pane.gltf", Pane(",\"alphaMode\":\"BLEND\""));
    Load("[scene]\nimport = [\"pane.gltf\"]\n");
    Mtl* const pane = NodeOf("it")->GetMtl();
    ASSERT_TRUE(pane);
    PaneContext sc;
    const AColor color = pane->GetSubTexmap(ID_DI)->EvalColor(sc);
    EXPECT_FLOAT_EQ(color.r, 0.125f);
    EXPECT_FLOAT_EQ(color.g, 0);
    EXPECT_FLOAT_EQ(color.b, 0.5f);
    const float opacity = 0.5f * 0.2f * 0.75f;
    EXPECT_NEAR(pane->GetSubTexmap(ID_OP)->EvalMono(sc), opacity, 1e-6f);
    EXPECT_NEAR(pane->GetSubTexmap(ID_SS)->EvalMono(sc), 0.5f * opacity, 1e-6f);
    EXPECT_NEAR(pane->ShadowTransparency(sc).r, 1 - opacity, 1e-6f);
}

TEST_F(ImportSceneTest, MasksCutOffAndOpaqueOnesDoNot) {
    PaneContext sc;
    const auto clear = [&](const std::string& more) {
        core.ResetScene();
        Write("pane.gltf", Pane(more));
        Load("[scene]\nimport = [\"pane.gltf\"]\n");
        return NodeOf("it")->GetMtl()->ShadowTransparency(sc).r;
    };
    EXPECT_EQ(clear(""), 0);
    EXPECT_EQ(clear(",\"alphaMode\":\"MASK\""), 1);
    EXPECT_EQ(clear(",\"alphaMode\":\"MASK\",\"alphaCutoff\":0.07"), 0); // the alpha is 0.075
    EXPECT_EQ(clear(",\"alphaMode\":\"MASK\",\"alphaCutoff\":0.08"), 1);
}

TEST_F(ImportSceneTest, MeshesWithoutMaterialsShowTheirVertexColours) {
    const std::string vertices = "v 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 1 1 0 0 0 1\nf 1 2 3\n";
    Write("colored.obj", vertices);
    Write("colored.ply",
          "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
          "property float red\nproperty float green\nproperty float blue\nelement face 1\n"
          "property list uchar int vertex_indices\nend_header\n0 0 0 1 0 0\n1 0 0 0 1 0\n0 1 0 0 0 1\n"
          "3 0 1 2\n");
    import_test::GltfText g = import_test::SplitSquare();
    const std::string colors = std::to_string(g.Floats("VEC3", 3, std::vector<float>(18, 0.5f)));
    Write("bare.gltf", g.Text(import_test::OneMesh("\"POSITION\":0,\"COLOR_0\":" + colors)));
    Load("[scene]\nimport = [{ file = \"colored.obj\", name = \"a\" }, { file = \"colored.ply\", name = \"b\" }, "
         "\"bare.gltf\", \"quad.obj\", { file = \"colored.obj\", name = \"c\" }]\n"
         "[[material]]\nname = \"own\"\n[[node]]\nname = \"c\"\nmaterial = \"own\"\n");
    PaneContext sc;
    for (const char* const name : {"a", "b", "it"}) {
        Mtl* const mtl = NodeOf(name)->GetMtl();
        ASSERT_TRUE(mtl) << name;
        EXPECT_EQ(Color(mtl->GetSubTexmap(ID_DI)->EvalColor(sc)), Color(0.5f, 0.5f, 0.5f)) << name;
    }
    EXPECT_EQ(NodeOf("quad")->GetMtl(), nullptr);
    EXPECT_EQ(NodeOf("c")->GetMtl()->GetName(), "own");
}

TEST_F(ImportSceneTest, FacesWithoutMaterialBesideOthersAreWhite) {
    import_test::GltfText g = import_test::SplitSquare();
    Write("two.gltf",
          g.Text(import_test::OneMesh("\"POSITION\":0", ",\"material\":0},{\"attributes\":{\"POSITION\":0}") +
                 ",\"materials\":[{\"name\":\"paint\"}]"));
    Load("[scene]\nimport = [\"two.gltf\"]\n");
    Mtl* const both = NodeOf("it")->GetMtl();
    ASSERT_TRUE(both && both->IsMultiMtl());
    EXPECT_EQ(both->GetSubMtl(0)->GetName(), "paint");
    ASSERT_TRUE(both->GetSubMtl(1));
    EXPECT_EQ(both->GetSubMtl(1)->GetDiffuse(), Color(1, 1, 1));
}

TEST_F(ImportSceneTest, TheScenesUnitAndKeysCount) {
    const LoadedScene own = Load("[scene]\nunit = 0.01\nimport = [\"skinned.glb\"]\n");
    EXPECT_FLOAT_EQ(own.meshes.at(0).options.scale, 100);
    EXPECT_EQ(own.meshes.at(0).options.up, UpAxis::kY);
    ASSERT_EQ(own.files.size(), 1u);
    EXPECT_EQ(own.files[0].notes.at(0), "unit 1 m, y up; brought in with scale 100, y up; 3 nodes, 1 with meshes");
    // The second joint stands one unit along X.
    ExpectNear(WorldVertex("sail", 2, 0), {200, 0, 100}, 1e-2f);
    core.ResetScene();
    Load("[scene]\nimport = [{ file = \"skinned.glb\", scale = 2.0, up = \"z\", name = \"cloth\", animation = \"wave\" "
         "}]\n");
    ExpectNear(WorldVertex("cloth", 2, 0), {4, 2, 0});
}

TEST_F(ImportSceneTest, CamerasLightsAndLines) {
    Load("[scene]\nimport = [\"views.gltf\"]\n[[camera]]\nname = \"own\"\nposition = [0, -5, 0]\ntarget = [0, 0, 0]\n");
    int cameras = 0, lights = 0, shapes = 0;
    for (Node* const node : core.AllNodes()) {
        Object* const object = node->GetObjectRef();
        if (!object) continue;
        cameras += object->SuperClassID() == CAMERA_CLASS_ID;
        shapes += object->SuperClassID() == SHAPE_CLASS_ID;
        if (object->SuperClassID() != LIGHT_CLASS_ID) continue;
        ++lights;
        const bool direct = object->ClassID() == DIR_LIGHT_CLASS_ID;
        EXPECT_EQ(FloatOf(object, "decay"), float(direct ? DECAY_NONE : DECAY_INVERSE_SQUARE));
    }
    EXPECT_EQ(cameras, 3);
    EXPECT_EQ(lights, 3);
    EXPECT_EQ(shapes, 2);
}

TEST_F(ImportSceneTest, OneOwnCameraComesBeforeImportedOnes) {
    const LoadedScene scene =
        Load("[scene]\nimport = [\"views.gltf\"]\n[[camera]]\nname = \"own\"\nposition = [0, -5, 0]\n");
    EXPECT_EQ(scene.render.camera, "own");
}

TEST_F(ImportSceneTest, Errors) {
    Write("empty.glb", "");
    EXPECT_NE(scene_test::ErrorOf([&] { Load("[scene]\nimport = [\"empty.glb\"]\n"); }).find("empty.glb: "),
              std::string::npos);
    EXPECT_NE(scene_test::ErrorOf([&] {
                  core.ResetScene();
                  Load("[scene]\nimport = [{ file = \"quad.obj\", animation = \"walk\" }]\n");
              }).find("files of this kind have no animations, expected a .gltf, .glb or .fbx file"),
              std::string::npos);
}

} // namespace
