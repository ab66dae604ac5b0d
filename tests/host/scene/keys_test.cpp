// [[keys]] of all kinds, and their table.

#include "core/controllers.h"
#include "scene/key_report.h"
#include "scene_fixture.h"

using namespace host;
using namespace scene_test;

namespace {

class SceneKeys : public SceneTest {
protected:
    static constexpr TimeValue kFrame = 160;
    LoadedScene LoadKeys(const std::string& keys) { return Load(WithKeys("[scene]\nfps = 30\n", keys)); }
    std::string KeysProblem(const std::string& keys) { return Problem(WithKeys("", keys)); }
    static std::string WithKeys(std::string scene, const std::string& keys) {
        scene.append("[[node]]\nname = 'b'\nprimitive = 'box'\n[[light]]\nname = 'l'\n[[keys]]\n");
        return scene.append(keys);
    }
    float Multiplier(double frame) {
        return FloatOf(NodeOf("l")->GetObjectRef(), "multiplier", TimeValue(frame * kFrame));
    }
    Matrix3 Place(double frame) { return NodeOf("b")->GetNodeTM(TimeValue(frame * kFrame)); }
};

const char* const kMultiplier = "object = 'l'\nparameter = 'multiplier'\n";

TEST_F(SceneKeys, StepsHoldAndBezierCurves) {
    LoadKeys(std::string(kMultiplier) + "values = [[0, 1], [10, 2]]\ninterpolation = 'step'\n");
    EXPECT_EQ(Multiplier(9.9), 1);
    core.ResetScene();
    LoadKeys(std::string(kMultiplier) + "values = [[0, 0], [10, 1], [20, 1]]\ninterpolation = 'bezier'\n");
    EXPECT_EQ(Multiplier(15), 1) << "automatic tangents do not overshoot";
    EXPECT_GT(Multiplier(8), 0.8f);
    core.ResetScene();
    LoadKeys(std::string(kMultiplier) +
             "values = [[0, 0], [10, 1], [20, 1]]\ninterpolation = 'bezier'\ntangents = 'smooth'\n");
    EXPECT_GT(Multiplier(15), 1);
}

TEST_F(SceneKeys, OwnTangentsAreChangesAFrame) {
    LoadKeys(std::string(kMultiplier) + "values = [[0, 0, 0, 2], [10, 0, 0, 0]]\ninterpolation = 'bezier'\n");
    EXPECT_NEAR(Multiplier(0.05), 0.1f, 0.002f);
    core.ResetScene();
    LoadKeys("node = 'b'\ninterpolation = 'bezier'\n"
             "rotation = [[0, 0, 0, 0, 0, 0, 0, 0, 0, 9], [10, 0, 0, 90, 0, 0, 9, 0, 0, 0]]\n"
             "position = [[0, 1, 2, 3, 0, 0, 0, 3, 0, 0], [10, 1, 2, 3, 0, 0, 0, 0, 0, 0]]\n");
    const float s = std::sqrt(0.5f);
    const Point3 x = Place(5).GetRow(0);
    EXPECT_NEAR(x.x, s, 1e-4f) << "9 degrees a frame all the way: 45 degrees in the middle, counter-clockwise";
    EXPECT_NEAR(x.y, s, 1e-4f);
    EXPECT_NEAR(Place(0.05).GetTrans().x, 1.15f, 0.003f);
}

TEST_F(SceneKeys, WhatIsBeyondTheKeys) {
    LoadKeys(std::string(kMultiplier) + "values = [[0, 0], [10, 10]]\nout_of_range = 'cycle'\nrange = [0, 20]\n"
                                        "before_range = 'linear'\n");
    EXPECT_EQ(Multiplier(15), 10);
    EXPECT_EQ(Multiplier(25), 5);
    EXPECT_EQ(Multiplier(-3), -3);
    core.ResetScene();
    LoadKeys(std::string(kMultiplier) + "values = [[0, 0], [10, 10]]\nout_of_range = 'pingpong'\n");
    EXPECT_EQ(Multiplier(13), 7);
    EXPECT_EQ(Multiplier(-4), 4);
}

TEST_F(SceneKeys, Problems) {
    EXPECT_EQ(KeysProblem(std::string(kMultiplier) + "values = [[0, 1, 2]]\ninterpolation = 'bezier'\n"),
              "s.toml:9: a key of 'values' has 3 numbers, expected 2 with the frame first, or 4 with tangents");
    EXPECT_EQ(KeysProblem(std::string(kMultiplier) + "values = [[0, 1, 2, 3]]\n"),
              "s.toml:9: a key of 'values' has 4 numbers, expected 2 with the frame first");
    EXPECT_EQ(KeysProblem(std::string(kMultiplier) + "values = [[0, 1]]\nrange = [4, 4]\n"),
              "s.toml:10: 'range' is empty, expected its later frame second");
    EXPECT_EQ(KeysProblem(std::string(kMultiplier) + "values = [[0, 1]]\ninterpolation = 'smooth'\n"),
              "s.toml:10: 'interpolation' is 'smooth', expected linear, bezier, step or constant");
}

TEST_F(SceneKeys, TheTableShowsEverything) {
    const LoadedScene scene =
        Load("[scene]\nfps = 30\n[[node]]\nname = 'b'\nprimitive = 'box'\n[[light]]\nname = 'l'\n"
             "[[keys]]\nnode = 'b'\nrotation = [[0, 0, 0, 0], [2.5, 10, -20, 130]]\nout_of_range = 'loop'\n"
             "[[keys]]\nobject = 'l'\nparameter = 'color'\ninterpolation = 'bezier'\n"
             "values = [[0, 1, 0.5, 0], [10, 0, 0, 0, 0, 0, 0, -0.25, 0, 0]]\n");
    const std::vector<KeyedTrack> tracks = ListKeyedTracks(core, scene);
    std::string text;
    for (const KeyedTrack& t : tracks) text += KeyTableText(t, core.GetTicksPerFrame());
    EXPECT_EQ(text, "b, Transform, Rotation: Linear Rotation, frames 0 to 2.5, loop before, loop after\n"
                    "  frame  value         in      out\n"
                    "      0  0, 0, 0       linear  linear\n"
                    "    2.5  10, -20, 130  linear  linear\n"
                    "l, Object, Parameters, color: Bezier Point3, frames 0 to 10, constant before, constant after\n"
                    "  frame  value      in       out\n"
                    "      0  1, 0.5, 0  auto     auto\n"
                    "     10  0, 0, 0    0, 0, 0  -0.25, 0, 0\n");
}

TEST_F(SceneKeys, AnglesComeBackAsTheyWereSet) {
    LoadedScene scene;
    for (const Point3 angles : {Point3(0, 90, 30), Point3(0, -90, -50), Point3(170, 45, -170), Point3(-30, 0, 0)}) {
        core.ResetScene();
        char keys[200];
        std::snprintf(keys, sizeof keys, "node = 'b'\nrotation = [[0, %g, %g, %g]]\n", double(angles.x),
                      double(angles.y), double(angles.z));
        scene = LoadKeys(keys);
        const std::string text = KeyTableText(ListKeyedTracks(core, scene).at(0), kFrame);
        char expected[100];
        std::snprintf(expected, sizeof expected, "%g, %g, %g", double(angles.x), double(angles.y), double(angles.z));
        EXPECT_NE(text.find(expected), std::string::npos) << text;
    }
}

TEST_F(SceneKeys, ListenersHearOfFiles) {
    static std::vector<int> heard;
    heard.clear();
    const auto hear = [](void*, int code, void* file) {
        if (std::string(static_cast<const char*>(file)).find("s.toml") != std::string::npos) heard.push_back(code);
    };
    for (const int code : {NOTIFY_FILE_PRE_OPEN, NOTIFY_FILE_POST_OPEN, NOTIFY_FILE_OPEN_FAILED})
        core.RegisterNotification(hear, nullptr, code);
    Load("");
    EXPECT_NE(Problem("x = 1\n"), "");
    EXPECT_EQ(heard, (std::vector<int>{NOTIFY_FILE_PRE_OPEN, NOTIFY_FILE_POST_OPEN, NOTIFY_FILE_PRE_OPEN,
                                       NOTIFY_FILE_OPEN_FAILED}));
}

} // namespace
