// Fur and hair objects of scenes, with the real library.

#include "scene_fixture.h"
#include "sdk/mtl.h"
#include "sdk/properties.h"

using namespace host;
using namespace scene_test;

class SceneHair : public SceneTest {
protected:
    void SetUp() override { LoadPlugin(); }
    // A fur object on the quad, with more lines.
    static std::string Fur(const std::string& lines) {
        return "[scene]\nimport = ['quad.obj']\n[[fur]]\nname = 'coat'\nemitters = ['quad']\n" + lines;
    }
    ReferenceTarget* Part(Animatable* object, const char* name) {
        const ParamPlace p = FindParam(object, "it", name);
        return p.block->GetReferenceTarget(p.def->id);
    }
    static ScriptValue Property(ReferenceTarget* target, const char* name) {
        ScriptValue value;
        TSTR error;
        IScriptProperties* const script = GetScriptProperties(target);
        EXPECT_TRUE(script && script->GetProperty(name, value, error)) << error;
        return value;
    }
    static float CurveAt(ReferenceTarget* curve, float x) {
        ScriptValue value;
        TSTR error;
        EXPECT_TRUE(GetScriptProperties(curve)->Call("GetValue", {ScriptValue::Float(x)}, value, error)) << error;
        return value.f;
    }
};

TEST_F(SceneHair, ObjectsGrowOnTheirEmitters) {
    const LoadedScene s = Load(Fur("[[hair]]\nname = 'mane'\nenabled = false\n"));
    ASSERT_EQ(s.hair.size(), 2u);
    EXPECT_EQ(s.hair[0].name, "coat");
    EXPECT_TRUE(s.hair[0].isFur);
    EXPECT_EQ(s.hair[0].object->ClassID(), kFurClass);
    EXPECT_EQ(s.hair[1].object->ClassID(), kHairClass);
    EXPECT_TRUE(s.hair[0].object->Active(0));
    EXPECT_FALSE(s.hair[1].object->Active(0));
    const ParamPlace p = FindParam(s.hair[0].object, "coat", "pid_emitters");
    EXPECT_EQ(p.block->GetINode(p.def->id), NodeOf("quad"));
    EXPECT_EQ(core.NumAtmospheric(), 3); // with the renderer
    EXPECT_EQ(s.objects.count("render"), 1u);
}

TEST_F(SceneHair, ParametersByInternalAndScriptName) {
    const LoadedScene s = Load(Fur("[fur.set]\npid_length = 0.25\n\"Density Per Area\" = 7\nKnots = 6\n"
                                   "base_color = [0.1, 0.2, 0.3]\npid_fixRefFrame = 3\npid_useCurliness = true\n"
                                   "[render.hair]\nQuality_Memory = 2.5\nfilter_type = 1\n"));
    ReferenceTarget* const fur = s.objects.at("coat");
    EXPECT_EQ(FloatOf(fur, "pid_length"), 0.25f);
    EXPECT_EQ(FloatOf(fur, "pid_densPerArea"), 7.0f);
    EXPECT_EQ(FloatOf(fur, "pid_knots"), 6.0f);
    EXPECT_EQ(ColorOf(fur, "pid_colBase"), Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(FloatOf(fur, "pid_fixRefFrame"), 480.0f);
    EXPECT_EQ(FloatOf(fur, "pid_useCurliness"), 1.0f);
    EXPECT_EQ(FloatOf(s.objects.at("render"), "Quality_Memory"), 2.5f);
    EXPECT_EQ(FloatOf(s.objects.at("render"), "Filter_Type"), 1.0f);
}

TEST_F(SceneHair, Curves) {
    const LoadedScene s =
        Load(Fur("[fur.curve.thickness]\nknots = [[0, 1, 'corner'], [0.5, 0.25, 'corner'], [1, 0]]\n"
                 "[fur.curve.pid_curve_curlTurns]\nenabled = false\n"
                 "[fur.curve.clumpShape]\nnoise = true\nnoise_size = 0.5\nnoise_density = 3\nnoise_phase = 1\n"
                 "[fur.random.length]\nknots = [[0, 0], [1, 0.5]]\n"));
    ReferenceTarget* const fur = s.objects.at("coat");
    ReferenceTarget* const thickness = Part(fur, "pid_curve_thickness");
    EXPECT_EQ(CurveAt(thickness, 0.25f), 0.625f);
    EXPECT_EQ(CurveAt(thickness, 0.75f), 0.125f);
    EXPECT_EQ(Property(thickness, "enabled").i, 1);
    EXPECT_EQ(Property(Part(fur, "pid_curve_curlTurns"), "enabled").i, 0);
    ReferenceTarget* const clump = Part(fur, "pid_curve_clumpShape");
    EXPECT_EQ(Property(clump, "useNoise").i, 1);
    EXPECT_EQ(Property(clump, "noiseSize").f, 0.5f);
    EXPECT_EQ(Property(clump, "noiseDensity").f, 3.0f);
    EXPECT_EQ(Property(clump, "noisePhase").f, 1.0f);
    EXPECT_EQ(CurveAt(Part(fur, "pid_randDist_length"), 0.5f), 0.25f);
}

TEST_F(SceneHair, SurfaceDistributionsMaterialAndMapping) {
    const LoadedScene s = Load(
        Fur("material = 'm'\nmap_channels = [-2, 3]\n"
            "[fur.surface.density]\nsource = 'channel'\nchannel_type = 'colors'\nchannel = 5\ncomponent = 'green'\n"
            "[fur.surface.length]\nmap = 'check'\nenabled = false\n"
            "[fur.surface.colBase]\nsource = 'material'\nsubmaterial = 2\nfinal_shading = true\n"
            "[[material]]\nname = 'm'\n[[map]]\nname = 'check'\ntype = 'checker'\n"));
    ReferenceTarget* const fur = s.objects.at("coat");
    ReferenceTarget* const density = Part(fur, "pid_surfDist_density");
    EXPECT_EQ(Property(density, "enabled").i, 1);
    EXPECT_EQ(Property(density, "type").i, 2);
    EXPECT_EQ(Property(density, "channelType").i, 1);
    EXPECT_EQ(Property(density, "channelID").i, 5);
    EXPECT_EQ(Property(density, "component").i, 2);
    ReferenceTarget* const length = Part(fur, "pid_surfDist_length");
    EXPECT_EQ(Property(length, "enabled").i, 0);
    EXPECT_EQ(Property(length, "map").r, s.objects.at("check"));
    ReferenceTarget* const color = Part(fur, "pid_surfDist_colBase");
    EXPECT_EQ(Property(color, "submatID").i, 2);
    EXPECT_EQ(Property(color, "useFinalShading").AsFloat(), 1.0f);
    EXPECT_EQ(Property(fur, "material").r, s.objects.at("m"));
    ScriptValue type;
    TSTR error;
    ASSERT_TRUE(GetScriptProperties(fur)->Call("GetMapping", {ScriptValue::Int(1)}, type, error));
    EXPECT_EQ(type.i, 3);
}

TEST_F(SceneHair, KeysOfParameters) {
    const LoadedScene s = Load(Fur("[[keys]]\nobject = 'coat'\nparameter = 'Length'\nvalues = [[0, 1], [10, 2]]\n"));
    EXPECT_EQ(FloatOf(s.objects.at("coat"), "pid_length", 800), 1.5f);
}

TEST_F(SceneHair, SaysWhatIsWrong) {
    const std::pair<std::string, const char*> cases[] = {
        {"[scene]\nimport = ['two.obj']\n[[fur]]\nname = 'a'\nemitters = ['lfet']\n",
         "s.toml:5: unknown node 'lfet', expected one like 'left', 'right'"},
        {"[[light]]\nname = 'l'\n[[fur]]\nname = 'a'\nemitters = ['l']\n",
         "s.toml:5: node 'l' does not suit 'pid_emitters', expected another kind of object"},
        {Fur("params = 'a.fur'\n"), "s.toml:6: parameter files are not there yet, expected parameters in 'set'"},
        {Fur("[fur.set]\npid_lenght = 1\n"), "s.toml:7: unknown parameter 'pid_lenght' of 'coat', expected one like "
                                             "'pid_length', 'pid_winds', 'pid_knots'"},
        {Fur("[fur.set]\n'lean absolute' = 1\n"),
         "s.toml:7: 'lean absolute' is the name of several parameters of 'coat', "
         "expected pid_fur_leanAbsolute or pid_fur_bendAbsolute"},
        {Fur("[fur.set]\npid_length = 'long'\n"), "s.toml:7: 'pid_length' is the text 'long', expected a number"},
        {Fur("[fur.set]\npid_length = -1\n"), "s.toml:7: 'pid_length' is -1, expected a number in 0 .. 1000000"},
        {Fur("[fur.set]\npid_knots = 2.5\n"), "s.toml:7: 'pid_knots' is 2.5, expected a whole number"},
        {Fur("[fur.set]\npid_colBase = 1\n"),
         "s.toml:7: 'pid_colBase' is 1, expected a list of 3 numbers (red, green, blue)"},
        {Fur("[fur.set]\npid_curve_thickness = 1\n"),
         "s.toml:7: 'pid_curve_thickness' is an object, expected its values in a table of curve, surface or random"},
        {Fur("[fur.curve.thicknes]\n"),
         "s.toml:6: unknown name 'thicknes', expected thickness, curlRadius, curlTurns, dynWeight, dynHardness, "
         "dynInertia or clumpShape"},
        {Fur("[fur.curve.thickness]\nknots = [[0, 1]]\n"), "s.toml:7: 1 knots, expected 2 to 100"},
        {Fur("[fur.curve.thickness]\nknots = [[0, 1], [0, 0]]\n"),
         "s.toml:7: knot 2 stands left of the one before, expected ascending x"},
        {Fur("[fur.curve.thickness]\nknots = [[0, 1], [1, 0, 'round']]\n"),
         "s.toml:7: knot type 'round', expected smooth, corner or step"},
        {Fur("[fur.surface.density]\nmap = 'm'\n"),
         "s.toml:7: unknown map 'm', expected a map, but the scene has none"},
        {Fur("material = 'm'\n"), "s.toml:6: unknown material 'm', expected a material, but the scene has none"},
        {Fur("map_channels = [-4]\n"), "s.toml:6: channel type -4, expected -3 .. 99"},
        {Fur("[[fur]]\nname = 'coat'\n"), "s.toml:7: second object 'coat', expected a name of its own"},
        {Fur("[render.hair]\nQuality_Memory = 11\n"), "s.toml:7: 'Quality_Memory' is 11, expected a number in 0 .. 10"},
        {Fur("[[keys]]\nobject = 'coat'\nparameter = 'Knots'\nvalues = [[0, 1]]\n"),
         "s.toml:8: 'pid_knots' cannot change over time, expected another parameter"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(Problem(text), message) << text;
}
