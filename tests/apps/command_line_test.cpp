// Exit statuses and messages of the command line.

#include <algorithm>

#include "run_program.h"

using namespace apps_test;

using CommandLine = ProgramTest;

TEST_F(CommandLine, HelpAndVersion) {
    const RunResult help = Run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* const word : {"render", "info", "params", "grow", "guides", "simulate", "run"})
        EXPECT_NE(help.out.find(word), std::string::npos) << word;
    EXPECT_EQ(help.out.find("docs"), std::string::npos);
    EXPECT_EQ(help.err, "");
    EXPECT_NE(Run({"render", "--help"}).out.find("#"), std::string::npos);
    const RunResult version = Run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out.find("velmar 1."), 0u);
}

TEST_F(CommandLine, WrongUseGivesStatusOne) {
    const std::vector<std::vector<std::string>> cases = {
        {},
        {"paint"},
        {"render"},
        {"render", "good.toml"},
        {"render", "good.toml", "-o", "a.png", "--bright"},
        {"render", "good.toml", "-o", "a.png", "--frames", "1..5"},
        {"render", "good.toml", "-o", "a.png", "--frames", "1-2"},
        {"render", "good.toml", "-o", "a.png", "-f", "1", "--frames", "2"},
        {"render", "good.toml", "-o", "a.png", "--size", "32"},
        {"render", "good.toml", "-o", "a.png", "--size", "32x24x1"},
        {"render", "good.toml", "-o", "a.png", "--threads", "-1"},
        {"render", "good.toml", "-o", "a.png", "--progress", "bar"},
        {"params", "good.toml"},
        {"docs"},
    };
    for (const auto& args : cases) {
        const RunResult r = Run(args);
        EXPECT_EQ(r.status, 1) << testing::PrintToString(args);
        EXPECT_EQ(r.err.find("velmar: error: "), 0u) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_EQ(r.out, "");
    }
    EXPECT_EQ(Names(), (std::vector<std::string>{"good.toml", "quad.obj"}));
}

TEST_F(CommandLine, WhatIsNotThereYetSaysSo) {
    for (const char* const name : {"grow", "guides", "simulate", "run"})
        ExpectError({name, "good.toml", "-o", "x"}, 3, std::string("the command '") + name + "' is not there yet");
    ExpectError({"params", "good.toml", "--object", "coat", "--save", "x.fur"}, 3, "parameter files are not there yet");
    ExpectError({"params", "good.toml", "--object", "coat", "--load", "x.fur"}, 3, "parameter files are not there yet");
}

TEST_F(CommandLine, BadInputGivesStatusTwoAndLeavesNothing) {
    Write("mesh.toml", "[scene]\nimport = ['none.obj']\n");
    Write("empty.obj", "v 0 0 0\n");
    Write("faceless.toml", "[scene]\nimport = ['empty.obj']\n");
    Write("nan.obj", "v 0 0 0\nv 0 nan 0\nv 0 0 1\nf 1 2 3\n");
    Write("nan.toml", "[scene]\nimport = ['nan.obj']\n");
    Write("range.obj", "v 0 0 0\nf 1 1 9\n");
    Write("range.toml", "[scene]\nimport = ['range.obj']\n");
    Write("emitter.toml", "[scene]\nimport = ['quad.obj']\n[[fur]]\nname = 'coat'\nemitters = ['quat']\n");
    Write("type.toml", "[render]\nwidth = 'wide'\n");
    Write("key.toml", "[render]\nwidht = 5\n");
    Write("camera.toml", "");
    const auto before = Names();
    const std::pair<const char*, const char*> cases[] = {
        {"none.toml", "none.toml: no such file"},
        {"mesh.toml", "mesh.toml:2: no such file 'none.obj', expected it at none.obj"},
        {"faceless.toml", "empty.obj: has no faces, expected at least one"},
        {"nan.toml", "nan.obj:2: position is not finite, expected three finite numbers after 'v'"},
        {"range.toml", "range.obj:2: vertex index 9 is out of range, expected 1 .. 1"},
        {"emitter.toml", "emitter.toml:5: unknown node 'quat', expected one like 'quad'"},
        {"type.toml", "type.toml:2: 'width' is the text 'wide', expected a whole number"},
        {"key.toml", "key.toml:2: unknown key 'widht' in [render], expected 'width' or another key of it"},
        {"camera.toml", "the scene has no camera, expected one"},
    };
    for (const auto& [scene, line] : cases) ExpectError({"render", scene, "-o", "a.png"}, 2, line);
    ExpectError({"render", "good.toml", "-o", "a.png", "--size", "0x0"}, 2,
                "cannot render a picture of 0 x 0 pixels, expected 1 to 32768 a side");
    ExpectError({"render", "good.toml", "-o", "a.png", "--set", "coat.pid_length=-1"}, 2,
                "--set 'coat.pid_length=-1': 'pid_length' is -1, expected a number in 0 .. 1000000");
    ExpectError({"info", "none.toml"}, 2, "none.toml: no such file");
    ExpectError({"params", "good.toml", "--list", "--object", "coot"}, 2,
                "unknown object 'coot', expected one like 'coat', 'cam', 'key'");
    ExpectError({"info", "good.toml", "--plugin", "none.dlu"}, 2, "none.dlu: no such file");
    EXPECT_EQ(Names(), before);
}

TEST_F(CommandLine, UnwritableOutputs) {
    std::filesystem::create_directory(folder_ + "/taken.png");
    const auto before = Names();
    for (const char* const output : {"none/a.png", "taken.png", "a.txt", "a"}) {
        const RunResult r = Run({"render", "good.toml", "-o", output});
        EXPECT_EQ(r.status, 2) << output;
        EXPECT_EQ(r.err.find("velmar: error: "), 0u) << r.err;
        EXPECT_NE(r.err.find(output), std::string::npos) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    }
    EXPECT_EQ(Run({"render", "good.toml", "-o", "a.png", "--stats", "none/s.json"}).status, 2);
    EXPECT_EQ(Names(), before);
}

TEST_F(CommandLine, InfoListsNodesMeshesAndHair) {
    const RunResult r = Run({"info", "good.toml"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_NE(r.out.find("scene good.toml: frames 0 to 100 at 30 a second, picture 32 x 24\n"), std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("node 'quad': mesh, 4 vertices, 3 faces, 1 degenerate, from quad.obj (scale 1, z up)\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("node 'cam': Target Camera\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("node 'key': Omni Light\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("fur 'coat': emitters [quad], about 4"), std::string::npos) << r.out;
}

TEST_F(CommandLine, InfoPrintsKeys) {
    EXPECT_EQ(Run({"info", "good.toml", "--keys"}).out, "nothing changes over time\n");
    Write("keys.toml", "[scene]\nfps = 24\n[[light]]\nname = 'lamp'\n"
                       "[[keys]]\nnode = 'lamp'\nposition = [[0, 0, 0, 0], [12, 1, 2, 3]]\n");
    const RunResult r = Run({"info", "keys.toml", "--keys"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "lamp, Transform, Position: Linear Position, frames 0 to 12, constant before, constant after\n"
                     "  frame  value    in      out\n"
                     "      0  0, 0, 0  linear  linear\n"
                     "     12  1, 2, 3  linear  linear\n");
}

TEST_F(CommandLine, InfoShowsStacksSetsAndShapes) {
    Write("stack.toml",
          "[scene]\nimport = ['quad.obj']\n[[node]]\nname = 'quad'\nface_sets = { half = { ids = [0] } }\n"
          "modifiers = [{ type = 'mesh_select', level = 'vertex', select = { ids = [1, 2] } }, "
          "{ type = 'xform', name = 'move', in_render = false }, { type = 'skin', bones = ['b'], weights = [[0, 0, 1]] "
          "}, "
          "{ type = 'smooth', enabled = false }]\n[[node]]\nname = 'b'\nprimitive = 'empty'\n[[keys]]\nnode = 'b'\n"
          "position = [[2, 0, 0, 0], [8, 1, 0, 0]]\n[[shape]]\nname = 'wire'\n"
          "splines = [{ points = [[0, 0, 0], [3, 0, 0], [3, 4, 0]], closed = true }, { points = [[0, 0, 0], [0, 0, 2]] "
          "}]");
    const RunResult r = Run({"info", "stack.toml"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("  face set 'half': 1 face\n  selected: 2 vertices\n  modifier 'smooth': Smooth, off\n"
                         "  modifier 'skin': Skin\n  modifier 'move': XForm, off in pictures\n"
                         "  modifier 'mesh_select': Mesh Select\n"
                         "  base: Editable Mesh; the outcome is the same up to frame 2\n"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("node 'wire': shape, 2 splines, 5 knots\n  spline: 3 knots, closed, length 12\n"
                         "  spline: 2 knots, open, length 2\n"),
              std::string::npos)
        << r.out;
}

TEST_F(CommandLine, InfoListsEffectsInTheirOrder) {
    Write("fx.toml", "[[effect]]\nname = 'haze'\nclass = 'depth_fog'\n[[effect]]\nclass = 'blur'\nactive = false\n"
                     "[[image_filter]]\nclass = 'negative'\n");
    const RunResult r = Run({"info", "fx.toml"});
    EXPECT_NE(r.out.find("effect 'haze': Depth Fog\neffect: Blur, off\nimage filter: Negative\n"), std::string::npos)
        << r.out << r.err;
}

TEST_F(CommandLine, InfoKeepsNamesFromTheTerminal) {
    Write("odd.toml", "[[node]]\nname = \"a\\u001b[31m\\nb\"\nprimitive = 'empty'\n");
    const RunResult r = Run({"info", "odd.toml"});
    EXPECT_NE(r.out.find("node 'a [31m b': no object\n"), std::string::npos) << r.out << r.err;
}

TEST_F(CommandLine, ParamsListsEveryParameter) {
    const RunResult r = Run({"params", "good.toml", "--list", "--object", "coat", "--set", "coat.Length=0.5"});
    EXPECT_EQ(r.status, 0);
    std::istringstream lines(r.out);
    std::string line, length;
    int count = 0;
    while (std::getline(lines, line)) {
        ++count;
        if (line.find("pid_length ") == 0) length = line;
    }
    EXPECT_GT(count, 130);
    std::istringstream words(length);
    std::vector<std::string> fields;
    for (std::string w; words >> w;) fields.push_back(w);
    EXPECT_EQ(fields, (std::vector<std::string>{"pid_length", "Length", "float", "0.5", "4", "0", "..", "1000000"}));
}

TEST_F(CommandLine, DocsPrintsTheReference) {
    EXPECT_EQ(Run({"docs", "--scene"}).out, FileText(VELMAR_SOURCE_DIR "/docs/scene.md"));
}
