// The surface distribution object, and what evaluators make of its settings.

#include "Base/SurfDist/SurfDist.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Base/SurfDist/SurfDistEvaluator.h"
#include "core/core.h"

namespace {

/// A map of one colour.
class PlainMap : public Texmap {
public:
    explicit PlainMap(const AColor& c) : color(c) { SetName("plain"); }
    AColor EvalColor(ShadeContext&) override { return color; }
    void Update(TimeValue t, Interval&) override { updatedAt = t; }
    Interval Validity(TimeValue t) override { return {t, t + 10}; }
    AColor color;
    TimeValue updatedAt = -1;
};

/// Counts messages.
class Listener : public ReferenceMaker {
public:
    explicit Listener(ReferenceTarget* target) { ReplaceReference(0, target); }
    ~Listener() override { DeleteAllRefs(); }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int) override { return target_; }
    void SetReference(int, RefTargetHandle target) override { target_ = target; }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage message) override {
        changes += message == REFMSG_CHANGE;
        return REF_SUCCEED;
    }
    int changes = 0;

private:
    RefTargetHandle target_ = nullptr;
};

/// Shades in a colour of its own.
class PlainMtl : public Mtl {
public:
    explicit PlainMtl(float grey) : color(grey, grey, grey) {}
    void Shade(ShadeContext& sc) override { sc.out.c = color; }
    Color color;
};

class MultiMtl : public Mtl {
public:
    Class_ID ClassID() override { return MULTI_CLASS_ID; }
    void Shade(ShadeContext&) override {}
    int NumSubMtls() override { return 2; }
    Mtl* GetSubMtl(int i) override { return i == 0 ? &dark : &bright; }
    bool IsMultiMtl() override { return true; }
    PlainMtl dark{0.25f}, bright{0.75f};
};

/// One triangle with material index 1.
std::shared_ptr<const Mesh> Triangle() {
    auto mesh = std::make_shared<Mesh>();
    mesh->verts = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    Face f;
    f.v[1] = 1, f.v[2] = 2;
    f.SetMatID(1);
    mesh->faces = {f};
    mesh->checkNormals();
    return mesh;
}

float Evaluate(const SurfDist& dist, Mtl* material = nullptr) {
    SurfDistScene scene;
    scene.mesh = Triangle();
    scene.material = material;
    SurfDistEvaluator evaluator(dist.Settings(), scene);
    return evaluator.AtFace({0.25f, 0.25f, 0}, {0.5f, 0.25f, 0.25f}, 0);
}

ScriptValue Get(SurfDist& dist, const char* name) {
    ScriptValue value;
    TSTR error;
    EXPECT_TRUE(dist.GetProperty(name, value, error)) << name << ": " << error;
    return value;
}

TSTR SetError(SurfDist& dist, const char* name, const ScriptValue& value) {
    TSTR error;
    return dist.SetProperty(name, value, error) ? TSTR() : error;
}

SurfDistSettings Enabled(int source) {
    SurfDistSettings s;
    s.enabled = true;
    s.source = source;
    return s;
}

} // namespace

TEST(SurfDistObject, NewOneIsOffAndChangesNothing) {
    SurfDist dist;
    EXPECT_FALSE(dist.Settings().enabled);
    EXPECT_EQ(Evaluate(dist), 1.0f);
}

TEST(SurfDistObject, SoftSelectionOnAMeshWithoutItIsZero) {
    SurfDist dist;
    SurfDistSettings s = Enabled(SURFDIST_CHANNEL);
    s.channelType = SURFCHAN_SOFT_SELECTION;
    dist.SetSettings(s);
    EXPECT_EQ(Evaluate(dist), 0.0f);
}

TEST(SurfDistObject, TooLargeSubMaterialIdTakesTheFacesOwn) {
    MultiMtl multi;
    SurfDist dist;
    SurfDistSettings s = Enabled(SURFDIST_SUBMATERIAL);
    s.subMtlId = 1;
    dist.SetSettings(s);
    EXPECT_EQ(Evaluate(dist, &multi), 0.25f);
    for (const int id : {0, 2, 3, 60000}) {
        s.subMtlId = id;
        dist.SetSettings(s);
        EXPECT_EQ(Evaluate(dist, &multi), 0.75f) << id; // the face has index 1
    }
}

TEST(SurfDistObject, IntensityOfARedMapIsOneThird) {
    PlainMap red(AColor(1, 0, 0, 1));
    SurfDist dist;
    SurfDistSettings s = Enabled(SURFDIST_MAP);
    s.map = &red;
    dist.SetSettings(s);
    EXPECT_EQ(Evaluate(dist), 1.0f / 3.0f);
    dist.SetMap(nullptr);
    EXPECT_EQ(Evaluate(dist), 1.0f); // no map: neutral
}

TEST(SurfDistObject, UpdateFoldsTheMapsValidityWhereItIsRead) {
    PlainMap map(AColor(1, 1, 1, 1));
    SurfDist dist;
    dist.SetMap(&map);
    Interval valid = FOREVER;
    dist.Update(5, valid);
    EXPECT_EQ(valid, FOREVER);
    SurfDistSettings s = Enabled(SURFDIST_MAP);
    s.map = &map;
    dist.SetSettings(s);
    dist.Update(5, valid);
    EXPECT_EQ(valid, Interval(5, 15));
    EXPECT_EQ(map.updatedAt, 5);
}

TEST(SurfDistObject, ADeletedMapLeavesTheSlotEmpty) {
    SurfDist dist;
    {
        PlainMap map(AColor(1, 1, 1, 1));
        ASSERT_TRUE(dist.SetMap(&map));
        EXPECT_EQ(dist.GetReference(0), &map);
    }
    EXPECT_EQ(dist.GetMap(), nullptr);
}

TEST(SurfDistObject, NumbersStayInTheirRanges) {
    SurfDist dist;
    SurfDistSettings s;
    s.source = 9, s.channelType = -4, s.component = 77, s.channel = 1000, s.subMtlId = -1;
    dist.SetSettings(s);
    EXPECT_EQ(dist.Settings().source, 2);
    EXPECT_EQ(dist.Settings().channelType, 0);
    EXPECT_EQ(dist.Settings().component, 4);
    EXPECT_EQ(dist.Settings().channel, 99);
    EXPECT_EQ(dist.Settings().subMtlId, 0);
}

TEST(SurfDistObject, ScriptPropertiesReadAndWrite) {
    PlainMap map(AColor(1, 1, 1, 1));
    SurfDist dist;
    Listener listener(&dist);
    ASSERT_EQ(GetScriptProperties(&dist), static_cast<IScriptProperties*>(&dist));
    EXPECT_EQ(SetError(dist, "ENABLED", ScriptValue::Bool(true)), "");
    EXPECT_EQ(SetError(dist, "useFinalShading", ScriptValue::Bool(true)), "");
    EXPECT_EQ(SetError(dist, "type", ScriptValue::Int(2)), "");
    EXPECT_EQ(SetError(dist, "channeltype", ScriptValue::Int(6)), "");
    EXPECT_EQ(SetError(dist, "submatID", ScriptValue::Int(3)), "");
    EXPECT_EQ(SetError(dist, "channelID", ScriptValue::Int(4)), "");
    EXPECT_EQ(SetError(dist, "component", ScriptValue::Int(1)), "");
    EXPECT_EQ(SetError(dist, "map", ScriptValue::Object(&map)), "");
    EXPECT_EQ(listener.changes, 8);
    EXPECT_EQ(Get(dist, "enabled").i, 1);
    EXPECT_EQ(Get(dist, "useFinalShading").i, 1);
    EXPECT_EQ(Get(dist, "type").i, 2);
    EXPECT_EQ(Get(dist, "channelType").i, 6);
    EXPECT_EQ(Get(dist, "submatID").i, 3);
    EXPECT_EQ(Get(dist, "channelID").i, 4);
    EXPECT_EQ(Get(dist, "component").i, 1);
    EXPECT_EQ(Get(dist, "map").r, &map);
    EXPECT_EQ(dist.ListProperties().size(), 8u);
    EXPECT_EQ(SetError(dist, "map", ScriptValue()), "");
    EXPECT_EQ(Get(dist, "map").kind, ScriptValue::kUndefined);
}

TEST(SurfDistObject, ScriptRefusalsChangeNothing) {
    SurfDist dist, other;
    Listener listener(&dist);
    EXPECT_EQ(SetError(dist, "enabled", ScriptValue::Int(1)), "expected true or false");
    EXPECT_EQ(SetError(dist, "type", ScriptValue::Int(3)), "expected a whole number 0 to 2");
    EXPECT_EQ(SetError(dist, "channelType", ScriptValue::Int(7)), "expected a whole number 0 to 6");
    EXPECT_EQ(SetError(dist, "component", ScriptValue::Float(1)), "expected a whole number 0 to 4");
    EXPECT_EQ(SetError(dist, "map", ScriptValue::Object(&other)), "expected a map or undefined");
    EXPECT_EQ(SetError(dist, "colour", ScriptValue::Int(1)), "no such property");
    EXPECT_EQ(listener.changes, 0);
    ScriptValue result;
    TSTR error;
    EXPECT_FALSE(dist.Call("SetKnots", {}, result, error));
    EXPECT_EQ(error, "no such operation");
}

TEST(SurfDistObject, SettingsFilesGiveBackWhatTheyTook) {
    host::Core core;
    host::Core::Scope scope(core);
    auto* map = core.Adopt(new PlainMap(AColor(1, 1, 1, 1)));
    const auto file = std::filesystem::temp_directory_path() / ("velmar_surfdist_" + std::to_string(getpid()));
    SurfDist saved;
    SurfDistSettings s = Enabled(SURFDIST_MAP);
    s.useFinalShading = true, s.subMtlId = 7, s.channelType = 4, s.channel = 12, s.component = 3, s.map = map;
    saved.SetSettings(s);
    saved.SaveToINI(file.c_str(), "LengthSurfDist");
    SurfDist loaded;
    EXPECT_FALSE(loaded.LoadFromINI(file.c_str(), "DensitySurfDist"));
    ASSERT_TRUE(loaded.LoadFromINI(file.c_str(), "LengthSurfDist"));
    EXPECT_TRUE(loaded.Settings().enabled && loaded.Settings().useFinalShading);
    EXPECT_EQ(loaded.Settings().source, SURFDIST_MAP);
    EXPECT_EQ(loaded.Settings().subMtlId, 7);
    EXPECT_EQ(loaded.Settings().channelType, 4);
    EXPECT_EQ(loaded.Settings().channel, 12);
    EXPECT_EQ(loaded.Settings().component, 3);
    EXPECT_EQ(loaded.Settings().map, map);
    map->SetName("renamed");
    ASSERT_TRUE(loaded.LoadFromINI(file.c_str(), "LengthSurfDist"));
    EXPECT_EQ(loaded.Settings().map, nullptr); // no map of that name
    std::filesystem::remove(file);
}

TEST(SurfDistObject, ClonesShareMapsThatCannotBeCopied) {
    PlainMap map(AColor(1, 1, 1, 1));
    SurfDist dist;
    SurfDistSettings s = Enabled(SURFDIST_MAP);
    s.map = &map;
    dist.SetSettings(s);
    dist.SetTitle("Length");
    RemapDir remap;
    auto* copy = static_cast<SurfDist*>(remap.CloneRef(&dist));
    EXPECT_EQ(copy->GetMap(), &map);
    EXPECT_EQ(copy->Settings().source, SURFDIST_MAP);
    EXPECT_EQ(copy->Title(), "Length");
    copy->DeleteThis();
}
