// A fur sphere through the atmospheric interface.

#include "atmo_fixture.h"

namespace {

class RenderTest : public AtmoTest {
protected:
    RenderTest() { context.lights = {&light}; }
    Picture Render() { return RenderScene(core, context); }

    FakeContext context{64, 48, 45};
    FrontLight light;
};

} // namespace

TEST_F(RenderTest, NewFurPutsTheRendererIntoTheScene) {
    MakeFur();
    ASSERT_EQ(core.NumAtmospheric(), 2);
    EXPECT_EQ(core.GetAtmospheric(0)->ClassID(), HAIRRENDER_CLASS_ID);
    MakeFur();
    EXPECT_EQ(core.NumAtmospheric(), 3);
}

TEST_F(RenderTest, FurCoversTheBallAndItsRim) {
    BaseAtmo* fur = MakeFur();
    const Picture picture = Render();
    // The bare ball's disc has a radius of 64 * 10 / sqrt(45^2 - 10^2) pixels.
    const double disc = 3.14159 * std::pow(64 * 10 / std::sqrt(45.0 * 45 - 100), 2);
    EXPECT_GT(picture.Covered(), int(disc));
    EXPECT_LT(picture.Covered(), 64 * 48 * 9 / 10);
    EXPECT_GT(picture.Light(), 10.0);
    EXPECT_GT(HairRender::Existing()->Stats().strands, 1000);
    EXPECT_TRUE(static_cast<IHairSource*>(fur->GetInterface(HAIR_SOURCE_INTERFACE_ID))->Update(0));
}

TEST_F(RenderTest, SamePictureForAnyNumberOfThreads) {
    BaseAtmo* fur = MakeFur();
    Set(*fur, pid_clumpAmount, 0.5f);
    Set(*fur, pid_dirRand, 0.3f);
    SetThreads(core, 1);
    const Picture one = Render();
    ASSERT_GT(one.Covered(), 100);
    for (const int threads : {2, 3, 16}) {
        SetThreads(core, threads);
        EXPECT_EQ(Render(), one) << threads;
    }
}

TEST_F(RenderTest, SecondRenderIsTheFirst) {
    MakeFur();
    const Picture first = Render();
    EXPECT_EQ(Render(), first);
}

TEST_F(RenderTest, LightOfAnotherNodeOnlyLeavesTheFurBlack) {
    MakeFur();
    light.exclude = {node};
    const Picture picture = Render();
    EXPECT_GT(picture.Covered(), 100);
    EXPECT_EQ(picture.Light(), 0.0);
}

TEST_F(RenderTest, ChangedParameterShowsInTheNextRender) {
    BaseAtmo* fur = MakeFur();
    const Picture before = Render();
    Set(*fur, pid_length, 0.5f);
    const Picture shorter = Render();
    EXPECT_LT(shorter.Covered(), before.Covered());
    Set(*fur, pid_colBase, Color(1, 0, 0));
    Set(*fur, pid_colTip, Color(1, 0, 0));
    const Picture red = Render();
    EXPECT_EQ(red.Covered(), shorter.Covered());
    double green = 0, highlight = 0;
    for (const Color& c : red.color) green += c.g, highlight += c.b;
    EXPECT_FALSE(red == shorter);
    EXPECT_EQ(green, highlight); // what is left of both is the grey highlight
}

TEST_F(RenderTest, EmitterThatDoesNotShowGrowsNothing) {
    MakeFur();
    node->Hide(true);
    EXPECT_EQ(Render().Covered(), 0);
    node->Hide(false);
    node->SetRenderFlags(false, true, true, true, true);
    EXPECT_EQ(Render().Covered(), 0);
    node->SetRenderFlags(true, false, true, true, true);
    EXPECT_EQ(Render().Covered(), 0);
    node->SetRenderFlags(true, true, true, true, true);
    EXPECT_GT(Render().Covered(), 100);
}

TEST_F(RenderTest, VisibilityThinsTheHair) {
    MakeFur();
    const Picture solid = Render();
    node->SetVisibility(0.25f);
    const Picture faint = Render();
    double solidTrans = 0, faintTrans = 0;
    for (size_t i = 0; i < solid.trans.size(); ++i) solidTrans += solid.trans[i].r, faintTrans += faint.trans[i].r;
    EXPECT_GT(faintTrans, solidTrans);
}

TEST_F(RenderTest, MovedEmitterMovesTheFur) {
    MakeFur();
    const Picture before = Render();
    node->SetNodeTM(0, TransMatrix({200, 0, 0}));
    EXPECT_EQ(Render().Covered(), 0);
    node->SetNodeTM(0, Matrix3());
    EXPECT_EQ(Render(), before);
}

TEST_F(RenderTest, EditedMeshGrowsOtherFur) {
    MakeFur();
    const Picture before = Render();
    object->mesh = SphereMesh(5, 8, 12);
    object->NotifyDependents(FOREVER, PART_GEOM | PART_TOPO, REFMSG_CHANGE);
    node->InvalidateWorldState();
    EXPECT_LT(Render().Covered(), before.Covered());
}

TEST_F(RenderTest, MaterialOfTheSceneShades) {
    class Flat : public Mtl {
    public:
        void Shade(ShadeContext& sc) override { sc.out.c = Color(0, 1, 0), sc.out.t = Color(0, 0, 0); }
    } flat;
    BaseAtmo* fur = MakeFur();
    ASSERT_TRUE(fur->SetMaterial(&flat));
    const Picture green = Render();
    for (size_t i = 0; i < green.color.size(); ++i) {
        EXPECT_EQ(green.color[i].r, 0.0f);
        EXPECT_EQ(green.color[i].b, 0.0f);
    }
    EXPECT_GT(green.Light(), 100.0);
    fur->SetMaterial(nullptr);
}

TEST_F(RenderTest, MiddleShadingOffDrawsControlStrandsToo) {
    BaseAtmo* fur = MakeFur();
    const Picture shaded = Render();
    const int strands = HairRender::Existing()->Stats().strands;
    Set(*fur, pid_shadeMidStrands, 0);
    const Picture blended = Render();
    EXPECT_GT(blended.Light(), 10.0);
    EXPECT_FALSE(blended == shaded);
    EXPECT_GT(HairRender::Existing()->Stats().strands, strands);
}

TEST_F(RenderTest, AbortEndsTheRender) {
    MakeFur();
    core.RequestRenderAbort();
    EXPECT_EQ(Render().Covered(), 0);
    core.ClearRenderAbort();
    EXPECT_GT(Render().Covered(), 100);
}

TEST_F(RenderTest, HairWithoutModelHairsGrowsNothing) {
    Make(GetHairAtmoClassDesc());
    EXPECT_EQ(Render().Covered(), 0);
}

TEST_F(RenderTest, SwitchedOffObjectDrawsNothing) {
    BaseAtmo* fur = MakeFur();
    fur->SetDisabled(true);
    EXPECT_EQ(Render().Covered(), 0);
}

TEST_F(RenderTest, MeshWithMissingVerticesGrowsNothing) {
    object->mesh.faces[3].v[1] = 100000;
    MakeFur();
    EXPECT_EQ(Render().Covered(), 0);
}

TEST_F(RenderTest, TwoEmittersAreTheSumOfEach) {
    BaseAtmo* fur = MakeFur();
    auto* second = new TriObject;
    second->mesh = SphereMesh(3, 6, 8);
    host::Node* small = core.CreateNode("small", second);
    small->SetNodeTM(0, TransMatrix({0, 18, 0}));
    Render();
    const int alone = HairRender::Existing()->Stats().strands;
    ASSERT_TRUE(fur->AddNode(pid_emitters, small));
    Render();
    EXPECT_GT(HairRender::Existing()->Stats().strands, alone);
    core.DeleteNode(small);
    EXPECT_EQ(fur->EmitterCount(), 2);
    EXPECT_EQ(fur->Emitter(1), nullptr);
    Render();
    EXPECT_EQ(HairRender::Existing()->Stats().strands, alone);
}

TEST_F(RenderTest, TheProgressWindowIsOpenDuringARender) {
    host::MemoryDialogs dialogs;
    core.SetDialogs(&dialogs);
    MakeFur();
    IParamBlock2* const block = HairRender::Instance().GetParamBlock(0);
    block->SetValue(HRP_USE_PROGRESS, 0, 0);
    Render();
    EXPECT_EQ(dialogs.Count(), 0u);
    block->SetValue(HRP_USE_PROGRESS, 0, 1);
    core.GetAtmospheric(0)->RenderBegin(0);
    for (int i = 0; i < 1000 && dialogs.Count() == 0; ++i) diag::SleepMs(5);
    ASSERT_EQ(dialogs.Count(), 1u);
    EXPECT_EQ(dialogs.At(0).TemplateId(), 1058);
    EXPECT_EQ(dialogs.At(0).Title(), "Hair Render Progress");
    EXPECT_TRUE(dialogs.At(0).IsOpen());
    core.GetAtmospheric(0)->RenderEnd(0);
    EXPECT_FALSE(dialogs.At(0).IsOpen());
    core.SetDialogs(nullptr);
}

TEST_F(RenderTest, AHostThatWatchesIsToldInstead) {
    class Watcher : public RendProgressCallback {
    public:
        void SetTitle(const char* text) override { title = text; }
        int Progress(int done, int all) override {
            last = done, total = all;
            return 1;
        }
        std::string title;
        int last = -1, total = -1;
    } watcher;
    host::MemoryDialogs dialogs;
    core.SetDialogs(&dialogs);
    core.SetRenderProgress(&watcher);
    MakeFur();
    Render();
    EXPECT_EQ(watcher.title, "Camera View");
    EXPECT_GT(watcher.total, 1000);
    EXPECT_EQ(watcher.last, watcher.total);
    EXPECT_EQ(dialogs.Count(), 0u);
    core.SetRenderProgress(nullptr);
    core.SetDialogs(nullptr);
}
