// Shadow types and modifiers of plug-ins, which scenes name by their classes.

#include "core/block_class.h"
#include "core/block_holder.h"
#include "core/light.h"
#include "scene_fixture.h"
#include "sdk/modifier.h"

using namespace host;

namespace {

/// Lifts all points.
class LiftModifier : public NamedHolder<LiftModifier, BlockHolder<Modifier>> {
public:
    static constexpr Class_ID kClass{0x7e57, 1};
    static constexpr const char* kName = "Test Lift";
    LiftModifier();
    ChannelMask ChannelsUsed() override { return GEOM_CHANNEL; }
    ChannelMask ChannelsChanged() override { return GEOM_CHANNEL; }
    Interval LocalValidity(TimeValue t) override { return ParamValidity(t); }
    void ModifyObject(TimeValue t, ModContext&, ObjectState* os, INode*) override {
        for (int i = 0; i < os->obj->NumPoints(); ++i)
            os->obj->SetPoint(i, os->obj->GetPoint(i) + Point3(0, 0, Float(0, t)));
        os->obj->PointsWereChanged();
    }
};

BlockClassDesc<LiftModifier>& LiftDesc() {
    static BlockClassDesc<LiftModifier> desc(LiftModifier::kName, "testLift", OSM_CLASS_ID, LiftModifier::kClass,
                                             {FloatParam(0, "height", 1, 0, 10)});
    return desc;
}

LiftModifier::LiftModifier() {
    LiftDesc().MakeAutoParamBlocks(this);
}

/// Lets a share of the light through.
class ShareShadow : public BlockHolder<ShadowType> {
public:
    ShareShadow();
    Class_ID ClassID() override { return {0x7e57, 2}; }
    ShadowGenerator* CreateShadowGenerator(LightObject*, ObjLightDesc*, uint32_t) override {
        class Generator : public ShadowGenerator {
        public:
            explicit Generator(float share) : share_(share) {}
            Color Sample(ShadeContext&, const Point3&) override { return Color(1, 1, 1) * share_; }

        private:
            float share_;
        };
        return new Generator(Float(0, 0));
    }
};

BlockClassDesc<ShareShadow>& ShareDesc() {
    static BlockClassDesc<ShareShadow> desc("Test Shadows", "testShadows", SHADOW_TYPE_CLASS_ID, {0x7e57, 2},
                                            {FloatParam(0, "share", 0.5f, 0, 1)});
    return desc;
}

ShareShadow::ShareShadow() {
    ShareDesc().MakeAutoParamBlocks(this);
}

class NamedClassesTest : public scene_test::SceneTest {
protected:
    NamedClassesTest() {
        core.Classes().Register(&LiftDesc());
        core.Classes().Register(&ShareDesc());
    }
    static std::string Quad(const std::string& modifiers) {
        return "[scene]\nimport = [\"quad.obj\"]\n[[node]]\nname = \"quad\"\nmodifiers = [" + modifiers + "]\n";
    }
    float HeightOf(const char* name) {
        return static_cast<TriObject*>(NodeOf(name)->EvalWorldState(0).obj)->mesh.verts[0].z;
    }
};

TEST_F(NamedClassesTest, ModifiersByTheirClasses) {
    LoadedScene scene =
        Load(Quad("{ type = \"Test Lift\" }, { type = \"testlift\", name = \"more\", set = { height = 4 } },"
                  "{ type = \"test_lift\", enabled = false }"));
    Node* const quad = NodeOf("quad");
    ASSERT_EQ(quad->NumModifiers(), 3);
    EXPECT_EQ(quad->GetModifier(2)->GetName(), "Test Lift");
    EXPECT_EQ(quad->GetModifier(2)->ClassID(), LiftModifier::kClass);
    EXPECT_EQ(quad->GetModifier(1)->GetName(), "more");
    EXPECT_EQ(HeightOf("quad"), 5);
    SetByText(core, scene, "quad.more.height=2");
    EXPECT_EQ(HeightOf("quad"), 3);
    quad->GetModifier(0)->EnableMod();
    EXPECT_EQ(HeightOf("quad"), 4);
}

TEST_F(NamedClassesTest, WrongModifiersAreNamed) {
    const auto problem = [&](const std::string& modifiers) { return Problem(Quad(modifiers)); };
    const std::string known =
        "expected mesh_select, smooth, normal_flip, xform, bend, noise, skin, morph, mesh_cache or testLift";
    EXPECT_EQ(problem("{ type = \"Test Lft\" }"), "s.toml:5: 'type' is 'Test Lft', " + known);
    EXPECT_EQ(problem("{ type = \"plugin\" }"), "s.toml:5: 'type' is 'plugin', " + known);
    EXPECT_EQ(problem("{ type = \"Bend\" }"), "s.toml:5: 'type' is 'Bend', " + known) << "that is the host's";
    EXPECT_EQ(problem("{ type = 3 }"), "s.toml:5: 'type' is 3, expected text");
    EXPECT_EQ(problem("{ type = \"Test Lift\", height = 3 }"),
              "s.toml:5: unknown key 'height' in [[node.modifiers]] of a plug-in's class, expected 'set' or "
              "another key of it");
    EXPECT_EQ(problem("{ type = \"Test Lift\", set = { width = 3 } }"),
              "s.toml:5: unknown parameter 'width' of 'Test Lift', expected one like 'height'");
    EXPECT_EQ(problem("{ type = \"Test Lift\", set = { height = 11 } }"),
              "s.toml:5: 'height' is 11, expected a number in 0 .. 10");
}

TEST_F(NamedClassesTest, ShadowTypesByTheirClasses) {
    LoadedScene scene = Load("[[light]]\nname = 'key'\nshadows = true\nshadow_type = 'test shadows'\n"
                             "shadow_set = { share = 0.25 }\n[[light]]\nname = 'fill'\nshadows = true\n");
    const auto typeOf = [&](const char* name) {
        return static_cast<Light*>(NodeOf(name)->GetObjectRef())->GetShadowType();
    };
    ASSERT_TRUE(typeOf("key"));
    EXPECT_EQ(typeOf("key"), scene.objects.at("key.shadow"));
    EXPECT_EQ(FloatOf(typeOf("key"), "share"), 0.25f);
    EXPECT_EQ(typeOf("fill"), nullptr) << "geometry's shadows are the host's own";
    SetByText(core, scene, "key.shadow.share=0.75");
    EXPECT_EQ(FloatOf(typeOf("key"), "share"), 0.75f);
}

TEST_F(NamedClassesTest, ShadowTypesShowInPictures) {
    const auto lit = [&](const std::string& keys) {
        core.ResetScene();
        LoadedScene scene = Load("[render]\nwidth = 4\nheight = 4\n[[camera]]\nname = 'c'\nposition = [0, 0, 5]\n"
                                 "[[light]]\nname = 'l'\ntype = 'direct'\nposition = [0, 0, 5]\n" +
                                 keys +
                                 "[[node]]\nname = 'ground'\nprimitive = 'plane'\nsize = [50, 50, 1]\n"
                                 "wire_color = [1, 1, 1]\n");
        Picture picture;
        FrameStats stats;
        EXPECT_EQ(RenderFrame(core, scene.render, nullptr, picture, stats), FrameResult::kDone);
        return picture.GetPixel(2, 2).r;
    };
    EXPECT_NEAR(lit("shadows = true\n"), 1, 1e-5f);
    EXPECT_NEAR(lit("shadows = true\nshadow_type = 'testShadows'\n"), 0.5f, 1e-5f);
    EXPECT_NEAR(lit("shadows = false\nshadow_type = 'testShadows'\n"), 1, 1e-5f);
}

TEST_F(NamedClassesTest, WrongShadowTypesAreNamed) {
    const auto problem = [&](const std::string& keys) { return Problem("[[light]]\nname = 'l'\n" + keys); };
    EXPECT_EQ(problem("shadow_type = 'soft'"), "s.toml:3: unknown shadow type 'soft', expected testShadows");
    EXPECT_EQ(problem("shadow_set = { share = 1 }"), "s.toml:3: 'shadow_set' without 'shadow_type', expected both");
    EXPECT_EQ(problem("shadow_type = 'testShadows'\nshadow_set = { shore = 1 }"),
              "s.toml:4: unknown parameter 'shore' of 'testShadows', expected one like 'share'");
    core.Classes().Unregister(&ShareDesc());
    EXPECT_EQ(problem("shadow_type = 'soft'"),
              "s.toml:3: unknown shadow type 'soft', expected one of a plug-in, but none is loaded");
}

TEST_F(NamedClassesTest, ClassesThatMakeNothingAreNamed) {
    LoadPlugin();
    EXPECT_EQ(Problem("[[light]]\nname = 'l'\nshadow_type = 'velmar Shadows'\n"),
              "s.toml:3: shadow type 'velmar Shadows' cannot be made here, expected another one");
    EXPECT_EQ(Problem(Quad("{ type = \"Model Hair\" }")),
              "s.toml:5: modifier 'Model Hair' cannot be made here, expected another one");
}

} // namespace
