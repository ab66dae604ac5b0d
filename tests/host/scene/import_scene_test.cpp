// .gltf files in scenes: nodes, modifiers, materials, cameras, keys.

#include <cmath>
#include <fstream>

#include "../import/gltf_builder.h"
#include "core/camera.h"
#include "materials/bitmap_map.h"
#include "materials/map_wrap.h"
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
    auto* const map = dynamic_cast<BitmapMap*>(cloth->GetSubTexmap(ID_DI));
    ASSERT_TRUE(map);
    EXPECT_EQ(map->LoadError(), "");
    EXPECT_EQ(FloatOf(map, "wrapU"), float(kWrapClamp));
    EXPECT_EQ(FloatOf(map, "wrapV"), float(kWrapRepeat));
    EXPECT_FLOAT_EQ(cloth->GetXParency(0, false), 0.5f);
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
