// Parameters as the objects hold them: value cache, snapshot, change groups, validity.

#include "atmo_fixture.h"

#include "Base/SurfDist/SurfDist.h"
#include "CurveCtl/CurveCtl.h"
#include "core/controllers.h"

namespace {

/// Hears what an object tells its dependents.
class Listener : public ReferenceMaker {
public:
    explicit Listener(ReferenceTarget* target) { ReplaceReference(0, target); }
    ~Listener() override { DeleteAllRefs(); }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int) override { return target_; }
    void SetReference(int, RefTargetHandle target) override { target_ = target; }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID& part, RefMessage message) override {
        if (message == REFMSG_CHANGE) parts.push_back(part);
        return REF_SUCCEED;
    }
    std::vector<PartID> Take() { return std::exchange(parts, {}); }
    std::vector<PartID> parts;

private:
    RefTargetHandle target_ = nullptr;
};

using Parts = std::vector<PartID>;

class ParamsTest : public AtmoTest {
protected:
    static void Refresh(BaseAtmo& atmo, TimeValue t = 0) {
        Interval valid = FOREVER;
        atmo.UpdateAtTime(t, valid);
    }
    static Interval ValidAt(BaseAtmo& atmo, TimeValue t) {
        Interval valid = FOREVER;
        EXPECT_EQ(atmo.UpdateAtTime(t, valid), valid);
        return valid;
    }
};

} // namespace

TEST_F(ParamsTest, LengthAndKnotsDifferBetweenHairAndFur) {
    BaseAtmo* fur = Make(GetFurAtmoClassDesc());
    BaseAtmo* hair = Make(GetHairAtmoClassDesc());
    Refresh(*fur);
    Refresh(*hair);
    EXPECT_EQ(fur->Params().Float(pid_length), 4.0f);
    EXPECT_EQ(hair->Params().Float(pid_length), 1.0f);
    EXPECT_EQ(fur->Params().Int(pid_knots), 5);
    EXPECT_EQ(hair->Params().Int(pid_knots), 10);
    Set(*fur, pid_length, 2e6f);
    Set(*hair, pid_length, 2e6f);
    Refresh(*fur);
    Refresh(*hair);
    EXPECT_EQ(fur->Params().Float(pid_length), 1000000.0f);
    EXPECT_EQ(hair->Params().Float(pid_length), 1.0f);
}

TEST_F(ParamsTest, BlocksAndReferences) {
    BaseAtmo* fur = Make(GetFurAtmoClassDesc());
    BaseAtmo* hair = Make(GetHairAtmoClassDesc());
    for (int b = 0; b < kNumHairBlocks; ++b) {
        ASSERT_NE(fur->GetParamBlock(b), nullptr) << b;
        EXPECT_EQ(fur->GetParamBlock(b)->ID(), b);
        EXPECT_EQ(fur->GetReference(b), fur->GetParamBlockByID(short(b)));
        EXPECT_EQ(hair->GetParamBlock(b) == nullptr, b == BLOCK_LEAN_BEND) << b;
    }
    EXPECT_EQ(fur->GetParamBlock(6), nullptr);
    EXPECT_EQ(fur->GetParamBlock(-1), nullptr);
    EXPECT_EQ(fur->ClassID(), FURATMO_CLASS_ID);
    EXPECT_EQ(hair->ClassID(), HAIRATMO_CLASS_ID);
    EXPECT_EQ(fur->GetName(), "lanvo");
    EXPECT_EQ(hair->GetName(), "velmar");
}

TEST_F(ParamsTest, IdentifiersWithoutABlockAreSkipped) {
    BaseAtmo* hair = Make(GetHairAtmoClassDesc());
    Interval valid(3, 4);
    for (const int pid : {206, 207, 22, 0, 1, 404 + 1, -1, 100000}) {
        EXPECT_FALSE(hair->UpdateParam(0, pid, valid)) << pid;
        EXPECT_EQ(hair->BlockOf(pid), nullptr) << pid;
    }
    EXPECT_EQ(valid, Interval(3, 4));
    EXPECT_FALSE(hair->AddNode(pid_fur_leanVects, node));
    EXPECT_EQ(hair->NodeCount(pid_fur_leanVects), 0);
}

TEST_F(ParamsTest, UpdateParamNoticesChanges) {
    BaseAtmo* fur = MakeFur();
    Refresh(*fur);
    Interval valid = FOREVER;
    EXPECT_FALSE(fur->UpdateParam(0, pid_thickness, valid));
    Set(*fur, pid_thickness, 0.7f);
    EXPECT_TRUE(fur->UpdateParam(0, pid_thickness, valid));
    EXPECT_FALSE(fur->UpdateParam(0, pid_thickness, valid));
    Set(*fur, pid_colTip, Color(0.1f, 0.2f, 0.3f));
    EXPECT_TRUE(fur->UpdateParam(0, pid_colTip, valid));
    EXPECT_FALSE(fur->UpdateParam(0, pid_colTip, valid));
    EXPECT_FALSE(fur->UpdateParam(0, pid_colBase, valid));
    Set<ReferenceTarget*>(*fur, pid_curve_clumpShape, new CurveCtl);
    EXPECT_TRUE(fur->UpdateParam(0, pid_curve_clumpShape, valid));
    EXPECT_FALSE(fur->UpdateParam(0, pid_curve_clumpShape, valid));
    fur->ClearNodeList(pid_emitters);
    EXPECT_TRUE(fur->UpdateParam(0, pid_emitters, valid));
    EXPECT_EQ(valid, FOREVER);
}

TEST_F(ParamsTest, TimesAreCachedInFrames) {
    core.SetFrameRate(24); // 200 ticks a frame
    BaseAtmo* fur = MakeFur();
    Set(*fur, pid_fixRefFrame, 1250);
    Set(*fur, pid_dyn_frameStart, -450);
    Refresh(*fur);
    EXPECT_EQ(fur->Params().ticksPerFrame, 200);
    EXPECT_EQ(fur->Params().Int(pid_fixRefFrame), 6);
    EXPECT_EQ(fur->Params().Int(pid_dyn_frameStart), -2);
}

TEST_F(ParamsTest, OrientationAngleIsReduced) {
    BaseAtmo* fur = MakeFur();
    for (const auto& [set, expected] :
         {std::pair(-90, 270), {0, 0}, {180, 180}, {-180, 180}, {-1, 359}, {-1000, 180}}) {
        Set(*fur, pid_orientAngle, set);
        Refresh(*fur);
        EXPECT_EQ(fur->Params().Int(pid_orientAngle), expected) << set;
    }
}

TEST_F(ParamsTest, SnapshotOfANewObjectIsTheDefault) {
    for (const bool isFur : {true, false}) {
        BaseAtmo* atmo = Make(isFur ? GetFurAtmoClassDesc() : GetHairAtmoClassDesc());
        Refresh(*atmo);
        const HairParams expected = HairParams::Defaults(isFur), &got = atmo->Params();
        for (int pid = 0; pid < kNumScalarPids; ++pid) {
            const bool held = pid >= pid_updateOnChange && pid <= pid_faceSel_namedSet;
            if (pid == pid_orientAngle || held) continue;
            EXPECT_EQ(got.Int(pid), expected.Int(pid)) << pid;
        }
        EXPECT_EQ(got.colBase, expected.colBase);
        EXPECT_EQ(got.colTip, expected.colTip);
        for (int i = 0; i < kNumCurves; ++i) {
            const CurveShape *a = got.Curve(kFirstCurvePid + i), *b = expected.Curve(kFirstCurvePid + i);
            ASSERT_EQ(a != nullptr, b != nullptr) << i;
            EXPECT_EQ(a ? a->Eval(0.3f) : 0, b ? b->Eval(0.3f) : 0) << i;
        }
        for (int i = 0; i < kNumRandDists; ++i) EXPECT_EQ(got.RandCurve(kFirstRandDistPid + i), nullptr);
        for (int i = 0; i < kNumSurfDists; ++i) EXPECT_EQ(got.Surface(kFirstSurfDistPid + i), nullptr);
        EXPECT_EQ(got.mappingChannels, (std::vector<int>{-2, -1}));
    }
}

TEST_F(ParamsTest, NewObjectsHaveAllCurvesAndDistributions) {
    BaseAtmo* fur = Make(GetFurAtmoClassDesc());
    IParamBlock2* block = fur->GetParamBlock(BLOCK_OBJECTS);
    for (int i = 0; i < kNumCurves; ++i) {
        auto* curve = dynamic_cast<CurveCtl*>(block->GetReferenceTarget(ParamID(kFirstCurvePid + i)));
        ASSERT_NE(curve, nullptr) << i;
        EXPECT_EQ(curve->Enabled(), CurveDefTable[size_t(i)].EnabledAtCreation());
    }
    for (int i = 0; i < kNumSurfDists; ++i)
        EXPECT_NE(dynamic_cast<SurfDist*>(block->GetReferenceTarget(ParamID(kFirstSurfDistPid + i))), nullptr) << i;
    for (int i = 0; i < kNumRandDists; ++i)
        EXPECT_NE(dynamic_cast<CurveCtl*>(block->GetReferenceTarget(ParamID(kFirstRandDistPid + i))), nullptr) << i;
    auto* loaded = static_cast<BaseAtmo*>(static_cast<ReferenceTarget*>(GetFurAtmoClassDesc()->Create(true)));
    EXPECT_EQ(loaded->GetParamBlock(BLOCK_OBJECTS)->GetReferenceTarget(pid_curve_thickness), nullptr);
    loaded->CreateMissingReferences();
    EXPECT_NE(loaded->GetParamBlock(BLOCK_OBJECTS)->GetReferenceTarget(pid_curve_thickness), nullptr);
    loaded->DeleteThis();
}

TEST_F(ParamsTest, FaceSelectionTypeFiveIsIgnored) {
    BaseAtmo* fur = MakeFur();
    Set(*fur, pid_faceSel_type, 4);
    Set(*fur, pid_faceSel_type, 5);
    EXPECT_EQ(fur->GetFaceSelection().type, 4);
    EXPECT_EQ(fur->BlockOf(pid_faceSel_type)->GetInt(pid_faceSel_type), 4);
    Set(*fur, pid_faceSel_type, -1);
    EXPECT_EQ(fur->GetFaceSelection().type, 4);
    Set(*fur, pid_faceSel_mtlIDs, TSTR("1,3-4"));
    Refresh(*fur);
    EXPECT_EQ(fur->Params().faceSelection.type, 4);
    EXPECT_EQ(fur->Params().faceSelection.mtlIds, "1,3-4");
}

TEST_F(ParamsTest, FaceSelectionLimitsTheStrands) {
    for (int f = 0; f < object->mesh.getNumFaces(); f += 2) object->mesh.faces[size_t(f)].SetMatID(6);
    BitArray set(object->mesh.getNumFaces());
    set.Set(0), set.Set(1);
    object->mesh.faceSets = {{"top", set}};
    BaseAtmo* fur = MakeFur();
    const int64_t all = fur->EstimateGeometry(0).strands;
    Set(*fur, pid_faceSel_type, 2);
    Set(*fur, pid_faceSel_mtlID, 7);
    const int64_t half = fur->EstimateGeometry(0).strands;
    EXPECT_NEAR(double(half), double(all) / 2, double(all) / 20);
    Set(*fur, pid_faceSel_mtlID, 9);
    EXPECT_EQ(fur->EstimateGeometry(0).strands, 0);
    Set(*fur, pid_faceSel_type, 3);
    Set(*fur, pid_faceSel_namedSet, TSTR("bottom"));
    EXPECT_EQ(fur->EstimateGeometry(0).strands, 0);
    Set(*fur, pid_faceSel_namedSet, TSTR("top"));
    const int64_t top = fur->EstimateGeometry(0).strands;
    EXPECT_GT(top, 0);
    EXPECT_LT(top, half);
}

TEST_F(ParamsTest, GroupsZeroInvalidateNothing) {
    BaseAtmo* fur = MakeFur();
    Refresh(*fur);
    Listener listener(fur);
    const int redraws = core.Redraws();
    Set(*fur, pid_dyn_keyThresh, 0.5f);
    Set(*fur, pid_dyn_useDynMthd, 0);
    EXPECT_EQ(listener.Take(), Parts{});
    EXPECT_EQ(core.Redraws(), redraws);
    EXPECT_FALSE(fur->Emitter(0)->control.Validity().Empty());
    EXPECT_NE(fur->Params().Float(pid_dyn_keyThresh), 0.5f); // nothing was read anew
    Refresh(*fur);
    EXPECT_NE(fur->Params().Float(pid_dyn_keyThresh), 0.5f);
}

TEST_F(ParamsTest, RenderChangesShowOnlyAsGeometry) {
    BaseAtmo* fur = MakeFur();
    Refresh(*fur);
    Listener listener(fur);
    Set(*fur, pid_colBias, 0.25f);
    EXPECT_EQ(listener.Take(), Parts{});
    EXPECT_FALSE(fur->Emitter(0)->control.Validity().Empty());
    Refresh(*fur);
    EXPECT_EQ(fur->Params().Float(pid_colBias), 0.25f); // the next render uses it all the same
    Set(*fur, pid_useGeom, 1);
    EXPECT_EQ(listener.Take(), Parts{4});
    Set(*fur, pid_colBias, 0.5f);
    EXPECT_EQ(listener.Take(), Parts{4});
    EXPECT_FALSE(fur->Emitter(0)->control.Validity().Empty());
}

TEST_F(ParamsTest, PartsTellShapeAndRender) {
    BaseAtmo* fur = MakeFur();
    Refresh(*fur);
    Listener listener(fur);
    Set(*fur, pid_randSeed, 5); // shape
    EXPECT_EQ(listener.Take(), Parts{2});
    EXPECT_TRUE(fur->Emitter(0)->control.Validity().Empty());
    Set(*fur, pid_thickness, 0.5f); // dynamics and render, neither in use
    EXPECT_EQ(listener.Take(), Parts{});
    Set(*fur, pid_dyn_useDyn, 1); // view: redrawn, but nothing to tell
    EXPECT_EQ(listener.Take(), Parts{});
    Set(*fur, pid_thickness, 0.6f);
    EXPECT_EQ(listener.Take(), Parts{6});
    Set(*fur, pid_dyn_mass, 2.0f);
    EXPECT_EQ(listener.Take(), Parts{2});
    EXPECT_TRUE(fur->IsGroupRelevant(GROUP_DYNAMICS));
    EXPECT_FALSE(fur->IsGroupRelevant(GROUP_RENDER));
    EXPECT_TRUE(fur->IsGroupRelevant(GROUP_SHAPE) && fur->IsGroupRelevant(GROUP_VIEW));
    EXPECT_FALSE(fur->IsGroupRelevant(0));
}

TEST_F(ParamsTest, LoadingKeepsChangesBack) {
    BaseAtmo* fur = MakeFur();
    Refresh(*fur);
    Listener listener(fur);
    fur->SetLoading(true);
    EXPECT_FALSE(fur->IsGroupRelevantNow(GROUP_SHAPE));
    Set(*fur, pid_randSeed, 9);
    Set(*fur, pid_knots, 7);
    EXPECT_EQ(listener.Take(), Parts{});
    fur->SetLoading(false);
    EXPECT_EQ(listener.Take(), Parts{6});
    Refresh(*fur);
    EXPECT_EQ(fur->Params().Int(pid_knots), 7);
}

TEST_F(ParamsTest, CurvesAndDistributionsReachTheSnapshot) {
    BaseAtmo* fur = MakeFur();
    auto* curve = dynamic_cast<CurveCtl*>(fur->BlockOf(256)->GetReferenceTarget(pid_curve_clumpShape));
    auto* random = dynamic_cast<CurveCtl*>(fur->BlockOf(400)->GetReferenceTarget(pid_randDist_length));
    auto* surface = dynamic_cast<SurfDist*>(fur->BlockOf(305)->GetReferenceTarget(pid_surfDist_density));
    ASSERT_TRUE(curve && random && surface);
    curve->SetEnabled(1);
    random->SetEnabled(1);
    surface->SetEnabled(true);
    Refresh(*fur);
    ASSERT_NE(fur->Params().Curve(pid_curve_clumpShape), nullptr);
    EXPECT_EQ(fur->Params().Curve(pid_curve_clumpShape)->Eval(1.0f), 1.0f);
    EXPECT_NE(fur->Params().RandCurve(pid_randDist_length), nullptr);
    EXPECT_NE(fur->Params().Surface(pid_surfDist_density), nullptr);
    curve->SetKnot(0, 1, 1.0f, 0.25f, false);
    Refresh(*fur);
    EXPECT_EQ(fur->Params().Curve(pid_curve_clumpShape)->Eval(1.0f), 0.25f);
}

TEST_F(ParamsTest, AnimatedParametersLimitTheValidity) {
    BaseAtmo* fur = MakeFur();
    EXPECT_EQ(ValidAt(*fur, 0), FOREVER);
    auto* keys = new host::FloatControl;
    keys->SetKey(0, 1.0f);
    keys->SetKey(1600, 3.0f);
    ASSERT_TRUE(fur->BlockOf(pid_length)->SetController(pid_length, keys));
    EXPECT_EQ(ValidAt(*fur, 800), Interval(800, 800));
    EXPECT_EQ(fur->Params().Float(pid_length), 2.0f);
    EXPECT_TRUE(ValidAt(*fur, 5000).InInterval(TIME_PosInfinity));
    EXPECT_EQ(fur->Params().Float(pid_length), 3.0f);
    EXPECT_EQ(fur->Params().time, 5000);
}

TEST_F(ParamsTest, MovingEmittersLimitTheValidity) {
    BaseAtmo* fur = MakeFur();
    Refresh(*fur);
    const Matrix3 before = fur->Emitter(0)->control.ObjectTM();
    node->SetNodeTM(0, TransMatrix({1, 2, 3}));
    Refresh(*fur);
    EXPECT_NE(fur->Emitter(0)->control.ObjectTM(), before);
    EXPECT_TRUE(fur->Emitter(0)->usable);
}

TEST_F(ParamsTest, ReplacedBlocksBringTheSourcesValues) {
    BaseAtmo *from = MakeFur(), *to = MakeFur(), *hair = Make(GetHairAtmoClassDesc());
    Set(*from, pid_length, 7.5f);
    EXPECT_TRUE(to->ReplaceBlocks(*from));
    Refresh(*to);
    EXPECT_EQ(to->Params().Float(pid_length), 7.5f);
    EXPECT_NE(to->GetParamBlock(1), from->GetParamBlock(1));
    Set(*from, pid_length, 2.0f);
    Refresh(*to);
    EXPECT_EQ(to->Params().Float(pid_length), 7.5f);
    EXPECT_EQ(to->EmitterCount(), 1);
    EXPECT_FALSE(hair->ReplaceBlocks(*from));
}

TEST_F(ParamsTest, ClonesAreWhole) {
    BaseAtmo* fur = MakeFur();
    Set(*fur, pid_length, 7.5f);
    fur->SetMapping(3, 5);
    fur->GetFaceSelection().type = 1;
    RemapDir remap;
    auto* copy = static_cast<BaseAtmo*>(remap.CloneRef(fur));
    ASSERT_NE(copy, nullptr);
    Refresh(*copy);
    EXPECT_EQ(copy->Params().Float(pid_length), 7.5f);
    EXPECT_EQ(copy->GetMapping(3), 5);
    EXPECT_EQ(copy->GetFaceSelection().type, 1);
    EXPECT_EQ(copy->GetNode(pid_emitters, 0), node);
    EXPECT_NE(copy->BlockOf(250)->GetReferenceTarget(pid_curve_thickness),
              fur->BlockOf(250)->GetReferenceTarget(pid_curve_thickness));
    copy->DeleteThis();
}
