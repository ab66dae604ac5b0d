// .fbx files.

#include <cmath>

#include "import/imported_scene.h"
#include "import_helpers.h"

using namespace host;
using namespace import_test;

namespace {

// A square with mapping and colours, a camera and a light, Z up, in inches; the square hangs below another node.
const std::string kBoard = R"(; FBX 7.4.0 project file
FBXHeaderExtension:  {
	FBXVersion: 7400
}
GlobalSettings:  {
	Version: 1000
	Properties70:  {
		P: "UpAxis", "int", "Integer", "",2
		P: "UpAxisSign", "int", "Integer", "",1
		P: "UnitScaleFactor", "double", "Number", "",2.54
	}
}
Objects:  {
	Geometry: 100, "Geometry::square", "Mesh" {
		Vertices: *12 {
			a: 0,0,0,1,0,0,1,1,0,0,1,0
		}
		PolygonVertexIndex: *6 {
			a: 0,1,-3,0,2,-4
		}
		GeometryVersion: 124
		LayerElementUV: 0 {
			Version: 101
			Name: "map"
			MappingInformationType: "ByPolygonVertex"
			ReferenceInformationType: "Direct"
			UV: *12 {
				a: 0,0,1,0,1,1,0.5,0,1,1,0,1
			}
		}
		LayerElementColor: 0 {
			Version: 101
			Name: "col"
			MappingInformationType: "ByPolygonVertex"
			ReferenceInformationType: "Direct"
			Colors: *24 {
				a: 1,0,0,1,0,1,0,1,0,0,1,1,1,0,0,1,0,0,1,1,1,1,1,1
			}
		}
		LayerElementMaterial: 0 {
			Version: 101
			Name: ""
			MappingInformationType: "AllSame"
			ReferenceInformationType: "IndexToDirect"
			Materials: *1 {
				a: 0
			}
		}
		Layer: 0 {
			Version: 100
			LayerElement:  {
				Type: "LayerElementUV"
				TypedIndex: 0
			}
			LayerElement:  {
				Type: "LayerElementColor"
				TypedIndex: 0
			}
			LayerElement:  {
				Type: "LayerElementMaterial"
				TypedIndex: 0
			}
		}
	}
	Model: 150, "Model::stand", "Null" {
		Version: 232
		Properties70:  {
			P: "Lcl Translation", "Lcl Translation", "", "A",10,0,0
		}
	}
	Model: 200, "Model::board", "Mesh" {
		Version: 232
		Properties70:  {
			P: "Lcl Translation", "Lcl Translation", "", "A",0,0,3
			P: "Lcl Rotation", "Lcl Rotation", "", "A",0,0,90
		}
	}
	NodeAttribute: 300, "NodeAttribute::", "Camera" {
		TypeFlags: "Camera"
		Properties70:  {
			P: "FieldOfView", "FieldOfView", "", "A",40
		}
	}
	Model: 301, "Model::eye", "Camera" {
		Version: 232
	}
	NodeAttribute: 310, "NodeAttribute::", "Light" {
		TypeFlags: "Light"
		Properties70:  {
			P: "LightType", "enum", "", "",1
			P: "Color", "Color", "", "A",1,0.5,0
			P: "Intensity", "Number", "", "A",50
		}
	}
	Model: 311, "Model::lamp", "Light" {
		Version: 232
	}
	Material: 400, "Material::paint", "" {
		Version: 102
		ShadingModel: "phong"
		Properties70:  {
			P: "DiffuseColor", "Color", "", "A",0.25,0.5,0.75
			P: "ShininessExponent", "double", "Number", "",32
		}
	}
}
Connections:  {
	C: "OO",150,0
	C: "OO",200,150
	C: "OO",100,200
	C: "OO",400,200
	C: "OO",301,0
	C: "OO",300,301
	C: "OO",311,0
	C: "OO",310,311
}
)";

const ImportedNode& NodeOf(const ImportedScene& scene, const std::string& name) {
    for (const ImportedNode& n : scene.nodes)
        if (n.name == name) return n;
    throw Error("no node " + name);
}

TEST(Fbx, UnitsAxesAndNodes) {
    ImportedScene scene = ImportFbx("m.fbx", kBoard);
    EXPECT_NEAR(scene.meters, 0.0254, 1e-7);
    EXPECT_EQ(scene.up, UpAxis::kZ);
    const ImportedNode& board = NodeOf(scene, "board");
    EXPECT_EQ(scene.nodes.at(size_t(board.parent)).name, "stand");
    PlaceScene("m.fbx", scene, {2, UpAxis::kZ});
    const std::vector<Matrix3> worlds = WorldMatrices(scene);
    const size_t at = size_t(&NodeOf(scene, "board") - scene.nodes.data());
    // (1, 0, 0) turned to Y, then moved by (10, 0, 3), all twice as large.
    const Point3 p = Point3(2, 0, 0) * worlds[at];
    EXPECT_NEAR(p.x, 20, 1e-4);
    EXPECT_NEAR(p.y, 2, 1e-4);
    EXPECT_NEAR(p.z, 6, 1e-4);
}

TEST(Fbx, SplitVerticesAreWeldedAndMappingKeepsItsOwnIndices) {
    const ImportedScene scene = ImportFbx("m.fbx", kBoard);
    const SceneMesh& m = scene.meshes.at(size_t(NodeOf(scene, "board").mesh));
    EXPECT_EQ(m.mesh.getNumVerts(), 4);
    EXPECT_EQ(Corners(m.mesh, 0), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Corners(m.mesh, 1), (std::vector<int>{0, 2, 3}));
    EXPECT_EQ(m.mesh.maps.at(1).tv.size(), 5u);
    EXPECT_EQ(m.mesh.maps.at(1).tv[size_t(MapCorners(m.mesh, 1, 1)[0])], Point3(0.5f, 0, 0));
    EXPECT_EQ(m.mesh.maps.at(MAP_VERTCOLOR).tv[size_t(MapCorners(m.mesh, MAP_VERTCOLOR, 0)[1])], Point3(0, 1, 0));
    ASSERT_EQ(m.materials.size(), 1u);
    const ImportedMaterial& paint = scene.materials.at(size_t(m.materials[0]));
    EXPECT_EQ(paint.name, "paint");
    EXPECT_EQ(paint.diffuse, Color(0.25f, 0.5f, 0.75f));
    EXPECT_FLOAT_EQ(paint.glossiness, 0.5f); // 2^(10 x 0.5) = 32
}

TEST(Fbx, CamerasAndLightsLookAlongTheirNodes) {
    ImportedScene scene = ImportFbx("m.fbx", kBoard);
    PlaceScene("m.fbx", scene, {1, UpAxis::kZ});
    const ImportedNode &eye = NodeOf(scene, "eye"), &lamp = NodeOf(scene, "lamp");
    ASSERT_GE(eye.camera, 0);
    ASSERT_GE(lamp.light, 0);
    EXPECT_NEAR(scene.cameras.at(size_t(eye.camera)).fovX, 40 * M_PI / 180, 1e-5);
    // Cameras of such files look along X, lights along -Y.
    EXPECT_LT(Length(VectorTransform(Point3(0, 0, -1), LocalMatrix(eye)) - Point3(1, 0, 0)), 1e-5f);
    EXPECT_LT(Length(VectorTransform(Point3(0, 0, -1), LocalMatrix(lamp)) - Point3(0, -1, 0)), 1e-5f);
    const ImportedLight& light = scene.lights.at(size_t(lamp.light));
    EXPECT_EQ(light.type, DIRECT_LGT);
    EXPECT_NEAR(light.color.r * light.multiplier, 0.5, 1e-5);
    EXPECT_NEAR(light.color.g * light.multiplier, 0.25, 1e-5);
    EXPECT_EQ(light.decay, DECAY_NONE);
}

TEST(Fbx, LightsDecayFromWhereTheFileSays) {
    const auto lightOf = [](const char* properties) {
        std::string text = kBoard;
        const std::string type = "P: \"LightType\", \"enum\", \"\", \"\",1\n";
        text.replace(text.find(type), type.size(), properties);
        ImportedScene scene = ImportFbx("m.fbx", text);
        PlaceScene("m.fbx", scene, {2, UpAxis::kZ});
        return scene.lights.at(0);
    };
    const std::string point = "P: \"LightType\", \"enum\", \"\", \"\",0\n";
    const auto decay = [](int kind) {
        return "P: \"DecayType\", \"enum\", \"\", \"\"," + std::to_string(kind) +
               "\nP: \"DecayStart\", \"Number\", \"\", \"A\",30\n";
    };
    EXPECT_EQ(lightOf((point + decay(0)).c_str()).decay, DECAY_NONE);
    const ImportedLight linear = lightOf((point + decay(1)).c_str());
    EXPECT_EQ(linear.type, OMNI_LGT);
    EXPECT_EQ(linear.decay, DECAY_INVERSE);
    EXPECT_FLOAT_EQ(linear.decayStart, 60);
    const ImportedLight square = lightOf((point + decay(2)).c_str());
    EXPECT_EQ(square.decay, DECAY_INVERSE_SQUARE);
    EXPECT_FLOAT_EQ(square.decayStart, 60);
}

TEST(Fbx, Skins) {
    const std::string file = VELMAR_SOURCE_DIR "/fuzz/corpus/fbx/bones.fbx";
    const ImportedScene scene = ImportSceneFile(file);
    int skinned = 0;
    for (const ImportedNode& n : scene.nodes) {
        if (n.skin < 0) continue;
        ++skinned;
        const ImportedSkin& skin = scene.skins.at(size_t(n.skin));
        EXPECT_EQ(skin.joints.size(), 2u);
        const SceneMesh& mesh = scene.meshes.at(size_t(n.mesh));
        EXPECT_EQ(mesh.mesh.getNumVerts(), 4);
        EXPECT_GE(mesh.influences.size(), 5u);
    }
    EXPECT_EQ(skinned, 1);
}

TEST(Fbx, KeysInSeconds) {
    // Half a second is 23093079000 of the file's ticks.
    std::string text = kBoard;
    text.insert(text.find("Connections:") - 2, R"(	AnimationStack: 500, "AnimStack::walk", "" {
	}
	AnimationLayer: 501, "AnimLayer::base", "" {
	}
	AnimationCurveNode: 502, "AnimCurveNode::T", "" {
	}
	AnimationCurve: 503, "AnimCurve::", "" {
		KeyVer: 4008
		KeyTime: *2 {
			a: 0,23093079000
		}
		KeyValueFloat: *2 {
			a: 0,4
		}
	}
)");
    text.insert(text.rfind('}'), R"(	C: "OO",501,500
	C: "OO",502,501
	C: "OP",502,200, "Lcl Translation"
	C: "OP",503,502, "d|X"
)");
    const ImportedScene scene = ImportFbx("m.fbx", text, "walk");
    const auto& keys = NodeOf(scene, "board").positions.keys;
    ASSERT_GE(keys.size(), 2u);
    EXPECT_NEAR(keys.back().time, 0.5, 1e-3);
    EXPECT_NEAR(keys.back().value.x, 4, 1e-4);
    EXPECT_NEAR(keys.front().value.x, 0, 1e-4);
}

TEST(Fbx, ObjectsBelowThemselves) {
    std::string text = kBoard;
    text.insert(text.rfind('}'), "\tC: \"OO\",150,200\n");
    EXPECT_EQ(ErrorOf([&] { ImportFbx("m.fbx", text); }),
              "m.fbx: has an object that hangs below itself, expected a tree");
}

TEST(Fbx, Errors) {
    const auto fault = [](const std::string& text) { return ErrorOf([&] { ImportFbx("m.fbx", text); }); };
    EXPECT_TRUE(fault("nothing").starts_with("m.fbx: cannot be read as FBX ("));
    std::string empty = kBoard;
    empty.erase(empty.find("Objects:"));
    EXPECT_TRUE(fault(empty).starts_with("m.fbx: ")) << fault(empty);
    EXPECT_EQ(ErrorOf([] { ImportFbx("m.fbx", kBoard, "walk"); }), "m.fbx: has no animation 'walk', expected none");
}

} // namespace
