// Scene keys of maps, materials, lights and cameras, and what they may not say.

#include <numbers>

#include "core/camera.h"
#include "core/light.h"
#include "materials/gradient_map.h"
#include "materials/multiply_map.h"
#include "materials/std_mtl.h"
#include "scene_fixture.h"

using namespace host;

namespace {

class SceneLook : public scene_test::SceneTest {
protected:
    static Point3 PointOf(Animatable* object, const std::string& name) {
        const ParamPlace p = FindParam(object, "it", name);
        Interval valid = FOREVER;
        return p.block->GetPoint3(p.def->id, 0, valid);
    }
};

TEST_F(SceneLook, MapsHaveTheirOwnKeys) {
    const LoadedScene s = Load("[[map]]\nname = 'n'\ntype = 'noise'\nnoise = 'turbulence'\nsize = 0.5\nlevels = 4.5\n"
                               "low = 0.2\nhigh = 0.7\nphase = 3\ncolor1 = [1, 0, 0]\nprojection = 'object'\n"
                               "[[map]]\nname = 'g'\ntype = 'gradient'\ngradient = 'radial'\ninterpolation = 'steps'\n"
                               "wrap_u = 'mirror'\nkeys = [[0, 1, 0, 0], [0.5, 0, 1, 0], [1, 0, 0, 1]]\n"
                               "[[map]]\nname = 'v'\ntype = 'vertex_color'\ncomponent = 'blue'\n"
                               "[[map]]\nname = 'c'\ntype = 'checker'\nrotation = 30\n"
                               "output = { invert = true, level = 2, offset = -0.5, amount = 0.25, clamp = true }\n");
    ReferenceTarget* const n = s.objects.at("n");
    EXPECT_EQ(n->ClassID(), NOISE_CLASS_ID);
    const std::pair<const char*, float> noise[] = {{"noiseType", 2.0f}, {"size", 0.5f},   {"levels", 4.5f},
                                                   {"low", 0.2f},       {"high", 0.7f},   {"phase", 3.0f},
                                                   {"source", 4.0f},    {"channel", 1.0f}};
    for (const auto& [name, value] : noise) EXPECT_EQ(FloatOf(n, name), value) << name;
    EXPECT_EQ(PointOf(n, "color1"), Point3(1, 0, 0));
    ReferenceTarget* const g = s.objects.at("g");
    EXPECT_EQ(g->ClassID(), GRADIENT_RAMP_CLASS_ID);
    EXPECT_EQ(FloatOf(g, "gradientType"), 1.0f);
    EXPECT_EQ(FloatOf(g, "interpolation"), 2.0f);
    EXPECT_EQ(FloatOf(g, "wrap"), 1.0f);
    EXPECT_EQ(static_cast<GradientMap*>(g)->ColorAt(0.7f), Color(0, 1, 0));
    EXPECT_EQ(static_cast<GradientMap*>(g)->ColorAt(1), Color(0, 0, 1));
    ReferenceTarget* const v = s.objects.at("v");
    EXPECT_EQ(v->ClassID(), VERTEX_COLOR_CLASS_ID);
    EXPECT_EQ(FloatOf(v, "channel"), 0.0f);
    EXPECT_EQ(FloatOf(v, "part"), 3.0f);
    const std::pair<const char*, float> output[] = {{"invert", 1.0f},  {"level", 2.0f}, {"offset", -0.5f},
                                                    {"amount", 0.25f}, {"clamp", 1.0f}, {"rotation", 30.0f}};
    for (const auto& [name, value] : output) EXPECT_EQ(FloatOf(s.objects.at("c"), name), value) << name;
}

TEST_F(SceneLook, MapsStandForColoursOfMaps) {
    const LoadedScene s =
        Load("[[map]]\nname = 'c'\ntype = 'checker'\nmap1 = 'g'\nmap2 = 'n'\n"
             "[[map]]\nname = 'g'\ntype = 'gradient'\nkeys = [[0, 1, 0, 0], [0.5, 0, 1, 0], [1, 0, 0, "
             "1]]\nkey_maps = ['', 'n']\n"
             "[[map]]\nname = 'n'\ntype = 'noise'\nmap1 = 'm'\n"
             "[[map]]\nname = 'm'\ntype = 'multiply'\ncolor2 = [0.5, 0.25, 1]\n");
    const auto map = [&](const char* name) { return static_cast<Texmap*>(s.objects.at(name)); };
    EXPECT_EQ(map("c")->GetSubTexmap(0), map("g"));
    EXPECT_EQ(map("c")->GetSubTexmap(1), map("n"));
    EXPECT_EQ(map("g")->GetSubTexmap(0), nullptr);
    EXPECT_EQ(map("g")->GetSubTexmap(1), map("n"));
    EXPECT_EQ(map("g")->GetSubTexmap(2), nullptr);
    EXPECT_EQ(map("n")->GetSubTexmap(0), map("m"));
    EXPECT_EQ(map("m")->ClassID(), MULTIPLY_CLASS_ID);
    EXPECT_EQ(PointOf(map("m"), "color1"), Point3(1, 1, 1));
    EXPECT_EQ(PointOf(map("m"), "color2"), Point3(0.5f, 0.25f, 1));
}

TEST_F(SceneLook, WrongSubMapsAreNamed) {
    const auto problem = [&](const std::string& keys) { return Problem("[[map]]\nname = 'a'\n" + keys); };
    EXPECT_EQ(problem("type = 'checker'\nmap1 = 'b'\n"), "s.toml:4: unknown map 'b', expected one like 'a'");
    EXPECT_EQ(problem("type = 'checker'\nmap2 = 'a'\n"), "s.toml:4: map 'a' contains this one, expected others");
    EXPECT_EQ(problem("type = 'noise'\nmap1 = 'b'\n[[map]]\nname = 'b'\ntype = 'multiply'\nmap2 = 'a'\n"),
              "s.toml:8: map 'a' contains this one, expected others");
    EXPECT_EQ(problem("type = 'gradient'\nmap1 = 'a'\n"),
              "s.toml:4: 'map1' in a map of another type, expected checker, noise or multiply");
    EXPECT_EQ(problem("type = 'noise'\nkey_maps = ['a']\n"),
              "s.toml:4: 'key_maps' in a map of another type, expected gradient");
    EXPECT_EQ(problem("type = 'gradient'\nkey_maps = ['', '', '']\n"),
              "s.toml:4: 3 maps in 'key_maps', expected at most one for each of the 2 keys");
    EXPECT_EQ(problem("type = 'gradient'\nkey_maps = ['c']\n"), "s.toml:4: unknown map 'c', expected one like 'a'");
    EXPECT_EQ(problem("type = 'multiply'\nmono = 'luma'\n"), "s.toml:4: 'mono' is 'luma', expected intensity or alpha");
}

TEST_F(SceneLook, MaterialsTakeAmountsSwitchesAndShaders) {
    const LoadedScene s =
        Load("[[map]]\nname = 'c'\ntype = 'checker'\n"
             "[[material]]\nname = 'm'\nshader = 'phong'\ntwo_sided = false\n"
             "self_illumination_color = [0.25, 0.5, 1]\nmaps = { ambient = 'c', bump = 'c' }\n"
             "map_amounts = { ambient = 0.5, bump = -2 }\nmaps_off = ['bump']\nopacity_cutoff = 0.25\n"
             "[[material]]\nname = 'plain'\n");
    auto* const m = static_cast<StdMtl*>(s.objects.at("m"));
    ASSERT_NE(m->GetShader(), nullptr);
    EXPECT_EQ(m->GetShader()->ClassID(), PHONG_SHADER_CLASS_ID);
    EXPECT_FALSE(m->GetTwoSided());
    EXPECT_EQ(PointOf(m, "selfIllumColor"), Point3(0.25f, 0.5f, 1));
    EXPECT_EQ(FloatOf(m, "useSelfIllumColor"), 1.0f);
    EXPECT_EQ(m->GetSubTexmap(ID_AM), s.objects.at("c"));
    EXPECT_EQ(m->GetSubTexmap(ID_BU), s.objects.at("c"));
    EXPECT_EQ(FloatOf(m, "ambientMapAmount"), 0.5f);
    EXPECT_EQ(FloatOf(m, "bumpMapAmount"), -2.0f);
    EXPECT_EQ(FloatOf(m, "bumpMapOn"), 0.0f);
    EXPECT_EQ(FloatOf(m, "opacityCutoff"), 0.25f);
    EXPECT_EQ(FloatOf(m, "ambientMapOn"), 1.0f);
    auto* const plain = static_cast<StdMtl*>(s.objects.at("plain"));
    EXPECT_EQ(plain->GetShader(), nullptr);
    EXPECT_TRUE(plain->GetTwoSided());
}

TEST_F(SceneLook, LightsFadeAndColourTheirShadows) {
    Load("[[light]]\nname = 'l'\ntype = 'direct'\nshape = 'rectangle'\naspect = 2\nnear_attenuation = [1, 2]\n"
         "far_attenuation = [3, 4]\ndecay = 'inverse_square'\ndecay_start = 5\nshadow_color = [1, 0, 0]\n"
         "shadow_bias = 0.5\n[[light]]\nname = 'plain'\n");
    auto* const light = static_cast<Light*>(NodeOf("l")->GetObjectRef());
    LightState state;
    Interval valid = FOREVER;
    light->EvalLightState(0, valid, &state);
    EXPECT_TRUE(state.rectangular && state.useNearAtten && state.useFarAtten);
    EXPECT_EQ(state.aspect, 2.0f);
    EXPECT_EQ(state.nearAttenStart, 1.0f);
    EXPECT_EQ(state.nearAttenEnd, 2.0f);
    EXPECT_EQ(state.farAttenStart, 3.0f);
    EXPECT_EQ(state.farAttenEnd, 4.0f);
    EXPECT_EQ(state.decay, DECAY_INVERSE_SQUARE);
    EXPECT_EQ(state.decayStart, 5.0f);
    EXPECT_EQ(light->Params()->GetColor(kLightShadowColor), Color(1, 0, 0));
    EXPECT_EQ(light->Params()->GetFloat(kLightShadowBias), 0.5f);
    static_cast<Light*>(NodeOf("plain")->GetObjectRef())->EvalLightState(0, valid, &state);
    EXPECT_FALSE(state.rectangular || state.useNearAtten || state.useFarAtten);
    EXPECT_EQ(state.decay, DECAY_NONE);
}

TEST_F(SceneLook, FreeCamerasTurnAndAllRoll) {
    Load("[[camera]]\nname = 'f'\nrotation = [90, 0, 0]\nroll = 45\nenvironment_near = 2\nenvironment_far = 7\n"
         "[[camera]]\nname = 't'\nposition = [0, -5, 0]\ntarget = [0, 0, 0]\n");
    auto* const camera = static_cast<TargetCamera*>(NodeOf("f")->GetObjectRef());
    EXPECT_EQ(camera->ClassID(), SIMPLE_CAM_CLASS_ID);
    EXPECT_EQ(NodeOf("t")->GetObjectRef()->ClassID(), LOOKAT_CAM_CLASS_ID);
    EXPECT_NEAR(Length(NodeOf("f")->GetNodeTM(0).GetRow(2) - Point3(0, -1, 0)), 0, 1e-6f);
    CameraState state;
    Interval valid = FOREVER;
    camera->EvalCameraState(0, valid, &state);
    EXPECT_NEAR(state.roll, std::numbers::pi / 4, 1e-6);
    EXPECT_EQ(state.nearRange, 2.0f);
    EXPECT_EQ(state.farRange, 7.0f);
}

TEST_F(SceneLook, WrongValuesSayWhatWasExpected) {
    EXPECT_EQ(Problem("[[material]]\nname = 'm'\nshader = 'gouraud'"),
              "s.toml:3: unknown shader 'gouraud', expected Blinn or Phong");
    EXPECT_EQ(Problem("[[material]]\nname = 'm'\nmaps = { filter = 'x' }"),
              "s.toml:3: no map can replace 'filter', expected ambient, diffuse, specular, glossiness, specular_level, "
              "self_illumination, opacity or bump");
    EXPECT_EQ(Problem("[[material]]\nname = 'm'\nmaps_off = ['ior']"),
              "s.toml:3: no map can replace 'ior', expected ambient, diffuse, specular, glossiness, specular_level, "
              "self_illumination, opacity or bump");
    EXPECT_EQ(Problem("[[material]]\nname = 'm'\nmap_amounts = { diffuse = 1.5 }"),
              "s.toml:3: the amount of 'diffuse' is 1.5, expected a number from 0 to 1");
    EXPECT_EQ(Problem("[[material]]\nname = 'm'\nmap_amounts = { bump = 'x' }"),
              "s.toml:3: the amount of 'bump' is the text 'x', expected a number");
    EXPECT_EQ(Problem("[[map]]\nname = 'g'\ntype = 'gradient'\nkeys = []"),
              "s.toml:4: a gradient has 0 keys, expected 1 to 32");
    EXPECT_EQ(
        Problem("[[map]]\nname = 'g'\ntype = 'gradient'\nkeys = [[0, 1, 1, 1], [2, 0, 0, 0]]"),
        "s.toml:4: key 2 of a gradient is no place from 0 to 1 with a colour, expected [place, red, green, blue]");
    EXPECT_EQ(Problem("[[map]]\nname = 'c'\ntype = 'checker'\noutput = { invrt = true }"),
              "s.toml:4: unknown key 'invrt' in `output` of a map, expected 'invert' or another key of it");
    EXPECT_EQ(Problem("[[light]]\nname = 'l'\nfar_attenuation = [3, 2]"),
              "s.toml:3: 'far_attenuation' ends before it starts or starts below 0, expected [start, end]");
    EXPECT_EQ(Problem("[[camera]]\nname = 'c'\nenvironment_far = 0"),
              "s.toml:3: 'environment_far' is not beyond 'environment_near', expected a larger number");
    EXPECT_EQ(Problem("[[camera]]\nname = 'c'\ntarget = [1, 0, 0]\nrotation = [0, 0, 0]"),
              "s.toml:4: both 'target' and 'rotation', expected one of them");
}

TEST_F(SceneLook, ShadersOfPluginsAreKnownByName) {
    LoadPlugin();
    core.ResetScene();
    const std::string problem = Problem("[[material]]\nname = 'm'\nshader = 'no such'");
    EXPECT_NE(problem.find("OrenNayarBlinn"), std::string::npos) << problem;
}

} // namespace
