// node.modifiers, face sets and [[shape]] in scene files.

#include "modifiers/mesh_cache.h"
#include "modifiers/skin.h"
#include "scene_fixture.h"
#include "sdk/meshsel.h"
#include "shapes/shape_builder.h"

using namespace host;
using scene_test::SceneTest;

namespace {

class ModifierSceneTest : public SceneTest {
protected:
    const Mesh& MeshOf(const char* name, TimeValue t = 0) {
        return static_cast<TriObject*>(NodeOf(name)->EvalWorldState(t).obj)->mesh;
    }
    static std::string Quad(const std::string& modifiers) {
        return "[scene]\nimport = [\"quad.obj\"]\n[[node]]\nname = \"quad\"\n" + modifiers;
    }
    void WriteFrames() const {
        for (const int i : {1, 2, 3, 12}) {
            char name[40], content[200];
            std::snprintf(name, sizeof name, "walk.%04d.obj", i);
            std::snprintf(content, sizeof content, "v 0 0 %d\nv 1 0 %d\nv 1 1 %d\nv 0 1 %d\nf 1 2 3 4\nf 1 1 2\n", i, i,
                          i, i);
            Write(name, content);
        }
    }
};

TEST_F(ModifierSceneTest, ImportedMeshesAreEditableAndHaveFaceSets) {
    Load(Quad(
        "face_sets = { upper = { ids = [1] }, all = { all = true }, rest = { sets = [\"upper\"], invert = true } }"));
    EXPECT_EQ(NodeOf("quad")->GetObjectRef()->ClassID(), EDITTRIOBJ_CLASS_ID);
    const auto& sets = MeshOf("quad").faceSets;
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0].first, "all");
    EXPECT_EQ(sets[0].second.NumberSet(), 3);
    EXPECT_EQ(sets[1].first, "upper");
    EXPECT_EQ(sets[1].second.NumberSet(), 1);
    EXPECT_EQ(sets[2].first, "rest");
    EXPECT_TRUE(sets[2].second[0]);
    EXPECT_FALSE(sets[2].second[1]);
}

TEST_F(ModifierSceneTest, StacksFromTheLowestUp) {
    const LoadedScene scene = Load(Quad(R"(
modifiers = [
  { type = "mesh_select", level = "vertex", select = { ids = [2], ranges = [[0, 0]] }, sets = { one = { ids = [0] } } },
  { type = "xform", position = [0, 0, 2] },
  { type = "xform", name = "high", scale = [1, 1, 10], enabled = false },
]
)"));
    Node* const quad = NodeOf("quad");
    ASSERT_EQ(quad->NumModifiers(), 3);
    EXPECT_EQ(quad->GetModifier(2)->GetName(), "mesh_select");
    EXPECT_EQ(quad->GetModifier(1)->GetName(), "xform");
    EXPECT_EQ(quad->GetModifier(0)->GetName(), "high");
    EXPECT_EQ(MeshOf("quad").verts[0].z, 2);
    EXPECT_EQ(MeshOf("quad").verts[1].z, 0);
    EXPECT_EQ(MeshOf("quad").verts[2].z, 2);
    ASSERT_EQ(MeshOf("quad").faceSets.size(), 1u);
    EXPECT_EQ(scene.objects.count("quad.high"), 1u);
    quad->GetModifier(0)->EnableMod();
    EXPECT_EQ(MeshOf("quad").verts[0].z, 20);
}

TEST_F(ModifierSceneTest, SectionsAndInlineTablesAreTheSame) {
    Load(Quad("[[node.modifiers]]\ntype = \"normal_flip\"\n[[node.modifiers]]\ntype = \"smooth\"\nmode = \"none\"\n"));
    EXPECT_EQ(NodeOf("quad")->NumModifiers(), 2);
    EXPECT_EQ(MeshOf("quad").FaceNormal(0).z, -1);
    EXPECT_EQ(MeshOf("quad").faces[0].smGroup, 0u);
}

TEST_F(ModifierSceneTest, ParametersTakeKeysAndAssignments) {
    LoadedScene scene = Load(R"(
[[node]]
name = "post"
primitive = "box"
size = [1, 1, 4]
segments = 4
modifiers = [{ type = "bend" }, { type = "bend", direction = 90.0 }, { type = "noise", strength = [0, 0, 1], seed = 3 }]
[[keys]]
object = "post.bend2"
parameter = "angle"
values = [[0, 0], [10, 90]]
[[keys]]
object = "post.object"
parameter = "size"
values = [[0, 1, 1, 4], [10, 1, 1, 8]]
)");
    const int frame = core.GetTicksPerFrame();
    EXPECT_FLOAT_EQ(FloatOf(scene.objects["post.bend2"], "angle", 5 * frame), 45);
    EXPECT_EQ(NodeOf("post")->EvalWorldState(5 * frame).valid, Interval(5 * frame, 5 * frame));
    EXPECT_EQ(static_cast<TriObject*>(NodeOf("post")->GetObjectRef()->Eval(10 * frame).obj)->mesh.verts[0].z, -4);
    SetByText(core, scene, "post.bend.angle=30");
    EXPECT_EQ(FloatOf(scene.objects["post.bend"], "angle"), 30);
}

TEST_F(ModifierSceneTest, SkinsFollowNodesThatComeLater) {
    Load(Quad(
        R"(modifiers = [{ type = "skin", bones = ["a", "b"], weights = [[0, 0, 1], [1, 0, 3], [1, 1, 1], [2, 1, 5]] }]
[[node]]
name = "a"
primitive = "empty"
[[node]]
name = "b"
primitive = "empty"
position = [1, 1, 0]
[[keys]]
node = "b"
position = [[0, 1, 1, 0], [10, 1, 1, 8]]
)"));
    const int end = 10 * core.GetTicksPerFrame();
    EXPECT_EQ(NodeOf("a")->GetObjectRef(), nullptr);
    EXPECT_EQ(MeshOf("quad", 0).verts[2].z, 0);
    EXPECT_EQ(MeshOf("quad", end).verts[0].z, 0);
    EXPECT_FLOAT_EQ(MeshOf("quad", end).verts[1].z, 2);
    EXPECT_FLOAT_EQ(MeshOf("quad", end).verts[2].z, 8);
    EXPECT_EQ(MeshOf("quad", end).verts[3].z, 0) << "a vertex without weights stays";
}

TEST_F(ModifierSceneTest, MorphTargetsFromFilesAndMoves) {
    Write("up.obj", "v 0 0 4\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\nf 1 1 2\n");
    Load(Quad(R"(
[[node.modifiers]]
type = "morph"
targets = [{ name = "up", file = "up.obj", keys = [[0, 0.0], [10, 1.0]] }, { moves = [[3, 0, 0, 2]], weight = 0.5 }]
)"));
    const int frame = core.GetTicksPerFrame();
    EXPECT_FLOAT_EQ(MeshOf("quad", 5 * frame).verts[0].z, 2);
    EXPECT_FLOAT_EQ(MeshOf("quad", 5 * frame).verts[3].z, 1);
}

TEST_F(ModifierSceneTest, MeshCachesFromASeriesOrAList) {
    WriteFrames();
    Load(Quad("modifiers = [{ type = \"mesh_cache\", frames = \"walk.####.obj\" }]"));
    const int frame = core.GetTicksPerFrame();
    EXPECT_EQ(static_cast<MeshCacheModifier*>(NodeOf("quad")->GetModifier(0))->NumFrames(), 4);
    EXPECT_EQ(MeshOf("quad", 0).verts[0].z, 1);
    EXPECT_FLOAT_EQ(MeshOf("quad", 5 * frame / 2).verts[0].z, 2.5f);
    EXPECT_FLOAT_EQ(MeshOf("quad", 6 * frame).verts[0].z, 6) << "between 3 and 12";
    core.ResetScene();
    Load("[scene]\nimport = [{ file = \"quad.obj\", scale = 2.0 }]\n[[node]]\nname = \"quad\"\n"
         "modifiers = [{ type = \"mesh_cache\", frames = [\"walk.0003.obj\", \"walk.0001.obj\"], start = 10, step = 4, "
         "interpolate = false }]");
    EXPECT_EQ(MeshOf("quad", 13 * frame).verts[0].z, 6) << "the scale of the node's own file";
    EXPECT_EQ(MeshOf("quad", 14 * frame).verts[0].z, 2);
}

TEST_F(ModifierSceneTest, MistakesAreNamed) {
    WriteFrames();
    Write("bad.0001.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n");
    Write("turned.0001.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 2 3 4 1\nf 1 1 2\n");
    const auto problem = [&](const std::string& modifiers) { return Problem(Quad("modifiers = [" + modifiers + "]")); };
    EXPECT_EQ(problem("{ name = \"x\" }"), "s.toml:5: no 'type' in [[node.modifiers]], expected one");
    EXPECT_EQ(
        problem("{ type = \"bnd\" }"),
        "s.toml:5: 'type' is 'bnd', expected mesh_select, smooth, normal_flip, xform, bend, noise, skin, morph or "
        "mesh_cache");
    EXPECT_EQ(
        problem("{ type = \"bend\", angel = 3 }"),
        "s.toml:5: unknown key 'angel' in [[node.modifiers]] of type \"bend\", expected 'angle' or another key of it");
    EXPECT_EQ(problem("{ type = \"mesh_cache\" }"), "s.toml:5: no 'frames', expected the files of a mesh cache");
    EXPECT_EQ(problem("{ type = \"mesh_cache\", frames = \"walk.obj\" }"),
              "s.toml:5: 'frames' is 'walk.obj', expected a file name with one run of # or a list of names");
    EXPECT_EQ(problem("{ type = \"mesh_cache\", frames = \"run.####.obj\" }"),
              "s.toml:5: no such file 'run.####.obj', expected it at run.####.obj");
    Write("notes.txt", "");
    EXPECT_EQ(problem("{ type = \"mesh_cache\", frames = [\"notes.txt\"] }"),
              "s.toml:5: unknown form of file 'notes.txt', expected .obj, .ply or .3ds");
    EXPECT_EQ(Problem("[scene]\nimport = [\n'quad.obj',\n'notes.txt']\n"),
              "s.toml:4: unknown form of file 'notes.txt', expected .obj, .ply, .3ds, .gltf, .glb or .fbx");
    EXPECT_EQ(problem("{ type = \"mesh_cache\", frames = \"bad.#.obj\" }"),
              "bad.0001.obj: has 3 vertices, expected 4 as the mesh of 'quad'");
    EXPECT_EQ(problem("{ type = \"mesh_cache\", frames = \"turned.#.obj\" }"),
              "turned.0001.obj: has other faces than the mesh of 'quad', expected the same ones");
    EXPECT_EQ(problem("{ type = \"skin\", bones = [\"nobody\"] }"),
              "s.toml:5: unknown node 'nobody', expected one like 'quad'");
    EXPECT_EQ(problem("{ type = \"skin\", bones = [\"quad\"] }"),
              "s.toml:5: the modifier depends on node 'quad' itself, expected other nodes");
    EXPECT_EQ(problem("{ type = \"skin\" }"), "s.toml:5: no 'bones', expected the names of nodes");
    EXPECT_EQ(problem("{ type = \"morph\" }"), "s.toml:5: no 'targets', expected at least one");
    EXPECT_EQ(problem("{ type = \"morph\", targets = [{ moves = [[4, 0, 0, 1]] }] }"),
              "s.toml:5: vertex 4 in 'moves', expected 0 .. 3");
    EXPECT_EQ(problem("{ type = \"morph\", targets = [{ weight = 1.0 }] }"),
              "s.toml:5: expected either 'file' or 'moves' in a morph target");
    EXPECT_EQ(problem("{ type = \"mesh_select\", select = { materials = [0] } }"),
              "s.toml:5: material id 0, expected 1 .. 65536");
    EXPECT_EQ(problem("{ type = \"mesh_select\", select = { smoothing = [33] } }"),
              "s.toml:5: smoothing group 33, expected 1 .. 32");
    EXPECT_EQ(problem("{ type = \"bend\", name = \"b\" }, { type = \"smooth\", name = \"b\" }"),
              "s.toml:5: second modifier 'b', expected a name of its own");
    EXPECT_EQ(
        Problem("[[node]]\nname = \"e\"\nprimitive = \"empty\"\nmodifiers = [{ type = \"morph\", targets = [{}] }]"),
        "s.toml:4: node 'e' has no mesh, expected one");
    EXPECT_EQ(Problem("[[node]]\nname = \"e\"\nprimitive = \"box\"\nface_sets = { a = { all = true } }"),
              "s.toml:4: 'face_sets' belong to an imported mesh, expected a mesh_select modifier here");
}

TEST_F(ModifierSceneTest, SkinRowsAreChecked) {
    const auto problem = [&](const std::string& rows) {
        return Problem(Quad("modifiers = [{ type = \"skin\", bones = [\"b\"], weights = [" + rows +
                            "] }]\n[[node]]\nname = \"b\"\nprimitive = \"empty\"\n"));
    };
    EXPECT_EQ(problem("[0, 0]"), "s.toml:5: a row of 'weights', expected [vertex, bone, weight]");
    EXPECT_EQ(problem("[4, 0, 1]"), "s.toml:5: vertex 4 in 'weights', expected 0 .. 3");
    EXPECT_EQ(problem("[0, 0.5, 1]"), "s.toml:5: bone 0.5 in 'weights', expected 0 .. 0");
    EXPECT_EQ(problem("[0, 0, 1]"), "");
}

TEST_F(ModifierSceneTest, ShapesFromSplinesFilesAndKeys) {
    Write("lines.obj", "# two lines\nv 0 0 0\nv 2 0 0\nv 2 2 0\nl 1 2\nl 1 2 3 1\nl -1/4 -2\n");
    Load(R"(
[[shape]]
name = "wire"
position = [0, 0, 1]
[[shape.splines]]
points = [[0, 0, 0], [1, 0, 0], [2, 0, 0]]
keys = [[1, 0, 1, 0, 0], [1, 10, 1, 5, 0]]
[[shape.splines]]
points = [[0, 0, 0], [1, 0, 0]]
type = "bezier"
handles = [[0, 0, 0, 0, 1, 0], [1, 1, 0, 1, 0, 0]]
closed = true
straight = [1]
[[shape]]
name = "drawn"
file = "lines.obj"
[[node]]
name = "wire"
modifiers = [{ type = "xform", scale = [2, 2, 2] }]
)");
    const auto shapeOf = [&](const char* name, TimeValue t) {
        return static_cast<ShapeObject*>(NodeOf(name)->EvalWorldState(t).obj)->shape;
    };
    const BezierShape wire = shapeOf("wire", 5 * core.GetTicksPerFrame());
    ASSERT_EQ(wire.SplineCount(), 2);
    EXPECT_EQ(wire.splines[0].knots[1].point, Point3(2, 5, 0));
    EXPECT_EQ(wire.splines[1].knots[0].outVec, Point3(0, 2, 0));
    EXPECT_TRUE(wire.splines[1].closed);
    EXPECT_EQ(wire.splines[1].knots[1].ltype, LTYPE_LINE);
    EXPECT_EQ(NodeOf("wire")->GetNodeTM(0).GetTrans(), Point3(0, 0, 1));
    const BezierShape drawn = shapeOf("drawn", 0);
    ASSERT_EQ(drawn.SplineCount(), 3);
    EXPECT_TRUE(drawn.splines[1].closed);
    EXPECT_EQ(drawn.splines[2].knots[0].point, Point3(2, 2, 0));
}

TEST_F(ModifierSceneTest, MistakesInShapesAreNamed) {
    const auto problem = [&](const std::string& keys) { return Problem("[[shape]]\nname = \"w\"\n" + keys); };
    EXPECT_EQ(problem(""), "s.toml:1: expected either 'file' or 'splines' in [[shape]]");
    EXPECT_EQ(problem("splines = [{ points = [[0, 0, 0]] }]"),
              "s.toml:3: a spline has less than two 'points', expected more");
    EXPECT_EQ(problem("splines = [{ points = [[0, 0, 0], [1, 0]] }]"),
              "s.toml:3: a row of 'points' has 2 numbers, expected 3");
    EXPECT_EQ(problem("splines = [{ points = [[0, 0, 0], [1, 0, 0]], handles = [[0, 0, 0, 0, 0, 0]] }]"),
              "s.toml:3: 'handles' stand for 1 knots, expected them for every knot of a bezier spline");
    EXPECT_EQ(problem("splines = [{ points = [[0, 0, 0], [1, 0, 0]], straight = [2] }]"),
              "s.toml:3: knot 2 in 'straight', expected 0 .. 1");
    EXPECT_EQ(problem("splines = [{ points = [[0, 0, 0], [1, 0, 0]], keys = [[0.5, 0, 0, 0, 0]] }]"),
              "s.toml:3: knot 0.5 in 'keys', expected 0 .. 1");
    EXPECT_EQ(problem("file = \"quad.obj\""), "quad.obj: has no lines, expected at least one 'l' line");
    Write("bad.obj", "v 0 0 0\nv 1 0 0\nl 1 3\n");
    EXPECT_EQ(problem("file = \"bad.obj\""),
              "bad.obj:3: vertex index '3' in an 'l' line, expected 1 .. 2 of the vertices before it");
    Write("bad.obj", "v 0 0 x\n");
    EXPECT_EQ(problem("file = \"bad.obj\""), "bad.obj:1: coordinate 'x' in a 'v' line, expected three finite numbers");
    EXPECT_EQ(Problem("[scene]\nimport = [\"quad.obj\"]\n[[shape]]\nname = \"quad\"\nfile = \"quad.obj\""),
              "s.toml:4: second node 'quad', expected a name of its own");
}

} // namespace
