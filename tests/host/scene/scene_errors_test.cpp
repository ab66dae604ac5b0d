// What is wrong in a scene, and where.

#include "scene_fixture.h"

using namespace scene_test;

using SceneErrors = SceneTest;

TEST_F(SceneErrors, UnknownKeysNameTheNearest) {
    EXPECT_EQ(Problem("[scen]\n"),
              "s.toml:1: unknown key 'scen' in the scene file, expected 'scene' or another key of it");
    EXPECT_EQ(Problem("[scene]\nfps = 24\nbackgrund = [0, 0, 0]\n"),
              "s.toml:3: unknown key 'backgrund' in [scene], expected 'background' or another key of it");
    EXPECT_EQ(Problem("[[camera]]\nname = 'a'\nfvo = 1\n"),
              "s.toml:3: unknown key 'fvo' in [[camera]], expected 'fov' or another key of it");
    EXPECT_EQ(Problem("[scene]\nimport = [{fil = 'quad.obj'}]\n"),
              "s.toml:2: unknown key 'fil' in an entry of `import`, expected 'file' or another key of it");
}

TEST_F(SceneErrors, WrongTypes) {
    const std::pair<const char*, const char*> cases[] = {
        {"scene = 1\n", "s.toml:1: 'scene' is 1, expected a table"},
        {"[camera]\nname = 'a'\n", "s.toml:1: 'camera' is a table, expected a list of tables ([[camera]])"},
        {"[scene]\nfps = '24'\n", "s.toml:2: 'fps' is the text '24', expected a whole number in 1 .. 4800"},
        {"[scene]\nfps = 24.5\n", "s.toml:2: 'fps' is 24.5, expected a whole number in 1 .. 4800"},
        {"[scene]\nfps = 0\n", "s.toml:2: 'fps' is 0, expected a whole number in 1 .. 4800"},
        {"[scene]\nimport = 'quad.obj'\n",
         "s.toml:2: 'import' is the text 'quad.obj', expected a list of file names or tables"},
        {"[scene]\nimport = [1]\n", "s.toml:2: 'import' is a list of 1, expected a list of file names or tables"},
        {"[scene]\nrange = [1]\n", "s.toml:2: 'range' is a list of 1, expected a list of 2 numbers"},
        {"[scene]\nbackground = [0, 0]\n",
         "s.toml:2: 'background' is a list of 2, expected a list of 3 numbers (red, green, blue)"},
        {"[scene]\nambient = [0, 0, nan]\n",
         "s.toml:2: 'ambient' is a list of 3, expected a list of 3 numbers (red, green, blue)"},
        {"[render]\nhair = 5\n", "s.toml:2: 'hair' is 5, expected a table"},
        {"[render]\nwidth = 99999999999\n", "s.toml:2: 'width' is 99999999999, expected a whole number"},
        {"[[light]]\nname = 'a'\nshadows = 1\n", "s.toml:3: 'shadows' is 1, expected true or false"},
        {"[[light]]\nname = 'a'\ntype = 'area'\n", "s.toml:3: 'type' is 'area', expected omni, spot or direct"},
        {"[[light]]\nname = 'a'\nexclude = [1]\n", "s.toml:3: 'exclude' is a list of 1, expected a list of texts"},
        {"[[camera]]\nname = 'a'\nfov = 200\n", "s.toml:3: 'fov' is 200, expected a number in 0.1 .. 175"},
        {"[[camera]]\nname = 'a'\nnear = -1.0\n", "s.toml:3: 'near' is -1, expected a number of at least 0"},
        {"[[camera]]\nname = 'a'\nposition = 1979-05-27\n",
         "s.toml:3: 'position' is a date, expected a list of 3 numbers"},
        {"[[node]]\nname = 'a'\nproperties = [1]\n",
         "s.toml:3: 'properties' is a list of 1, expected a table of texts or numbers"},
        {"[[keys]]\nnode = 'a'\nposition = [1]\n",
         "s.toml:3: 'position' is a list of 1, expected a list of lists of numbers"},
        {"[[fur]]\nname = 'a'\ncurve = {x = 1}\n", "s.toml:3: 'curve' is a table, expected a table of tables"},
        {"[[fur]]\nname = 'a'\nmap_channels = [0.5]\n",
         "s.toml:3: 'map_channels' is a list of 1, expected a list of whole numbers"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(Problem(text), message) << text;
}

TEST_F(SceneErrors, FilesAndNames) {
    const std::pair<const char*, const char*> cases[] = {
        {"[scene]\nimport = ['/']\n", "s.toml:2: '/' is a folder or the like, expected a file"},
        {"[scene]\nimport = ['none.obj']\n", "s.toml:2: no such file 'none.obj', expected it at none.obj"},
        {"[scene]\nsearch = ['x']\nimport = ['none.obj']\n",
         "s.toml:3: no such file 'none.obj', expected it at none.obj or in a folder of 'search' or VELMAR_PATH"},
        {"[scene]\nimport = [{scale = 1}]\n", "s.toml:2: no 'file' in an entry of `import`, expected one"},
        {"[scene]\nimport = [{file = 'two.obj', name = 'x'}]\n",
         "s.toml:2: the file has 2 meshes, expected one where 'name' is set"},
        {"[scene]\nrange = [5, 1]\n", "s.toml:2: 'range' ends before it begins, expected [first, last]"},
        {"[scene]\nrange = [0, 1e30]\n", "s.toml:2: frame 1e+30 is too far away, expected an earlier one"},
        {"[[camera]]\nfov = 20\n", "s.toml:1: no 'name' in [[camera]], expected one"},
        {"[[camera]]\nname = 'a'\ntarget = [0, 0, 0]\n",
         "s.toml:3: 'target' is where 'position' is, expected another point"},
        {"[[camera]]\nname = 'a'\nnear = 5\nfar = 5\n",
         "s.toml:4: 'far' is not beyond 'near', expected a larger number"},
        {"[[camera]]\nname = 'a'\n[[light]]\nname = 'a'\n", "s.toml:4: second node 'a', expected a name of its own"},
        {"[[light]]\nname = 'a'\ntype = 'spot'\nfalloff = 180\n",
         "s.toml:4: 'falloff' is too wide for a spot light, expected at most 179.5 degrees"},
        {"[[light]]\nname = 'a'\nexclude = []\ninclude = []\n",
         "s.toml:4: both 'exclude' and 'include', expected one of them"},
        {"[[light]]\nname = 'a'\nexclude = ['b']\n", "s.toml:3: unknown node 'b', expected one like 'a'"},
        {"[[node]]\nname = 'a'\n", "s.toml:2: unknown node 'a', expected a node, but the scene has none"},
        {"[scene]\nimport = ['two.obj']\n[[node]]\nname = 'lef'\n",
         "s.toml:4: unknown node 'lef', expected one like 'left', 'right'"},
        {"[[node]]\nname = 'a'\nprimitive = 'box'\nmaterial = 'm'\n",
         "s.toml:4: unknown material 'm', expected a material, but the scene has none"},
        {"[[node]]\nname = 'a'\nprimitive = 'box'\nscale = [1, 0, 1]\n",
         "s.toml:4: 'scale' has a factor 0, expected other numbers"},
        {"[[node]]\nname = 'a'\nprimitive = 'box'\nparent = 'a'\n",
         "s.toml:4: node 'a' moves with this one, expected another parent"},
        {"[[map]]\nname = 'a'\n", "s.toml:1: no 'file' in [[map]], expected one"},
        {"[[map]]\nname = 'a'\nfile = 'none.png'\n", "s.toml:3: no such file 'none.png', expected it at none.png"},
        {"[[material]]\nname = 'a'\nmaps = {diffus = 'b'}\n",
         "s.toml:3: no map can replace 'diffus', expected ambient, diffuse, specular, glossiness, specular_level, "
         "self_illumination, opacity or bump"},
        {"[[material]]\nname = 'a'\ntype = 'multi'\nmaterials = ['a']\n",
         "s.toml:4: material 'a' contains this one, expected others"},
        {"[[material]]\nname = 'a'\n[[material]]\nname = 'a'\n",
         "s.toml:4: second object 'a', expected a name of its own"},
        {"[[keys]]\nposition = []\n", "s.toml:1: expected either 'node' or 'object' in [[keys]]"},
        {"[[light]]\nname = 'a'\n[[keys]]\nnode = 'a'\nposition = [[0, 1, 2]]\n",
         "s.toml:5: a key of 'position' has 3 numbers, expected 4 with the frame first"},
        {"[[light]]\nname = 'a'\n[[keys]]\nobject = 'a'\nparameter = 'exclude'\nvalues = [[0, 1]]\n",
         "s.toml:5: 'exclude' cannot change over time, expected another parameter"},
        {"[[light]]\nname = 'a'\n[[keys]]\nobject = 'a'\nparameter = 'multiplyer'\nvalues = [[0, 1]]\n",
         "s.toml:5: unknown parameter 'multiplyer' of 'a', expected one like 'multiplier', 'shadowMultiplier', "
         "'color'"},
        {"[[fur]]\nname = 'a'\n", "s.toml:1: fur objects cannot be made, expected a plug-in library with them"},
        {"[render.hair]\nx = 1\n", "s.toml:1: there is no hair renderer, expected a plug-in library with one"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(Problem(text).substr(0, 200), message) << text;
}

TEST_F(SceneErrors, MissingSceneFile) {
    EXPECT_EQ(ErrorOf([&] { host::LoadScene(core, folder_ + "/none.toml"); }), folder_ + "/none.toml: no such file");
}
