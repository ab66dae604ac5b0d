// Node lists, estimates, script properties.

#include "atmo_fixture.h"

#include "Base/DumMtl.h"
#include "Base/SurfDist/SurfDistEvaluator.h"
#include "CurveCtl/CurveCtl.h"

namespace {

class NodesTest : public AtmoTest {
protected:
    host::Node* AddSphere(const char* name, float radius = 2) {
        auto* mesh = new TriObject;
        mesh->mesh = SphereMesh(radius, 4, 6);
        return core.CreateNode(name, mesh);
    }
};

class Helper : public HelperObject {};

} // namespace

TEST_F(NodesTest, NodesThatDoNotQualifyAreRefused) {
    BaseAtmo* fur = MakeFur();
    host::Node* helper = core.CreateNode("helper", new Helper);
    EXPECT_FALSE(fur->AddNode(pid_emitters, helper));
    EXPECT_FALSE(fur->AddNode(pid_emitters, nullptr));
    EXPECT_FALSE(fur->AddNode(pid_fur_leanVects, helper));
    EXPECT_FALSE(fur->AddNode(pid_fur_leanVects, node));
    EXPECT_FALSE(fur->AddNode(pid_winds, node));
    EXPECT_TRUE(fur->AddNode(pid_cutters, node));
    EXPECT_EQ(fur->NodeCount(pid_emitters), 1);
    IParamBlock2* block = fur->BlockOf(pid_emitters);
    ASSERT_TRUE(block->SetCount(pid_emitters, 2));
    block->SetValue(pid_emitters, 0, static_cast<INode*>(helper), 1);
    EXPECT_EQ(fur->GetNode(pid_emitters, 1), nullptr); // the slot stays empty
    EXPECT_EQ(fur->EmitterCount(), 2);
    EXPECT_EQ(fur->Emitter(1), nullptr);
}

TEST_F(NodesTest, ListsAreEdited) {
    BaseAtmo* fur = MakeFur();
    host::Node *a = AddSphere("a"), *b = AddSphere("b");
    EXPECT_TRUE(fur->AddNode(pid_emitters, a));
    EXPECT_TRUE(fur->AddNode(pid_emitters, b));
    EXPECT_EQ(fur->NodeCount(pid_emitters), 3);
    EmitterRecord* const recordOfB = fur->Emitter(2);
    EXPECT_TRUE(fur->DeleteNode(pid_emitters, a));
    EXPECT_FALSE(fur->DeleteNode(pid_emitters, a));
    ASSERT_EQ(fur->EmitterCount(), 2);
    EXPECT_EQ(fur->Emitter(1), recordOfB); // records follow their nodes
    EXPECT_EQ(fur->Emitter(1)->node, b);
    fur->SetNodeList(pid_emitters, {b, nullptr, a});
    ASSERT_EQ(fur->EmitterCount(), 2);
    EXPECT_EQ(fur->GetNode(pid_emitters, 0), b);
    EXPECT_EQ(fur->GetNode(pid_emitters, 1), a);
    fur->ClearNodeList(pid_emitters);
    EXPECT_EQ(fur->EmitterCount(), 0);
    EXPECT_FALSE(fur->GetStrandsAt(0));
}

TEST_F(NodesTest, SameNodeTwiceHasOneRecordAtATime) {
    BaseAtmo* fur = MakeFur();
    EXPECT_TRUE(fur->AddNode(pid_emitters, node));
    ASSERT_EQ(fur->EmitterCount(), 2);
    EXPECT_NE(fur->Emitter(0), fur->Emitter(1));
    EXPECT_EQ(fur->Emitter(0)->node, fur->Emitter(1)->node);
    EXPECT_TRUE(fur->GetStrandsAt(0));
}

TEST_F(NodesTest, ThereAreNoGeometryNodes) {
    BaseAtmo* fur = MakeFur();
    std::vector<INode*> found;
    EXPECT_EQ(fur->CountGeometryNodes(-1), 0);
    EXPECT_EQ(fur->GetGeometryNodes(found, -1), 0);
    int calls = 0;
    fur->ForEachGeometryNode([&](INode*, Object*) { ++calls; });
    EXPECT_EQ(calls, 0);
}

TEST_F(NodesTest, EstimateFollowsTheNumberOfSides) {
    BaseAtmo* fur = MakeFur();
    Set(*fur, pid_knots, 3);
    Set(*fur, pid_bezierSteps, 4);
    const int64_t n = 9; // points a strand
    const GeometryEstimate three = fur->EstimateGeometry(0);
    ASSERT_GT(three.strands, 100);
    EXPECT_EQ(three.points, three.strands * n);
    EXPECT_EQ(three.vertices, three.strands * (3 * n + 2));
    EXPECT_EQ(three.faces, three.strands * 6 * n);
    EXPECT_EQ(three.mappingVertices, three.strands * (3 * n + 2 + n));
    Set(*fur, pid_geomSides, 2);
    const GeometryEstimate two = fur->EstimateGeometry(0);
    EXPECT_EQ(two.strands, three.strands);
    EXPECT_EQ(two.vertices, two.strands * 2 * n);
    EXPECT_EQ(two.faces, two.strands * (4 * n - 4));
    EXPECT_EQ(two.mappingVertices, two.strands * 3 * n);
    Set(*fur, pid_geomSides, 1);
    const GeometryEstimate one = fur->EstimateGeometry(0);
    EXPECT_EQ(one.vertices, one.strands * 2 * n);
    EXPECT_EQ(one.faces, one.strands * (2 * n - 2));
    EXPECT_EQ(one.mappingVertices, one.strands * 2 * n);
}

TEST_F(NodesTest, EstimateIsPerEmitterAndSkipsHiddenOnes) {
    BaseAtmo* fur = MakeFur();
    ASSERT_TRUE(fur->AddNode(pid_emitters, AddSphere("small")));
    const GeometryEstimate all = fur->EstimateGeometry(0), first = fur->EstimateGeometry(0, 0),
                           second = fur->EstimateGeometry(0, 1);
    EXPECT_EQ(all.strands, first.strands + second.strands);
    EXPECT_EQ(all.vertices, first.vertices + second.vertices);
    EXPECT_GT(second.strands, 0);
    EXPECT_EQ(fur->EstimateGeometry(0, 7).strands, 0);
    node->Hide(true);
    EXPECT_EQ(fur->EstimateGeometry(0, 0).strands, 0);
    EXPECT_EQ(fur->EstimateGeometry(0).strands, second.strands);
}

TEST_F(NodesTest, DensityDistributionWithoutSoftSelectionGrowsNothing) {
    BaseAtmo* fur = MakeFur();
    ASSERT_GT(fur->EstimateGeometry(0).strands, 0);
    IScriptProperties* density = GetScriptProperties(fur->BlockOf(305)->GetReferenceTarget(pid_surfDist_density));
    ASSERT_NE(density, nullptr);
    TSTR error;
    EXPECT_TRUE(density->SetProperty("enabled", ScriptValue::Bool(true), error));
    EXPECT_TRUE(density->SetProperty("type", ScriptValue::Int(2), error));
    EXPECT_TRUE(density->SetProperty("channelType", ScriptValue::Int(2), error));
    EXPECT_EQ(fur->EstimateGeometry(0).strands, 0);
    EXPECT_TRUE(density->SetProperty("enabled", ScriptValue::Bool(false), error));
    EXPECT_GT(fur->EstimateGeometry(0).strands, 0);
}

TEST_F(NodesTest, EmitterWithoutMaterialGivesItsWireColour) {
    BaseAtmo* fur = MakeFur();
    const int64_t all = fur->EstimateGeometry(0).strands;
    SurfDistSettings s;
    s.enabled = true;
    NodeSurfaces surfaces(node);
    node->SetWireColor({0.5f, 0.5f, 0.5f});
    Interval valid = FOREVER;
    auto evaluator = surfaces.MakeEvaluator(s, fur->Emitter(0)->source.MeshAt(0, valid), Matrix3());
    // The default material in the wire colour, under the stand-by light that a context without a light list has.
    EXPECT_EQ(evaluator->AtVertex(1), 0.5f);
    EXPECT_GT(all, 0);
}

TEST_F(NodesTest, EmittersKeepTheirMeshWhileItHolds) {
    BaseAtmo* fur = MakeFur();
    NodeEmitter& source = fur->Emitter(0)->source;
    Interval valid = FOREVER;
    const std::shared_ptr<const Mesh> mesh = source.MeshAt(0, valid);
    EXPECT_EQ(valid, FOREVER);
    EXPECT_EQ(source.MeshAt(4000, valid), mesh);
    source.Forget();
    EXPECT_NE(source.MeshAt(0, valid), mesh);
}

TEST_F(NodesTest, ScriptMaterialAndMapping) {
    BaseAtmo* fur = MakeFur();
    IScriptProperties* script = GetScriptProperties(fur);
    ASSERT_NE(script, nullptr);
    DumMtl material(Point3(1, 0, 0), false);
    ScriptValue value;
    TSTR error;
    EXPECT_EQ(script->ListProperties(), std::vector<TSTR>{"material"});
    EXPECT_TRUE(script->SetProperty("Material", ScriptValue::Object(&material), error));
    EXPECT_EQ(fur->GetMaterial(), &material);
    EXPECT_TRUE(script->GetProperty("material", value, error));
    EXPECT_EQ(value.r, &material);
    EXPECT_FALSE(script->SetProperty("material", ScriptValue::Object(node), error));
    EXPECT_EQ(error, "expected a material or undefined");
    EXPECT_EQ(fur->GetMaterial(), &material);
    EXPECT_TRUE(script->SetProperty("material", ScriptValue(), error));
    EXPECT_EQ(fur->GetMaterial(), nullptr);
    EXPECT_FALSE(script->GetProperty("shader", value, error));
    EXPECT_EQ(error, "no such property");

    EXPECT_TRUE(script->Call("getmapping", {ScriptValue::Int(1)}, value, error));
    EXPECT_EQ(value.i, -1);
    EXPECT_TRUE(script->Call("SetMapping", {ScriptValue::Int(3), ScriptValue::Int(2)}, value, error));
    EXPECT_EQ(fur->GetMapping(3), 2);
    EXPECT_EQ(fur->GetMapping(2), 0);
    EXPECT_EQ(fur->GetMapping(99), 0);
    EXPECT_FALSE(script->Call("SetMapping", {ScriptValue::Int(100), ScriptValue::Int(2)}, value, error));
    EXPECT_FALSE(script->Call("SetMapping", {ScriptValue::Int(1), ScriptValue::Int(-4)}, value, error));
    EXPECT_EQ(error, "expected a whole number -3 to 99");
    EXPECT_FALSE(script->Call("SetMapping", {}, value, error));
    EXPECT_EQ(error, "expected 2 arguments");
    EXPECT_FALSE(script->Call("Comb", {}, value, error));
    EXPECT_EQ(error, "no such operation");
    Interval valid = FOREVER;
    fur->UpdateAtTime(0, valid);
    EXPECT_EQ(fur->Params().mappingChannels, (std::vector<int>{-2, -1, 0, 2}));
}

TEST_F(NodesTest, ScriptEstimate) {
    BaseAtmo* fur = MakeFur();
    ScriptValue value;
    TSTR error;
    ASSERT_TRUE(GetScriptProperties(fur)->Call("EstimateGeom", {}, value, error));
    ASSERT_EQ(value.items.size(), 4u);
    const GeometryEstimate g = fur->EstimateGeometry(0);
    EXPECT_EQ(value.items[0].i, g.vertices);
    EXPECT_EQ(value.items[1].i, g.faces);
    EXPECT_EQ(value.items[2].i, g.strands);
    EXPECT_EQ(value.items[3].i, g.points);
}

TEST_F(NodesTest, ScriptCurves) {
    auto* curve = new CurveCtl;
    core.Adopt(curve);
    IScriptProperties* script = GetScriptProperties(curve);
    ASSERT_NE(script, nullptr);
    ScriptValue value;
    TSTR error;
    const auto knots = [](std::initializer_list<float> numbers) {
        std::vector<ScriptValue> args;
        int i = 0;
        for (const float n : numbers) args.push_back(i++ % 3 == 2 ? ScriptValue::Int(int(n)) : ScriptValue::Float(n));
        return args;
    };
    EXPECT_TRUE(script->Call("SetKnots", knots({0, 0.25f, 1, 0.5f, 1, 1, 1, 0, 2}), value, error));
    ASSERT_EQ(curve->KnotCount(), 3);
    EXPECT_EQ(curve->Knot(2)->Type(), CURVE_STEP);
    EXPECT_TRUE(script->Call("GetValue", {ScriptValue::Float(0.25f)}, value, error));
    EXPECT_EQ(value.f, 0.625f);
    for (const auto& bad :
         {knots({0, 0, 1}), knots({0, 0, 1, 1, 1}), knots({0, 0, 1, 0, 1, 1}), knots({0, 0, 1, 1, 1, 3})}) {
        EXPECT_FALSE(script->Call("SetKnots", bad, value, error));
        EXPECT_EQ(curve->KnotCount(), 3);
    }
    EXPECT_TRUE(script->SetProperty("enabled", ScriptValue::Bool(true), error));
    EXPECT_TRUE(script->SetProperty("useNoise", ScriptValue::Bool(true), error));
    EXPECT_TRUE(script->SetProperty("noiseSize", ScriptValue::Float(0.125f), error));
    EXPECT_TRUE(script->SetProperty("noiseDensity", ScriptValue::Int(3), error));
    EXPECT_TRUE(script->SetProperty("noisePhase", ScriptValue::Float(2), error));
    EXPECT_TRUE(script->SetProperty("title", ScriptValue::Text("Taper"), error));
    EXPECT_TRUE(curve->Enabled() && curve->UseNoise());
    EXPECT_EQ(curve->NoiseSize(), 0.125f);
    EXPECT_EQ(curve->NoiseDensity(), 3.0f);
    EXPECT_EQ(curve->NoisePhase(), 2.0f);
    EXPECT_EQ(curve->Title(), "Taper");
    for (const TSTR& name : script->ListProperties()) EXPECT_TRUE(script->GetProperty(name, value, error)) << name;
    EXPECT_FALSE(script->SetProperty("noiseSize", ScriptValue::Float(NAN), error));
    EXPECT_EQ(error, "expected a number");
    EXPECT_FALSE(script->SetProperty("knots", ScriptValue::Int(3), error));
    EXPECT_EQ(error, "no such property");
}
