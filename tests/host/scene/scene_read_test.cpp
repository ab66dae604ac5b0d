// Every section of a scene, read.

#include <cmath>
#include <numbers>

#include "core/camera.h"
#include "core/light.h"
#include "scene_fixture.h"
#include "sdk/mtl.h"

using namespace host;
using namespace scene_test;

using SceneRead = SceneTest;

namespace {

void ExpectNear(const Point3& a, const Point3& b) {
    EXPECT_NEAR(a.x, b.x, 1e-5);
    EXPECT_NEAR(a.y, b.y, 1e-5);
    EXPECT_NEAR(a.z, b.z, 1e-5);
}

} // namespace

TEST_F(SceneRead, AnEmptyFileHasTheDefaults) {
    const LoadedScene s = Load("");
    EXPECT_EQ(s.render.width, 640);
    EXPECT_EQ(s.render.height, 480);
    EXPECT_EQ(s.render.pixelAspect, 1.0f);
    EXPECT_EQ(s.render.threads, 0);
    EXPECT_EQ(s.firstFrame, 0);
    EXPECT_EQ(s.lastFrame, 100);
    EXPECT_EQ(core.GetFrameRate(), 30);
    EXPECT_TRUE(s.meshes.empty());
}

TEST_F(SceneRead, SceneAndRender) {
    Write("meshes/deep.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const LoadedScene s =
        Load("[scene]\nimport = ['quad.obj', {file = 'deep.obj', scale = 2.0, up = 'y', name = 'd'}]\n"
             "search = ['meshes']\nfps = 24\nrange = [-5, 20]\nbackground = [0.1, 0.2, 0.3]\n"
             "ambient = [0.4, 0.5, 0.6]\n[render]\nwidth = 320\nheight = 200\ncamera = 'c'\naspect = 1.5\n"
             "threads = 2\nsamples = 4\n");
    EXPECT_EQ(core.GetFrameRate(), 24);
    EXPECT_EQ(core.GetAnimRange(), Interval(-1000, 4000));
    Interval valid = FOREVER;
    EXPECT_EQ(core.GetBackGround(0, valid), Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(core.GetAmbient(0, valid), Color(0.4f, 0.5f, 0.6f));
    EXPECT_EQ(s.firstFrame, -5);
    EXPECT_EQ(s.lastFrame, 20);
    EXPECT_EQ(s.render.width, 320);
    EXPECT_EQ(s.render.height, 200);
    EXPECT_EQ(s.render.camera, "c");
    EXPECT_EQ(s.render.pixelAspect, 1.5f);
    EXPECT_EQ(s.render.threads, 2);
    EXPECT_EQ(s.render.samples, 4);
    ASSERT_EQ(s.meshes.size(), 2u);
    EXPECT_STREQ(s.meshes[0].node->GetName(), "quad");
    EXPECT_EQ(s.meshes[0].degenerateFaces, 1);
    EXPECT_STREQ(s.meshes[1].node->GetName(), "d");
    EXPECT_EQ(static_cast<TriObject*>(s.meshes[1].node->GetObjectRef())->mesh.verts[2], Point3(0, 0, 2));
}

TEST_F(SceneRead, HowPicturesAreSampled) {
    const host::LoadedScene plain = Load("");
    EXPECT_EQ(plain.render.filter, host::FilterKind::kBox);
    EXPECT_EQ(plain.render.filterWidth, 1.0f);
    EXPECT_TRUE(plain.render.crop.Empty());
    EXPECT_EQ(plain.render.fields, host::FieldMode::kNone);
    core.ResetScene();
    const host::LoadedScene s = Load("[render]\nfilter = 'mitchell'\nfilter_width = 4.0\ncrop = [1, 2, 30, 40]\n"
                                     "fields = 'odd_first'\nchannels = ['uv', 'velocity']\n"
                                     "renderer_class = [0x58f67d6c, 0x4fcf3bc3]\n");
    EXPECT_EQ(s.render.filter, host::FilterKind::kMitchell);
    EXPECT_EQ(s.render.filterWidth, 4.0f);
    EXPECT_EQ(s.render.crop.x0, 1);
    EXPECT_EQ(s.render.crop.y0, 2);
    EXPECT_EQ(s.render.crop.x1, 30);
    EXPECT_EQ(s.render.crop.y1, 40);
    EXPECT_EQ(s.render.fields, host::FieldMode::kOddFirst);
    EXPECT_EQ(core.GetRendParams().gbufChannels, BMM_CHAN_UV | BMM_CHAN_VELOC);
    ASSERT_NE(core.GetCurrentRenderer(), nullptr);
    EXPECT_EQ(core.GetCurrentRenderer()->ClassID(), Class_ID(0x58f67d6c, 0x4fcf3bc3));
}

TEST_F(SceneRead, WrongSamplingIsRefused) {
    EXPECT_EQ(Problem("[render]\ncrop = [1, 2, 1, 4]\n"),
              "s.toml:2: wrong 'crop', expected [x0, y0, x1, y1] with x0 < x1 and y0 < y1");
    EXPECT_EQ(Problem("[render]\ncrop = [1, 2, 3]\n"),
              "s.toml:2: wrong 'crop', expected [x0, y0, x1, y1] with x0 < x1 and y0 < y1");
    EXPECT_EQ(Problem("[render]\nrenderer_class = [1]\n"),
              "s.toml:2: wrong 'renderer_class', expected two whole numbers");
    EXPECT_EQ(Problem("[render]\nchannels = ['uvw']\n"),
              "s.toml:2: unknown channel 'uvw', expected color, coverage, material_id, node_id, normal, real_pixel, "
              "render_id, transparency, uv or velocity");
}

TEST_F(SceneRead, TheEnvironmentVariableAddsFolders) {
    Write("far/away.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    setenv("VELMAR_PATH", (":/nowhere:" + folder_ + "/far").c_str(), 1);
    EXPECT_EQ(Load("[scene]\nimport = ['away.obj']\n").meshes[0].file, folder_ + "/far/away.obj");
    unsetenv("VELMAR_PATH");
}

TEST_F(SceneRead, Cameras) {
    Load("[[camera]]\nname = 'p'\nposition = [0, -5, 0]\ntarget = [0, 0, 0]\nfov = 90\nnear = 1\nfar = 50\n"
         "[[camera]]\nname = 'o'\ntype = 'orthographic'\nposition = [0, 0, 3]\nzoom = 4\n");
    CameraState state;
    Interval valid = FOREVER;
    static_cast<CameraObject*>(NodeOf("p")->GetObjectRef())->EvalCameraState(0, valid, &state);
    EXPECT_FALSE(state.isOrtho);
    EXPECT_NEAR(state.fov, std::numbers::pi / 2, 1e-6);
    EXPECT_EQ(state.tdist, 5.0f);
    EXPECT_TRUE(state.manualClip);
    EXPECT_EQ(state.hither, 1.0f);
    EXPECT_EQ(state.yon, 50.0f);
    ExpectNear(-NodeOf("p")->GetNodeTM(0).GetRow(2), {0, 1, 0}); // looks along +Y
    ExpectNear(NodeOf("p.target")->GetNodeTM(0).GetTrans(), {0, 0, 0});
    static_cast<CameraObject*>(NodeOf("o")->GetObjectRef())->EvalCameraState(0, valid, &state);
    EXPECT_TRUE(state.isOrtho);
    EXPECT_NEAR(2 * state.tdist * std::tan(state.fov / 2), 4.0, 1e-5);
    ExpectNear(NodeOf("o")->GetNodeTM(0).GetTrans(), {0, 0, 3});
}

TEST_F(SceneRead, Lights) {
    const LoadedScene s =
        Load("[[node]]\nname = 'b'\nprimitive = 'box'\n"
             "[[light]]\nname = 's'\ntype = 'spot'\non = false\ncolor = [1, 0.5, 0]\nmultiplier = 2.5\n"
             "position = [0, 0, 9]\ntarget = [0, 1, 0]\nhotspot = 20\nfalloff = 30\nshadows = true\n"
             "shadow_multiplier = 0.5\naffect_diffuse = false\naffect_specular = false\nambient_only = true\n"
             "exclude = ['b']\n[[light]]\nname = 'd'\ntype = 'direct'\nfalloff = 300\ninclude = ['b']\n");
    auto* const light = static_cast<Light*>(NodeOf("s")->GetObjectRef());
    EXPECT_EQ(s.objects.at("s"), light);
    LightState state;
    Interval valid = FOREVER;
    light->EvalLightState(0, valid, &state);
    EXPECT_EQ(state.type, SPOT_LGT);
    EXPECT_FALSE(state.on);
    EXPECT_EQ(state.color, Color(1, 0.5f, 0));
    EXPECT_EQ(state.intens, 2.5f);
    EXPECT_EQ(state.hotsize, 20.0f);
    EXPECT_EQ(state.fallsize, 30.0f);
    EXPECT_TRUE(state.shadow);
    EXPECT_FALSE(state.affectDiffuse);
    EXPECT_FALSE(state.affectSpecular);
    EXPECT_TRUE(state.ambientOnly);
    EXPECT_EQ(light->Params()->GetFloat(kLightShadowMultiplier), 0.5f);
    EXPECT_EQ(light->Params()->GetINode(kLightExclude), NodeOf("b"));
    EXPECT_EQ(light->Params()->GetInt(kLightInclude), 0);
    auto* const direct = static_cast<Light*>(NodeOf("d")->GetObjectRef());
    EXPECT_EQ(direct->Type(), DIRECT_LGT);
    EXPECT_EQ(direct->Params()->GetInt(kLightInclude), 1);
}

TEST_F(SceneRead, MaterialsAndMaps) {
    Write("p.ppm", "");
    const LoadedScene s = Load(
        "[scene]\nenvironment = 'check'\n"
        "[[map]]\nname = 'check'\ntype = 'checker'\ncolor1 = [1, 0, 0]\ncolor2 = [0, 0, 1]\nchannel = 2\ntile = [3, "
        "4]\n"
        "offset = [0.25, 0.5]\nprojection = 'sphere'\n"
        "[[material]]\nname = 'a'\ndiffuse = [0.1, 0.2, 0.3]\nspecular = [0.4, 0.5, 0.6]\nglossiness = 0.7\n"
        "specular_level = 2\nself_illumination = 0.25\nopacity = 0.5\nmaps = {diffuse = 'check', opacity = 'check'}\n"
        "[[material]]\nname = 'm'\ntype = 'multi'\nmaterials = ['a', '', 'later']\n"
        "[[material]]\nname = 'later'\nambient = [1, 1, 1]\n");
    ReferenceTarget* const map = s.objects.at("check");
    EXPECT_EQ(ColorOf(map, "color1"), Color(1, 0, 0));
    EXPECT_EQ(ColorOf(map, "color2"), Color(0, 0, 1));
    EXPECT_EQ(FloatOf(map, "channel"), 2.0f);
    EXPECT_EQ(FloatOf(map, "tileU"), 3.0f);
    EXPECT_EQ(FloatOf(map, "tileV"), 4.0f);
    EXPECT_EQ(FloatOf(map, "offsetU"), 0.25f);
    EXPECT_EQ(FloatOf(map, "offsetV"), 0.5f);
    EXPECT_EQ(FloatOf(map, "source"), 1.0f);
    EXPECT_EQ(core.GetEnvironmentMap(), map);
    auto* const a = static_cast<Mtl*>(s.objects.at("a"));
    EXPECT_EQ(a->GetDiffuse(), Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(a->GetSpecular(), Color(0.4f, 0.5f, 0.6f));
    EXPECT_EQ(a->GetShininess(), 0.7f);
    EXPECT_EQ(a->GetXParency(), 0.5f);
    EXPECT_EQ(FloatOf(a, "specularLevel"), 2.0f);
    EXPECT_EQ(FloatOf(a, "selfIllumination"), 0.25f);
    EXPECT_EQ(a->GetSubTexmap(ID_DI), map);
    EXPECT_EQ(a->GetSubTexmap(ID_OP), map);
    EXPECT_EQ(a->GetSubTexmap(ID_SP), nullptr);
    auto* const m = static_cast<Mtl*>(s.objects.at("m"));
    ASSERT_TRUE(m->IsMultiMtl());
    ASSERT_EQ(m->NumSubMtls(), 3);
    EXPECT_EQ(m->GetSubMtl(0), a);
    EXPECT_EQ(m->GetSubMtl(1), nullptr);
    EXPECT_EQ(m->GetSubMtl(2), s.objects.at("later"));
    EXPECT_EQ(static_cast<Mtl*>(s.objects.at("later"))->GetAmbient(), Color(1, 1, 1));
}

TEST_F(SceneRead, Nodes) {
    const LoadedScene s =
        Load("[scene]\nimport = ['quad.obj']\n[[material]]\nname = 'm'\n"
             "[[node]]\nname = 'quad'\nposition = [1, 2, 3]\nrotation = [0, 0, 90]\nscale = [2, 1, 1]\nmaterial = 'm'\n"
             "wire_color = [1, 0, 0]\nvisibility = 0.5\nhidden = true\nfrozen = true\nrenderable = false\n"
             "primary_visibility = false\nsecondary_visibility = false\ncast_shadows = false\nreceive_shadows = false\n"
             "atmosphere = false\ngbuffer_id = 7\nproperties = {friction = 0.5, note = 'soft'}\n"
             "[[node]]\nname = 'child'\nprimitive = 'sphere'\nradius = 2\nsegments = 8\nparent = 'quad'\n"
             "position = [1, 0, 0]\n");
    Node* const n = NodeOf("quad");
    // X is doubled, then turned onto Y, then moved.
    ExpectNear(Point3(1, 0, 0) * n->GetObjectTM(0), {1, 4, 3});
    EXPECT_EQ(n->GetMtl(), s.objects.at("m"));
    EXPECT_EQ(n->GetWireColor(), Color(1, 0, 0));
    EXPECT_EQ(n->GetVisibility(0), 0.5f);
    EXPECT_TRUE(n->IsNodeHidden());
    EXPECT_TRUE(n->IsFrozen());
    EXPECT_FALSE(n->Renderable());
    EXPECT_FALSE(n->GetPrimaryVisibility());
    EXPECT_FALSE(n->GetSecondaryVisibility());
    EXPECT_FALSE(n->CastShadows());
    EXPECT_FALSE(n->RcvShadows());
    EXPECT_FALSE(n->ApplyAtmospherics());
    EXPECT_EQ(n->GetGBufID(), 7);
    float friction = 0;
    TSTR note;
    EXPECT_TRUE(n->GetUserPropFloat("friction", friction));
    EXPECT_EQ(friction, 0.5f);
    EXPECT_TRUE(n->GetUserPropString("note", note));
    EXPECT_EQ(note, "soft");
    EXPECT_EQ(NodeOf("child")->GetParentNode(), n);
    ExpectNear(NodeOf("child")->GetNodeTM(0).GetTrans(), {1, 4, 3});
}

TEST_F(SceneRead, KeysMoveNodesAndParameters) {
    Load("[scene]\nfps = 30\n[[node]]\nname = 'b'\nprimitive = 'box'\n[[light]]\nname = 'l'\n"
         "[[keys]]\nnode = 'b'\nposition = [[0, 0, 0, 0], [10, 10, 0, 0]]\nrotation = [[0, 0, 0, 0], [10, 0, 0, 90]]\n"
         "scale = [[0, 1, 1, 1], [10, 3, 1, 1]]\n"
         "[[keys]]\nobject = 'l'\nparameter = 'multiplier'\nvalues = [[0, 1], [10, 2]]\ninterpolation = 'constant'\n"
         "[[keys]]\nobject = 'l'\nparameter = 'color'\nvalues = [[0, 0, 0, 0], [10, 1, 0.5, 0]]\n");
    const TimeValue half = 5 * 160;
    ExpectNear(NodeOf("b")->GetNodeTM(half).GetTrans(), {5, 0, 0});
    const float s = 2 * std::sqrt(0.5f);
    ExpectNear(NodeOf("b")->GetNodeTM(half).GetRow(0), {s, s, 0});
    Object* const light = NodeOf("l")->GetObjectRef();
    EXPECT_EQ(FloatOf(light, "multiplier", half), 1.0f);
    EXPECT_EQ(FloatOf(light, "multiplier", 1600), 2.0f);
    EXPECT_EQ(ColorOf(light, "color", half), Color(0.5f, 0.25f, 0));
}

TEST_F(SceneRead, ParametersByText) {
    LoadedScene s = Load("[[light]]\nname = 'my.light'\n");
    Object* const light = NodeOf("my.light")->GetObjectRef();
    SetByText(core, s, "my.light.multiplier=3");
    EXPECT_EQ(FloatOf(light, "multiplier"), 3.0f);
    SetByText(core, s, "my.light.COLOR=[1, 0, 0]");
    EXPECT_EQ(ColorOf(light, "color"), Color(1, 0, 0));
    const auto problem = [&](const char* text) { return ErrorOf([&] { SetByText(core, s, text); }); };
    EXPECT_EQ(problem("multiplier=3"), "--set 'multiplier=3': expected OBJECT.PARAM=VALUE");
    EXPECT_EQ(problem("a.b"), "--set 'a.b': expected OBJECT.PARAM=VALUE");
    EXPECT_EQ(problem("my.lihgt.on=true"),
              "--set 'my.lihgt.on=true': unknown object 'my.lihgt', expected one like 'my.light'");
    EXPECT_EQ(problem("my.light.on=1"), "--set 'my.light.on=1': 'on' is 1, expected true or false");
    EXPECT_EQ(problem("my.light.multiplier=much"),
              "--set 'my.light.multiplier=much': 'multiplier' is the text 'much', expected a number");
    EXPECT_EQ(problem("my.light.shadowMultiplier=2"),
              "--set 'my.light.shadowMultiplier=2': 'shadowMultiplier' is 2, expected a number in 0 .. 1");
}
